// The failures of reading and writing documents: one exception with one line of text, which gives place and
// cause.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace NVORHOST {

/// The cause of an error without its place. Code that has the place converts it to a TDocumentError.
class TDocumentCause : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The place of an error in a document or namespace.
struct TDocumentPlace {
    std::optional<std::string> file;
    std::optional<int> line;  ///< 1-based
    std::optional<std::string> className;
    std::optional<std::string> propertyName;  ///< only with a class
};

/// A document that cannot be read or written. The message is one line:
/// "FILE:LINE: class C, property P: cause". Unknown parts of the place are left out.
/// Visible, because exceptions that cross modules must have the same type information in both.
class __attribute__((visibility("default"))) TDocumentError : public std::runtime_error {
  public:
    /// For an error that belongs to no document.
    explicit TDocumentError(const std::string& message) : runtime_error(message), cause_(message) {}
    TDocumentError(const std::string& message, TDocumentPlace place, std::string_view cause)
        : runtime_error(message), place_(std::move(place)), cause_(cause) {}

    const TDocumentPlace& GetPlace() const { return place_; }
    /// The message without the place, as the document or the system gave it.
    const std::string& GetCause() const { return cause_; }

  private:
    TDocumentPlace place_;
    std::string cause_;
};

/// Throws the TDocumentError of a place. Escapes control characters, so that the message is one line.
[[noreturn]] void ThrowAt(const TDocumentPlace& place, std::string_view cause);

/// Returns a text in double quotes; a long text is truncated.
std::string Quote(std::string_view text);

}  // namespace NVORHOST
