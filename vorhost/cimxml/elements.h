// Which elements the reader knows, and where each may stand.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace NVORHOST {

/// The elements of a document by what the reader does with them: those it treats alike are one, those that
/// mean something else in another place are several.
enum class EElement {
    document,  ///< around the root
    ignored,   ///< known, but of no interest here, and everything within it
    cim,
    declaration,
    declarationGroup,
    message,
    response,
    methodResponse,
    responseError,
    returnValue,
    object,  ///< VALUE.OBJECT and its kin
    classDeclaration,
    instance,
    property,
    arrayProperty,
    referenceProperty,
    qualifier,
    qualifierValue,
    scalarValue,
    array,
    elementValue,
    elementNull,
    reference,
    classPath,
    localClassPath,
    instancePath,
    localInstancePath,
    namespacePath,
    host,
    localNamespacePath,
    namespaceStep,
    className,
    instanceName,
    keyBinding,
    keyValue,
};

constexpr std::size_t elementCount = static_cast<std::size_t>(EElement::keyValue) + 1;

/// The element that a tag means within `parent`; nullopt when it may not stand there. Everything within an
/// ignored element is ignored.
std::optional<EElement> FindElement(EElement parent, std::string_view tag);

}  // namespace NVORHOST
