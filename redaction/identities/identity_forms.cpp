#include "redaction/identities/identity_forms.h"

#include "machine/parse/ip_address.h"
#include "text/ascii.h"
#include "text/hex.h"
#include "text/words.h"

#include <algorithm>
#include <initializer_list>

namespace NVORHOST {
namespace {

// Returns the length of groups of hexadecimal digits, or of letters and digits unless `isHex`, with one
// separator between them; 0 if `text` does not start with them.
std::size_t MatchGroups(std::string_view text, std::initializer_list<std::size_t> groups,
                        std::string_view separators, bool isHex) {
    std::size_t length = 0;
    for (const std::size_t group : groups) {
        if (length != 0 &&
            (length >= text.size() || separators.find(text[length]) == std::string_view::npos)) {
            return 0;
        }
        length += length != 0 ? 1 : 0;
        const std::string_view word = text.substr(std::min(length, text.size()), group);
        const bool fits = word.size() == group && (isHex ? IsHex(word) : WordLength(word) == group);
        if (!fits) {
            return 0;
        }
        length += group;
    }
    return EndsWord(text, length) ? length : 0;
}

std::size_t MatchUuid(std::string_view text) {
    return MatchGroups(text, {8, 4, 4, 4, 12}, "-_", /*isHex=*/true);
}

std::size_t MatchRaidUuid(std::string_view text) {
    return MatchGroups(text, {8, 8, 8, 8}, ":", /*isHex=*/true);
}

std::size_t MatchLvmUuid(std::string_view text) {
    return MatchGroups(text, {6, 4, 4, 4, 4, 4, 6}, "-", /*isHex=*/false);
}

// Ethernet addresses have 6 bytes, InfiniBand addresses 20.
std::size_t MatchMacAddress(std::string_view text) {
    constexpr std::size_t least = 6;
    constexpr std::size_t most = 20;
    std::size_t bytes = 0;
    std::size_t length = 0;
    while (length + 2 <= text.size() && IsHex(text.substr(length, 2)) && EndsWord(text, length + 2)) {
        ++bytes;
        length += 2;
        if (length >= text.size() || text[length] != ':') {
            break;
        }
        ++length;
    }
    const bool endsInColon = length != 0 && text[length - 1] == ':';
    return bytes >= least && bytes <= most && !endsInColon ? length : 0;
}

// In "naa.5000c500a1b2c3d4" the prefix is a word of its own, which is kept.
std::size_t MatchAfterNaa(std::string_view text, std::string_view before) {
    const std::size_t length = WordLength(text);
    const bool isMarked = before.ends_with("naa.") || before.ends_with("eui.");
    return isMarked && (length == 16 || length == 32) && IsHex(text.substr(0, length)) ? length : 0;
}

// Matches 32 hexadecimal digits, which are a UUID without dashes or a world-wide name; 17 or 33, a SCSI name;
// and 64 letters and digits, an LVM volume.
std::size_t MatchLongWord(std::string_view text) {
    const std::size_t length = WordLength(text);
    const std::string_view word = text.substr(0, length);
    const bool isScsiName = (length == 17 || length == 33) && word.front() == '3';
    return length == 64 || (IsHex(word) && (length == 32 || isScsiName)) ? length : 0;
}

// A NAA name starts with the digit of its format, which addresses of memory pages do not.
bool MayStartWorldWideName(char digit) {
    return std::string_view("12356cC").find(digit) != std::string_view::npos;
}

// Finds the start of a world-wide name in the form of sysfs and udev: "0x5000c500a1b2c3d4",
// "exp0x5000c500a1b2c3d4".
std::size_t FindWorldWideNameMark(std::string_view word) {
    constexpr std::string_view mark = "0x";
    const std::size_t place = word.rfind(mark);
    if (place == std::string_view::npos) {
        return 0;
    }
    const std::string_view digits = word.substr(place + mark.size());
    const bool fits = (digits.size() == 16 || digits.size() == 32) && IsHex(digits);
    return fits && MayStartWorldWideName(digits.front()) ? place + mark.size() : 0;
}

// Finds the MAC address in the name of an interface that is named by it.
std::size_t FindInterfaceMark(std::string_view word) {
    constexpr std::size_t digits = 12;
    for (const std::string_view mark : {"enx", "wlx", "wwx"}) {
        if (word.size() == mark.size() + digits && word.starts_with(mark) &&
            IsHex(word.substr(mark.size()))) {
            return mark.size();
        }
    }
    return 0;
}

// Without "0x", a world-wide name may be any number, except in names of devices.
std::size_t MatchBareWorldWideName(std::string_view text) {
    const std::string_view word = text.substr(0, WordLength(text));
    return word.size() == 16 && IsHex(word) && MayStartWorldWideName(word.front()) ? word.size() : 0;
}

// Matches the part after the date in "iqn.2003-01.org.example:disk1-lun-1", also with "_" in place of dots
// and colons.
std::optional<TFormMatch> MatchQualifiedName(std::string_view text) {
    constexpr std::size_t date = 4;
    constexpr std::size_t start = 12;
    const bool isMarked = (text.starts_with("iqn.") || text.starts_with("iqn_")) && text.size() > start &&
                          std::ranges::all_of(text.substr(date, 4), IsDigit) && text[8] == '-' &&
                          (text[11] == '.' || text[11] == '_');
    if (!isMarked) {
        return std::nullopt;
    }
    const auto isPart = [](char c) {
        return IsAlphanumeric(c) || std::string_view(".:-_").find(c) != std::string_view::npos;
    };
    std::size_t length = 0;
    while (start + length < text.size() && isPart(text[start + length]) &&
           !text.substr(start + length).starts_with("-lun-")) {
        ++length;
    }
    if (length == 0) {
        return std::nullopt;
    }
    return TFormMatch{start, length, EIdentityKind::worldWideName};
}

struct TForm {
    std::size_t (*match)(std::string_view text);
    EIdentityKind kind;
};

constexpr TForm forms[] = {
    {MatchUuid, EIdentityKind::uuid},
    {MatchRaidUuid, EIdentityKind::uuid},
    {MatchLvmUuid, EIdentityKind::uuid},
    {MatchMacAddress, EIdentityKind::macAddress},
};

// A word of 32 digits may be a UUID or a world-wide name. NAA names of this length start with a 6.
EIdentityKind KindOfLongWord(std::string_view word) {
    const bool isName = word.size() == 17 || word.size() == 33 || (word.size() == 32 && word.front() == '6');
    return isName ? EIdentityKind::worldWideName : EIdentityKind::uuid;
}

std::optional<TFormMatch> MatchMarkedForm(std::string_view text) {
    const std::string_view word = text.substr(0, WordLength(text));
    if (const std::size_t mark = FindWorldWideNameMark(word)) {
        return TFormMatch{mark, word.size() - mark, EIdentityKind::worldWideName};
    }
    if (const std::size_t mark = FindInterfaceMark(word)) {
        return TFormMatch{mark, word.size() - mark, EIdentityKind::macAddress};
    }
    return std::nullopt;
}

// Returns the part before the port.
std::string_view PortalOf(std::string_view text) {
    text = text.substr(0, text.find("-iscsi"));
    const auto bracket = text.find(']');
    return text.substr(0, bracket != std::string_view::npos ? bracket : text.find_last_of(":_"));
}

std::string WithSeparator(std::string_view text, char separator) {
    std::string replaced(text);
    std::ranges::replace(replaced, '_', separator);
    return replaced;
}

}  // namespace

std::optional<std::string> ParsePortalAddress(std::string_view text) {
    if (text.find("-iscsi") == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view portal = PortalOf(text);
    if (auto address = ParseIpv4Address(WithSeparator(portal, '.'))) {
        return address;
    }
    return ParseIpv6Address(WithSeparator(portal, ':'));
}

std::optional<TFormMatch> MatchForm(std::string_view text, std::string_view before, ETextContext context) {
    // The type of a partition is a UUID that all machines share.
    if (context == ETextContext::published || before.ends_with("ID_PART_ENTRY_TYPE=")) {
        return std::nullopt;
    }
    const bool isPortal = before.ends_with("ip-") || before.ends_with("ip-[");
    if (isPortal && ParsePortalAddress(text)) {
        return TFormMatch{0, PortalOf(text).size(), EIdentityKind::ipAddress};
    }
    for (const TForm& form : forms) {
        if (const std::size_t length = form.match(text)) {
            return TFormMatch{0, length, form.kind};
        }
    }
    if (const std::size_t length = MatchLongWord(text)) {
        return TFormMatch{0, length, KindOfLongWord(text.substr(0, length))};
    }
    if (const std::size_t length = MatchAfterNaa(text, before)) {
        return TFormMatch{0, length, EIdentityKind::worldWideName};
    }
    if (const std::size_t length = MatchBareWorldWideName(text);
        length != 0 && context == ETextContext::identities) {
        return TFormMatch{0, length, EIdentityKind::worldWideName};
    }
    if (const auto match = MatchMarkedForm(text)) {
        return match;
    }
    return MatchQualifiedName(text);
}

}  // namespace NVORHOST
