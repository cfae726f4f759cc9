// Finds what identifies a machine in texts of any kind: forms that tell themselves (UUIDs, MAC addresses,
// world-wide names), and values that were found in a place of their own and stand elsewhere as well.
#pragma once

#include "vorhost/capture/pseudonyms.h"

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// What a text is about. A short serial number or a host name such as "debian" may be any word, so those are
/// looked for only where names of devices and hosts belong.
enum class ETextContext { anything, identities };

class TIdentityTexts {
  public:
    explicit TIdentityTexts(TPseudonyms::TKey key) : pseudonyms_(key) {}

    /// Remembers a value that identifies, with blanks around it off, in the spellings that others make of it.
    void Learn(std::string_view value);
    void LearnHostName(std::string_view name);

    /// The text with a pseudonym in the place of everything that identifies; as long as it was.
    std::string Replace(std::string_view text, ETextContext context) const;

    /// The text itself is a value that identifies; blanks around it stay.
    std::string ReplaceValue(std::string_view value) const { return pseudonyms_.Replace(value); }

    /// The same for the name of a host, which may have a domain; names that every host may have stay.
    std::string ReplaceHostName(std::string_view name) const;

    bool IsKnown(std::string_view value) const;
    TPseudonyms& GetPseudonyms() const { return pseudonyms_; }

  private:
    struct TSpelling {
        std::string text;
        std::string replacement;
        bool isUnmistakable = false;  // no other word is likely to be spelled so
    };

    void AddSpelling(std::string text, std::string replacement, bool isUnmistakable);
    // The spelling that `text` begins with, as a whole word; null when it is none.
    const TSpelling* FindSpelling(std::string_view text, ETextContext context) const;

    mutable TPseudonyms pseudonyms_;  // what was asked for is remembered, nothing else
    std::map<std::string, std::vector<TSpelling>, std::less<>> spellings_;  // by their first characters
};

}  // namespace NVORHOST
