#include "inventory/report/report_writer.h"

#include "inventory/report/board_section.h"
#include "inventory/report/changes_section.h"
#include "inventory/report/html_writer.h"
#include "inventory/report/network_section.h"
#include "inventory/report/page_frame.h"
#include "inventory/report/report_head.h"
#include "inventory/report/report_inventory.h"
#include "inventory/report/report_notes.h"
#include "inventory/report/report_tables.h"
#include "inventory/report/slot_section.h"
#include "inventory/report/storage_section.h"
#include "inventory/report/tree_section.h"

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
    {"board", "Board", &HasBoard, &WriteBoard},
    {"storage", "Storage", &HasStorage, &WriteStorage},
    {"network", "Network", &HasNetwork, &WriteNetwork},
    {"slots", "Expansion slots", &HasSlots, &WriteSlots},
    {"pci", "PCI", &HasPci, &WritePciTree},
    {"usb", "USB", &HasUsb, &WriteUsbTree},
    {"tables", "Tables", [](const TReportInventory& inventory) { return !inventory.GetResources().empty(); },
     &WriteTables},
};

// A section with its heading.
class TSection {
  public:
    TSection(THtmlWriter& html, const std::string& id, std::string_view title)
        : element_(html.Element("section", {{"id", id}, {"aria-labelledby", id + "-title"}})) {
        html.Leaf("h2", {{"id", id + "-title"}}, title);
    }

  private:
    THtmlWriter::TElement element_;
};

constexpr std::string_view changesId = "changes";
constexpr std::string_view changesTitle = "Changes";

class TReportWriter final : public IInventoryFormat {
  public:
    TReportWriter(std::ostream& out, EReportSources sources) : html_(out), sources_(sources) {}

    void BeginSource(const std::string& name) override {
        // The sections of the first machine have short ids, for links to them.
        const std::size_t number = inventories_.size() + 1;
        inventories_.emplace_back(name, number == 1 || sources_ == EReportSources::compared
                                            ? ""
                                            : "machine-" + std::to_string(number) + "-");
    }
    void BeginDocument(const TDocumentHead& head) override { inventories_.back().AddDocument(head); }
    void BeginList(std::string_view listType, int /*line*/) override {
        inventories_.back().AddList(listType);
    }
    void AddResource(TResource&& resource) override { inventories_.back().AddResource(std::move(resource)); }
    void Finish() override {
        for (TReportInventory& inventory : inventories_) {
            inventory.Link();
        }
        if (sources_ == EReportSources::compared && inventories_.size() > 1) {
            before_ = &inventories_.front();
        }
        WritePage(html_, GetTitle(), [this] { WriteMachines(); });
    }

  private:
    bool IsShown(const TReportInventory& inventory) const {
        return before_ == nullptr || &inventory == &inventories_.back();
    }

    std::string GetTitle() const {
        std::string names;
        for (const TReportInventory& inventory : inventories_) {
            if (IsShown(inventory)) {
                names += (names.empty() ? "" : ", ") + GetMachineName(inventory);
            }
        }
        return names + ": hardware inventory";
    }

    void WriteMachines() {
        for (const TReportInventory& inventory : inventories_) {
            if (IsShown(inventory)) {
                WriteMachine(inventory);
            }
        }
    }

    void WriteMachine(const TReportInventory& inventory) {
        const auto article = html_.Element("article");
        WriteHead(html_, inventory);
        WriteNotes(html_, inventory);
        WriteContents(inventory);
        if (before_ != nullptr) {
            const TSection section(html_, inventory.GetIdPrefix() + std::string(changesId), changesTitle);
            WriteChanges(html_, Compare(before_->GetInventory(), inventory.GetInventory(), {}),
                         before_->GetInventory());
        }
        for (const TSectionRow& row : sections) {
            if (!row.isShown(inventory)) {
                continue;
            }
            const TSection section(html_, inventory.GetIdPrefix() + std::string(row.id), row.title);
            row.write(html_, inventory);
        }
    }

    void WriteContents(const TReportInventory& inventory) {
        const auto contents = html_.Element(
            "nav", {{"class", "contents"}, {"aria-label", "Contents: " + GetMachineName(inventory)}});
        const auto list = html_.Element("ul");
        if (before_ != nullptr) {
            WriteContentsLine(inventory, changesId, changesTitle);
        }
        for (const TSectionRow& row : sections) {
            if (row.isShown(inventory)) {
                WriteContentsLine(inventory, row.id, row.title);
            }
        }
    }

    void WriteContentsLine(const TReportInventory& inventory, std::string_view id, std::string_view title) {
        const auto item = html_.Element("li");
        const auto link = html_.Link(inventory.GetIdPrefix() + std::string(id));
        html_.Text(title);
    }

    THtmlWriter html_;
    EReportSources sources_;
    std::deque<TReportInventory> inventories_;
    const TReportInventory* before_ = nullptr;  // null if nothing is compared
};

}  // namespace

std::unique_ptr<IInventoryFormat> MakeReportWriter(std::ostream& out, EReportSources sources) {
    return std::make_unique<TReportWriter>(out, sources);
}

}  // namespace NINVENTORY
