// Finds what identifies a machine in texts of any kind: forms that identify wherever they are, and values
// that were found in a place of their own and are part of other texts as well.
#pragma once

#include "machine/capture/byte_patterns.h"
#include "machine/capture/identities.h"
#include "machine/capture/identity_forms.h"
#include "machine/capture/pseudonyms.h"

#include <array>
#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace NVORHOST {

/// A value that identifies, as it was found.
struct TIdentity {
    std::string text;       ///< without blanks around it
    std::string canonical;  ///< as `ToCanonical` makes it, without a mark in front
    EIdentityKind kind = EIdentityKind::serialNumber;
    EIdentityReach reach = EIdentityReach::itself;
};

class TIdentityTexts {
  public:
    explicit TIdentityTexts(TPseudonyms::TKey key) : pseudonyms_(key) {}

    /// Remembers a value that identifies, blanks around it aside. Everything must be learnt before the first
    /// text is replaced. A value in a form that identifies is of that form's kind, not of `kind`.
    void Learn(std::string_view value, EIdentityKind kind = EIdentityKind::serialNumber);
    /// The name of a host, with and without its domain; names that every host may have are left out.
    void LearnHostName(std::string_view name);
    /// Remembers every form in a text.
    void LearnForms(std::string_view text, ETextContext context);

    /// The text with a pseudonym in the place of everything that identifies; as long as it was.
    std::string Replace(std::string_view text, ETextContext context) const;

    /// The text itself is a value that identifies; blanks around it stay.
    std::string ReplaceValue(std::string_view value) const { return pseudonyms_.Replace(value); }

    /// The same for the name of a host, which may have a domain; names that every host may have stay.
    std::string ReplaceHostName(std::string_view name) const;

    /// The first identity that is a word of the text, or several words of it, as far as `context` lets it
    /// reach; null when there is none.
    const TIdentity* FindWord(std::string_view text, ETextContext context) const;

    bool IsKnown(std::string_view value) const;
    const std::vector<TIdentity>& GetIdentities() const { return identities_; }
    TIdentityCounts CountIdentities() const;
    TPseudonyms& GetPseudonyms() const { return pseudonyms_; }

  private:
    struct TWordMatch {
        const TIdentity* identity = nullptr;
        std::size_t start = 0;  // behind the mark of a number
        std::size_t length = 0;
    };

    void Add(std::string_view value, EIdentityKind kind);
    void LearnAddress(std::string_view text);
    std::string ReplaceAddressText(std::string_view text) const;
    // The longest identity that the text begins with, the mark of a number aside.
    TWordMatch MatchWord(std::string_view text, ETextContext context) const;
    std::string ReplaceWords(std::string_view text, ETextContext context) const;
    std::string ReplaceForm(std::string_view text, const TFormMatch& form) const;
    std::optional<std::string> ReplaceHexText(std::string_view word, ETextContext context) const;
    std::string ReplaceAnywhere(std::string text) const;
    // As many characters as the canonical text of the identity.
    std::string PseudonymOf(const TIdentity& identity) const;

    mutable TPseudonyms pseudonyms_;  // remembers what it was asked for, and nothing else changes
    std::vector<TIdentity> identities_;
    std::set<std::pair<std::string, EIdentityKind>> known_;       // by text
    std::array<std::vector<std::size_t>, 256> byFirstCharacter_;  // longer ones first
    TBytePatterns everywhere_;  // canonical texts of those that reach anywhere
};

}  // namespace NVORHOST
