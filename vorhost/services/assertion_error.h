// What becomes of a failed assertion of boost, above all of a null handle that is dereferenced: an exception,
// so that a faulty plug-in ends its request and not the process.
#pragma once

#include "host/export.h"

#include <stdexcept>
#include <string>

namespace NVORHOST {

/// A failed assertion. The message is "FILE:LINE: FUNCTION: assertion failed: EXPRESSION", with ": REASON"
/// behind it when one was given.
class NKELVOR20_API TAssertionError : public std::logic_error {
  public:
    /// `reason` may be null; the other texts are taken as they are.
    TAssertionError(const char* expression, const char* function, const char* file, long line,
                    const char* reason);
    ~TAssertionError() override;

    const std::string& GetExpression() const { return expression_; }

  private:
    std::string expression_;
};

}  // namespace NVORHOST
