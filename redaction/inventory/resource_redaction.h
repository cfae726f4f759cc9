// Identities in resources, and identifiers that follow from replaced keys.
#pragma once

#include "inventory/model/resource.h"
#include "redaction/identities/identity_search.h"
#include "redaction/identities/identity_texts.h"
#include "redaction/identities/keyed_digest.h"
#include "redaction/inventory/property_identity.h"

#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>

namespace NVORHOST {

/// Learns the identities in the properties of resources.
class TResourceLearning {
  public:
    /// `identities` must outlive this object.
    explicit TResourceLearning(TIdentityTexts& identities) : identities_(identities) {}

    void Learn(const NINVENTORY::TResource& resource);

  private:
    TIdentityTexts& identities_;
    std::unordered_set<std::string> learned_;  // free texts; most of them occur many times
};

/// Replaces the identities of resources.
class TResourceRedaction {
  public:
    /// `identities` must outlive this object and must be complete; `key` is that of its pseudonyms.
    TResourceRedaction(const TIdentityTexts& identities, const TDigestKey& key)
        : identities_(identities), digest_(MakeKeyedDigest(key)) {}

    /// Replaces identities by pseudonyms in texts of every property. An identifier that is the digest of the
    /// key becomes that of the replaced key; another one becomes a keyed digest of itself.
    void Replace(NINVENTORY::TResource& resource);

  private:
    std::string ReplaceFreeText(const TPropertyTexts& place, std::string text);
    std::string ReplaceId(const NINVENTORY::TResource& original, const NINVENTORY::TResource& replaced) const;

    const TIdentityTexts& identities_;
    std::shared_ptr<IKeyedDigest> digest_;
    std::unordered_map<std::string, std::string> replaced_;  // free texts; most of them occur many times
};

/// Returns the kind of an identity that is left in a property and that a search of the document's bytes does
/// not find; nullopt if there is none.
std::optional<EIdentityKind> FindInResource(const NINVENTORY::TResource& resource,
                                            const TIdentitySearch& search);

}  // namespace NVORHOST
