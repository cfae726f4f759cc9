#include "inventory/report/report_writer.h"

#include "inventory/report/html_writer.h"
#include "inventory/report/page_style.h"
#include "inventory/report/report_head.h"
#include "inventory/report/report_inventory.h"
#include "inventory/report/report_tables.h"

#include <deque>
#include <string>
#include <utility>

namespace NINVENTORY {
namespace {

struct TSectionRow {
    std::string_view id, title;
    bool (*isShown)(const TReportInventory& inventory);
    void (*write)(THtmlWriter& html, const TReportInventory& inventory);
};

void WriteTables(THtmlWriter& html, const TReportInventory& inventory) {
    for (const std::string& type : ListShownTypes(inventory)) {
        WriteTypeTable(html, inventory, type);
    }
}

constexpr TSectionRow sections[] = {
    {"tables", "Tables", [](const TReportInventory& inventory) { return !inventory.GetResources().empty(); },
     &WriteTables},
};

class TReportWriter final : public IInventoryFormat {
  public:
    explicit TReportWriter(std::ostream& out) : html_(out) {}

    void BeginSource(const std::string& name) override { inventories_.emplace_back(name); }
    void BeginDocument(const TDocumentHead& head) override { inventories_.back().AddDocument(head); }
    void BeginList(std::string_view /*listType*/, int /*line*/) override {}
    void AddResource(TResource&& resource) override { inventories_.back().AddResource(std::move(resource)); }
    void Finish() override {
        const auto page = html_.Begin("en");
        WritePageHead();
        WriteBody();
    }

  private:
    void WritePageHead() {
        const auto head = html_.Element("head");
        html_.Void("meta", {{"charset", "utf-8"}});
        html_.Void("meta",
                   {{"http-equiv", "Content-Security-Policy"},
                    {"content", "default-src 'none'; style-src 'sha256-" + std::string(GetStyleDigest()) +
                                    "'; base-uri 'none'; form-action 'none'"}});
        html_.Void("meta", {{"name", "viewport"}, {"content", "width=device-width, initial-scale=1"}});
        html_.Void("meta", {{"name", "color-scheme"}, {"content", "light dark"}});
        html_.Void("meta", {{"name", "referrer"}, {"content", "no-referrer"}});
        html_.Leaf("title", GetTitle());
        html_.StyleSheet(GetStyleSheet());
    }

    std::string GetTitle() const {
        std::string names;
        for (const TReportInventory& inventory : inventories_) {
            names += (names.empty() ? "" : ", ") + GetMachineName(inventory);
        }
        return names + ": hardware inventory";
    }

    void WriteBody() {
        const auto body = html_.Element("body");
        {
            const auto skip = html_.Link("report", {{"class", "skip"}});
            html_.Text("Skip to the report");
        }
        const auto main = html_.Element("main", {{"id", "report"}});
        for (std::size_t i = 0; i < inventories_.size(); ++i) {
            inventories_[i].Link();
            // The sections of the first machine have short ids, for links to them.
            WriteMachine(inventories_[i], i == 0 ? "" : "machine-" + std::to_string(i + 1) + "-");
        }
    }

    void WriteMachine(const TReportInventory& inventory, const std::string& prefix) {
        const auto article = html_.Element("article");
        WriteHead(html_, inventory);
        WriteContents(inventory, prefix);
        for (const TSectionRow& row : sections) {
            if (!row.isShown(inventory)) {
                continue;
            }
            const std::string id = prefix + std::string(row.id);
            const auto section = html_.Element("section", {{"id", id}, {"aria-labelledby", id + "-title"}});
            html_.Leaf("h2", {{"id", id + "-title"}}, row.title);
            row.write(html_, inventory);
        }
    }

    void WriteContents(const TReportInventory& inventory, const std::string& prefix) {
        const auto contents =
            html_.Element("nav", {{"class", "contents"}, {"aria-label", prefix + "contents"}});
        const auto list = html_.Element("ul");
        for (const TSectionRow& row : sections) {
            if (row.isShown(inventory)) {
                const auto item = html_.Element("li");
                const auto link = html_.Link(prefix + std::string(row.id));
                html_.Text(row.title);
            }
        }
    }

    THtmlWriter html_;
    std::deque<TReportInventory> inventories_;
};

}  // namespace

std::unique_ptr<IInventoryFormat> MakeReportWriter(std::ostream& out) {
    return std::make_unique<TReportWriter>(out);
}

}  // namespace NINVENTORY
