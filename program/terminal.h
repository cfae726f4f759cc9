// The terminal that a command writes to.
#pragma once

#include <cstddef>

namespace NVORHOST {

struct TTerminal {
    std::size_t width = 0;   ///< columns; 0 if the output is not a terminal
    bool hasColour = false;  ///< false without a terminal, for a dumb one, and with NO_COLOR
};

/// Looks at standard output.
TTerminal FindTerminal();

}  // namespace NVORHOST
