// Turns failed assertions of boost, such as a dereferenced null handle, into exceptions, so that a faulty
// plug-in fails its request instead of ending the process.
#pragma once

#include "host/export.h"

#include <stdexcept>
#include <string>

namespace NVORHOST {

/// A failed assertion. The message is "FILE:LINE: FUNCTION: assertion failed: EXPRESSION", followed by ":
/// REASON" if there is one.
class NKELVOR20_API TAssertionError : public std::logic_error {
  public:
    /// `reason` may be null.
    TAssertionError(const char* expression, const char* function, const char* file, long line,
                    const char* reason);
    ~TAssertionError() override;

    const std::string& GetExpression() const { return expression_; }

  private:
    std::string expression_;
};

}  // namespace NVORHOST
