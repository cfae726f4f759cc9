// The failures of reading and writing CIM-XML: one exception with one line of text, which gives place and
// cause.
#pragma once

#include "host/export.h"

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace NVORHOST {

/// A document that cannot be read, or a namespace that cannot be written. The message is one line:
/// "FILE:LINE: class C, property P: cause". Unknown parts of the place are left out.
/// Exported, because exceptions that cross modules must have the same type information in both.
class NKELVOR20_API TCimXmlError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The cause of an error without its place. Thrown only inside this folder; the functions that have the place
/// convert it to a TCimXmlError.
class TCimXmlCause : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The place of an error in a document or namespace.
struct TCimXmlPlace {
    std::optional<std::string> file;
    std::optional<int> line;  ///< 1-based
    std::optional<std::string> className;
    std::optional<std::string> propertyName;  ///< only with a class
};

/// Throws the TCimXmlError of a place. Escapes control characters, so that the message is one line.
[[noreturn]] void ThrowAt(const TCimXmlPlace& place, std::string_view cause);

/// Returns a text in double quotes; a long text is truncated.
std::string Quote(std::string_view text);

}  // namespace NVORHOST
