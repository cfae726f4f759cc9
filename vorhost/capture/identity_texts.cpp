#include "vorhost/capture/identity_texts.h"

#include "vorhost/capture/text_kinds.h"
#include "vorhost/parse/ip_address.h"
#include "vorhost/parse/numbers.h"
#include "vorhost/parse/placeholders.h"

#include <algorithm>
#include <optional>

namespace NVORHOST {

namespace {

// ---- words

std::size_t WordLength(std::string_view text) {
    const auto* const end = std::ranges::find_if_not(text, IsAlphanumeric);
    return static_cast<std::size_t>(end - text.begin());
}

bool EndsWord(std::string_view text, std::size_t length) {
    return length >= text.size() || !IsAlphanumeric(text[length]);
}

// ---- forms

// Groups of hexadecimal digits (or, where `isHex` is not set, of letters and digits) with one separator. The
// length of the whole form, or 0.
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

// Ethernet has 6 bytes, InfiniBand 20.
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

// "naa.5000c500a1b2c3d4": the prefix is a word of its own and stays.
std::size_t MatchAfterNaa(std::string_view text, std::string_view before) {
    const std::size_t length = WordLength(text);
    const bool isMarked = before.ends_with("naa.") || before.ends_with("eui.");
    return isMarked && (length == 16 || length == 32) && IsHex(text.substr(0, length)) ? length : 0;
}

// A word of 32 hexadecimal digits is a UUID without its dashes, a world-wide name or the like; of 17 and 33 a
// SCSI name; LVM names its volumes by 64 letters and digits.
std::size_t MatchLongWord(std::string_view text) {
    const std::size_t length = WordLength(text);
    const std::string_view word = text.substr(0, length);
    const bool isScsiName = (length == 17 || length == 33) && word.front() == '3';
    return length == 64 || (IsHex(word) && (length == 32 || isScsiName)) ? length : 0;
}

// What stands before the identifying part of a word.
struct TMarkedWord {
    std::string_view mark;
    std::size_t digits;
};

constexpr TMarkedWord markedWords[] = {
    {"0x", 16},                                         // world-wide names, as sysfs and udev write them
    {"0x", 32}, {"enx", 12}, {"wlx", 12}, {"wwx", 12},  // interfaces named by their MAC address
};

// Addresses in memory have the length of world-wide names, but do not start like one.
bool MayStartWorldWideName(char digit) {
    return std::string_view("12356cC").find(digit) != std::string_view::npos;
}

std::size_t MatchMark(std::string_view text) {
    const std::size_t length = WordLength(text);
    for (const TMarkedWord& row : markedWords) {
        if (length != row.mark.size() + row.digits || !text.starts_with(row.mark) ||
            !IsHex(text.substr(row.mark.size(), row.digits))) {
            continue;
        }
        if (row.digits == 12 || MayStartWorldWideName(text[row.mark.size()])) {
            return row.mark.size();
        }
    }
    return 0;
}

// The length of the form that identifies at the start of `text`, or 0.
std::size_t MatchForm(std::string_view text, std::string_view before) {
    if (before.ends_with("ID_PART_ENTRY_TYPE=")) {
        return 0;  // what a partition is for; the same on every machine
    }
    for (const auto match : {MatchUuid, MatchRaidUuid, MatchLvmUuid, MatchMacAddress, MatchLongWord}) {
        if (const std::size_t length = match(text)) {
            return length;
        }
    }
    return MatchAfterNaa(text, before);
}

std::size_t MatchIpv4(std::string_view text, std::string_view before) {
    if (!before.ends_with("ip-")) {
        return 0;  // version numbers look the same
    }
    const std::size_t length = std::min(text.find_first_not_of("0123456789."), text.size());
    return ParseIpv4Address(text.substr(0, length)) ? length : 0;
}

// ---- values

constexpr std::size_t startLength = 3;  // shorter values are words like any other

bool IsUnmistakable(std::string_view value) {
    const bool hasDigit = std::ranges::any_of(value, IsDigit);
    const bool hasLetter = std::ranges::any_of(value, IsLetter);
    return hasDigit && value.size() >= (hasLetter ? 6U : 8U);
}

bool IsAnyHost(std::string_view name) {
    return name == "localhost" || name == "localhost.localdomain" || name == "(none)";
}

std::string WithUnderscores(std::string text) {
    std::string joined;
    for (const char c : text) {
        if (c != ' ') {
            joined += c;
        } else if (!joined.ends_with('_')) {
            joined += '_';
        }
    }
    return joined;
}

}  // namespace

void TIdentityTexts::AddSpelling(std::string text, std::string replacement, bool isUnmistakable) {
    if (text.size() < startLength || text == replacement) {
        return;
    }
    std::vector<TSpelling>& sameStart = spellings_[text.substr(0, startLength)];
    if (std::ranges::find(sameStart, text, &TSpelling::text) != sameStart.end()) {
        return;
    }
    sameStart.push_back({std::move(text), std::move(replacement), isUnmistakable});
    // A longer value is looked for before one that it begins with.
    std::ranges::stable_sort(
        sameStart, [](const TSpelling& a, const TSpelling& b) { return a.text.size() > b.text.size(); });
}

void TIdentityTexts::Learn(std::string_view value) {
    const std::string text(TrimBlanks(value));
    if (text.size() < startLength || IsPlaceholder(text)) {
        return;
    }
    const std::string pseudonym = pseudonyms_.Replace(text);
    const bool isUnmistakable = IsUnmistakable(text);
    AddSpelling(text, pseudonym, isUnmistakable);
    AddSpelling(WithUnderscores(text), WithUnderscores(pseudonym), isUnmistakable);
    AddSpelling(ToHex(text), ToHex(pseudonym), /*isUnmistakable=*/true);  // as NVMe spells it
}

void TIdentityTexts::LearnHostName(std::string_view name) {
    const std::string text(TrimBlanks(name));
    if (text.empty() || IsAnyHost(text)) {
        return;
    }
    AddSpelling(text, pseudonyms_.ReplaceHostName(text), IsUnmistakable(text));
    const std::string host = text.substr(0, text.find('.'));
    AddSpelling(host, pseudonyms_.Replace(host), IsUnmistakable(host));
}

std::string TIdentityTexts::ReplaceHostName(std::string_view name) const {
    return IsAnyHost(TrimBlanks(name)) ? std::string(name) : pseudonyms_.ReplaceHostName(name);
}

bool TIdentityTexts::IsKnown(std::string_view value) const {
    const auto sameStart = spellings_.find(value.substr(0, startLength));
    return sameStart != spellings_.end() &&
           std::ranges::find(sameStart->second, value, &TSpelling::text) != sameStart->second.end();
}

const TIdentityTexts::TSpelling* TIdentityTexts::FindSpelling(std::string_view text,
                                                              ETextContext context) const {
    const auto sameStart = spellings_.find(text.substr(0, startLength));
    if (sameStart == spellings_.end()) {
        return nullptr;
    }
    for (const TSpelling& spelling : sameStart->second) {
        const bool isLookedFor = spelling.isUnmistakable || context == ETextContext::identities;
        if (isLookedFor && text.starts_with(spelling.text) && EndsWord(text, spelling.text.size())) {
            return &spelling;
        }
    }
    return nullptr;
}

std::string TIdentityTexts::Replace(std::string_view text, ETextContext context) const {
    std::string replaced;
    replaced.reserve(text.size());
    while (replaced.size() < text.size()) {
        const std::string_view rest = text.substr(replaced.size());
        const std::string_view before = text.substr(0, replaced.size());
        if (!IsAlphanumeric(rest.front())) {
            replaced += rest.front();
        } else if (const TSpelling* spelling = FindSpelling(rest, context)) {
            replaced += spelling->replacement;
        } else if (const std::size_t address = MatchIpv4(rest, before)) {
            const auto bytes = pseudonyms_.ReplaceAddress(*ParseIpv4Address(rest.substr(0, address)));
            replaced += FormatIpAddress(bytes).value_or("");
        } else if (const std::size_t length = MatchForm(rest, before)) {
            replaced += pseudonyms_.Replace(rest.substr(0, length));
        } else if (const std::size_t mark = MatchMark(rest)) {
            replaced += rest.substr(0, mark);
            replaced += pseudonyms_.Replace(rest.substr(mark, WordLength(rest) - mark));
        } else {
            replaced += rest.substr(0, WordLength(rest));
        }
    }
    return replaced;
}

}  // namespace NVORHOST
