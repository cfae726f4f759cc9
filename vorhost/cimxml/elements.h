// The elements that the reader accepts, and their allowed parents.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace NVORHOST {

/// The kinds of elements, by what the reader does with them. Tags with the same treatment have one kind; a
/// tag whose meaning depends on its parent has several.
enum class EElement {
    document,  ///< the parent of the root
    ignored,   ///< an accepted element whose content is skipped, and everything in it
    cim,
    declaration,
    declarationGroup,
    message,
    response,
    methodResponse,
    responseError,
    returnValue,
    object,  ///< VALUE.OBJECT and its variants
    classDeclaration,
    instance,
    property,
    arrayProperty,
    referenceProperty,
    qualifier,
    qualifierValue,
    qualifierArray,
    qualifierElement,
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

/// Returns the kind of a tag in `parent`; nullopt if it is not allowed there. In an ignored element, every
/// tag is ignored.
std::optional<EElement> FindElement(EElement parent, std::string_view tag);

}  // namespace NVORHOST
