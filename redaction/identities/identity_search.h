// Searches a redacted capture for identities that are left in it, in any encoding.
#pragma once

#include "redaction/identities/identity_texts.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace NVORHOST {

class TIdentitySearch {
  public:
    /// `identities` must outlive this object and must be complete.
    explicit TIdentitySearch(const TIdentityTexts& identities);

    /// Returns the kind of an identity in `bytes`; nullopt if there is none. Identities that reach anywhere
    /// are found in either case, as hexadecimal digits of their text or bytes, reversed, byte-swapped, in
    /// UTF-16, in Base64, and with other or no separators. Others are found as words, within the reach that
    /// `context` allows.
    std::optional<EIdentityKind> Find(std::string_view bytes, ETextContext context) const;

    /// Returns the kind of an identity that is a word of `text`, within the reach that `context` allows.
    std::optional<EIdentityKind> FindWord(std::string_view text, ETextContext context) const;

  private:
    void AddText(const TIdentity& identity, std::size_t index);
    void AddBytes(const TIdentity& identity, std::size_t index);
    void AddBase64(std::string_view bytes, std::size_t index);
    std::optional<EIdentityKind> KindOfFirst(const TBytePatterns& patterns, std::string_view text) const;

    const TIdentityTexts& identities_;
    TBytePatterns squeezed_;  // letters and digits only, in lower case
    TBytePatterns raw_;
    TBytePatterns printable_;  // those of raw_ that a text can contain
    TBytePatterns base64_;     // in texts without line ends
};

}  // namespace NVORHOST
