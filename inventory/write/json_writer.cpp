#include "inventory/write/json_writer.h"

#include "inventory/model/meaning.h"
#include "text/numbers.h"
#include "text/utf8.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <set>
#include <string>
#include <string_view>

namespace NINVENTORY {
namespace {

using NVORHOST::ParseNumber;
using TWriter = rapidjson::Writer<rapidjson::StringBuffer>;

void Write(TWriter& json, std::string_view text) {
    if (const auto wellFormed = NVORHOST::ReplaceMalformedUtf8(text)) {
        json.String(wellFormed->data(), static_cast<rapidjson::SizeType>(wellFormed->size()));
    } else {
        json.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
    }
}

void WriteName(TWriter& json, std::string_view name) {
    Write(json, name);
}

bool IsNumber(std::string_view type) {
    constexpr std::string_view types[] = {"unsignedByte", "unsignedShort", "unsignedInt", "unsignedLong",
                                          "int",          "short",         "long"};
    return std::ranges::find(types, type) != std::end(types);
}

// Writes a text as a number if it is one; 64-bit integers stay exact.
bool WriteNumber(TWriter& json, std::string_view text) {
    if (const auto natural = ParseNumber<std::uint64_t>(text)) {
        return json.Uint64(*natural);
    }
    const auto integer = ParseNumber<std::int64_t>(text);
    return integer && json.Int64(*integer);
}

bool WriteReal(TWriter& json, std::string_view text) {
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() && std::isfinite(number) &&
           json.Double(number);
}

bool WriteBoolean(TWriter& json, std::string_view text) {
    return (text == "true" || text == "false") && json.Bool(text == "true");
}

void WriteTyped(TWriter& json, std::string_view type, std::string_view text) {
    const bool isWritten = IsNumber(type)      ? WriteNumber(json, text)
                           : type == "float"   ? WriteReal(json, text)
                           : type == "boolean" ? WriteBoolean(json, text)
                                               : false;
    if (!isWritten) {
        Write(json, text);
    }
}

void WriteValue(TWriter& json, const TProperty& property) {
    WriteName(json, "value");
    if (property.shape == EShape::null) {
        json.Null();
    } else if (property.shape == EShape::scalar) {
        WriteTyped(json, property.type, property.values.front());
    } else {
        json.StartArray();
        for (const std::string& value : property.values) {
            WriteTyped(json, property.type, value);
        }
        json.EndArray();
    }
}

void WriteWord(TWriter& json, const TMeaning& meaning, const std::string& value) {
    const auto code = ParseNumber<std::uint64_t>(value);
    const auto word = code ? FindWord(meaning.words, *code) : std::nullopt;
    if (word) {
        Write(json, *word);
    } else {
        json.Null();
    }
}

void WriteWords(TWriter& json, const TMeaning& meaning, const TProperty& property) {
    if (meaning.words.empty() || property.shape == EShape::null) {
        return;
    }
    if (property.shape == EShape::scalar) {
        WriteName(json, "word");
        return WriteWord(json, meaning, property.values.front());
    }
    WriteName(json, "words");
    json.StartArray();
    for (const std::string& value : property.values) {
        WriteWord(json, meaning, value);
    }
    json.EndArray();
}

void WriteProperties(TWriter& json, const TResource& resource) {
    std::set<std::string_view> names;
    for (const TProperty& property : resource.properties) {
        if (!names.insert(property.name).second) {
            continue;  // a name may occur only once in JSON
        }
        WriteName(json, property.name);
        json.StartObject();
        WriteValue(json, property);
        if (const TMeaning* const meaning = FindMeaning(resource.type, property.name)) {
            const std::string_view unit = GetSymbol(meaning->unit);
            if (!unit.empty() && property.shape != EShape::null) {
                WriteName(json, "unit");
                Write(json, unit);
            }
            WriteWords(json, *meaning, property);
        }
        json.EndObject();
    }
}

void WriteResource(TWriter& json, const TResource& resource) {
    WriteName(json, "resourceId");
    Write(json, resource.id);
    WriteName(json, "resourceType");
    Write(json, resource.type);
    if (!resource.name.empty()) {
        WriteName(json, "resourceName");
        Write(json, resource.name);
    }
    WriteName(json, "properties");
    json.StartObject();
    WriteProperties(json, resource);
    json.EndObject();
}

constexpr std::string_view KindOf(EDocument kind) {
    switch (kind) {
        case EDocument::hardware:
            return "hardware";
        case EDocument::systemInformation:
            return "systemInformation";
        case EDocument::collection:
            break;
    }
    return "namespace";
}

// Builds one object at a time, so that memory is needed for one resource only.
class TJsonObjects {
  public:
    /// Returns the object with the members that `writeMembers` writes; valid until the next call.
    template <typename TWriteMembers>
    std::string_view Make(const TWriteMembers& writeMembers) {
        buffer_.Clear();
        TWriter json(buffer_);
        json.StartObject();
        writeMembers(json);
        json.EndObject();
        return {buffer_.GetString(), buffer_.GetSize()};
    }

  private:
    rapidjson::StringBuffer buffer_;
};

void WriteHead(TWriter& json, const std::string& source, const TDocumentHead& head) {
    WriteName(json, "source");
    Write(json, source);
    WriteName(json, "kind");
    Write(json, KindOf(head.kind));
    if (!head.timestamp.empty()) {
        WriteName(json, "timestamp");
        Write(json, head.timestamp);
    }
}

class TJsonWriter final : public IInventoryFormat {
  public:
    explicit TJsonWriter(std::ostream& out) : out_(out) { out_ << "{\"documents\":["; }

    void BeginSource(const std::string& name) override { source_ = name; }
    void BeginDocument(const TDocumentHead& head) override {
        EndDocument();
        std::string_view object = objects_.Make([&](TWriter& json) { WriteHead(json, source_, head); });
        object.remove_suffix(1);  // the list of resources is its last member
        out_ << (isFirst_ ? "\n" : ",\n") << object << ",\"resources\":[";
        isFirst_ = false;
        isOpen_ = true;
        separator_ = "\n";
    }
    void BeginList(std::string_view /*listType*/, int /*line*/) override {}
    void AddResource(TResource&& resource) override {
        out_ << separator_ << objects_.Make([&](TWriter& json) { WriteResource(json, resource); });
        separator_ = ",\n";
    }
    void Finish() override {
        EndDocument();
        out_ << "\n]}\n";
    }

  private:
    void EndDocument() {
        out_ << (isOpen_ ? "\n]}" : "");
        isOpen_ = false;
    }

    std::ostream& out_;
    TJsonObjects objects_;
    std::string source_;
    std::string_view separator_;
    bool isFirst_ = true;
    bool isOpen_ = false;
};

class TNdjsonWriter final : public IInventoryFormat {
  public:
    explicit TNdjsonWriter(std::ostream& out) : out_(out) {}

    void BeginSource(const std::string& name) override { source_ = name; }
    void BeginDocument(const TDocumentHead& head) override { head_ = head; }
    void BeginList(std::string_view /*listType*/, int /*line*/) override {}
    void AddResource(TResource&& resource) override {
        out_ << objects_.Make([&](TWriter& json) {
            WriteHead(json, source_, head_);
            WriteResource(json, resource);
        }) << '\n';
    }
    void Finish() override {}

  private:
    std::ostream& out_;
    TJsonObjects objects_;
    std::string source_;
    TDocumentHead head_;
};

}  // namespace

std::unique_ptr<IInventoryFormat> MakeJsonWriter(std::ostream& out) {
    return std::make_unique<TJsonWriter>(out);
}

std::unique_ptr<IInventoryFormat> MakeNdjsonWriter(std::ostream& out) {
    return std::make_unique<TNdjsonWriter>(out);
}

}  // namespace NINVENTORY
