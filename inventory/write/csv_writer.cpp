#include "inventory/write/csv_writer.h"

#include "inventory/model/meaning.h"
#include "inventory/write/csv_field.h"

#include <optional>
#include <string>
#include <string_view>

namespace NINVENTORY {
namespace {

using TField = std::optional<std::string_view>;

TField NonEmpty(std::string_view text) {
    return text.empty() ? std::nullopt : TField(text);
}

class TCsvWriter final : public IInventoryFormat {
  public:
    explicit TCsvWriter(std::ostream& out) : out_(out) {
        for (const char* const title :
             {"source", "timestamp", "resourceType", "resourceId", "property", "index", "value", "unit"}) {
            Write(title);
        }
        WriteLast("word");
    }

    void BeginSource(const std::string& name) override { source_ = name; }
    void BeginDocument(const TDocumentHead& head) override { timestamp_ = head.timestamp; }
    void BeginList(std::string_view /*listType*/, int /*line*/) override {}
    void AddResource(TResource&& resource) override {
        for (const TProperty& property : resource.properties) {
            AddProperty(resource, property);
        }
    }
    void Finish() override {}

  private:
    void AddProperty(const TResource& resource, const TProperty& property) {
        if (property.shape == EShape::null) {
            return AddRow(resource, property, {}, {});
        }
        for (std::size_t i = 0; i < property.values.size(); ++i) {
            const bool isElement = property.shape == EShape::array;
            AddRow(resource, property, isElement ? std::to_string(i) : std::string(), property.values[i]);
        }
    }

    void AddRow(const TResource& resource, const TProperty& property, const std::string& index,
                TField value) {
        const TMeaning* const meaning = FindMeaning(resource.type, property.name);
        const bool isExplained = meaning != nullptr && value;
        Write(source_);
        Write(NonEmpty(timestamp_));
        Write(resource.type);
        Write(resource.id);
        Write(property.name);
        Write(NonEmpty(index));
        Write(value);
        Write(isExplained ? NonEmpty(GetSymbol(meaning->unit)) : std::nullopt);
        WriteLast(isExplained ? FindWordOf(*meaning, *value) : std::nullopt);
    }

    void WriteField(TField field) {
        if (field) {
            out_ << QuoteCsv(*field);
        }
    }
    void Write(TField field) {
        WriteField(field);
        out_ << ',';
    }
    void WriteLast(TField field) {
        WriteField(field);
        out_ << "\r\n";
    }

    std::ostream& out_;
    std::string source_;
    std::string timestamp_;
};

}  // namespace

std::unique_ptr<IInventoryFormat> MakeCsvWriter(std::ostream& out) {
    return std::make_unique<TCsvWriter>(out);
}

}  // namespace NINVENTORY
