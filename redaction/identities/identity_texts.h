// Finds and replaces the identities of a machine in texts of any kind: self-describing forms, and values that
// were learned from a field of their own and occur in other texts as well.
#pragma once

#include "redaction/identities/byte_patterns.h"
#include "redaction/identities/identities.h"
#include "redaction/identities/identity_forms.h"
#include "redaction/identities/pseudonyms.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace NVORHOST {

/// A learned identity.
struct TIdentity {
    std::string text;       ///< without blanks around it
    std::string canonical;  ///< the result of `ToCanonical`, without a prefix
    EIdentityKind kind = EIdentityKind::serialNumber;
    EIdentityReach reach = EIdentityReach::itself;
};

class TIdentityTexts {
  public:
    explicit TIdentityTexts(TPseudonyms::TKey key) : pseudonyms_(key) {}

    /// Learns an identity; blanks around it are ignored. All identities must be learned before the first text
    /// is replaced. A value in a self-describing form has the kind of that form instead of `kind`.
    void Learn(std::string_view value, EIdentityKind kind = EIdentityKind::serialNumber);
    /// Learns the name of a host, with and without its domain. Common names such as "localhost" are ignored.
    void LearnHostName(std::string_view name);
    /// Learns every self-describing form in a text.
    void LearnForms(std::string_view text, ETextContext context);

    /// Returns `text` with a pseudonym in place of every identity. The length does not change.
    std::string Replace(std::string_view text, ETextContext context) const;

    /// Returns the pseudonym of a text that is an identity as a whole. Blanks around it are kept.
    std::string ReplaceValue(std::string_view value) const { return pseudonyms_.Replace(value); }

    /// Returns the pseudonym of an IP address; replaces the identities in any other text.
    std::string ReplaceIpAddress(std::string_view text) const;

    /// Returns the pseudonym of a host name, which may have a domain. Common names are kept.
    std::string ReplaceHostName(std::string_view name) const;

    /// Returns the first identity that consists of whole words of `text`, within the reach that `context`
    /// allows; nullptr if there is none.
    const TIdentity* FindWord(std::string_view text, ETextContext context) const;

    bool IsKnown(std::string_view value) const;
    const std::vector<TIdentity>& GetIdentities() const { return identities_; }
    TIdentityCounts CountIdentities() const;
    TPseudonyms& GetPseudonyms() const { return pseudonyms_; }

  private:
    struct TWordMatch {
        const TIdentity* identity = nullptr;
        std::size_t start = 0;  // after the prefix of a number
        std::size_t length = 0;
    };

    void Add(std::string_view value, EIdentityKind kind);
    void LearnAddress(std::string_view text);
    std::optional<std::string> ReplaceAddressText(std::string_view text) const;
    // Returns the longest identity that the text starts with, not counting the prefix of a number.
    TWordMatch MatchWord(std::string_view text, ETextContext context) const;
    std::string ReplaceWords(std::string_view text, ETextContext context) const;
    std::string ReplaceForm(std::string_view text, const TFormMatch& form) const;
    std::optional<std::string> ReplaceHexText(std::string_view word, ETextContext context) const;
    std::string ReplaceAnywhere(std::string text) const;
    // Returns as many characters as the canonical text of the identity has.
    std::string PseudonymOf(const TIdentity& identity) const;

    mutable TPseudonyms pseudonyms_;  // replacing is const: it adds pseudonyms only
    std::vector<TIdentity> identities_;
    std::set<std::pair<std::string, EIdentityKind>> known_;                    // by text
    std::unordered_map<std::uint64_t, std::vector<std::size_t>> byFirstWord_;  // by the hash of the word
    // False for hashes that are not in byFirstWord_, modulo its size: most words are not found in one step.
    std::vector<bool> isFirstWord_ = std::vector<bool>(std::size_t{1} << 17U);
    TBytePatterns everywhere_;  // canonical texts of the identities that reach anywhere
};

}  // namespace NVORHOST
