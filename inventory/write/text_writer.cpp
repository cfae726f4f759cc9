#include "inventory/write/text_writer.h"

#include "inventory/compare/part.h"
#include "inventory/model/resource_type.h"
#include "inventory/model/shown_value.h"
#include "inventory/write/part_words.h"
#include "inventory/write/shown_columns.h"
#include "inventory/write/source_lines.h"
#include "inventory/write/text_table.h"
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

std::vector<TTextColumn> DescribeColumns(const TShownColumns& columns) {
    std::vector<TTextColumn> described;
    for (const TShownColumn& column : columns.columns) {
        described.emplace_back(std::string(column.title), column.worth == EWorth::minor,
                               column.worth == EWorth::minorBesideSerial ? "serial number" : "");
    }
    return described;
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
        if (settings_.isLong || settings_.hasSources) {
            return WriteLong(resource);
        }
        if (resource.type == "Server") {
            return WriteServer(resource);
        }
        if (resource.type == "OperatingSystem") {
            return WriteOperatingSystem(resource);
        }
        if (resource.type == "ComputerSystem") {
            return WriteSystemKind(resource);
        }
        if (resource.type == "NOXSystemInfo") {
            return WriteSystemInformation(resource);
        }
        AddToTable(resource);
    }
    void NoteUnknownType(std::string_view type, const NVORHOST::TValueSource& source) override {
        out_ << (isFirstLong_ ? "" : "\n") << MakeVisible(std::string(type)) << ' ' << DescribeMissing(source)
             << '\n';
        isFirstLong_ = false;
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

    // The name is that of the machine, which has been written. Names of hypervisors and containers are in the
    // description.
    void WriteSystemKind(const TResource& kind) {
        std::string text = Show(kind, "Description");
        for (const std::string_view entry : {"Cloud", "Instance type", "Instance ID"}) {
            if (const std::string value = MakeVisible(GetFact(kind, entry)); !value.empty()) {
                text += (text.empty() ? "" : ", ") + LabelEntry(entry) + " " + value;
            }
        }
        WriteRow("platform", text);
    }

    void WriteSystemInformation(const TResource& information) {
        WriteRow("host", Show(information, "HostName"));
        WriteRow("model", Join(information, {"Manufacturer", "MachineType", "Model"}));
        WriteRow("serial", Show(information, "SerialNumber"));
        WriteRow("system", Join(information, {"OSName", "OSVersion"}));
        WriteRow("collected", MakeVisible(timestamp_));
        WriteRow("source", MakeVisible(source_));
    }

    // Joins each entry with its name: "Serial number S7M0, SAS bay 2".
    static std::string ShowLong(const TResource& resource, const TProperty& property) {
        const std::vector<std::string_view> names = ListEntries(resource);
        if (property.name != "OtherIdentifyingInfo" || names.size() != property.values.size()) {
            return ShowValue(resource.type, property);
        }
        std::string joined;
        for (std::size_t i = 0; i < names.size(); ++i) {
            joined.append(i == 0 ? "" : ", ").append(names[i]).append(" ").append(property.values[i]);
        }
        return joined;
    }

    void WriteLong(const TResource& resource) {
        out_ << (isFirstLong_ ? "" : "\n") << MakeVisible(resource.type) << ' ' << MakeVisible(resource.id)
             << '\n';
        isFirstLong_ = false;
        if (settings_.hasSources) {
            return WriteSourceLines(resource, {.hasAbsent = false, .show = &ShowLong}, out_);
        }
        std::size_t width = 0;
        for (const TProperty& property : resource.properties) {
            width = std::max(width, CountColumns(MakeVisible(property.name)));
        }
        for (const TProperty& property : resource.properties) {
            const std::string name = MakeVisible(property.name);
            out_ << "  " << name << std::string(width - CountColumns(name) + 2, ' ')
                 << MakeVisible(ShowLong(resource, property)) << '\n';
        }
    }

    void AddToTable(const TResource& resource) {
        if (resource.type != type_) {
            EndTable();
            type_ = resource.type;
        }
        const TShownColumns& columns = GetShownColumns(resource.type);
        if (!IsShownInTables(columns, resource)) {
            return;
        }
        if (IsEmptyPlace(columns, resource)) {
            ++emptyPlaces_;
            if (columns.countsFilled && emptyPlaces_ <= maxRows) {
                emptyNames_.push_back(MakeVisible(ShowColumn(resource, columns.columns.front())));
            }
        } else if (columns.countsFilled) {
            ++filledPlaces_;
        } else {
            AddRow(columns, resource);
        }
    }

    void AddRow(const TShownColumns& columns, const TResource& resource) {
        if (!table_) {
            table_.emplace(DescribeColumns(columns), settings_.layout);
        }
        std::vector<std::string> cells;
        for (const TShownColumn& column : columns.columns) {
            cells.push_back(MakeVisible(ShowColumn(resource, column)));
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

    // Continues on another line before the width is passed.
    void WriteNames(const std::vector<std::string>& names, std::size_t used) {
        for (std::size_t i = 0; i < names.size(); ++i) {
            const std::string separator = i == 0 ? ": " : ", ";
            const std::size_t width = CountColumns(names[i]) + 3;  // with the separators on both sides
            const bool fits = settings_.layout.width == 0 || used + width <= settings_.layout.width;
            out_ << (fits ? separator : separator.substr(0, 1) + "\n  ") << names[i];
            used = (fits ? used : 2) + width;
        }
    }

    void WritePlaces() {
        if (filledPlaces_ > 0) {
            out_ << filledPlaces_ << " filled\n";
        }
        if (emptyPlaces_ > 0) {
            const std::string count = std::to_string(emptyPlaces_) + " empty";
            out_ << count;
            WriteNames(emptyNames_, count.size());
            out_ << '\n';
        }
        filledPlaces_ = 0;
        emptyPlaces_ = 0;
        emptyNames_.clear();
    }

    void EndTable() {
        const std::size_t places = filledPlaces_ + emptyPlaces_;
        if (table_ || places > 0) {
            WriteTitle((table_ ? table_->GetRowCount() : 0) + places);
        }
        if (table_) {
            WriteTable();
        }
        WritePlaces();
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
    std::size_t filledPlaces_ = 0, emptyPlaces_ = 0;
    std::vector<std::string> emptyNames_;
};

}  // namespace

std::unique_ptr<IInventoryFormat> MakeTextWriter(std::ostream& out, TTextSettings settings) {
    return std::make_unique<TTextWriter>(out, settings);
}

}  // namespace NINVENTORY
