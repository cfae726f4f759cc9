// Pseudonyms for identities. They are computed from the original and a secret key and nothing else, so that
// one key gives one pseudonym for one identity in every file, and without the key they cannot be reversed.
// They have the length of the original, with letters for letters and digits for digits, so that files and
// names remain well-formed.
#pragma once

#include "redaction/identities/keyed_digest.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace NVORHOST {

class TPseudonyms {
  public:
    using TKey = TDigestKey;

    /// Errors: throws std::runtime_error if the module of the digest cannot be loaded.
    explicit TPseudonyms(TKey key);
    /// Returns a random key.
    static TKey MakeKey();

    /// Returns the pseudonym of an identifier, which is the same for any case and separators. Different
    /// identifiers have different pseudonyms, and none is its own. Bytes outside ASCII become letters;
    /// hexadecimal texts remain hexadecimal. From 12 hexadecimal digits on, a letter may replace a digit and
    /// a digit a letter. The first of 16 or 32 hexadecimal digits is kept, because it is the format of a
    /// world-wide name. The last 16 of 40 have the pseudonym that they have alone. Placeholders
    /// (placeholders.h) are kept, and no pseudonym is one. Errors: throws std::runtime_error if two
    /// identifiers would have the same pseudonym, which only those
    ///         with bytes outside ASCII can.
    std::string Replace(std::string_view text);

    /// Returns the pseudonym of bytes, by their hexadecimal text.
    std::string ReplaceBytes(std::string_view bytes);

    /// Returns the pseudonym of a host name, part by part, so that the host has the same pseudonym with and
    /// without its domain.
    std::string ReplaceHostName(std::string_view name);

    /// Returns the pseudonym of an Internet address of 4 or 16 bytes. The length of its text does not change.
    /// Addresses with a common prefix keep one, in whole bytes (IPv4) or groups (IPv6). Loopback,
    /// unspecified, multicast and broadcast addresses, the link-local prefix and zeros are kept.
    std::string ReplaceAddress(std::string_view bytes);

  private:
    std::string ReplaceInfiniBandAddress(const std::string& canonical);
    std::string Compute(const std::string& canonical);
    const std::string& ReplaceCanonical(const std::string& canonical);
    // Maps a number to one of [first, last], one-to-one within each context.
    std::uint16_t ReplaceNumber(const std::string& context, std::uint16_t number, std::uint16_t first,
                                std::uint16_t last);
    std::string ReplaceIpv4(std::string_view bytes);
    std::string ReplaceIpv6(std::string_view bytes);

    std::shared_ptr<IKeyedDigest> digest_;
    // The next three only save time: no pseudonym depends on another.
    std::unordered_map<std::string, std::string> pseudonyms_;                 // by canonical text
    std::unordered_map<std::string, std::string> originals_;                  // by pseudonym
    std::map<std::pair<std::string, std::uint16_t>, std::uint16_t> numbers_;  // by context and number
};

}  // namespace NVORHOST
