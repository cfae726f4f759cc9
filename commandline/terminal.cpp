#include "commandline/terminal.h"

#include "text/ascii.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <string_view>

namespace NVORHOST {
namespace {

// The program has one thread when this is called.
std::string_view GetVariable(const char* name) {
    const char* const value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe)
    return value == nullptr ? std::string_view() : value;
}

}  // namespace

bool HasUtf8Locale() {
    for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        if (const std::string_view locale = GetVariable(name); !locale.empty()) {
            const std::string lowerCase = ToLowerCase(locale);
            return lowerCase.find("utf-8") != std::string::npos ||
                   lowerCase.find("utf8") != std::string::npos;
        }
    }
    return false;
}

TTerminal FindTerminal() {
    constexpr std::size_t usualWidth = 80;
    if (::isatty(STDOUT_FILENO) == 0) {
        return {};
    }
    winsize size{};
    const bool isKnown = ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return {isKnown ? size.ws_col : usualWidth,
            GetVariable("NO_COLOR").empty() && GetVariable("TERM") != "dumb"};
}

}  // namespace NVORHOST
