#include "text/utf8.h"

#include <cstdint>

namespace NVORHOST {
namespace {

// Which lead bytes start a sequence, how long it is, and what its second byte may be: the bounds exclude
// overlong forms, surrogates and code points above U+10FFFF.
struct TLeadByte {
    std::uint8_t first, last, length, secondFrom, secondTo;
};
constexpr TLeadByte leadBytes[] = {
    {0xC2, 0xDF, 2, 0x80, 0xBF}, {0xE0, 0xE0, 3, 0xA0, 0xBF}, {0xE1, 0xEC, 3, 0x80, 0xBF},
    {0xED, 0xED, 3, 0x80, 0x9F}, {0xEE, 0xEF, 3, 0x80, 0xBF}, {0xF0, 0xF0, 4, 0x90, 0xBF},
    {0xF1, 0xF3, 4, 0x80, 0xBF}, {0xF4, 0xF4, 4, 0x80, 0x8F},
};

std::uint8_t ByteAt(std::string_view bytes, std::size_t index) {
    return static_cast<std::uint8_t>(bytes[index]);
}

bool IsTail(const TLeadByte& lead, std::string_view bytes) {
    if (bytes.size() < lead.length) {
        return false;
    }
    const std::uint8_t second = ByteAt(bytes, 1);
    if (second < lead.secondFrom || second > lead.secondTo) {
        return false;
    }
    for (std::size_t i = 2; i < lead.length; ++i) {
        if ((ByteAt(bytes, i) & 0xC0) != 0x80) {
            return false;
        }
    }
    return true;
}

}  // namespace

std::size_t MultiByteLength(std::string_view bytes) {
    if (bytes.empty()) {
        return 0;
    }
    for (const TLeadByte& lead : leadBytes) {
        if (ByteAt(bytes, 0) >= lead.first && ByteAt(bytes, 0) <= lead.last) {
            return IsTail(lead, bytes) ? lead.length : 0;
        }
    }
    return 0;
}

}  // namespace NVORHOST
