#include "writer/property_writer.h"

#include "host/os_specific.h"
#include "host/vor_exception.h"
#include "writer/catalogue/product_name.h"
#include "writer/catalogue/xml_schema_type.h"
#include "writer/dates.h"
#include "writer/escape.h"

#include <algorithm>
#include <iterator>
#include <utility>

using NKELVOR20::ICIMInstance;
using NKELVOR20::ICIMProperty;
using NKELVOR20::TCIMValue;
using NKELVOR20::TOSSpecific;
using NKELVOR20::TVORException;

namespace {

constexpr unsigned char decimal = 10;

struct TFormRow {
    std::string_view outputName;
    std::string_view sourceName;  // empty matches any
    EPropertyForm form;
};

constexpr TFormRow formRows[] = {
    {"ObjectType", {}, EPropertyForm::sourceName},
    {"GUID", {}, EPropertyForm::sourceName},
    {"Name", "GetHostName", EPropertyForm::operatingSystemName},
    {"MachineType", "ProductName", EPropertyForm::machineType},
    {"Model", "ProductName", EPropertyForm::model},
};

EPropertyForm GetForm(std::string_view outputName, std::string_view sourceName) {
    const auto* const row = std::ranges::find_if(formRows, [&](const TFormRow& candidate) {
        return candidate.outputName == outputName &&
               (candidate.sourceName.empty() || candidate.sourceName == sourceName);
    });
    return row == std::end(formRows) ? EPropertyForm::plain : row->form;
}

struct TScalarTags {
    static constexpr std::string_view start = "<Value>";
    static constexpr std::string_view end = "</Value>";
};

// Readers distinguish the tags of array elements from the tags of scalars by their upper case.
struct TElementTags {
    static constexpr std::string_view start = "<VALUE>";
    static constexpr std::string_view end = "</VALUE>";
};

/// Writes `text`, escaped, between the tags of `TTags` as one line.
template <typename TTags>
void WriteEscapedLine(TLineOutput& out, std::string_view text) {
    // Most values need no escaping, and copying is faster than escaping.
    if (IsWrittenAsItIs(text)) {
        out.WriteLine(TTags::start, text, TTags::end);
        return;
    }
    char* to = out.MakeRoom(TTags::start.size() + maxEscapedSize * text.size() + TTags::end.size());
    to += TTags::start.copy(to, std::string_view::npos);
    to = EscapeTo(to, text);
    to += TTags::end.copy(to, std::string_view::npos);
    out.FinishLine(to);
}

/// Writes a whole string property without escaping. `getText` is called after the opening line is written.
template <typename TGetText>
void WriteTextProperty(TLineOutput& out, std::string_view startTag, TGetText getText) {
    out.WriteLine(startTag, R"(string">)");
    out.WriteLine("<Value>", getText(), "</Value>");
    out.WriteLine("</Property>");
}

void WriteSpecialForm(TLineOutput& out, const TPropertyBinding& binding, std::string_view sourceName) {
    if (binding.form == EPropertyForm::sourceName) {
        WriteTextProperty(out, binding.startTag, [sourceName] { return sourceName; });
    } else if (binding.form == EPropertyForm::operatingSystemName) {
        WriteTextProperty(out, binding.startTag, &TOSSpecific::GetOperatingSystemName);
    }
}

/// Returns false if the instance has no such property. Not inlined and free of other work: every instance
/// lacks at least one property, so the exception path is a common one.
[[gnu::noinline]] bool FindProperty(ICIMInstance& instance, const std::string& name,
                                    boost::shared_ptr<ICIMProperty>& found) {
    try {
        found = instance.GetProperty(name, {});
        return true;
    } catch (const TVORException&) {
        return false;
    }
}

void WriteDateLine(TLineOutput& out, ICIMProperty& property) {
    // Hosts expect dates to be read a second time, and may give null then.
    const TCIMValue& date = property.GetValue({});
    if (!date.IsNull()) {
        WriteEscapedLine<TScalarTags>(out, FormatDateTime(date));
    }
}

void WriteFormedValue(TLineOutput& out, EPropertyForm form, ICIMProperty& property, TCIMValue::TCIMType type,
                      const TCIMValue& value) {
    if (form == EPropertyForm::model) {
        WriteEscapedLine<TScalarTags>(out, CutModelNumber(value.ToString(decimal)));
    } else if (form == EPropertyForm::machineType) {
        WriteEscapedLine<TScalarTags>(out, CutMachineType(value.ToString(decimal)));
    } else if (type == TCIMValue::TCIMType::eDateTime) {
        WriteDateLine(out, property);
    } else {
        WriteValueLines(out, value);
    }
}

}  // namespace

TPropertyBinding BindProperty(std::string_view outputName, std::string sourceName) {
    std::string startTag = R"(<Property name=")";
    startTag.append(outputName).append(R"(" type=")");
    const EPropertyForm form = GetForm(outputName, sourceName);
    return {std::move(startTag), std::move(sourceName), form};
}

bool WriteProperty(TLineOutput& out, const TPropertyBinding& binding, const std::string& sourceName,
                   const boost::shared_ptr<ICIMInstance>& instance) {
    WriteSpecialForm(out, binding, sourceName);
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
    out.WriteLine(binding.startTag, GetXmlSchemaType(type.ToString()), R"(">)");
    WriteFormedValue(out, binding.form, *property, type, value);
    out.WriteLine("</Property>");
    return true;
}

void WriteValueLines(TLineOutput& out, const TCIMValue& value) {
    if (value.IsNull()) {
        return;
    }
    if (!value.IsArray()) {
        WriteEscapedLine<TScalarTags>(out, value.ToString(decimal));
        return;
    }
    out.WriteLine("<VALUE.ARRAY>");
    const TCIMValue::TElements& elements = value;
    for (const TCIMValue& element : elements) {
        WriteEscapedLine<TElementTags>(out, element.ToString(decimal));
    }
    out.WriteLine("</VALUE.ARRAY>");
}
