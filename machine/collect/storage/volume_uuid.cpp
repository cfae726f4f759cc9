#include "machine/collect/storage/volume_uuid.h"

#include "machine/collect/frame/kernel_name.h"
#include "machine/parse/udev_record.h"
#include "text/hex.h"
#include "text/lines.h"

#include <algorithm>
#include <array>

namespace NVORHOST {
namespace {

constexpr std::string_view lvmPrefix = "LVM-";
constexpr std::string_view multipathPrefix = "mpath-";

// Without cryptsetup's integrity, verity and temporary devices, which are not encrypted volumes.
constexpr TMapperKind kinds[] = {
    {lvmPrefix, "LVM logical volume"},
    {multipathPrefix, "Multipath device"},
    {"CRYPT-LUKS", "Encrypted device, LUKS"},
    {"CRYPT-PLAIN-", "Encrypted device"},
    {"CRYPT-LOOPAES-", "Encrypted device, loop-AES"},
    {"CRYPT-TCRYPT-", "Encrypted device, TrueCrypt"},
    {"CRYPT-BITLK-", "Encrypted device, BitLocker"},
    {"CRYPT-FVAULT2-", "Encrypted device, FileVault"},
};

// Words that LVM reserves: it rejects them in names given by users.
constexpr std::string_view mirrorParts[] = {"_rimage", "_rmeta", "_mimage", "_mlog"};
constexpr std::string_view otherParts[] = {"_cdata", "_cmeta",  "_corig",   "_cpool",   "_cvol",
                                           "_tdata", "_tmeta",  "_vdata",   "_vorigin", "_iorig",
                                           "_imeta", "_wcorig", "_pmspare", "_vpool"};

// Returns the place of the single hyphen in "group-volume", npos if there is none. Hyphens within either name
// are doubled.
std::size_t FindNameSeparator(std::string_view mapperName) {
    for (std::size_t i = 0; i < mapperName.size(); ++i) {
        if (mapperName[i] != '-') {
            continue;
        }
        if (i + 1 == mapperName.size() || mapperName[i + 1] != '-') {
            return i;
        }
        ++i;
    }
    return std::string_view::npos;
}

std::string_view VolumePart(std::string_view mapperName) {
    const std::size_t separator = FindNameSeparator(mapperName);
    return separator == std::string_view::npos ? std::string_view{} : mapperName.substr(separator + 1);
}

std::string JoinHyphens(std::string_view name) {
    std::string joined;
    for (std::size_t i = 0; i < name.size(); ++i) {
        joined += name[i];
        if (name.substr(i, 2) == "--") {
            ++i;
        }
    }
    return joined;
}

template <typename TWords>
bool HoldsOneOf(std::string_view text, const TWords& words) {
    return std::any_of(std::begin(words), std::end(words),
                       [&](std::string_view word) { return text.find(word) != std::string_view::npos; });
}

bool IsLayer(std::string_view uuid, std::string_view name) {
    constexpr std::size_t uuidLength = 32;
    const bool hasSuffix = uuid.size() != lvmPrefix.size() + 2 * uuidLength;
    return hasSuffix || IsMirrorPart(name) || HoldsOneOf(VolumePart(name), otherParts);
}

}  // namespace

std::optional<std::string> ArrayUuidFromUdev(std::string_view text, std::string_view metadataVersion) {
    constexpr std::size_t wordDigits = 8;
    constexpr std::size_t words = 4;
    if (text.size() != words * wordDigits + words - 1) {
        return std::nullopt;
    }
    std::string digits;
    for (std::size_t word = 0; word < words; ++word) {
        const std::size_t start = word * (wordDigits + 1);
        const std::string_view part = text.substr(start, wordDigits);
        if (!IsHex(part) || (word > 0 && text[start - 1] != ':')) {
            return std::nullopt;
        }
        for (std::size_t byte = 0; byte < wordDigits; byte += 2) {
            digits += part.substr(metadataVersion == "0.90" ? wordDigits - 2 - byte : byte, 2);
        }
    }
    for (const std::size_t place : std::array<std::size_t, 4>{20, 16, 12, 8}) {
        digits.insert(place, 1, '-');
    }
    return digits;
}

std::optional<TMapperKind> FindMapperKind(std::string_view uuid, std::string_view name) {
    const auto* const kind =
        std::ranges::find_if(kinds, [&](const TMapperKind& row) { return uuid.starts_with(row.uuidPrefix); });
    if (kind == std::end(kinds) || (kind->uuidPrefix == lvmPrefix && IsLayer(uuid, name))) {
        return std::nullopt;
    }
    return *kind;
}

std::string ReadableMapperName(std::string_view uuid, std::string_view name) {
    const std::size_t separator = FindNameSeparator(name);
    if (!uuid.starts_with(lvmPrefix) || separator == std::string_view::npos) {
        return DecodeUdevEscapes(name);
    }
    return JoinHyphens(name.substr(0, separator)) + "/" + JoinHyphens(name.substr(separator + 1));
}

std::optional<TMapperPartition> FindMapperPartition(std::string_view uuid) {
    const auto [part, wholeUuid] = SplitAt(uuid, '-');
    const auto number = FindNumberAfter(part, "part");
    if (!number || wholeUuid.empty()) {
        return std::nullopt;
    }
    return TMapperPartition{*number, wholeUuid};
}

bool IsMultipath(std::string_view uuid) {
    return uuid.starts_with(multipathPrefix);
}

bool IsMirrorPart(std::string_view mapperName) {
    return HoldsOneOf(VolumePart(mapperName), mirrorParts);
}

std::string MapperIdentity(std::string_view uuid) {
    return std::string(uuid.starts_with(lvmPrefix) ? uuid.substr(lvmPrefix.size()) : uuid);
}

}  // namespace NVORHOST
