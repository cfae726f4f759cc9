// The sources of a property, as a text in the row of its class. Sources are separated by "; ", in the order
// of the search; " or " separates places that have a copy of the same value.
//
//   type 2, 07h              a field of an SMBIOS structure: of the instance's own, else of the first one
//   @type 22, 0Ah            a field of the instance's own structure, if it has one of this type
//   /proc/meminfo MemTotal   a file, folder or link, with the wildcards of path patterns, and a part of it
//   @/size                   a file below the folder of the instance
//   @/speed if awake         a file that the collector reads only while the PCI function is awake
//   @udev ID_REVISION        a property in the record of the instance in the udev database
//   call uname nodename      an answer of the system; "@" in it is the folder of the instance
//   property Model           another property of the instance, from which the value is made
//   constant                 the value is a part of the program
//   none: no such field      the value is never set, and why
//
// Words in front of a source give its form: "text", "number", "uuid" and "date" are what its whole content
// must be, so that malformed values and placeholders are recognised; "[Serial number]" is the element of an
// array that it fills.
#pragma once

#include "text/numbers.h"

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace NVORHOST {

enum class ESourceKind : std::uint8_t { smbios, file, udev, call, property, constant, none };
enum class ESourceForm : std::uint8_t { any, text, number, uuid, date };

struct TSource {
    ESourceKind kind = ESourceKind::none;
    ESourceForm form = ESourceForm::any;
    std::string_view element{};  ///< the element of an array that it fills; empty for the whole value
    bool isCopy = false;         ///< it has a copy of what the source before it has
    bool isOwn = false;          ///< smbios: only the structure of the instance; file: below its folder
    std::uint8_t type = 0;       ///< smbios
    std::uint8_t offset = 0;     ///< smbios
    std::string_view name{};     ///< file: the pattern, after "@" if it is its own; call, property: the name
    std::string_view detail{};   ///< what the source has there; empty for all of it
    std::string_view text{};     ///< as written, without its form
};

namespace NValueSources {

/// Removes `start` from the start of `text` and returns true if it is there.
constexpr bool Take(std::string_view& text, std::string_view start) {
    const bool isThere = text.starts_with(start);
    text.remove_prefix(isThere ? start.size() : 0);
    return isThere;
}

/// Removes and returns what comes before the first `separator`; all of the text if it has none.
constexpr std::string_view TakeUntil(std::string_view& text, std::string_view separator) {
    const std::size_t end = text.find(separator);
    const std::string_view taken = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + separator.size());
    return taken;
}

constexpr std::optional<std::uint8_t> ReadDigits(std::string_view text, unsigned base) {
    unsigned number = 0;
    for (const char c : text) {
        const bool isLetter = base == 16 && c >= 'A' && c <= 'F';
        if (!isLetter && (c < '0' || c > '9')) {
            return std::nullopt;
        }
        number = number * base + static_cast<unsigned>(isLetter ? c - 'A' + 10 : c - '0');
    }
    return text.empty() || number > 0xFF ? std::nullopt : std::optional(static_cast<std::uint8_t>(number));
}

/// Removes "[Serial number] " from the start of a text and returns the name in it.
constexpr std::string_view TakeElement(std::string_view& text) {
    return Take(text, "[") ? TakeUntil(text, "] ") : std::string_view();
}

constexpr ESourceForm TakeForm(std::string_view& text) {
    if (Take(text, "text ")) {
        return ESourceForm::text;
    }
    if (Take(text, "number ")) {
        return ESourceForm::number;
    }
    if (Take(text, "uuid ")) {
        return ESourceForm::uuid;
    }
    return Take(text, "date ") ? ESourceForm::date : ESourceForm::any;
}

/// Parses "2, 07h" and an optional detail.
constexpr bool ParseField(std::string_view text, TSource& source) {
    const auto type = ReadDigits(TakeUntil(text, ", "), 10);
    const auto offset = ReadDigits(TakeUntil(text, "h"), 16);
    source.kind = ESourceKind::smbios;
    source.type = type.value_or(0);
    source.offset = offset.value_or(0);
    source.detail = text;
    return type && offset;
}

constexpr bool ParseNamed(ESourceKind kind, std::string_view text, TSource& source) {
    source.kind = kind;
    source.name = TakeUntil(text, " ");
    source.detail = text;
    return kind == ESourceKind::file || !source.name.empty();
}

/// Parses one source without its form; false if it is malformed.
constexpr bool Parse(std::string_view text, TSource& source) {
    source.text = text;
    if (text == "constant") {
        source.kind = ESourceKind::constant;
        return true;
    }
    if (Take(text, "none: ")) {
        source.detail = text;
        return !text.empty();
    }
    if (Take(text, "@udev ")) {
        return ParseNamed(ESourceKind::udev, text, source);
    }
    if (Take(text, "call ")) {
        return ParseNamed(ESourceKind::call, text, source);
    }
    if (Take(text, "property ")) {
        return ParseNamed(ESourceKind::property, text, source);
    }
    source.isOwn = Take(text, "@");
    if (Take(text, "type ")) {
        return ParseField(text, source);
    }
    const bool isPath = text.starts_with('/') || (source.isOwn && (text.empty() || text.starts_with(' ')));
    return isPath && ParseNamed(ESourceKind::file, text, source);
}

/// Calls `visit` with each source of a text; returns false at the first malformed one.
template <typename TVisit>
constexpr bool ForEach(std::string_view text, const TVisit& visit) {
    while (!text.empty()) {
        std::string_view copies = TakeUntil(text, "; ");
        const std::string_view element = TakeElement(copies);
        const ESourceForm form = TakeForm(copies);
        for (bool isCopy = false; !isCopy || !copies.empty(); isCopy = true) {
            TSource source;
            source.element = element;
            source.form = form;
            source.isCopy = isCopy;
            if (!Parse(TakeUntil(copies, " or "), source)) {
                return false;
            }
            visit(source);
        }
    }
    return true;
}

}  // namespace NValueSources

class TValueSources {
  public:
    constexpr TValueSources() = default;
    /// A malformed text does not compile, because rows are constants.
    constexpr TValueSources(const char* text) : text_(text) {  // NOLINT(*-explicit-*): a cell of a table
        if (text_.empty() || !NValueSources::ForEach(text_, [](const TSource&) {})) {
            throw std::invalid_argument("malformed sources");
        }
    }

    std::string_view GetText() const { return text_; }
    std::vector<TSource> List() const {
        std::vector<TSource> sources;
        (void)NValueSources::ForEach(text_, [&](const TSource& source) { sources.push_back(source); });
        return sources;
    }

  private:
    std::string_view text_;
};

}  // namespace NVORHOST
