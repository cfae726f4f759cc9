// Functions to load a document from a literal and to access the namespace.
#pragma once

#include "vorhost/cimxml/parse.h"
#include "vorhost/model/memory_namespace.h"

#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace NVORHOST::NTEST {

/// The name of documents in messages.
constexpr char documentName[] = "t.xml";

inline std::string InGroup(const std::string& objects) {
    return "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><DECLARATION><DECLGROUP>" + objects +
           "</DECLGROUP></DECLARATION></CIM>";
}

inline std::string InResponse(const std::string& objects) {
    return "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\"><SIMPLERSP>"
           "<IMETHODRESPONSE NAME=\"EnumerateInstances\"><IRETURNVALUE>" +
           objects + "</IRETURNVALUE></IMETHODRESPONSE></SIMPLERSP></MESSAGE></CIM>";
}

/// An instance of class C with these properties.
inline std::string Instance(const std::string& properties) {
    return "<VALUE.OBJECT><INSTANCE CLASSNAME=\"C\">" + properties + "</INSTANCE></VALUE.OBJECT>";
}

/// A class C with these declarations.
inline std::string Class(const std::string& properties) {
    return "<VALUE.OBJECT><CLASS NAME=\"C\">" + properties + "</CLASS></VALUE.OBJECT>";
}

/// Property P of a type with a value.
inline std::string Property(const std::string& type, const std::string& value) {
    return "<PROPERTY NAME=\"P\" TYPE=\"" + type + "\"><VALUE>" + value + "</VALUE></PROPERTY>";
}

/// Returns the error of loading a document, or "loaded".
inline std::string LoadError(const std::string& document) {
    TMemoryNamespace target;
    try {
        LoadNamespaceFromText(documentName, document, target);
    } catch (const TDocumentError& error) {
        return target.GetClasses().empty() ? error.what() : "target has changed";
    }
    return "loaded";
}

/// Returns the first instance of class C of a document. Throws if there is none.
inline boost::shared_ptr<TMemoryInstance> LoadInstance(const std::string& document) {
    TMemoryNamespace target;
    LoadNamespaceFromText(documentName, document, target);
    const auto loaded = target.FindClass("C");
    if (loaded == nullptr || loaded->GetInstances().empty()) {
        throw std::runtime_error("the document has no instance of C");
    }
    return loaded->GetInstances().front();
}

/// Returns property P of the first instance of class C. Throws if there is none.
inline TCIMValue LoadP(const std::string& document) {
    const auto instance = LoadInstance(document);
    const TCIMValue* const value = instance->Find("P");
    if (value == nullptr) {
        throw std::runtime_error("the instance has no P");
    }
    return *value;
}

/// Returns the value of property P of an instance with this content.
inline TCIMValue LoadValue(const std::string& property) {
    return LoadP(InGroup(Instance(property)));
}

/// Formats a namespace for comparisons: classes, declarations, instances and values with their types, one per
/// line.
inline std::string Describe(const TMemoryNamespace& source) {
    std::ostringstream out;
    const auto describe = [&out](const std::string& name, const TCIMValue& value) {
        out << "  " << name << ": " << value.GetType().ToString() << (value.IsArray() ? "[]" : "")
            << (value.IsNull() ? " null" : " = " + value.ToString(10)) << '\n';
    };
    for (const auto& each : source.GetClasses()) {
        out << "class " << each->GetName() << '\n';
        for (const auto& declaration : each->GetDeclarations()) {
            const TCIMValue null =
                declaration.isArray ? TCIMValue::NullArray(declaration.type) : TCIMValue(declaration.type);
            describe(declaration.name, declaration.defaultValue.value_or(null));
        }
        for (const auto& instance : each->GetInstances()) {
            out << " instance\n";
            for (const auto& property : instance->GetProperties()) {
                describe(property.name, property.value);
            }
        }
    }
    return out.str();
}

inline std::string LoadAndDescribe(const std::string& document) {
    TMemoryNamespace target;
    LoadNamespaceFromText(documentName, document, target);
    return Describe(target);
}

}  // namespace NVORHOST::NTEST
