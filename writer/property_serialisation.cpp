// One property of one instance as an element, and the text functions that this takes.
#include "host/os_specific.h"
#include "host/vor_exception.h"
#include "writer/nox_xml_writer.h"

#include <algorithm>
#include <array>

using NKELVOR20::ICIMInstance;
using NKELVOR20::ICIMProperty;
using NKELVOR20::TCIMValue;
using NKELVOR20::TOSSpecific;
using ECIMType = TCIMValue::TCIMType::ECIMType;
using NKELVOR20::TVORException;

namespace {

constexpr unsigned char decimal = 10;

struct TTypeRow {
    std::string_view cimType;
    std::string_view xmlType;
};

// sint8 is wider in the document than it needs to be; readers know it so.
constexpr TTypeRow typeRows[] = {
    {"uint32", "unsignedInt"},  {"sint32", "int"},   {"uint8", "unsignedByte"},   {"sint8", "int"},
    {"uint64", "unsignedLong"}, {"sint64", "long"},  {"uint16", "unsignedShort"}, {"sint16", "short"},
    {"datetime", "dateTime"},   {"real32", "float"}, {"string", "string"},        {"boolean", "boolean"},
};

std::string_view XmlType(std::string_view cimType) {
    const auto* const row = std::ranges::find(typeRows, cimType, &TTypeRow::cimType);
    return row == std::end(typeRows) ? "string" : row->xmlType;
}

/// The same by type code; the host is asked for the name of each code once.
std::string_view XmlType(TCIMValue::TCIMType type) {
    constexpr int firstCode = TCIMValue::TCIMType::eBoolean;
    constexpr int lastCode = TCIMValue::TCIMType::eReference;
    static const std::array<std::string_view, lastCode + 1> byCode = [] {
        std::array<std::string_view, lastCode + 1> table;
        for (int code = firstCode; code <= lastCode; ++code) {
            table[static_cast<std::size_t>(code)] =
                XmlType(TCIMValue::TCIMType(static_cast<ECIMType>(code)).ToString());
        }
        return table;
    }();
    const int code = static_cast<ECIMType>(type);
    return code >= firstCode && code <= lastCode ? byCode[static_cast<std::size_t>(code)]
                                                 : XmlType(type.ToString());
}

/// What becomes of a byte of character data.
enum ETreatment : unsigned char { keep, drop, blank, ampersand, lessThan, greaterThan };

/// What is written for each treatment but `keep`.
constexpr std::string_view replacements[] = {{}, {}, " ", "&amp;", "&lt;", "&gt;"};

constexpr std::array<ETreatment, 256> treatments = [] {
    std::array<ETreatment, 256> table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte) {
        table[byte] = byte >= 0x20 && byte <= 0x7F ? keep : blank;
    }
    table['\r'] = drop;
    table['\n'] = drop;
    table['&'] = ampersand;
    table['<'] = lessThan;
    table['>'] = greaterThan;
    return table;
}();

ETreatment TreatmentOf(char c) {
    return treatments[static_cast<unsigned char>(c)];
}

bool IsChanged(char c) {
    return TreatmentOf(c) != keep;
}

void AppendEscaped(std::string& to, std::string_view text) {
    const char* at = text.data();
    const char* const end = at + text.size();
    while (true) {
        const char* const changed = std::find_if(at, end, IsChanged);
        to.append(at, changed);
        if (changed == end) {
            return;
        }
        to.append(replacements[TreatmentOf(*changed)]);
        at = changed + 1;
    }
}

/// The part of a product name like "Server -[1234AB5]-" that begins `offset` characters behind "-[".
std::string CutProductName(const std::string& productName, std::size_t offset, std::size_t length) {
    constexpr std::string_view bracket = "-[";
    const std::size_t found = productName.find(bracket);
    return found == std::string::npos ? productName
                                      : productName.substr(found + bracket.size() + offset, length);
}

/// Looks a property up; false when the instance has none. Nothing but the lookup stands here, as a missing
/// property is an exception and every instance misses at least one.
[[gnu::noinline]] bool FindProperty(ICIMInstance& instance, const std::string& name,
                                    boost::shared_ptr<ICIMProperty>& found) {
    try {
        found = instance.GetProperty(name, {});
        return true;
    } catch (const TVORException&) {
        return false;
    }
}

}  // namespace

bool TNOXXMLWriterImpl::WriteResourceProperty(std::string outputName, std::string sourceName,
                                              TInstancePtr instance) {
    return WriteProperty(outputName, sourceName, instance);
}

bool TNOXXMLWriterImpl::WriteProperty(std::string_view outputName, const std::string& sourceName,
                                      const TInstancePtr& instance) {
    WriteSpecialForm(outputName, sourceName);
    boost::shared_ptr<ICIMProperty> property;
    if (!FindProperty(*instance, sourceName, property)) {
        return false;
    }
    if (property->IsNull({})) {
        return true;
    }
    const TCIMValue& value = property->GetValue({});
    if (value.IsNull()) {
        return true;
    }
    const TCIMValue::TCIMType type = property->GetType({});
    WriteLine(R"(<Property name=")", outputName, R"(" type=")", XmlType(type), R"(">)");
    WriteValueLines(outputName, sourceName, *property, type, value);
    WriteLine("</Property>");
    return true;
}

void TNOXXMLWriterImpl::WriteSpecialForm(std::string_view outputName, std::string_view sourceName) {
    if (outputName == "ObjectType" || outputName == "GUID") {
        WriteTextProperty(outputName, sourceName);
    } else if (outputName == "Name" && sourceName == "GetHostName") {
        WriteTextProperty(outputName, TOSSpecific::GetOperatingSystemName());
    }
}

void TNOXXMLWriterImpl::WriteTextProperty(std::string_view name, std::string_view text) {
    WriteLine(R"(<Property name=")", name, R"(" type="string">)");
    WriteLine("<Value>", text, "</Value>");
    WriteLine("</Property>");
}

void TNOXXMLWriterImpl::WriteValueLines(std::string_view outputName, std::string_view sourceName,
                                        ICIMProperty& property, TCIMValue::TCIMType type,
                                        const TCIMValue& value) {
    if (outputName == "Model" && sourceName == "ProductName") {
        WriteEscapedLine("<Value>", GetModelNumber(value.ToString(decimal)), "</Value>");
    } else if (outputName == "MachineType" && sourceName == "ProductName") {
        WriteEscapedLine("<Value>", GetMachineTypeFromCIM(value.ToString(decimal)), "</Value>");
    } else if (type == TCIMValue::TCIMType::eDateTime) {
        const TCIMValue& date = property.GetValue({});
        if (!date.IsNull()) {
            WriteEscapedLine("<Value>", ConvertCIMDateToUSMI(date), "</Value>");
        }
    } else {
        WriteValue(value);
    }
}

void TNOXXMLWriterImpl::WriteValue(const TCIMValue& value) {
    if (value.IsNull()) {
        return;
    }
    if (!value.IsArray()) {
        WriteEscapedLine("<Value>", value.ToString(decimal), "</Value>");
        return;
    }
    // The array's tags are in upper case, unlike the scalar's; readers rely on both.
    WriteLine("<VALUE.ARRAY>");
    const TCIMValue::TElements& elements = value;
    for (const TCIMValue& element : elements) {
        WriteEscapedLine("<VALUE>", element.ToString(decimal), "</VALUE>");
    }
    WriteLine("</VALUE.ARRAY>");
}

void TNOXXMLWriterImpl::WriteEscapedLine(std::string_view startTag, std::string_view text,
                                         std::string_view endTag) {
    if (std::ranges::none_of(text, IsChanged)) {
        WriteLine(startTag, text, endTag);
        return;
    }
    escaped_.clear();
    AppendEscaped(escaped_, text);
    WriteLine(startTag, escaped_, endTag);
}

std::string TNOXXMLWriterImpl::QuoteString(std::string text) {
    std::string escaped;
    AppendEscaped(escaped, text);
    return escaped;
}

std::string TNOXXMLWriterImpl::ConvertTypeFromCIM(std::string cimType) {
    return std::string(XmlType(cimType));
}

std::string TNOXXMLWriterImpl::GetMachineTypeFromCIM(std::string productName) {
    return CutProductName(productName, 0, 4);
}

std::string TNOXXMLWriterImpl::GetModelNumber(std::string productName) {
    return CutProductName(productName, 4, 3);
}
