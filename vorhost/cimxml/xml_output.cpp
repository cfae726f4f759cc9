#include "vorhost/cimxml/xml_output.h"

#include "vorhost/cimxml/base64.h"

#include <algorithm>
#include <array>

namespace NVORHOST {
namespace {

constexpr std::size_t bufferBytes = std::size_t{64} * 1024;
constexpr std::size_t base64PieceBytes =
    std::size_t{3} * 1024;  // a multiple of 3, so that only the last piece has padding

struct TEscapeRow {
    char byte;
    std::string_view text;
};

// Without a character reference, a parser converts a carriage return to a line feed, and in attributes all
// white space to spaces.
constexpr TEscapeRow textRows[] = {{'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'\r', "&#13;"}};
constexpr TEscapeRow attributeRows[] = {{'&', "&amp;"},  {'<', "&lt;"},  {'>', "&gt;"},  {'\r', "&#13;"},
                                        {'"', "&quot;"}, {'\t', "&#9;"}, {'\n', "&#10;"}};

// The escape sequence of each byte; empty for bytes that are written unchanged.
using TEscapes = std::array<std::string_view, 256>;

template <std::size_t count>
constexpr TEscapes ByByte(const TEscapeRow (&rows)[count]) {
    TEscapes escapes{};
    for (const TEscapeRow& row : rows) {
        escapes[static_cast<unsigned char>(row.byte)] = row.text;
    }
    return escapes;
}

constexpr TEscapes textEscapes = ByByte(textRows);
constexpr TEscapes attributeEscapes = ByByte(attributeRows);

std::string_view EscapeOf(const TEscapes& escapes, char byte) {
    return escapes[static_cast<unsigned char>(byte)];
}

// Calls `write` with each stretch of unchanged bytes and each escape sequence.
template <typename TWrite>
void WriteEscaped(std::string_view text, const TEscapes& escapes, const TWrite& write) {
    while (!text.empty()) {
        const auto* const special =
            std::ranges::find_if(text, [&](char byte) { return !EscapeOf(escapes, byte).empty(); });
        const auto plain = static_cast<std::size_t>(special - text.begin());
        write(text.substr(0, plain));
        if (plain == text.size()) {
            return;
        }
        write(EscapeOf(escapes, text[plain]));
        text.remove_prefix(plain + 1);
    }
}

}  // namespace

TXmlOutput::TXmlOutput(std::ostream& out) : out_(out) {
    buffer_.reserve(bufferBytes);
}

void TXmlOutput::Markup(std::string_view bytes) {
    if (bytes.size() > bufferBytes - buffer_.size()) {
        Flush();
    }
    if (bytes.size() > bufferBytes) {
        out_.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    } else {
        buffer_ += bytes;
    }
}

void TXmlOutput::Text(std::string_view text) {
    WriteEscaped(text, textEscapes, [this](std::string_view piece) { Markup(piece); });
}

void TXmlOutput::Attribute(std::string_view name, std::string_view value) {
    Markup(" ");
    Markup(name);
    Markup("=\"");
    WriteEscaped(value, attributeEscapes, [this](std::string_view piece) { Markup(piece); });
    Markup("\"");
}

void TXmlOutput::Base64(std::string_view bytes) {
    for (std::size_t begin = 0; begin < bytes.size(); begin += base64PieceBytes) {
        Markup(EncodeBase64(bytes.substr(begin, base64PieceBytes)));
    }
}

void TXmlOutput::Flush() {
    out_.write(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
    buffer_.clear();
}

}  // namespace NVORHOST
