// The failure language of the program: every step that cannot go on throws TRunFailure.
#pragma once

#include <exception>
#include <stdexcept>
#include <string>

namespace NVORHOST {

/// Why a run ends early: one line for people, without the program's name.
class TRunFailure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The failure as one line for people; one of short memory ends in what to do about it.
std::string DescribeFailure(const std::exception& error);

}  // namespace NVORHOST
