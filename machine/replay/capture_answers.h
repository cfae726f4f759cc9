// The part of a capture that is not files: the answers of system calls and the failed accesses. It is one
// text file at the top of the tree, so that people can review it.
#pragma once

#include "machine/system/system_calls.h"
#include "machine/system/system_files.h"

#include <compare>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// Path of the answers in a captured tree.
inline constexpr std::string_view captureAnswersPath = "/noxinfo-system.txt";

/// The kinds of access to a path.
enum class EAccess { read, list, readLink, exists };

struct TPathAccess {
    EAccess access;
    std::string path;  ///< as passed to the access

    auto operator<=>(const TPathAccess&) const = default;
};

struct TCaptureAnswers {
    std::optional<std::string> localTime;  ///< time of the capture, as a CIM date-time
    std::optional<std::string> kernelRelease, nodeName, architecture, hypervisorSignature;
    std::optional<std::uint32_t> pageSizeBytes, clockTicksPerSecond;
    std::map<std::int64_t, int> utcOffsetMinutes;  ///< by moment
    std::optional<std::vector<TInterfaceAddress>> interfaceAddresses;
    std::map<std::string, TFileSystemSpace, std::less<>> fileSystemSpaces;  ///< by mount point
    /// Failed accesses whose outcome does not follow from the files of the tree.
    std::map<TPathAccess, EReadStatus> refusals;
};

/// Writes one line for each answer. Bytes that would end a line or a word become "%hh".
std::string FormatCaptureAnswers(const TCaptureAnswers& answers);

/// Skips malformed and unknown lines, so that an older program can read the captures of a newer one.
TCaptureAnswers ParseCaptureAnswers(std::string_view text);

/// Adds `more` to `answers`. If both have a single-valued answer, that of `more` replaces it.
void MergeCaptureAnswers(const TCaptureAnswers& more, TCaptureAnswers& answers);

/// Reads the answers of the tree in `files`; empty unless the status is ok.
TReadResult<TCaptureAnswers> ReadCaptureAnswers(const ISystemFiles& files);

}  // namespace NVORHOST
