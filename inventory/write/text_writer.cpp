#include "inventory/write/text_writer.h"

#include "inventory/model/resource_type.h"
#include "inventory/model/shown_value.h"
#include "inventory/write/shown_columns.h"
#include "text/shown_text.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace NINVENTORY {
namespace {

using NVORHOST::MakeVisible;

constexpr std::size_t maxRows = 1000;
constexpr std::size_t labelWidth = 13;

std::string Show(const TResource& resource, std::string_view property) {
    const TProperty* const found = resource.Find(property);
    return found == nullptr ? std::string() : MakeVisible(ShowValue(resource.type, *found));
}

std::string Capitalize(std::string_view text) {
    std::string capitalized(text);
    if (!capitalized.empty() && capitalized.front() >= 'a' && capitalized.front() <= 'z') {
        capitalized.front() = static_cast<char>(capitalized.front() - 'a' + 'A');
    }
    return capitalized;
}

// Joins what is known of several properties.
std::string Join(const TResource& resource, std::initializer_list<std::string_view> properties) {
    std::string joined;
    for (const std::string_view property : properties) {
        const std::string text = Show(resource, property);
        // A model often begins with the maker, and machine type and model are often the same.
        if (!text.empty() && joined.find(text) == std::string::npos) {
            joined += (joined.empty() ? "" : " ") + text;
        }
    }
    return joined;
}

class TTextWriter final : public IInventoryFormat {
  public:
    TTextWriter(std::ostream& out, TTextSettings settings) : out_(out), settings_(settings) {}

    void BeginSource(const std::string& name) override { source_ = name; }
    void BeginDocument(const TDocumentHead& head) override {
        EndTable();
        if (hasDocument_) {
            out_ << '\n';
        }
        hasDocument_ = true;
        timestamp_ = head.timestamp;
    }
    void BeginList(std::string_view /*listType*/, int /*line*/) override {}
    void AddResource(TResource&& resource) override {
        if (settings_.isLong) {
            return WriteLong(resource);
        }
        if (resource.type == "Server") {
            return WriteServer(resource);
        }
        if (resource.type == "OperatingSystem") {
            return WriteOperatingSystem(resource);
        }
        if (resource.type == "NOXSystemInfo") {
            return WriteSystemInformation(resource);
        }
        AddToTable(resource);
    }
    void Finish() override { EndTable(); }

  private:
    void WriteRow(std::string_view label, const std::string& text) {
        if (!text.empty()) {
            out_ << label << std::string(labelWidth - label.size(), ' ') << text << '\n';
        }
    }

    void WriteServer(const TResource& server) {
        WriteRow("machine", Show(server, "ElementName"));  // documents have only the name of the system
        WriteRow("model", Join(server, {"Manufacturer", "MachineType", "Model"}));
        WriteRow("kind", Show(server, "Description"));
        WriteRow("serial", Show(server, "SerialNumber"));
        WriteRow("uuid", Show(server, "SystemBoardUUID"));
        WriteRow("collected", timestamp_.empty() ? "" : MakeVisible(timestamp_));
        WriteRow("source", MakeVisible(source_));
    }

    void WriteOperatingSystem(const TResource& system) {
        WriteRow("system", Show(system, "Name"));
        WriteRow("kernel", Show(system, "Description"));
        WriteRow("memory", Show(system, "TotalVisibleMemorySize"));
    }

    void WriteSystemInformation(const TResource& information) {
        WriteRow("host", Show(information, "HostName"));
        WriteRow("model", Join(information, {"Manufacturer", "MachineType", "Model"}));
        WriteRow("serial", Show(information, "SerialNumber"));
        WriteRow("system", Join(information, {"OSName", "OSVersion"}));
        WriteRow("collected", MakeVisible(timestamp_));
        WriteRow("source", MakeVisible(source_));
    }

    void WriteLong(const TResource& resource) {
        out_ << (isFirstLong_ ? "" : "\n") << MakeVisible(resource.type) << ' ' << MakeVisible(resource.id)
             << '\n';
        isFirstLong_ = false;
        std::size_t width = 0;
        for (const TProperty& property : resource.properties) {
            width = std::max(width, CountColumns(MakeVisible(property.name)));
        }
        for (const TProperty& property : resource.properties) {
            const std::string name = MakeVisible(property.name);
            out_ << "  " << name << std::string(width - CountColumns(name) + 2, ' ')
                 << MakeVisible(ShowValue(resource.type, property)) << '\n';
        }
    }

    void AddToTable(const TResource& resource) {
        if (resource.type != type_) {
            EndTable();
            type_ = resource.type;
        }
        const TShownColumns& columns = GetShownColumns(resource.type);
        if (!columns.IsShown()) {
            return;
        }
        if (IsEmptyPlace(columns, resource)) {
            ++emptyPlaces_;
            return;
        }
        if (!table_) {
            table_.emplace(columns.GetTitles(), settings_.layout);
        }
        std::vector<std::string> cells;
        for (const TShownColumn& column : columns.columns) {
            cells.push_back(Show(resource, column.property));
        }
        table_->AddRow(std::move(cells));
        if (table_->GetRowCount() == maxRows) {
            WriteTable();
        }
    }

    void WriteTable() {
        table_->Write(out_);
        table_.reset();
        isTitled_ = true;
    }

    void WriteTitle(std::size_t rows) {
        if (isTitled_) {
            return;
        }
        const TResourceType* const type = FindResourceType(type_);
        out_ << '\n'
             << (type == nullptr ? MakeVisible(type_) : Capitalize(rows == 1 ? type->singular : type->plural))
             << '\n';
        isTitled_ = true;
    }

    void EndTable() {
        if (table_ || emptyPlaces_ > 0) {
            WriteTitle((table_ ? table_->GetRowCount() : 0) + emptyPlaces_);
        }
        if (table_) {
            WriteTable();
        }
        if (emptyPlaces_ > 0) {
            out_ << emptyPlaces_ << " empty\n";
        }
        emptyPlaces_ = 0;
        isTitled_ = false;
        type_.clear();
    }

    std::ostream& out_;
    TTextSettings settings_;
    std::string source_;
    std::string timestamp_;
    bool hasDocument_ = false;
    bool isFirstLong_ = true;
    std::string type_;  // type of the resources in the open table
    std::optional<TTextTable> table_;
    bool isTitled_ = false;
    std::size_t emptyPlaces_ = 0;
};

}  // namespace

std::unique_ptr<IInventoryFormat> MakeTextWriter(std::ostream& out, TTextSettings settings) {
    return std::make_unique<TTextWriter>(out, settings);
}

}  // namespace NINVENTORY
