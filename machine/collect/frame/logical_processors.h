// The processors of /proc/cpuinfo, shared between collectors.
#pragma once

#include "machine/parse/cpuinfo.h"

#include <vector>

namespace NVORHOST {

class TCollection;

/// In the order of the file, which is read at the first call; empty if it cannot be read.
const std::vector<TLogicalProcessor>& GetLogicalProcessors(TCollection& collection);

}  // namespace NVORHOST
