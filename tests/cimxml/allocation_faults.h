// The program's own operator new and the XML library's allocations, both of which fail on order.
#pragma once

#include <cstddef>

namespace NVORHOST::NTEST {

/// Allocations by operator new until the one that fails; 0: none does.
extern std::size_t newsUntilFailure;
/// The same for the XML library, once `LetXmlAllocationsFail` was called.
extern std::size_t mallocsUntilFailure;

void LetXmlAllocationsFail();

}  // namespace NVORHOST::NTEST
