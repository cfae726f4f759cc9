#include "inventory/write/part_words.h"

#include "inventory/compare/part.h"
#include "inventory/model/resource_type.h"
#include "inventory/model/shown_value.h"
#include "inventory/write/shown_columns.h"
#include "text/ascii.h"
#include "text/find_row.h"
#include "text/shown_text.h"

#include <algorithm>
#include <vector>

namespace NINVENTORY {
namespace {

using NVORHOST::IsDigit;
using NVORHOST::IsLower;
using NVORHOST::IsUpper;
using NVORHOST::MakeVisible;
using NVORHOST::ToLower;

// The properties by which people recognise a part of a type, beside its place.
struct TPartWords {
    std::string_view type;
    std::string_view name;
    std::string_view size;
    std::string_view placeWord;  // between the part and its place
};

// clang-format off
constexpr TPartWords partWords[] = {
    {"",               "Name", "",              "at"},
    {"Card",           "Name", "",              ""},
    {"Chassis",        "Name", "",              ""},
    {"DiskDrive",      "Name", "MaxMediaSize",  "at"},
    {"DiskPartition",  "Name", "PartitionSize", ""},
    {"OperatingSystem", "Name", "",             ""},
    {"PhysicalMemory", "",     "Capacity",      "in"},
    {"Processor",      "Name", "",              "in"},
    {"Slot",           "Tag",  "",              ""},
};
// clang-format on

const TPartWords& GetPartWords(std::string_view type) {
    const auto* const row = NVORHOST::FindRow(partWords, &TPartWords::type, type);
    return row == nullptr ? partWords[0] : *row;
}

std::string Show(const TResource& resource, std::string_view property) {
    const TProperty* const found = property.empty() ? nullptr : resource.Find(property);
    return found == nullptr ? std::string() : MakeVisible(ShowValue(resource.type, *found));
}

void AddWord(std::string& words, const std::string& word) {
    if (!word.empty()) {
        words += " " + word;
    }
}

// A capital letter begins a word, unless it is within an abbreviation: "DeviceID", "MACAddress".
bool BeginsWord(std::string_view name, std::size_t i) {
    if (i == 0 || !IsUpper(name[i])) {
        return false;
    }
    const bool isNextLower = i + 1 < name.size() && IsLower(name[i + 1]);
    return IsLower(name[i - 1]) || IsDigit(name[i - 1]) || (IsUpper(name[i - 1]) && isNextLower);
}

std::string SplitWords(std::string_view name) {
    std::string words;
    std::vector<std::string> parts(1);
    for (std::size_t i = 0; i < name.size(); ++i) {
        if (BeginsWord(name, i)) {
            parts.emplace_back();
        }
        parts.back() += name[i];
    }
    for (std::string& part : parts) {
        const bool isAbbreviation = part.size() > 1 && IsUpper(part[1]);
        part.front() = isAbbreviation ? part.front() : ToLower(part.front());
        words += (words.empty() ? "" : " ") + part;
    }
    return words;
}

std::string DescribeKind(const TResource& resource, std::size_t count) {
    const TPartWords& words = GetPartWords(resource.type);
    std::string text = NameType(resource.type, count);
    const std::string name = Show(resource, words.name);
    if (NVORHOST::ToLowerCase(name).starts_with(NVORHOST::ToLowerCase(text))) {
        text = name;  // "PCI bridge 8086:6f04" needs no other "PCI bridge"
    } else {
        AddWord(text, name);
    }
    AddWord(text, Show(resource, words.size));
    return text;
}

bool IsNothingIgnored(std::string_view /*name*/) {
    return false;
}

}  // namespace

std::string DescribePart(const TResource& resource) {
    const TResource* const part = &resource;
    return DescribeParts({&part, 1});
}

std::string DescribeParts(std::span<const TResource* const> resources) {
    const TResource& first = *resources.front();
    const std::string_view word = GetPartWords(first.type).placeWord;
    std::string places;
    for (const TResource* resource : resources) {
        const std::string place = word.empty() ? std::string() : DescribePlace(*resource);
        places += place.empty() ? "" : (places.empty() ? " " + std::string(word) + " " : ", ") + place;
    }
    const std::string count = resources.size() == 1 ? "" : std::to_string(resources.size()) + " ";
    return count + DescribeKind(first, resources.size()) + places;
}

std::string DescribePartWithoutPlace(const TResource& resource) {
    return DescribeKind(resource, 1);
}

std::string DescribePlace(const TResource& resource) {
    const auto facts = GetFacts(resource, GetPartType(resource.type).places, IsNothingIgnored);
    if (facts.empty()) {
        return {};
    }
    // The name of an entry is in words; those of properties add nothing to their values.
    const bool isProperty = resource.Find(facts.front().name) != nullptr;
    return (isProperty ? "" : LabelEntry(facts.front().name) + " ") + MakeVisible(facts.front().value);
}

std::string LabelEntry(std::string_view name) {
    std::string label = MakeVisible(std::string(name));
    if (label.size() > 1 && !IsUpper(label[1])) {
        label.front() = ToLower(label.front());
    }
    return label;
}

std::string NameType(std::string_view type, std::size_t count) {
    const TResourceType* const row = FindResourceType(type);
    return row == nullptr ? MakeVisible(type) : std::string(count == 1 ? row->singular : row->plural);
}

std::string LabelProperty(std::string_view type, std::string_view property) {
    const TShownColumns& columns = GetShownColumns(type);
    const auto column = std::ranges::find(columns.columns, property, &TShownColumn::property);
    if (column != columns.columns.end()) {
        return std::string(column->title);
    }
    return property.empty() ? std::string() : MakeVisible(SplitWords(property));
}

}  // namespace NINVENTORY
