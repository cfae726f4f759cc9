#include "inventory/write/json_values.h"

#include "inventory/model/meaning.h"
#include "text/numbers.h"
#include "text/utf8.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <memory_resource>
#include <set>
#include <string>

namespace NINVENTORY {
namespace {

using NVORHOST::ParseNumber;

bool IsNumber(std::string_view type) {
    constexpr std::string_view types[] = {"unsignedByte", "unsignedShort", "unsignedInt", "unsignedLong",
                                          "int",          "short",         "long"};
    return std::ranges::find(types, type) != std::end(types);
}

// Writes a text as a number if it is one; 64-bit integers stay exact.
bool WriteNumber(TJsonOutput& json, std::string_view text) {
    if (const auto natural = ParseNumber<std::uint64_t>(text)) {
        return json.Uint64(*natural);
    }
    const auto integer = ParseNumber<std::int64_t>(text);
    return integer && json.Int64(*integer);
}

bool WriteReal(TJsonOutput& json, std::string_view text) {
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() && std::isfinite(number) &&
           json.Double(number);
}

bool WriteBoolean(TJsonOutput& json, std::string_view text) {
    return (text == "true" || text == "false") && json.Bool(text == "true");
}

void WriteTyped(TJsonOutput& json, std::string_view type, std::string_view text) {
    const bool isWritten = IsNumber(type)      ? WriteNumber(json, text)
                           : type == "float"   ? WriteReal(json, text)
                           : type == "boolean" ? WriteBoolean(json, text)
                                               : false;
    if (!isWritten) {
        WriteJsonText(json, text);
    }
}

void WriteValue(TJsonOutput& json, const TProperty& property) {
    WriteJsonText(json, "value");
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

void WriteWord(TJsonOutput& json, const TMeaning& meaning, const std::string& value) {
    if (const auto word = FindWordOf(meaning, value)) {
        WriteJsonText(json, *word);
    } else {
        json.Null();
    }
}

void WriteWords(TJsonOutput& json, const TMeaning& meaning, const TProperty& property) {
    if (meaning.words.empty() || property.shape == EShape::null) {
        return;
    }
    if (property.shape == EShape::scalar) {
        WriteJsonText(json, "word");
        return WriteWord(json, meaning, property.values.front());
    }
    WriteJsonText(json, "words");
    json.StartArray();
    for (const std::string& value : property.values) {
        WriteWord(json, meaning, value);
    }
    json.EndArray();
}

void WriteTexts(TJsonOutput& json, std::string_view name, const std::vector<std::string>& texts) {
    WriteJsonText(json, name);
    json.StartArray();
    for (const std::string& text : texts) {
        WriteJsonText(json, text);
    }
    json.EndArray();
}

void WriteSource(TJsonOutput& json, const NVORHOST::TValueSource& source) {
    WriteJsonText(json, "status");
    WriteJsonText(json, NVORHOST::NameValueStatus(source.status));
    if (!source.passedOver.empty()) {
        WriteJsonText(json, "passedOver");
        WriteJsonText(json, source.passedOver);
    }
    WriteTexts(json, "sources", source.sources);
    if (!source.gaps.empty()) {
        WriteTexts(json, "gaps", source.gaps);
    }
}

}  // namespace

void WriteJsonText(TJsonOutput& json, std::string_view text) {
    if (const auto wellFormed = NVORHOST::ReplaceMalformedUtf8(text)) {
        json.String(wellFormed->data(), static_cast<rapidjson::SizeType>(wellFormed->size()));
    } else {
        json.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
    }
}

void WriteJsonValue(TJsonOutput& json, std::string_view resourceType, const TProperty& property) {
    WriteValue(json, property);
    const TMeaning* const meaning = FindMeaning(resourceType, property.name);
    if (meaning == nullptr) {
        return;
    }
    const std::string_view unit = GetSymbol(meaning->unit);
    if (!unit.empty() && property.shape != EShape::null) {
        WriteJsonText(json, "unit");
        WriteJsonText(json, unit);
    }
    WriteWords(json, *meaning, property);
}

void WriteJsonProperties(TJsonOutput& json, const TResource& resource) {
    constexpr std::size_t namesBytes = 4096;  // for the names of most resources without an allocation
    WriteJsonText(json, "properties");
    json.StartObject();
    std::array<std::byte, namesBytes> buffer;
    std::pmr::monotonic_buffer_resource memory(buffer.data(), buffer.size());
    std::pmr::set<std::string_view> names(&memory);
    for (const TProperty& property : resource.properties) {
        if (names.insert(property.name).second) {  // a name may occur only once in JSON
            WriteJsonText(json, property.name);
            json.StartObject();
            WriteJsonValue(json, resource.type, property);
            if (const auto* const source = resource.FindSource(property.name)) {
                WriteSource(json, *source);
            }
            json.EndObject();
        }
    }
    for (const auto& [name, source] : resource.sources) {
        if (names.insert(name).second) {
            WriteJsonText(json, name);
            json.StartObject();
            WriteJsonText(json, "value");
            json.Null();
            WriteSource(json, source);
            json.EndObject();
        }
    }
    json.EndObject();
}

std::string_view NameJsonKind(EDocument kind) {
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

}  // namespace NINVENTORY
