// Defines which read failures end a run, and which leave a gap that the summary reports.
//
//   failure                                        source      outcome
//   missing, or an attribute without a value       any         absent data, not reported
//   permission denied (EACCES, EPERM)              any         "Denied" in the summary
//   larger than the cap, not a regular file        any         "Unread" in the summary
//   no answer before the deadline                  any         "Timed out" in the summary
//   the read would wake a sleeping device          any         "Asleep" in the summary
//   input error (EIO and the like)                 any other   "Unread" in the summary
//   input error (EIO and the like)                 essential   the run ends, earlier files stay
//   out of descriptors or memory (EMFILE, ...)     any         the run ends, earlier files stay
//
// A single attribute of a device fails with EIO on many healthy machines. The essential sources are the ones
// from which entire collectors get their devices: an inventory without them would look like that of another,
// smaller machine, and must not replace a good one.
#pragma once

#include <string_view>

namespace NVORHOST {

/// True for a path from which an entire collector gets its devices.
bool IsEssentialSource(std::string_view path);

/// True if errno `cause` is the failure of a medium, a bus or a server; false if the kernel just has no
/// value.
bool IsInputError(int cause);

}  // namespace NVORHOST
