#include "writer/catalogue/xml_schema_type.h"

#include <algorithm>
#include <iterator>

namespace {

struct TTypeRow {
    std::string_view cimType;
    std::string_view xmlType;
};

// sint8 becomes "int" although "byte" would do: readers of the documents expect it.
constexpr TTypeRow typeRows[] = {
    {"uint32", "unsignedInt"},  {"sint32", "int"},   {"uint8", "unsignedByte"},   {"sint8", "int"},
    {"uint64", "unsignedLong"}, {"sint64", "long"},  {"uint16", "unsignedShort"}, {"sint16", "short"},
    {"datetime", "dateTime"},   {"real32", "float"}, {"string", "string"},        {"boolean", "boolean"},
};

}  // namespace

std::string_view GetXmlSchemaType(std::string_view cimType) {
    const auto* const row = std::ranges::find(typeRows, cimType, &TTypeRow::cimType);
    return row == std::end(typeRows) ? "string" : row->xmlType;
}
