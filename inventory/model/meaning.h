// The meaning of properties: unit, words for codes, and what a comparison has to know.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace NINVENTORY {

/// The unit of a number.
enum class EUnit {
    none,
    memoryBytes,       ///< bytes that people count in GiB
    storageBytes,      ///< bytes that people count in GB
    bytes,             ///< bytes that nobody divides, such as the size of a packet
    storageKilobytes,  ///< 1000 bytes
    kibibytes,         ///< 1024 bytes
    blocks,            ///< blocks of the size that the device has
    bits,
    bitsPerSecond,
    megahertz,
    megatransfers,  ///< millions of transfers per second
    minutes,
    seconds,
    milliseconds,
    milliwatts,
    milliwattHours,
    millivolts,
    inches,
    centimetres,
    doublewords,
    pciClocks,
    quarterMicroseconds,
    percent,
    lanes,  ///< of PCI Express
    revolutionsPerMinute,
    hardwareAddress,     ///< hexadecimal digits, which people write with colons
    hexadecimal,         ///< a register or an identifier
    binaryCodedVersion,  ///< 0x0210 is 2.10
};

/// The word for a code of a value map.
struct TCodeWord {
    std::uint64_t code;
    std::string_view word;
};

/// How the value of a property identifies one machine or part among all of its kind.
enum class EIdentity {
    none,
    serialNumber,
    assetTag,
    uuid,
    worldWideName,
    hardwareAddress,
    internetAddress,
    hostName,
    person,
    credential,  ///< names a customer, or proves something
    entries,     ///< entries of any kind, which IdentifyingDescriptions names
    deviceKey,   ///< a key made of an identity of the device or volume, or of its position
    mountPoint,  ///< a folder, which may be named for a person
    reference,   ///< the key of another resource
    name,        ///< a name that people give, or that a device has from its identity
};

/// Unit, words and traits of a property. Plain data: adding a row explains a property in every output.
struct TMeaning {
    std::string_view type;  ///< resource type; empty for every type that has no row of its own
    std::string_view property;
    EUnit unit = EUnit::none;
    std::span<const TCodeWord> words{};
    bool isVolatile = false;  ///< changes by itself: clocks, counters, free memory
    EIdentity identity = EIdentity::none;
};

/// Returns every row.
std::span<const TMeaning> GetMeanings();

/// Returns the row of a property; null if it has none.
const TMeaning* FindMeaning(std::string_view resourceType, std::string_view property);

/// Returns the word for a code; nullopt for codes without one.
std::optional<std::string_view> FindWord(std::span<const TCodeWord> words, std::uint64_t code);

/// Returns the word for the text of a code; nullopt if it is not a number or has no word.
std::optional<std::string_view> FindWordOf(const TMeaning& meaning, std::string_view code);

/// Returns the symbol of a unit, such as "MHz"; empty for units that only determine how a number is written.
std::string_view GetSymbol(EUnit unit);

}  // namespace NINVENTORY
