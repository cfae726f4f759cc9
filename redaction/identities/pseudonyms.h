// Pseudonyms for identities. They are computed from the original and a random key that is not kept, so they
// cannot be reversed. They have the length of the original, with letters for letters and digits for digits,
// so that files and names remain well-formed.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>

namespace NVORHOST {

class TPseudonyms {
  public:
    using TKey = std::array<std::uint64_t, 2>;

    explicit TPseudonyms(TKey key) : key_(key) {}
    /// Returns a random key.
    static TKey MakeKey();

    /// Returns the pseudonym of an identifier, which is the same for any case and separators. Different
    /// identifiers have different pseudonyms, and none is its own. Bytes outside ASCII become letters;
    /// hexadecimal texts remain hexadecimal. The first of 16 or 32 hexadecimal digits is kept, because it is
    /// the format of a world-wide name. Placeholders (placeholders.h) are kept.
    std::string Replace(std::string_view text);

    /// Excludes a text from the pseudonyms of others.
    void Reserve(std::string_view text);

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
    std::string MakeCandidate(std::string_view canonical, std::size_t kept, std::uint64_t attempt) const;
    const std::string& ReplaceCanonical(const std::string& canonical);
    // Maps a number to one of [first, last], one-to-one within each context.
    std::uint16_t ReplaceNumber(const std::string& context, std::uint16_t number, std::uint16_t first,
                                std::uint16_t last);
    std::string ReplaceIpv4(std::string_view bytes);
    std::string ReplaceIpv6(std::string_view bytes);

    TKey key_;
    std::map<std::string, std::string> pseudonyms_;  // by canonical text
    std::set<std::string> taken_;
    std::set<std::string> originals_;  // canonical texts that may not become pseudonyms
    std::map<std::string, std::map<std::uint16_t, std::uint16_t>> numbers_;  // by context
    std::map<std::string, std::set<std::uint16_t>> takenNumbers_;
};

}  // namespace NVORHOST
