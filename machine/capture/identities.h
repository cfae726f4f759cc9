// What identifies a machine: the kinds of identities, and how far an identity reaches. A long serial number
// is found in any text; a host name such as "db" is a word like any other outside of names.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

namespace NVORHOST {

/// In the order in which the summary counts them.
enum class EIdentityKind {
    serialNumber,
    assetTag,
    uuid,
    worldWideName,
    macAddress,
    ipAddress,
    hostName,
    userName,
};

/// "serial number"
std::string_view NameOf(EIdentityKind kind);

/// How many different identities there are of each kind; kinds without one are left out.
using TIdentityCounts = std::map<EIdentityKind, std::size_t>;

/// "3 serial numbers, 1 host name"; empty when there are none.
std::string DescribeCounts(const TIdentityCounts& counts);

/// Where an identity is replaced and searched for, from nowhere else to everywhere.
enum class EIdentityReach {
    itself,    ///< only where the value has a place of its own: too short, or a common word
    names,     ///< as whole words where devices and hosts are named
    words,     ///< as whole words in every text
    anywhere,  ///< also inside of words and in every writing
};

/// The only place that decides when an identity is distinct enough to be searched for in texts.
EIdentityReach FindReach(std::string_view value, EIdentityKind kind);

}  // namespace NVORHOST
