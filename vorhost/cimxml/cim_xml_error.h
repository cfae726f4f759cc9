// How reading and writing CIM-XML report failures: one exception, one line of text that says where and why.
#pragma once

#include "host/export.h"

#include <stdexcept>
#include <string>
#include <string_view>

namespace NVORHOST {

/// A document that cannot be read, or a namespace that cannot be written. The message is one line:
/// "FILE:LINE: class C, property P: cause", with the parts that are known.
/// Exported, so that it can be caught where another module has thrown it.
class NKELVOR20_API TCimXmlError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Why a piece of a document is wrong, by itself: thrown inside this folder by what does not know the place,
/// and turned into a TCimXmlError by what does.
class TCimXmlCause : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Where a document or a namespace is at fault; unknown parts are empty, an unknown line is 0.
struct TCimXmlPlace {
    std::string file;
    int line = 0;
    std::string className;
    std::string propertyName;
};

/// Throws the TCimXmlError of a place. Control characters are made visible, so the message is one line.
[[noreturn]] void ThrowAt(const TCimXmlPlace& place, std::string_view cause);

/// A text as causes quote it: in double quotes, and only its beginning when it is long.
std::string Quote(std::string_view text);

}  // namespace NVORHOST
