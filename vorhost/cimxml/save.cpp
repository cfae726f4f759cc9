#include "vorhost/cimxml/save.h"

#include "documents/xml_text.h"
#include "vorhost/cimxml/format.h"
#include "vorhost/cimxml/mapping_string.h"
#include "vorhost/cimxml/object_path.h"
#include "vorhost/cimxml/value_text.h"
#include "vorhost/cimxml/xml_output.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string_view>

namespace NVORHOST {
namespace {

using TCIMType = TCIMValue::TCIMType;

constexpr std::string_view prolog =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
    "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">\n<DECLARATION>\n<DECLGROUP>\n";
constexpr std::string_view epilog = "</DECLGROUP>\n</DECLARATION>\n</CIM>\n";

// A property of an instance, or a declaration; `value` is null for a declaration without default value.
struct TPropertyToWrite {
    const std::string& name;
    TCIMType type;
    bool isArray;
    const TCIMValue* value;
    const TValueSource* source = nullptr;  // null if it is not known
};

std::string_view ElementOf(const TPropertyToWrite& property) {
    if (property.isArray) {
        return "PROPERTY.ARRAY";
    }
    return property.type == TCIMType::eReference ? "PROPERTY.REFERENCE" : "PROPERTY";
}

std::string_view ValueTypeOf(TPathKey::EType type) {
    if (type == TPathKey::EType::boolean) {
        return "boolean";
    }
    return type == TPathKey::EType::number ? "numeric" : "string";
}

void CheckName(std::string_view name) {
    if (name.empty() || name.size() > maxNameBytes || !IsXmlText(name)) {
        throw TDocumentCause("the name " + Quote(name) + " cannot be written as XML");
    }
}

void CheckCount(std::size_t properties) {
    if (properties > maxProperties) {
        throw TDocumentCause("has more than " + std::to_string(maxProperties) + " properties");
    }
}

// Writes the values of a property, preceded by a qualifier if they are encoded.
class TValueWriter {
  public:
    explicit TValueWriter(TXmlOutput& out) : out_(out) {}

    void Write(const TCIMValue& value) {
        if (value.IsArray()) {
            WriteArray(value);
        } else if (value.GetType() == TCIMType::eReference) {
            WriteReference(value);
        } else {
            WriteScalar(value);
        }
    }

  private:
    void WriteScalar(const TCIMValue& value) {
        const auto text = ValueText(value);
        if (!text) {
            MarkAsBase64();
        }
        WriteValue(value, text);
    }

    void WriteArray(const TCIMValue::TElements& elements) {
        const bool isPlain = std::ranges::all_of(
            elements, [](const TCIMValue& each) { return each.IsNull() || ValueText(each).has_value(); });
        if (!isPlain) {
            MarkAsBase64();
        }
        out_.Markup("<VALUE.ARRAY>");
        for (const TCIMValue& each : elements) {
            if (each.IsNull()) {
                out_.Markup("<VALUE.NULL/>");
            } else {
                WriteValue(each, isPlain ? ValueText(each) : std::nullopt);
            }
        }
        out_.Markup("</VALUE.ARRAY>");
    }

    void WriteValue(const TCIMValue& value, const std::optional<std::string>& text) {
        out_.Markup("<VALUE>");
        if (text) {
            out_.Text(*text);
        } else {
            out_.Base64(ValueBytes(value));
        }
        out_.Markup("</VALUE>");
    }

    void MarkAsBase64() {
        out_.Markup("<QUALIFIER");
        out_.Attribute("NAME", encodingQualifierName);
        out_.Attribute("TYPE", "string");
        out_.Markup("><VALUE>");
        out_.Markup(base64EncodingName);
        out_.Markup("</VALUE></QUALIFIER>");
    }

    void WriteReference(const std::string& text) {
        const bool isPlain = IsXmlText(text);
        const auto path = isPlain ? ParseObjectPath(text) : std::nullopt;
        if (!isPlain) {
            MarkAsBase64();
        }
        if (path) {
            WriteReferenceTo(*path);
        } else {
            WriteOpaqueReference(text, isPlain);
        }
    }

    // Writes a text that is not an object path as the key of an instance without a class name. No valid path
    // has this form.
    void WriteOpaqueReference(const std::string& text, bool isPlain) {
        out_.Markup("<VALUE.REFERENCE><INSTANCENAME CLASSNAME=\"\"><KEYVALUE>");
        if (isPlain) {
            out_.Text(text);
        } else {
            out_.Base64(text);
        }
        out_.Markup("</KEYVALUE></INSTANCENAME></VALUE.REFERENCE>");
    }

    void WriteReferenceTo(const TObjectPath& path) {
        out_.Markup("<VALUE.REFERENCE>");
        const std::string wrapper = WrapperOf(path);
        if (!wrapper.empty()) {
            out_.Markup("<" + wrapper + ">");
            WriteNamespacePath(path);
        }
        WriteObjectName(path);
        if (!wrapper.empty()) {
            out_.Markup("</" + wrapper + ">");
        }
        out_.Markup("</VALUE.REFERENCE>");
    }

    static std::string WrapperOf(const TObjectPath& path) {
        if (path.namespaces.empty()) {
            return {};
        }
        return std::string(path.host ? "" : "LOCAL") + (path.isInstance ? "INSTANCEPATH" : "CLASSPATH");
    }

    void WriteNamespacePath(const TObjectPath& path) {
        if (path.host) {
            out_.Markup("<NAMESPACEPATH><HOST>");
            out_.Text(*path.host);
            out_.Markup("</HOST>");
        }
        out_.Markup("<LOCALNAMESPACEPATH>");
        for (const std::string& step : path.namespaces) {
            out_.Markup("<NAMESPACE");
            out_.Attribute("NAME", step);
            out_.Markup("/>");
        }
        out_.Markup("</LOCALNAMESPACEPATH>");
        if (path.host) {
            out_.Markup("</NAMESPACEPATH>");
        }
    }

    void WriteObjectName(const TObjectPath& path) {
        if (!path.isInstance) {
            out_.Markup("<CLASSNAME");
            out_.Attribute("NAME", path.className);
            out_.Markup("/>");
            return;
        }
        out_.Markup("<INSTANCENAME");
        out_.Attribute("CLASSNAME", path.className);
        out_.Markup(">");
        for (const TPathKey& key : path.keys) {
            WriteKey(key);
        }
        out_.Markup("</INSTANCENAME>");
    }

    void WriteKey(const TPathKey& key) {
        if (!key.name) {
            WriteKeyValue(key);
            return;
        }
        out_.Markup("<KEYBINDING");
        out_.Attribute("NAME", *key.name);
        out_.Markup(">");
        WriteKeyValue(key);
        out_.Markup("</KEYBINDING>");
    }

    void WriteKeyValue(const TPathKey& key) {
        if (key.type == TPathKey::EType::reference) {
            WriteReferenceTo(
                ParseObjectPath(key.value).value());  // ParseObjectPath has validated nested paths
            return;
        }
        out_.Markup("<KEYVALUE");
        out_.Attribute("VALUETYPE", ValueTypeOf(key.type));
        out_.Markup(">");
        out_.Text(key.value);
        out_.Markup("</KEYVALUE>");
    }

    TXmlOutput& out_;
};

class TDocumentWriter {
  public:
    explicit TDocumentWriter(std::ostream& out) : out_(out), values_(out_) { out_.Markup(prolog); }

    void WriteClass(const TMemoryClass& written) {
        WriteObject("CLASS", "NAME", written.GetName(), written.GetDeclarations().size(), [&] {
            if (written.GetSource()) {
                WriteSource(*written.GetSource());
                out_.Markup("\n");
            }
            for (const TPropertyDeclaration& each : written.GetDeclarations()) {
                const TCIMValue* const value = each.defaultValue ? &*each.defaultValue : nullptr;
                WriteProperty({each.name, each.type, each.isArray, value});
            }
        });
    }

    void WriteInstance(const std::string& className, const TMemoryInstance& instance,
                       const std::vector<TPropertyDeclaration>& declarations) {
        const auto properties = instance.GetProperties();
        WriteObject("INSTANCE", "CLASSNAME", className, properties.size(), [&] {
            for (const TPropertyView& each : properties) {
                WriteProperty({each.name, each.value.GetType(), each.value.IsArray(), &each.value,
                               instance.FindSource(each.name)});
            }
            WriteMissing(instance, declarations);
        });
    }

    void Finish() {
        out_.Markup(epilog);
        out_.Flush();
    }

  private:
    template <typename TWriteProperties>
    void WriteObject(std::string_view element, std::string_view nameAttribute, const std::string& name,
                     std::size_t propertyCount, const TWriteProperties& writeProperties) {
        place_ = {{}, {}, name, {}};
        try {
            CheckName(name);
            CheckCount(propertyCount);
            out_.Markup("<VALUE.OBJECT><");
            out_.Markup(element);
            out_.Attribute(nameAttribute, name);
            out_.Markup(">\n");
            writeProperties();
            out_.Markup("</");
            out_.Markup(element);
            out_.Markup("></VALUE.OBJECT>\n");
        } catch (const TDocumentCause& cause) {
            ThrowAt(place_, cause.what());
        }
    }

    // Writes the properties without a value whose sources are known.
    void WriteMissing(const TMemoryInstance& instance,
                      const std::vector<TPropertyDeclaration>& declarations) {
        for (const auto& [name, source] : instance.GetSources()) {
            const auto declaration = std::ranges::find(declarations, name, &TPropertyDeclaration::name);
            if (declaration != declarations.end() && instance.Find(name) == nullptr) {
                WriteProperty({name, declaration->type, declaration->isArray, nullptr, &source});
            }
        }
    }

    void WriteQualifier(std::string_view name, std::string_view text) {
        out_.Markup("<QUALIFIER");
        out_.Attribute("NAME", name);
        out_.Attribute("TYPE", "string");
        out_.Markup("><VALUE>");
        out_.Text(text);
        out_.Markup("</VALUE></QUALIFIER>");
    }

    void WriteQualifier(std::string_view name, const std::vector<std::string>& texts) {
        out_.Markup("<QUALIFIER");
        out_.Attribute("NAME", name);
        out_.Attribute("TYPE", "string");
        out_.Markup("><VALUE.ARRAY>");
        for (const std::string& text : texts) {
            out_.Markup("<VALUE>");
            out_.Text(text);
            out_.Markup("</VALUE>");
        }
        out_.Markup("</VALUE.ARRAY></QUALIFIER>");
    }

    void WriteSource(const TValueSource& source) {
        std::vector<std::string> mappings;
        std::ranges::transform(source.sources, std::back_inserter(mappings), MakeMappingString);
        WriteQualifier(sourcesQualifierName, mappings);
        WriteQualifier(statusQualifierName, NameValueStatus(source.status));
        if (!source.passedOver.empty()) {
            WriteQualifier(passedOverQualifierName, source.passedOver);
        }
        if (!source.gaps.empty()) {
            WriteQualifier(gapsQualifierName, source.gaps);
        }
    }

    void WriteProperty(const TPropertyToWrite& property) {
        place_.propertyName = property.name;
        CheckName(property.name);
        const std::string_view element = ElementOf(property);
        out_.Markup("<");
        out_.Markup(element);
        out_.Attribute("NAME", property.name);
        if (element != "PROPERTY.REFERENCE") {  // its element implies the type
            out_.Attribute("TYPE", property.type.ToString());
        }
        const bool isNull = property.value == nullptr || property.value->IsNull();
        if (isNull && property.source == nullptr) {
            out_.Markup("/>\n");
            return;
        }
        out_.Markup(">");
        if (property.source != nullptr) {
            WriteSource(*property.source);
        }
        if (!isNull) {
            values_.Write(*property.value);
        }
        out_.Markup("</");
        out_.Markup(element);
        out_.Markup(">\n");
    }

    TXmlOutput out_;
    TValueWriter values_;
    TDocumentPlace place_;
};

}  // namespace

void SaveNamespace(const TMemoryNamespace& source, std::ostream& out) {
    TDocumentWriter writer(out);
    for (const auto& each : source.GetClasses()) {
        writer.WriteClass(*each);
    }
    for (const auto& each : source.GetClasses()) {
        for (const auto& instance : each->GetInstances()) {
            writer.WriteInstance(each->GetName(), *instance, each->GetDeclarations());
        }
    }
    writer.Finish();
}

void SaveInstances(const std::string& className,
                   const std::vector<boost::shared_ptr<TMemoryInstance>>& instances, std::ostream& out) {
    TDocumentWriter writer(out);
    for (const auto& each : instances) {
        writer.WriteInstance(className, *each, {});
    }
    writer.Finish();
}

}  // namespace NVORHOST
