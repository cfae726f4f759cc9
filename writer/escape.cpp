#include "writer/escape.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace {

/// The text that replaces a markup character or a line end. Other bytes outside 0x20 to 0x7F become blanks.
struct TReplacement {
    char byte;
    std::string_view text;
};

constexpr TReplacement replacements[] = {
    {'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'\r', ""}, {'\n', ""},
};

static_assert(std::ranges::all_of(replacements,
                                  [](const TReplacement& row) { return row.text.size() <= maxEscapedSize; }));

constexpr std::string_view ReplacementOf(char c) {
    const auto* const row = std::ranges::find(replacements, c, &TReplacement::byte);
    return row == std::end(replacements) ? " " : row->text;
}

/// For each byte, true if it is replaced.
constexpr std::array<bool, 256> isReplaced = [] {
    std::array<bool, 256> table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte) {
        table[byte] = byte < 0x20 || byte > 0x7F;
    }
    for (const TReplacement& row : replacements) {
        table[static_cast<unsigned char>(row.byte)] = true;
    }
    return table;
}();

bool IsReplaced(char c) {
    return isReplaced[static_cast<unsigned char>(c)];
}

}  // namespace

bool IsWrittenAsItIs(std::string_view text) {
    return std::ranges::none_of(text, IsReplaced);
}

char* EscapeTo(char* to, std::string_view text) {
    for (const char c : text) {
        if (IsReplaced(c)) {
            to += ReplacementOf(c).copy(to, std::string_view::npos);
        } else {
            *to++ = c;
        }
    }
    return to;
}

std::string Escape(std::string_view text) {
    std::string escaped(maxEscapedSize * text.size(), '\0');
    escaped.resize(static_cast<std::size_t>(EscapeTo(escaped.data(), text) - escaped.data()));
    return escaped;
}
