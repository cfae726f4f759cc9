// One property of one instance as an element, and the text functions that this takes.
#include "host/os_specific.h"
#include "host/vor_exception.h"
#include "writer/nox_xml_writer.h"

#include <algorithm>
#include <array>
#include <utility>

using NKELVOR20::ICIMInstance;
using NKELVOR20::ICIMProperty;
using NKELVOR20::TCIMValue;
using NKELVOR20::TOSSpecific;
using ECIMType = TCIMValue::TCIMType::ECIMType;
using NKELVOR20::TVORException;

/// What the two names of a property ask for beyond its own value.
enum class EPropertyForm : unsigned char {
    plain,
    sourceName,           ///< the source name is written as a value first
    operatingSystemName,  ///< the operating system's name is written as a value first
    machineType,          ///< of the value, the machine type is written
    model,                ///< of the value, the model number is written
};

namespace {

constexpr unsigned char decimal = 10;

struct TFormRow {
    std::string_view outputName;
    std::string_view sourceName;  // empty: any
    EPropertyForm form;
};

constexpr TFormRow formRows[] = {
    {"ObjectType", {}, EPropertyForm::sourceName},
    {"GUID", {}, EPropertyForm::sourceName},
    {"Name", "GetHostName", EPropertyForm::operatingSystemName},
    {"MachineType", "ProductName", EPropertyForm::machineType},
    {"Model", "ProductName", EPropertyForm::model},
};

EPropertyForm FormOf(std::string_view outputName, std::string_view sourceName) {
    const auto* const row = std::ranges::find_if(formRows, [&](const TFormRow& candidate) {
        return candidate.outputName == outputName &&
               (candidate.sourceName.empty() || candidate.sourceName == sourceName);
    });
    return row == std::end(formRows) ? EPropertyForm::plain : row->form;
}

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

/// What is written for the bytes that are markup or line ends; other bytes outside 0x20 to 0x7F become
/// blanks.
struct TReplacement {
    char byte;
    std::string_view text;
};

constexpr TReplacement replacements[] = {
    {'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'\r', ""}, {'\n', ""},
};

constexpr std::string_view ReplacementOf(char c) {
    const auto* const row = std::ranges::find(replacements, c, &TReplacement::byte);
    return row == std::end(replacements) ? " " : row->text;
}

/// Whether a byte is replaced, for every byte.
constexpr std::array<bool, 256> isReplaced = [] {
    std::array<bool, 256> table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte) {
        table[byte] = byte < 0x20 || byte > 0x7F;
    }
    for (const TReplacement& row : replacements) {
        table[static_cast<unsigned char>(row.byte)] = true;
    }
    return table;
}();

bool IsReplaced(char c) {
    return isReplaced[static_cast<unsigned char>(c)];
}

/// No replacement is longer.
constexpr std::size_t maxEscapedSize =
    std::ranges::max(replacements, {}, [](const TReplacement& row) { return row.text.size(); }).text.size();

/// Writes the escaped text, of up to `maxEscapedSize` characters for each byte, and returns its end.
char* Escape(std::string_view text, char* to) {
    for (const char c : text) {
        if (IsReplaced(c)) {
            to += ReplacementOf(c).copy(to, std::string_view::npos);
        } else {
            *to++ = c;
        }
    }
    return to;
}

/// The part of a product name like "Server -[1234AB5]-" that begins `offset` characters behind "-[".
std::string CutProductName(const std::string& productName, std::size_t offset, std::size_t length) {
    constexpr std::string_view bracket = "-[";
    const std::size_t found = productName.find(bracket);
    return found == std::string::npos ? productName
                                      : productName.substr(found + bracket.size() + offset, length);
}

struct TScalarTags {
    static constexpr std::string_view start = "<Value>";
    static constexpr std::string_view end = "</Value>";
};

// An array's tags are in upper case, unlike the scalar's; readers rely on both.
struct TElementTags {
    static constexpr std::string_view start = "<VALUE>";
    static constexpr std::string_view end = "</VALUE>";
};

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
    const TBoundProperty bound = BindProperty(outputName, std::move(sourceName));
    return WriteProperty(bound, bound.sourceName, instance);
}

TNOXXMLWriterImpl::TBoundProperty TNOXXMLWriterImpl::BindProperty(std::string_view outputName,
                                                                  std::string sourceName) {
    std::string startTag = R"(<Property name=")";
    startTag.append(outputName).append(R"(" type=")");
    const EPropertyForm form = FormOf(outputName, sourceName);
    return {std::move(startTag), std::move(sourceName), form};
}

bool TNOXXMLWriterImpl::WriteProperty(const TBoundProperty& bound, const std::string& sourceName,
                                      const TInstancePtr& instance) {
    WriteSpecialForm(bound, sourceName);
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
    WriteLine(bound.startTag, XmlType(type.ToString()), R"(">)");
    WriteValueLines(bound.form, *property, type, value);
    WriteLine("</Property>");
    return true;
}

void TNOXXMLWriterImpl::WriteSpecialForm(const TBoundProperty& bound, std::string_view sourceName) {
    if (bound.form == EPropertyForm::sourceName) {
        WriteTextProperty(bound.startTag, [sourceName] { return sourceName; });
    } else if (bound.form == EPropertyForm::operatingSystemName) {
        WriteTextProperty(bound.startTag, &TOSSpecific::GetOperatingSystemName);
    }
}

void TNOXXMLWriterImpl::WriteValueLines(EPropertyForm form, ICIMProperty& property, TCIMValue::TCIMType type,
                                        const TCIMValue& value) {
    if (form == EPropertyForm::model) {
        WriteEscapedLine<TScalarTags>(GetModelNumber(value.ToString(decimal)));
    } else if (form == EPropertyForm::machineType) {
        WriteEscapedLine<TScalarTags>(GetMachineTypeFromCIM(value.ToString(decimal)));
    } else if (type == TCIMValue::TCIMType::eDateTime) {
        const TCIMValue& date = property.GetValue({});
        if (!date.IsNull()) {
            WriteEscapedLine<TScalarTags>(ConvertCIMDateToUSMI(date));
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
        WriteEscapedLine<TScalarTags>(value.ToString(decimal));
        return;
    }
    WriteLine("<VALUE.ARRAY>");
    const TCIMValue::TElements& elements = value;
    for (const TCIMValue& element : elements) {
        WriteEscapedLine<TElementTags>(element.ToString(decimal));
    }
    WriteLine("</VALUE.ARRAY>");
}

template <typename TTags>
void TNOXXMLWriterImpl::WriteEscapedLine(std::string_view text) {
    if (std::ranges::none_of(text, IsReplaced)) {
        WriteLine(TTags::start, text, TTags::end);
        return;
    }
    char* to = MakeLineRoom(TTags::start.size() + maxEscapedSize * text.size() + TTags::end.size() + 1);
    to += TTags::start.copy(to, std::string_view::npos);
    to = Escape(text, to);
    to += TTags::end.copy(to, std::string_view::npos);
    *to++ = '\n';
    FinishLine(to);
}

std::string TNOXXMLWriterImpl::QuoteString(std::string text) {
    std::string escaped(maxEscapedSize * text.size(), '\0');
    escaped.resize(static_cast<std::size_t>(Escape(text, escaped.data()) - escaped.data()));
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
