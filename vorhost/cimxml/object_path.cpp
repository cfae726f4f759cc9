#include "vorhost/cimxml/object_path.h"

#include "documents/document_error.h"
#include "documents/xml_text.h"
#include "vorhost/cimxml/value_text.h"

#include <algorithm>
#include <utility>

namespace NVORHOST {
namespace {

using EType = TPathKey::EType;

constexpr std::string_view hostMark = "//";
constexpr std::string_view noKeysMark = "=@";
constexpr std::string_view referenceMark = "(reference)";
constexpr std::size_t longestName = 1024;

bool HasSpace(std::string_view text) {
    return text.find_first_of(xmlSpace) != std::string_view::npos;
}

bool IsNameByte(char byte) {
    const auto code = static_cast<unsigned char>(byte);
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') ||
           byte == '_' || code >= 0x80;
}

bool IsBooleanText(std::string_view text) {
    return text == "TRUE" || text == "FALSE";
}

void AppendQuoted(std::string_view value, std::string& text) {
    text += '"';
    for (const char byte : value) {
        if (byte == '"' || byte == '\\') {
            text += '\\';
        }
        text += byte;
    }
    text += '"';
}

void AppendKey(const TPathKey& key, std::string& text) {
    text.append(key.name.value_or("")).append("=");
    if (key.type == EType::boolean || key.type == EType::number) {
        text += key.value;
        return;
    }
    if (key.type == EType::reference) {
        text += referenceMark;
    }
    AppendQuoted(key.value, text);
}

void AppendNamespace(const TObjectPath& path, std::string& text) {
    if (path.host) {
        text.append(hostMark).append(*path.host).append("/");
    }
    for (std::size_t i = 0; i < path.namespaces.size(); ++i) {
        text.append(i > 0 ? "/" : "").append(path.namespaces[i]);
    }
    text += path.namespaces.empty() ? "" : ":";
}

// Parses a text from the front. Each Take function returns false or nullopt if the text does not match.
class TPathCursor {
  public:
    explicit TPathCursor(std::string_view text) : rest_(text) {}

    bool IsAtEnd() const { return rest_.empty(); }

    bool Take(std::string_view mark) {
        const bool matches = rest_.starts_with(mark);
        rest_.remove_prefix(matches ? mark.size() : 0);
        return matches;
    }

    // Takes the text before the first character of `ends`, or the whole rest.
    std::string_view TakeUntil(std::string_view ends) {
        const std::string_view taken = rest_.substr(0, rest_.find_first_of(ends));
        rest_.remove_prefix(taken.size());
        return taken;
    }

    // Takes the text before a mark, and removes the mark. Takes nothing if there is no mark.
    std::optional<std::string_view> TakeBefore(char mark) {
        const std::size_t end = rest_.find(mark);
        if (end == std::string_view::npos) {
            return std::nullopt;
        }
        const std::string_view taken = rest_.substr(0, end);
        rest_.remove_prefix(end + 1);
        return taken;
    }

    // Takes a quoted text after its opening quote; resolves escapes.
    std::optional<std::string> TakeQuoted() {
        std::string value;
        for (std::size_t i = 0; i < rest_.size(); ++i) {
            if (rest_[i] == '"') {
                rest_.remove_prefix(i + 1);
                return value;
            }
            i += rest_[i] == '\\' ? 1U : 0U;
            if (i < rest_.size()) {
                value += rest_[i];
            }
        }
        return std::nullopt;
    }

  private:
    std::string_view rest_;
};

bool TakeHost(TPathCursor& cursor, TObjectPath& path) {
    if (!cursor.Take(hostMark)) {
        return true;
    }
    path.host = cursor.TakeBefore('/');
    return path.host && IsHostName(*path.host);
}

// A colon before the first quote ends the namespace, because class names, key names and unquoted values do
// not contain colons.
bool TakeNamespaces(std::string_view text, TPathCursor& cursor, TObjectPath& path) {
    if (!path.host && text.substr(0, text.find('"')).find(':') == std::string_view::npos) {
        return true;
    }
    const auto whole = cursor.TakeBefore(':');
    if (!whole) {
        return false;
    }
    for (TPathCursor steps(*whole);;) {
        path.namespaces.emplace_back(steps.TakeUntil("/"));
        if (!IsNamespaceStep(path.namespaces.back())) {
            return false;
        }
        if (!steps.Take("/")) {
            return true;
        }
    }
}

bool TakeKeyValue(TPathCursor& cursor, TPathKey& key) {
    const bool isReference = cursor.Take(referenceMark);
    if (cursor.Take("\"")) {
        const auto value = cursor.TakeQuoted();
        key.type = isReference ? EType::reference : EType::text;
        key.value = value.value_or("");
        return value.has_value();
    }
    key.value = cursor.TakeUntil(",");
    key.type = IsBooleanText(key.value) ? EType::boolean : EType::number;
    return !isReference && (key.type == EType::boolean || IsNumberText(key.value));
}

bool TakeNamedKeys(TPathCursor& cursor, TObjectPath& path) {
    do {
        TPathKey key;
        key.name = cursor.TakeBefore('=');
        if (!key.name || !IsCimName(*key.name) || !TakeKeyValue(cursor, key)) {
            return false;
        }
        path.keys.push_back(std::move(key));
    } while (cursor.Take(","));
    return true;
}

bool TakeKeys(TPathCursor& cursor, TObjectPath& path) {
    if (cursor.IsAtEnd()) {
        return true;
    }
    path.isInstance = true;
    if (cursor.Take(noKeysMark)) {
        return true;
    }
    if (cursor.Take(".")) {
        return TakeNamedKeys(cursor, path);
    }
    path.keys.emplace_back();
    return cursor.Take("=") && TakeKeyValue(cursor, path.keys.back());
}

std::optional<TObjectPath> ParseNested(std::string_view text, std::size_t depth);

bool AreKeysValid(const TObjectPath& path, std::size_t depth) {
    return std::ranges::all_of(path.keys, [depth](const TPathKey& key) {
        return key.type != EType::reference || ParseNested(key.value, depth + 1).has_value();
    });
}

std::optional<TObjectPath> ParseNested(std::string_view text, std::size_t depth) {
    TObjectPath path;
    TPathCursor cursor(text);
    if (depth > maxReferenceNesting || !TakeHost(cursor, path) || !TakeNamespaces(text, cursor, path)) {
        return std::nullopt;
    }
    path.className = cursor.TakeUntil(".=");
    if (!IsCimName(path.className) || !TakeKeys(cursor, path) || !cursor.IsAtEnd() || ToText(path) != text ||
        !AreKeysValid(path, depth)) {
        return std::nullopt;
    }
    return path;
}

bool ParsesAs(TCIMValue::TCIMType type, const std::string& text) {
    try {
        (void)ParseValueText(type, text);  // only the exception matters
        return true;
    } catch (const TDocumentCause&) {
        return false;
    }
}

}  // namespace

std::string ToText(const TObjectPath& path) {
    std::string text;
    AppendNamespace(path, text);
    text += path.className;
    if (path.isInstance && path.keys.empty()) {
        text += noKeysMark;
    }
    const bool isNamed = !path.keys.empty() && path.keys.front().name;
    std::string_view separator = isNamed ? "." : "";
    for (const TPathKey& key : path.keys) {
        text += separator;
        AppendKey(key, text);
        separator = ",";
    }
    return text;
}

std::optional<TObjectPath> ParseObjectPath(std::string_view text) {
    return ParseNested(text, 1);
}

bool IsCimName(std::string_view name) {
    return !name.empty() && name.size() <= longestName && std::ranges::all_of(name, IsNameByte) &&
           !(name.front() >= '0' && name.front() <= '9');
}

bool IsHostName(std::string_view host) {
    return !host.empty() && !HasSpace(host) && host.find('/') == std::string_view::npos;
}

bool IsNamespaceStep(std::string_view step) {
    return !step.empty() && step.size() <= longestName && !HasSpace(step) &&
           step.find_first_of("/:\"") == std::string_view::npos;
}

bool IsNumberText(std::string_view text) {
    constexpr std::size_t longestNumber = 400;  // longer than any real64 without an exponent
    const std::string number(text.substr(0, longestNumber + 1));
    using enum TCIMValue::TCIMType::ECIMType;
    return number.size() <= longestNumber && !HasSpace(number) &&
           (ParsesAs(eUint64, number) || ParsesAs(eSint64, number) || ParsesAs(eReal64, number));
}

}  // namespace NVORHOST
