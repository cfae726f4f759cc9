// The failure language of the program: every step that cannot go on throws TRunFailure.
#pragma once

#include <exception>
#include <new>
#include <stdexcept>
#include <string>

namespace NVORHOST {

/// Why a run ends early: one line for people, without the program's name.
class TRunFailure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// As the line for people puts it.
inline std::string DescribeFailure(const std::exception& error) {
    const bool isOutOfMemory = dynamic_cast<const std::bad_alloc*>(&error) != nullptr;
    return isOutOfMemory ? "out of memory" : error.what();
}

}  // namespace NVORHOST
