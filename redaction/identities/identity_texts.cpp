#include "redaction/identities/identity_texts.h"

#include "machine/parse/ip_address.h"
#include "machine/parse/placeholders.h"
#include "redaction/identities/canonical_form.h"
#include "text/ascii.h"
#include "text/hex.h"
#include "text/trim.h"
#include "text/words.h"

#include <algorithm>
#include <span>

namespace NVORHOST {
namespace {

// Returns the length of the separator at the start of `text`: one character, or an escape of systemd and udev
// such as "\x2d".
std::size_t SeparatorLength(std::string_view text) {
    constexpr std::size_t escapeLength = 4;
    if (text.empty() || IsIdentityCharacter(text.front())) {
        return 0;
    }
    const bool isEscape = text.size() >= escapeLength && text.starts_with("\\x") && IsHex(text.substr(2, 2));
    return isEscape ? escapeLength : 1;
}

std::size_t SeparatorsLength(std::string_view text) {
    std::size_t length = 0;
    while (const std::size_t next = SeparatorLength(text.substr(length))) {
        length += next;
    }
    return length;
}

// Returns a hash of the identity characters that `text` starts with, which is the same in any case.
// Source: FNV-1a, 64 bits.
std::uint64_t HashFirstWord(std::string_view text) {
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (const char c : text) {
        if (!IsIdentityCharacter(c)) {
            break;
        }
        hash = (hash ^ static_cast<std::uint8_t>(ToLower(c))) * 0x100000001B3U;
    }
    return hash;
}

// Replaces the identity characters of `text` by those of the pseudonym, keeping their case.
std::string Disguise(std::string_view text, std::string_view pseudonym) {
    std::string replaced(text);
    const TCaseOf caseOf(text);
    std::size_t next = 0;
    for (std::size_t i = 0; i < text.size() && next < pseudonym.size();) {
        if (const std::size_t separator = SeparatorLength(text.substr(i))) {
            i += separator;
            continue;
        }
        replaced[i] = caseOf.Apply(text[i], pseudonym[next]);
        ++next;
        ++i;
    }
    return replaced;
}

// Returns the length of the start of `text` that has the words of `words`, in any case and with any
// separators; 0 if it has other words.
std::size_t MatchWords(std::string_view text, std::string_view words) {
    std::size_t length = 0;
    for (std::size_t i = 0; i < words.size();) {
        if (const std::size_t separators = SeparatorsLength(words.substr(i))) {
            const std::size_t found = SeparatorsLength(text.substr(std::min(length, text.size())));
            if (found == 0) {
                return 0;
            }
            i += separators;
            length += found;
            continue;
        }
        if (length >= text.size() || ToLower(text[length]) != ToLower(words[i])) {
            return 0;
        }
        ++length;
        ++i;
    }
    return EndsWord(text, length) ? length : 0;
}

// An IPv4 address has the same separator between all numbers; "10:0:0:5" is a position on a SCSI bus.
bool IsSpelledLikeAddress(std::string_view text, std::string_view address) {
    const bool isIpv4 = address.find(':') == std::string_view::npos;
    const std::string_view separators = isIpv4 ? "._-" : ":_";
    const auto first = text.find_first_of(separators);
    return text.size() == address.size() && first != std::string_view::npos &&
           std::ranges::all_of(text, [&](char c) { return IsAlphanumeric(c) || c == text[first]; });
}

constexpr std::string_view numberMark = "0x";

bool IsAnyHost(std::string_view name) {
    return name == "localhost" || name == "localhost.localdomain" || name == "(none)";
}

// Removes the prefix of a number, and the digit that SCSI puts before a world-wide name.
std::string_view WithoutMark(std::string_view text, EIdentityKind kind) {
    if (text.starts_with(numberMark)) {
        return text.substr(numberMark.size());
    }
    const bool isScsiName = kind == EIdentityKind::worldWideName && text.starts_with('3') &&
                            (text.size() == 17 || text.size() == 33) && IsHex(text);
    return isScsiName ? text.substr(1) : text;
}

// udev may have replaced each separator by "_".
std::optional<std::string> ParseAddress(std::string_view text) {
    const auto withSeparator = [&](char separator) {
        std::string spelled(text);
        std::ranges::replace(spelled, '_', separator);
        return spelled;
    };
    auto address = ParseIpv4Address(withSeparator('.'));
    return address ? address : ParseIpv6Address(withSeparator(':'));
}

bool IsPrintable(std::string_view bytes) {
    return std::ranges::all_of(bytes, [](char c) { return c >= ' ' && c <= '~'; });
}

}  // namespace

void TIdentityTexts::Add(std::string_view value, EIdentityKind kind) {
    const std::string text(WithoutMark(value, kind));
    TIdentity identity{text, ToCanonical(text), kind, EIdentityReach::itself};
    const bool isPlaceholder =
        kind != EIdentityKind::ipAddress && (IsPlaceholder(text) || IsPlaceholder(identity.canonical));
    if (identity.canonical.empty() || isPlaceholder || !known_.insert({text, kind}).second) {
        return;
    }
    identity.reach = FindReach(identity.canonical, kind);
    const std::size_t index = identities_.size();
    if (identity.reach == EIdentityReach::anywhere) {
        everywhere_.Add(identity.canonical, index);
    }
    identities_.push_back(std::move(identity));
    const std::uint64_t hash = HashFirstWord(identities_.back().text);
    byFirstWord_[hash].push_back(index);
    isFirstWord_[hash % isFirstWord_.size()] = true;
}

void TIdentityTexts::LearnAddress(std::string_view text) {
    const auto address = ParseAddress(text);
    if (!address || pseudonyms_.ReplaceAddress(*address) == *address) {
        return;  // loopback and other special addresses are kept
    }
    Add(*FormatIpAddress(*address), EIdentityKind::ipAddress);
    Add(text, EIdentityKind::ipAddress);  // the text as found, possibly with leading zeros
}

void TIdentityTexts::Learn(std::string_view value, EIdentityKind kind) {
    const std::string_view text = TrimBlanks(value);
    const auto form = MatchForm(text, {}, ETextContext::identities);
    if (kind == EIdentityKind::ipAddress) {
        LearnAddress(text);
    } else if (form && form->start + form->length == text.size()) {
        Add(text.substr(form->start), form->kind);
    } else {
        Add(text, kind);
    }
}

void TIdentityTexts::LearnHostName(std::string_view name) {
    const std::string text(TrimBlanks(name));
    if (IsAnyHost(text)) {
        return;
    }
    Add(text, EIdentityKind::hostName);
    if (const auto dot = text.find('.'); dot != std::string::npos && dot != 0) {
        Add(std::string_view(text).substr(0, dot), EIdentityKind::hostName);
    }
}

namespace {

// Calls `visit` with the start of each word of `text`; `visit` returns the number of characters to skip.
template <typename TVisit>
void ForEachWordStart(std::string_view text, TVisit&& visit) {
    for (std::size_t place = 0; place < text.size();) {
        const std::size_t separators = SeparatorLength(text.substr(place));
        place += separators != 0 ? separators : std::max<std::size_t>(visit(place), 1);
    }
}

}  // namespace

void TIdentityTexts::LearnForms(std::string_view text, ETextContext context) {
    ForEachWordStart(text, [&](std::size_t place) {
        const std::string_view rest = text.substr(place);
        if (const auto form = MatchForm(rest, text.substr(0, place), context)) {
            Learn(rest.substr(form->start, form->length), form->kind);
            return form->start + form->length;
        }
        return WordLength(rest);
    });
}

// Returns the pseudonym of an address in text form; nullopt if the text is not an address.
std::optional<std::string> TIdentityTexts::ReplaceAddressText(std::string_view text) const {
    const auto address = ParseAddress(text);
    return address ? FormatIpAddress(pseudonyms_.ReplaceAddress(*address)) : std::nullopt;
}

std::string TIdentityTexts::ReplaceIpAddress(std::string_view text) const {
    return ReplaceAddressText(text).value_or(Replace(text, ETextContext::identities));
}

std::string TIdentityTexts::PseudonymOf(const TIdentity& identity) const {
    if (identity.kind == EIdentityKind::hostName) {
        return ToCanonical(pseudonyms_.ReplaceHostName(identity.text));
    }
    if (identity.kind == EIdentityKind::ipAddress) {
        const auto replaced = ReplaceAddressText(identity.text);
        if (replaced && replaced->size() == identity.text.size()) {
            return ToCanonical(*replaced);
        }
    }
    return pseudonyms_.Replace(identity.canonical);
}

std::string TIdentityTexts::ReplaceHostName(std::string_view name) const {
    return IsAnyHost(TrimBlanks(name)) ? std::string(name) : pseudonyms_.ReplaceHostName(name);
}

bool TIdentityTexts::IsKnown(std::string_view value) const {
    return std::ranges::find(identities_, ToCanonical(value), &TIdentity::canonical) != identities_.end();
}

TIdentityTexts::TWordMatch TIdentityTexts::MatchWord(std::string_view text, ETextContext context) const {
    const EIdentityReach least = context == ETextContext::identities ? EIdentityReach::names
                                 : context == ETextContext::anything ? EIdentityReach::words
                                                                     : EIdentityReach::anywhere;
    TWordMatch longest;
    const std::size_t starts[] = {0, numberMark.size()};
    for (const std::size_t start : std::span(starts, text.starts_with(numberMark) ? 2 : 1)) {
        const std::string_view rest = text.substr(start);
        const std::uint64_t hash = HashFirstWord(rest);
        if (!isFirstWord_[hash % isFirstWord_.size()]) {
            continue;
        }
        const auto sameStart = byFirstWord_.find(hash);
        if (sameStart == byFirstWord_.end()) {
            continue;
        }
        for (const std::size_t index : sameStart->second) {
            const TIdentity& identity = identities_[index];
            const std::size_t length = identity.reach >= least ? MatchWords(rest, identity.text) : 0;
            const bool fits = identity.kind != EIdentityKind::ipAddress ||
                              IsSpelledLikeAddress(rest.substr(0, length), identity.text);
            if (length > longest.length && fits) {
                longest = {&identity, start, length};
            }
        }
    }
    return longest;
}

const TIdentity* TIdentityTexts::FindWord(std::string_view text, ETextContext context) const {
    const TIdentity* found = nullptr;
    ForEachWordStart(text, [&](std::size_t place) {
        const std::string_view rest = text.substr(place);
        if (const TWordMatch match = MatchWord(rest, context); match.length != 0 && found == nullptr) {
            found = match.identity;
        }
        return WordLength(rest);
    });
    return found;
}

std::string TIdentityTexts::ReplaceForm(std::string_view text, const TFormMatch& form) const {
    const std::string_view identity = text.substr(form.start, form.length);
    const auto address = form.kind == EIdentityKind::ipAddress ? ReplaceAddressText(identity) : std::nullopt;
    const bool hasAddress = address && address->size() == identity.size();
    return std::string(text.substr(0, form.start)) +
           (hasAddress ? Disguise(identity, ToCanonical(*address)) : pseudonyms_.Replace(identity));
}

// NVMe writes serial number and model as hexadecimal digits of their characters, including the padding.
std::optional<std::string> TIdentityTexts::ReplaceHexText(std::string_view word, ETextContext context) const {
    constexpr std::size_t least = 6;
    const auto decoded = word.size() < least ? std::nullopt : ParseHex(word);
    if (!decoded || !IsPrintable(*decoded)) {
        return std::nullopt;
    }
    const std::string replaced = ReplaceWords(*decoded, context);
    if (replaced == *decoded) {
        return std::nullopt;
    }
    return ToHex(replaced, std::ranges::any_of(word, IsUpper) ? EHexCase::upper : EHexCase::lower);
}

std::string TIdentityTexts::ReplaceWords(std::string_view text, ETextContext context) const {
    std::string replaced;
    replaced.reserve(text.size());
    ForEachWordStart(text, [&](std::size_t place) {
        const std::string_view rest = text.substr(place);
        replaced += text.substr(replaced.size(), place - replaced.size());
        if (const TWordMatch match = MatchWord(rest, context); match.length != 0) {
            replaced += rest.substr(0, match.start);
            replaced += Disguise(rest.substr(match.start, match.length), PseudonymOf(*match.identity));
        } else if (const auto hex = ReplaceHexText(rest.substr(0, WordLength(rest)), context)) {
            replaced += *hex;
        } else if (const auto form = MatchForm(rest, text.substr(0, place), context)) {
            replaced += ReplaceForm(rest, *form);
        } else {
            replaced += rest.substr(0, std::max<std::size_t>(WordLength(rest), 1));
        }
        return replaced.size() - place;
    });
    replaced += text.substr(replaced.size());
    return replaced;
}

// Replaces identities that are part of a longer word or have other separators or none.
std::string TIdentityTexts::ReplaceAnywhere(std::string text) const {
    std::string squeezed;
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (IsAlphanumeric(text[i])) {
            squeezed += ToLower(text[i]);
            places.push_back(i);
        }
    }
    std::size_t end = 0;
    for (const TBytePatterns::TMatch& match : everywhere_.FindAll(squeezed)) {
        if (match.start < end) {
            continue;
        }
        const std::string pseudonym = PseudonymOf(identities_[match.owner]);
        const std::size_t start = places[match.start];
        const TCaseOf caseOf(
            std::string_view(text).substr(start, places[match.start + match.length - 1] - start + 1));
        for (std::size_t i = 0; i < match.length; ++i) {
            char& c = text[places[match.start + i]];
            c = caseOf.Apply(c, pseudonym[i]);
        }
        end = match.start + match.length;
    }
    return text;
}

std::string TIdentityTexts::Replace(std::string_view text, ETextContext context) const {
    return ReplaceAnywhere(ReplaceWords(text, context));
}

TIdentityCounts TIdentityTexts::CountIdentities() const {
    std::set<std::pair<EIdentityKind, std::string>> different;
    for (const TIdentity& identity : identities_) {
        // A host name with its domain and one without it may name one host.
        const bool isHost = identity.kind == EIdentityKind::hostName;
        different.insert({identity.kind, isHost
                                             ? ToCanonical(identity.text.substr(0, identity.text.find('.')))
                                             : identity.canonical});
    }
    TIdentityCounts counts;
    for (const auto& [kind, canonical] : different) {
        ++counts[kind];
    }
    return counts;
}

}  // namespace NVORHOST
