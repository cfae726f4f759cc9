// The keys of the resources of one inventory, which are different even if identifiers are not.
#pragma once

#include "fleet/model/rows.h"

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace NFLEET {

/// A key, and the identifier to keep with the version; absent if the key is the identifier.
struct TResourceKey {
    TDigest resource;
    std::optional<std::string> id{};

    bool operator==(const TResourceKey&) const = default;
};

/// Gives keys in the order of the inventory. The key is the identifier of the resource. Further resources
/// with the same identifier, and those whose identifier has another form, get a digest of identifier, type
/// and number. Links between resources have one identifier for all of a type, so their content is their key.
class TResourceKeys {
  public:
    /// `version` is the digest of the version without identifier.
    TResourceKey Make(std::string_view id, std::string_view type, const TDigest& version,
                      const TIdentity& identity);

  private:
    std::unordered_map<TDigest, std::uint64_t, TDigestHash> counts_;
};

}  // namespace NFLEET
