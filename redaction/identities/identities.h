// Kinds of identities of a machine, and their reach. A long serial number is searched for in every text; a
// host name such as "db" only in names, because it may be an ordinary word elsewhere.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

namespace NVORHOST {

/// Kinds of identities, in the order of the summary.
enum class EIdentityKind {
    serialNumber,
    assetTag,
    uuid,
    worldWideName,
    macAddress,
    ipAddress,
    hostName,
    userName,
    credential,
};

/// Returns the name of a kind, such as "serial number".
std::string_view GetKindName(EIdentityKind kind);

/// The number of different identities of each kind. Kinds without one are left out.
using TIdentityCounts = std::map<EIdentityKind, std::size_t>;

/// Returns text such as "3 serial numbers, 1 host name"; empty for no identities.
std::string DescribeCounts(const TIdentityCounts& counts);

/// The texts in which an identity is replaced and searched for, from the fewest to all.
enum class EIdentityReach {
    itself,    ///< only in a field that holds nothing else: too short, or a common word
    names,     ///< as whole words in names of devices and hosts
    words,     ///< as whole words in every text
    anywhere,  ///< also inside words and in every encoding
};

/// Returns the reach of an identity. All other code follows this decision.
EIdentityReach FindReach(std::string_view value, EIdentityKind kind);

}  // namespace NVORHOST
