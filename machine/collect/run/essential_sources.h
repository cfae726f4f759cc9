// Which failures of reading end a run, and which leave a gap that the summary names.
//
//   failure                                        source      outcome
//   missing, or an attribute without a value       any         absent data, not reported
//   permission denied (EACCES, EPERM)              any         "Denied" in the summary
//   larger than the cap, not a regular file        any         "Unread" in the summary
//   no answer before the deadline                  any         "Timed out" in the summary
//   input error (EIO and the like)                 any other   "Unread" in the summary
//   input error (EIO and the like)                 essential   the run ends, earlier files stay
//   out of descriptors or memory (EMFILE, ...)     any         the run ends, earlier files stay
//
// One attribute of one device fails with EIO on many sound machines. The essential sources are those that a
// whole collector, or several, take their devices from: an inventory without them would look like that of
// another, emptier machine, and must not replace a good one.
#pragma once

#include <string_view>

namespace NVORHOST {

/// True for a path that a whole collector takes its devices from.
bool IsEssentialSource(std::string_view path);

/// True when errno `cause` means that a medium, a bus or a server failed, rather than that the kernel has no
/// value to give.
bool IsInputError(int cause);

}  // namespace NVORHOST
