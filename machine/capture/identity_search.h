// Searches what is about to be handed on for identities that are left in it, in any writing.
#pragma once

#include "machine/capture/capture_tree.h"
#include "machine/capture/identity_texts.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace NVORHOST {

class TIdentitySearch {
  public:
    /// `identities` must outlive this object and know everything already.
    explicit TIdentitySearch(const TIdentityTexts& identities);

    /// The kind of an identity that is in the bytes. Those that reach anywhere are found in upper and lower
    /// case, as hexadecimal digits of their text or bytes, reversed, with bytes swapped, in UTF-16, in
    /// Base64, and with other separators or none; others as words, as far as `context` lets them reach.
    std::optional<EIdentityKind> Find(std::string_view bytes, ETextContext context) const;

  private:
    void AddText(const TIdentity& identity, std::size_t index);
    void AddBytes(const TIdentity& identity, std::size_t index);
    void AddBase64(std::string_view bytes, std::size_t index);
    std::optional<EIdentityKind> KindOfFirst(const TBytePatterns& patterns, std::string_view text) const;

    const TIdentityTexts& identities_;
    TBytePatterns squeezed_;  // letters and digits alone, in lower case
    TBytePatterns raw_;
    TBytePatterns base64_;  // in texts without the ends of lines
};

}  // namespace NVORHOST
