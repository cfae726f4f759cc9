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

constexpr std::size_t WrittenSize(ETreatment treatment) {
    return treatment == keep ? 1 : replacements[treatment].size();
}

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

/// The same as a calculation, so that the compiler can make it for many bytes at once.
constexpr bool IsChanged(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return (byte < 0x20) | (byte > 0x7F) | (byte == '&') | (byte == '<') | (byte == '>');
}
static_assert([] {
    for (std::size_t byte = 0; byte < treatments.size(); ++byte) {
        if (IsChanged(static_cast<char>(byte)) != (treatments[byte] != keep)) {
            return false;
        }
    }
    return true;
}());

/// Most texts are; looking at every byte is faster than stopping at the first that is changed.
bool IsWrittenAsItIs(std::string_view text) {
    unsigned char isChanged = 0;
    for (const char c : text) {
        isChanged |= static_cast<unsigned char>(IsChanged(c));
    }
    return isChanged == 0;
}

std::size_t EscapedSize(std::string_view text) {
    std::size_t size = 0;
    for (const char c : text) {
        size += WrittenSize(TreatmentOf(c));
    }
    return size;
}

/// Writes the escaped text, which has EscapedSize bytes, and returns its end.
char* Escape(std::string_view text, char* to) {
    for (const char c : text) {
        if (const ETreatment treatment = TreatmentOf(c); treatment == keep) {
            *to++ = c;
        } else {
            to += replacements[treatment].copy(to, std::string_view::npos);
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
    return {std::move(startTag), std::move(sourceName), form, /*isResourceId=*/false};
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
    WriteLine(bound.startTag, XmlType(type), R"(">)");
    WriteValueLines(bound.form, *property, type, value);
    WriteLine("</Property>");
    return true;
}

void TNOXXMLWriterImpl::WriteSpecialForm(const TBoundProperty& bound, std::string_view sourceName) {
    if (bound.form == EPropertyForm::sourceName) {
        WriteTextProperty(bound.startTag, sourceName);
    } else if (bound.form == EPropertyForm::operatingSystemName) {
        WriteTextProperty(bound.startTag, TOSSpecific::GetOperatingSystemName());
    }
}

void TNOXXMLWriterImpl::WriteTextProperty(std::string_view startTag, std::string_view text) {
    WriteLine(startTag, R"(string">)");
    WriteLine("<Value>", text, "</Value>");
    WriteLine("</Property>");
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
    if (IsWrittenAsItIs(text)) {
        WriteLine(TTags::start, text, TTags::end);
        return;
    }
    char* to = MakeLineRoom(TTags::start.size() + EscapedSize(text) + TTags::end.size() + 1);
    to += TTags::start.copy(to, std::string_view::npos);
    to = Escape(text, to);
    to += TTags::end.copy(to, std::string_view::npos);
    *to++ = '\n';
    FinishLine(to);
}

std::string TNOXXMLWriterImpl::QuoteString(std::string text) {
    std::string escaped(EscapedSize(text), '\0');
    Escape(text, escaped.data());
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
