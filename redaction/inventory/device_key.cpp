#include "redaction/inventory/device_key.h"

#include "text/ascii.h"
#include "text/hex.h"

#include <algorithm>
#include <iterator>

namespace NVORHOST {
namespace {

struct TMark {
    std::string_view mark;
    bool isWorldWide;
};

constexpr TMark marks[] = {
    {"naa.", true}, {"eui.", true}, {"nguid.", true}, {"uuid.", false}, {"mpath-", true},
};

// Types whose key is an identity unless it is a position.
constexpr std::string_view identifiedTypes[] = {
    "DiskDrive", "DisketteDrive", "DiskPartition", "LocalFileSystem", "OpticalDrive", "TapeDrive",
};

// Types whose key may end in the number of a unit of the device.
constexpr std::string_view unitTypes[] = {"DiskDrive", "DisketteDrive", "OpticalDrive", "TapeDrive"};

template <std::size_t size>
bool Contains(const std::string_view (&list)[size], std::string_view text) {
    return std::ranges::find(list, text) != std::end(list);
}

// Returns the length of "MARKnnn" at the end of `text`; 0 if it ends in something else.
std::size_t FindNumberedEnd(std::string_view text, std::string_view mark) {
    std::size_t start = text.size();
    while (start > 0 && IsDigit(text[start - 1])) {
        --start;
    }
    const bool isEnd = start < text.size() && text.substr(0, start).ends_with(mark);
    return isEnd ? text.size() - start + mark.size() : 0;
}

// The logical units of a USB device share its serial number.
std::size_t FindUnitEnd(std::string_view text) {
    constexpr std::size_t maxLength = 3;
    constexpr std::size_t leastSerial = 8;
    const std::size_t length = FindNumberedEnd(text, "-");
    const std::string_view serial = text.substr(0, text.size() - length);
    const bool isUnit = length != 0 && length <= maxLength && text[text.size() - length + 1] != '0' &&
                        serial.size() >= leastSerial && std::ranges::all_of(serial, IsAlphanumeric);
    return isUnit ? length : 0;
}

// Matches the address of a PCI function, "0000:00:1f.2".
bool StartsWithPciAddress(std::string_view text) {
    const auto colon = text.find(':');
    return colon != std::string_view::npos && colon >= 4 && IsHex(text.substr(0, colon)) &&
           text.size() >= colon + 8 && IsHex(text.substr(colon + 1, 2)) && text[colon + 3] == ':' &&
           IsHex(text.substr(colon + 4, 2)) && text[colon + 6] == '.' && IsDigit(text[colon + 7]);
}

// Matches the name of a device without an address, "floppy.0", "mmc0:0001".
bool IsDeviceName(std::string_view text) {
    const auto end = text.find_first_of(".:");
    const auto isLower = [](char c) { return IsLower(c) || IsDigit(c) || c == '_'; };
    return end != std::string_view::npos && end > 0 && IsLower(text.front()) &&
           std::ranges::all_of(text.substr(0, end), isLower) && IsHex(text.substr(end + 1));
}

bool IsPosition(std::string_view text) {
    return text.find('/') != std::string_view::npos || StartsWithPciAddress(text) || IsDeviceName(text) ||
           text.starts_with("CRYPT-");
}

const TMark* FindMark(std::string_view text) {
    const auto* const mark =
        std::ranges::find_if(marks, [&](const TMark& row) { return text.starts_with(row.mark); });
    return mark == std::end(marks) ? nullptr : mark;
}

}  // namespace

TDeviceKey ParseDeviceKey(std::string_view resourceType, std::string_view key) {
    TDeviceKey parts;
    std::string_view identity = key.substr(0, key.find('@'));
    identity.remove_suffix(FindNumberedEnd(identity, "#"));
    const std::size_t part = FindNumberedEnd(identity, "-part");
    identity.remove_suffix(part);
    if (const TMark* const mark = FindMark(identity)) {
        parts.mark = mark->mark;
        parts.isWorldWide = mark->isWorldWide;
        identity.remove_prefix(mark->mark.size());
    } else if (!Contains(identifiedTypes, resourceType) || IsPosition(identity)) {
        identity = {};
    }
    if (part != 0 || Contains(unitTypes, resourceType)) {
        identity.remove_suffix(FindNumberedEnd(identity, "-n"));
        identity.remove_suffix(FindUnitEnd(identity));
    }
    parts.identity = identity;
    parts.rest = key.substr(parts.mark.size() + identity.size());
    return parts;
}

TCutKey ParseCutKey(std::string_view key) {
    constexpr std::size_t keyLength = 64;
    constexpr std::size_t digestLength = 16;
    const std::size_t place = keyLength - digestLength;
    const bool isCut = key.size() == keyLength && key[place - 1] == '~' && IsHex(key.substr(place));
    return isCut ? TCutKey{key.substr(0, place), key.substr(place)} : TCutKey{key, {}};
}

}  // namespace NVORHOST
