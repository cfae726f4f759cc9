#include "vorhost/cimxml/mapping_string.h"

#include <algorithm>

namespace NVORHOST {
namespace {

struct TForm {
    std::string_view format;
    std::string_view sourceStart;  // first characters of the source, which the mapping string lacks
    std::string_view firstStart;   // first characters of the first part
    std::string_view separator;    // between the parts of the source; empty if it has one part
};

// The first row that matches counts.
constexpr TForm forms[] = {
    {"SMBIOS.DMTF", "type ", "Type ", ", "},
    {"Call.Linux", "call ", "", " "},
    {"Property.CIM", "property ", "", ""},
    {"File.Linux", "", "/", " "},
    {"Text.Noxinfo", "", "", ""},
};

bool IsFormOf(const TForm& form, std::string_view source) {
    return source.starts_with(form.sourceStart) &&
           (form.format != "File.Linux" || source.starts_with(form.firstStart));
}

std::string_view GetAdded(const TForm& form) {
    return form.sourceStart.empty() ? std::string_view() : form.firstStart;
}

}  // namespace

std::string MakeMappingString(std::string_view source) {
    const TForm& form =
        *std::ranges::find_if(forms, [source](const TForm& row) { return IsFormOf(row, source); });
    source.remove_prefix(form.sourceStart.size());
    std::string parts(source);
    const auto end = form.separator.empty() ? std::string::npos : parts.find(form.separator);
    if (end != std::string::npos) {
        parts.replace(end, form.separator.size(), "|");
    }
    return std::string(form.format) + "|" + std::string(GetAdded(form)) + parts;
}

std::string ParseMappingString(std::string_view mapping) {
    const auto bar = mapping.find('|');
    const auto* const form = std::ranges::find(forms, mapping.substr(0, bar), &TForm::format);
    if (form == std::end(forms) || bar == std::string_view::npos ||
        !mapping.substr(bar + 1).starts_with(GetAdded(*form))) {
        return std::string(mapping);
    }
    std::string parts(mapping.substr(bar + 1 + GetAdded(*form).size()));
    const auto end = form->separator.empty() ? std::string::npos : parts.find('|');
    if (end != std::string::npos) {
        parts.replace(end, 1, form->separator);
    }
    return std::string(form->sourceStart) + parts;
}

}  // namespace NVORHOST
