#include "redaction/identities/identities.h"

#include "machine/parse/placeholders.h"
#include "redaction/identities/canonical_form.h"
#include "text/ascii.h"
#include "text/find_row.h"
#include "text/hex.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string>

namespace NVORHOST {
namespace {

struct TKindName {
    EIdentityKind kind;
    std::string_view name, plural;
};

constexpr TKindName kindNames[] = {
    {EIdentityKind::serialNumber, "serial number", "serial numbers"},
    {EIdentityKind::assetTag, "asset tag", "asset tags"},
    {EIdentityKind::uuid, "UUID", "UUIDs"},
    {EIdentityKind::worldWideName, "world-wide name", "world-wide names"},
    {EIdentityKind::macAddress, "MAC address", "MAC addresses"},
    {EIdentityKind::ipAddress, "IP address", "IP addresses"},
    {EIdentityKind::hostName, "host name", "host names"},
    {EIdentityKind::userName, "user name", "user names"},
    {EIdentityKind::credential, "credential", "credentials"},
};

// Words of device names, and names that many machines and users have.
constexpr std::string_view commonWords[] = {
    // clang-format off
    "ata", "block", "boot", "by", "bus", "char", "data", "dev", "device", "disk", "dm", "eui", "exp", "fc",
    "hdd", "home", "host", "id", "ip", "iscsi", "label", "lun", "lv", "lvm", "mapper", "md", "mmc", "naa",
    "name", "nvme", "part", "partlabel", "partuuid", "path", "pci", "phy", "port", "raid", "root", "sas",
    "scsi", "sd", "ssd", "swap", "target", "usb", "uuid", "vg", "virtio", "virtual", "wwn",
    "admin", "computer", "default", "linux", "localdomain", "localhost", "machine", "none", "server", "system",
    "user",
    // clang-format on
};

bool IsHostOrUser(EIdentityKind kind) {
    return kind == EIdentityKind::hostName || kind == EIdentityKind::userName;
}

// Returns the entropy of a value of this form in bits. A run of one character counts once.
double CountBits(std::string_view canonical) {
    const bool isDecimal = std::ranges::all_of(canonical, IsDigit);
    const double choices = isDecimal ? 10 : IsHex(canonical) ? 16 : 36;
    std::string runs;
    std::ranges::unique_copy(canonical, std::back_inserter(runs));
    return static_cast<double>(runs.size()) * std::log2(choices);
}

EIdentityReach FindReachOfName(std::string_view canonical) {
    constexpr std::size_t least = 2;
    constexpr std::size_t leastOfWord = 8;
    if (canonical.size() < least) {
        return EIdentityReach::itself;
    }
    // Names never reach further: "debian12" may be a host, and is also "debian:12" without its colon.
    const bool isMixed = std::ranges::any_of(canonical, IsDigit) && std::ranges::any_of(canonical, IsLetter);
    return isMixed && canonical.size() >= leastOfWord ? EIdentityReach::words : EIdentityReach::names;
}

EIdentityReach FindReachOfAddress(std::string_view canonical) {
    constexpr std::size_t least = 4;  // digits of "1.1.1.1"
    return canonical.size() < least ? EIdentityReach::itself : EIdentityReach::words;
}

EIdentityReach FindReachOfNumber(std::string_view canonical) {
    constexpr std::size_t least = 3;
    constexpr std::size_t leastOfWord = 6;
    constexpr double bitsOfWord = 24;
    constexpr double bitsOfAnywhere = 32;
    if (canonical.size() < least) {
        return EIdentityReach::itself;
    }
    const double bits = CountBits(canonical);
    if (canonical.size() < leastOfWord || bits < bitsOfWord || std::ranges::none_of(canonical, IsDigit)) {
        return EIdentityReach::names;
    }
    return bits < bitsOfAnywhere ? EIdentityReach::words : EIdentityReach::anywhere;
}

}  // namespace

std::string_view GetKindName(EIdentityKind kind) {
    return FindRow(kindNames, &TKindName::kind, kind)->name;
}

std::string DescribeCounts(const TIdentityCounts& counts) {
    std::string text;
    for (const auto& [kind, count] : counts) {
        const TKindName& row = *FindRow(kindNames, &TKindName::kind, kind);
        text += text.empty() ? "" : ", ";
        text += std::to_string(count) + " " + std::string(count == 1 ? row.name : row.plural);
    }
    return text;
}

EIdentityReach FindReach(std::string_view value, EIdentityKind kind) {
    const std::string canonical = ToCanonical(value);
    if (kind == EIdentityKind::ipAddress) {
        return FindReachOfAddress(canonical);
    }
    const bool isCommon = std::ranges::find(commonWords, canonical) != std::end(commonWords);
    if (isCommon || IsPlaceholder(value) || IsPlaceholder(canonical)) {
        return EIdentityReach::itself;
    }
    return IsHostOrUser(kind) ? FindReachOfName(canonical) : FindReachOfNumber(canonical);
}

}  // namespace NVORHOST
