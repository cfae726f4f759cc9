#include "vorhost/cimxml/xml_text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace NVORHOST {
namespace {

// One length of UTF-8 sequences: what the first byte looks like, and the code points that need that length.
struct TSequenceRow {
    std::size_t length;
    unsigned leadMask;
    unsigned lead;
    std::uint32_t lowest;
    std::uint32_t highest;
};

constexpr TSequenceRow sequenceRows[] = {
    {2, 0xE0, 0xC0, 0x80, 0x7FF},
    {3, 0xF0, 0xE0, 0x800, 0xFFFF},
    {4, 0xF8, 0xF0, 0x10000, 0x10FFFF},
};

unsigned ByteAt(std::string_view bytes, std::size_t at) {
    return static_cast<unsigned char>(bytes[at]);
}

bool IsAllowedControl(char byte) {
    return byte == '\t' || byte == '\n' || byte == '\r';
}

bool IsAllowedCode(std::uint32_t code, const TSequenceRow& row) {
    const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
    return code >= row.lowest && code <= row.highest && !isSurrogate && code != 0xFFFE && code != 0xFFFF;
}

// The length of the allowed sequence that `bytes` begin with, or 0.
std::size_t SequenceLength(std::string_view bytes) {
    const auto* const row = std::ranges::find_if(sequenceRows, [lead = ByteAt(bytes, 0)](const auto& each) {
        return (lead & each.leadMask) == each.lead;
    });
    if (row == std::end(sequenceRows) || bytes.size() < row->length) {
        return 0;
    }
    std::uint32_t code = ByteAt(bytes, 0) & ~row->leadMask;
    for (std::size_t at = 1; at < row->length; ++at) {
        if ((ByteAt(bytes, at) & 0xC0U) != 0x80) {
            return 0;
        }
        code = code << 6U | (ByteAt(bytes, at) & 0x3FU);
    }
    return IsAllowedCode(code, *row) ? row->length : 0;
}

}  // namespace

bool IsXmlText(std::string_view bytes) {
    for (std::size_t at = 0; at < bytes.size();) {
        const unsigned byte = ByteAt(bytes, at);
        std::size_t length = 1;
        if (byte >= 0x80) {
            length = SequenceLength(bytes.substr(at));
        } else if (byte < 0x20 && !IsAllowedControl(bytes[at])) {
            length = 0;
        }
        if (length == 0) {
            return false;
        }
        at += length;
    }
    return true;
}

std::string_view TrimXmlSpace(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(xmlSpace);
    if (begin == std::string_view::npos) {
        return {};
    }
    return text.substr(begin, text.find_last_not_of(xmlSpace) - begin + 1);
}

}  // namespace NVORHOST
