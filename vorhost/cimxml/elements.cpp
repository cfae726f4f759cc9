#include "vorhost/cimxml/elements.h"

#include <algorithm>
#include <array>
#include <span>

namespace NVORHOST {
namespace {

struct TElementRow {
    EElement parent;
    std::string_view tag;
    EElement element;
};

using enum EElement;

// Rows are grouped by parent, in the order of EElement; in a group, frequent tags come first.
// Source: DSP0203 2.4 (the DTD), with VALUE.OBJECTWITHLOCALPATH and MULTIRSP of DSP0201 2.x.
constexpr auto elementRows = std::to_array<TElementRow>({
    {document, "CIM", cim},

    {cim, "DECLARATION", declaration},
    {cim, "MESSAGE", message},

    {declaration, "DECLGROUP", declarationGroup},
    {declaration, "DECLGROUP.WITHNAME", declarationGroup},
    {declaration, "DECLGROUP.WITHPATH", declarationGroup},

    {declarationGroup, "VALUE.OBJECT", object},
    {declarationGroup, "VALUE.NAMEDOBJECT", object},
    {declarationGroup, "VALUE.OBJECTWITHPATH", object},
    {declarationGroup, "VALUE.OBJECTWITHLOCALPATH", object},
    {declarationGroup, "NAMESPACEPATH", ignored},
    {declarationGroup, "LOCALNAMESPACEPATH", ignored},
    {declarationGroup, "QUALIFIER.DECLARATION", ignored},

    {message, "SIMPLERSP", response},
    {message, "MULTIRSP", message},

    {response, "IMETHODRESPONSE", methodResponse},

    {methodResponse, "IRETURNVALUE", returnValue},
    {methodResponse, "ERROR", responseError},
    {methodResponse, "PARAMVALUE", ignored},

    {responseError, "INSTANCE", ignored},

    {returnValue, "VALUE.NAMEDINSTANCE", object},
    {returnValue, "VALUE.INSTANCEWITHPATH", object},
    {returnValue, "INSTANCE", instance},
    {returnValue, "CLASS", classDeclaration},
    {returnValue, "VALUE.OBJECTWITHPATH", object},
    {returnValue, "VALUE.OBJECTWITHLOCALPATH", object},
    {returnValue, "VALUE.NAMEDOBJECT", object},
    {returnValue, "VALUE.OBJECT", object},

    {object, "INSTANCE", instance},
    {object, "CLASS", classDeclaration},
    {object, "INSTANCENAME", ignored},
    {object, "INSTANCEPATH", ignored},
    {object, "LOCALINSTANCEPATH", ignored},
    {object, "CLASSPATH", ignored},
    {object, "LOCALCLASSPATH", ignored},

    {classDeclaration, "PROPERTY", property},
    {classDeclaration, "PROPERTY.ARRAY", arrayProperty},
    {classDeclaration, "PROPERTY.REFERENCE", referenceProperty},
    {classDeclaration, "QUALIFIER", qualifier},
    {classDeclaration, "METHOD", ignored},

    {instance, "PROPERTY", property},
    {instance, "PROPERTY.ARRAY", arrayProperty},
    {instance, "PROPERTY.REFERENCE", referenceProperty},
    {instance, "QUALIFIER", ignored},

    {property, "VALUE", scalarValue},
    {property, "QUALIFIER", qualifier},

    {arrayProperty, "VALUE.ARRAY", array},
    {arrayProperty, "QUALIFIER", qualifier},

    {referenceProperty, "VALUE.REFERENCE", reference},
    {referenceProperty, "QUALIFIER", qualifier},

    {qualifier, "VALUE", qualifierValue},
    {qualifier, "VALUE.ARRAY", qualifierArray},

    {qualifierArray, "VALUE", qualifierElement},
    {qualifierArray, "VALUE.NULL", ignored},

    {array, "VALUE", elementValue},
    {array, "VALUE.NULL", elementNull},

    {reference, "INSTANCENAME", instanceName},
    {reference, "INSTANCEPATH", instancePath},
    {reference, "LOCALINSTANCEPATH", localInstancePath},
    {reference, "CLASSNAME", className},
    {reference, "CLASSPATH", classPath},
    {reference, "LOCALCLASSPATH", localClassPath},

    {classPath, "NAMESPACEPATH", namespacePath},
    {classPath, "CLASSNAME", className},

    {localClassPath, "LOCALNAMESPACEPATH", localNamespacePath},
    {localClassPath, "CLASSNAME", className},

    {instancePath, "NAMESPACEPATH", namespacePath},
    {instancePath, "INSTANCENAME", instanceName},

    {localInstancePath, "LOCALNAMESPACEPATH", localNamespacePath},
    {localInstancePath, "INSTANCENAME", instanceName},

    {namespacePath, "HOST", host},
    {namespacePath, "LOCALNAMESPACEPATH", localNamespacePath},

    {localNamespacePath, "NAMESPACE", namespaceStep},

    {instanceName, "KEYBINDING", keyBinding},
    {instanceName, "KEYVALUE", keyValue},
    {instanceName, "VALUE.REFERENCE", reference},

    {keyBinding, "KEYVALUE", keyValue},
    {keyBinding, "VALUE.REFERENCE", reference},
});

static_assert(std::ranges::is_sorted(elementRows, {}, &TElementRow::parent));

// Index of the first row of each parent; the last entry is the end of the table.
constexpr auto firstRows = [] {
    std::array<std::size_t, elementCount + 1> first{};
    for (const TElementRow& row : elementRows) {
        ++first[static_cast<std::size_t>(row.parent) + 1];
    }
    for (std::size_t i = 1; i < first.size(); ++i) {
        first[i] += first[i - 1];
    }
    return first;
}();

std::span<const TElementRow> RowsOf(EElement parent) {
    const auto i = static_cast<std::size_t>(parent);
    return std::span(elementRows).subspan(firstRows.at(i), firstRows.at(i + 1) - firstRows.at(i));
}

}  // namespace

std::optional<EElement> FindElement(EElement parent, std::string_view tag) {
    if (parent == ignored) {
        return ignored;
    }
    const auto rows = RowsOf(parent);
    const auto row = std::ranges::find(rows, tag, &TElementRow::tag);
    return row == rows.end() ? std::nullopt : std::optional(row->element);
}

}  // namespace NVORHOST
