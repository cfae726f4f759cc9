// The identities in values of properties, which the table of meanings lists.
#pragma once

#include "inventory/model/meaning.h"
#include "redaction/identities/identity_search.h"
#include "redaction/identities/identity_texts.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

using NINVENTORY::EIdentity;

/// The values of one property, and what determines their meaning.
struct TPropertyTexts {
    std::string_view type;      ///< resource type
    std::string_view property;  ///< its name in documents
    /// The names of the entries of OtherIdentifyingInfo; null if the resource has none.
    const std::vector<std::string>* descriptions = nullptr;
};

/// Returns how a property identifies: by the table of meanings, else by its name, so that the serial numbers
/// of classes that are not in the table are found as well.
EIdentity GetIdentity(std::string_view type, std::string_view property);

/// Learns or replaces the identities in the value with this index.
void LearnText(const TPropertyTexts& place, std::size_t index, std::string_view text,
               TIdentityTexts& identities);
std::string ReplaceText(const TPropertyTexts& place, std::size_t index, std::string_view text,
                        const TIdentityTexts& identities);

/// Returns the kind of an identity that is left in the value; nullopt if there is none.
std::optional<EIdentityKind> FindInText(const TPropertyTexts& place, std::size_t index, std::string_view text,
                                        const TIdentitySearch& search);
/// Returns the kind of an identity that is left in a value of a document and that a search of the document's
/// bytes does not find, because it is a word of this property only, or because characters are escaped.
std::optional<EIdentityKind> FindBesidesBytes(const TPropertyTexts& place, std::size_t index,
                                              std::string_view text, const TIdentitySearch& search);

/// Returns the name that a property of a class has in documents.
std::string_view GetDocumentName(std::string_view className, std::string_view property);

}  // namespace NVORHOST
