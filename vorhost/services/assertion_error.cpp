#include "vorhost/services/assertion_error.h"

#include <boost/assert.hpp>

namespace NVORHOST {
namespace {

std::string Describe(const char* expression, const char* function, const char* file, long line,
                     const char* reason) {
    std::string text = std::string(file) + ':' + std::to_string(line) + ": " + function +
                       ": assertion failed: " + expression;
    if (reason != nullptr) {
        text.append(": ").append(reason);
    }
    return text;
}

}  // namespace

TAssertionError::TAssertionError(const char* expression, const char* function, const char* file, long line,
                                 const char* reason)
    : std::logic_error(Describe(expression, function, file, line, reason)), expression_(expression) {}

TAssertionError::~TAssertionError() = default;

}  // namespace NVORHOST

// The headers of boost call these handlers if BOOST_ENABLE_ASSERT_HANDLER is defined.
NKELVOR20_API void boost::assertion_failed(const char* expression, const char* function, const char* file,
                                           long line) {
    throw NVORHOST::TAssertionError(expression, function, file, line, nullptr);
}

NKELVOR20_API void boost::assertion_failed_msg(const char* expression, const char* reason,
                                               const char* function, const char* file, long line) {
    throw NVORHOST::TAssertionError(expression, function, file, line, reason);
}
