// Pseudonyms of what identifies a machine. They follow from the original and a random key that nobody keeps,
// so there is no way back; and they are as long as the original, letter for letter and digit for digit, so
// that files and names with them stay well formed.
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
    /// A key of the system's random numbers.
    static TKey MakeKey();

    /// The pseudonym of an identifier, the same for the same letters and digits, in any case and with any
    /// separators; two identifiers have two pseudonyms, and none is its own. Bytes that are not
    /// ASCII become letters. Letters of a text that is hexadecimal stay hexadecimal. Where 16 or 32
    /// hexadecimal digits may be a world-wide name, the first one, its format, stays. Texts that firmware
    /// vendors leave where a value belongs (placeholders.h) identify nobody and stay as they are.
    std::string Replace(std::string_view text);

    /// Keeps the text from being the pseudonym of another one.
    void Reserve(std::string_view text);

    /// The same for bytes, by their hexadecimal text.
    std::string ReplaceBytes(std::string_view bytes);

    /// Names part by part, so that a host has one pseudonym with and without its domain.
    std::string ReplaceHostName(std::string_view name);

    /// Of an Internet address of 4 or 16 bytes. Its text stays as long as it is; addresses with a common part
    /// keep one, up to whole bytes (IPv4) or groups (IPv6). Loopback, unspecified, multicast and broadcast
    /// addresses, the link-local prefix and zeros stay.
    std::string ReplaceAddress(std::string_view bytes);

  private:
    std::string MakeCandidate(std::string_view canonical, std::size_t kept, std::uint64_t attempt) const;
    const std::string& ReplaceCanonical(const std::string& canonical);
    // A number of [first, last] for each of them, within each context on its own.
    std::uint16_t ReplaceNumber(const std::string& context, std::uint16_t number, std::uint16_t first,
                                std::uint16_t last);
    std::string ReplaceIpv4(std::string_view bytes);
    std::string ReplaceIpv6(std::string_view bytes);

    TKey key_;
    std::map<std::string, std::string> pseudonyms_;  // by canonical text
    std::set<std::string> taken_;
    std::set<std::string> originals_;  // canonical texts that no other one may become
    std::map<std::string, std::map<std::uint16_t, std::uint16_t>> numbers_;  // by context
    std::map<std::string, std::set<std::uint16_t>> takenNumbers_;
};

}  // namespace NVORHOST
