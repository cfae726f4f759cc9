// How the parts of the program report failures: a step that cannot be completed throws TRunFailure.
#pragma once

#include <exception>
#include <stdexcept>
#include <string>

namespace NVORHOST {

/// The reason why a run ends early, as one line for people without the name of the program.
class TRunFailure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Describes a failure as one line for people. For a lack of memory, the line includes advice.
std::string DescribeFailure(const std::exception& error);

}  // namespace NVORHOST
