// A resource of an inventory: one device, part or program with its properties, as documents and namespaces
// describe it.
#pragma once

#include "text/value_source.h"

#include <string>
#include <string_view>
#include <vector>

namespace NINVENTORY {

/// The shape of a property's value.
enum class EShape {
    null,    ///< the property has no value
    scalar,  ///< one value
    array,   ///< any number of values
};

/// One property. Values are texts in the form of the documents, without escapes.
struct TProperty {
    std::string name;
    std::string type;  ///< the XML Schema type, such as "string", "unsignedInt" or "dateTime"
    EShape shape = EShape::null;
    std::vector<std::string> values;  ///< empty for null, one for a scalar

    bool operator==(const TProperty&) const = default;
};

/// Where the value of a property comes from, or why there is none.
struct TPropertySource {
    std::string property;
    NVORHOST::TValueSource source;
};

/// One resource with its properties in the order of its source.
struct TResource {
    std::string id;    ///< 32 upper-case hexadecimal digits; empty in a document without one
    std::string type;  ///< the resource type, such as "PhysicalMemory"
    std::string list;  ///< the type of its resource list; empty for the context of a document
    std::string name;  ///< the resource name, which only system information has
    std::vector<TProperty> properties;
    int line = 0;  ///< 1-based line in its document; 0 if it does not come from one
    /// One entry for each property, with or without a value; empty if the inventory was made without sources.
    std::vector<TPropertySource> sources{};

    /// Returns the first property of a name; null if there is none.
    const TProperty* Find(std::string_view propertyName) const;
    /// Returns the text of a scalar property; empty if it is missing, null or an array.
    std::string_view GetText(std::string_view propertyName) const;
    /// Returns the sources of a property; null if they are not known.
    const NVORHOST::TValueSource* FindSource(std::string_view propertyName) const;
};

/// The kinds of documents.
enum class EDocument {
    hardware,
    systemInformation,
    collection,  ///< not a document: a saved namespace, or a machine
};

/// The head of a document.
struct TDocumentHead {
    EDocument kind = EDocument::hardware;
    std::string namespaceUri;  ///< empty for a collection
    std::string timestamp;     ///< as written, such as "2024-03-01T12:00:00+01:00"; empty if unknown
};

}  // namespace NINVENTORY
