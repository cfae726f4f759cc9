// The failure language of the program: every step that cannot go on throws TRunFailure.
#pragma once

#include <stdexcept>

namespace NVORHOST {

/// Why a run ends early: one line for people, without the program's name.
class TRunFailure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

}  // namespace NVORHOST
