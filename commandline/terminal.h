// The terminal that a command writes to.
#pragma once

#include <cstddef>

namespace NVORHOST {

struct TTerminal {
    std::size_t width = 0;   ///< columns; 0 if the output is not a terminal
    bool hasColour = false;  ///< false without a terminal, for a dumb one, and with NO_COLOR
};

/// True if the environment asks for texts in UTF-8: LC_ALL, LC_CTYPE or LANG, the first that is set.
bool HasUtf8Locale();

/// Looks at standard output.
TTerminal FindTerminal();

}  // namespace NVORHOST
