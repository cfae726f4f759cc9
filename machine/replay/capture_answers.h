// What a captured tree keeps beside its files: the answers of system calls, and which files refused to be
// read. One text file at the top of the tree, so that people can review it.
#pragma once

#include "machine/system/system_calls.h"
#include "machine/system/system_files.h"

#include <compare>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// Where the answers stand in a captured tree.
inline constexpr std::string_view captureAnswersPath = "/noxinfo-system.txt";

/// The ways to look at a path.
enum class EAccess { read, list, readLink, exists };

struct TPathAccess {
    EAccess access;
    std::string path;  ///< as it was asked for

    auto operator<=>(const TPathAccess&) const = default;
};

struct TCaptureAnswers {
    std::optional<std::string> localTime;  ///< of the capture, as a CIM date-time
    std::optional<std::string> kernelRelease, nodeName, architecture, hypervisorSignature;
    std::optional<std::uint32_t> pageSizeBytes, clockTicksPerSecond;
    std::map<std::int64_t, int> utcOffsetMinutes;  ///< by the moments that were asked about
    std::optional<std::vector<TInterfaceAddress>> interfaceAddresses;
    /// Accesses that ended otherwise than the tree's own files let them end.
    std::map<TPathAccess, EReadStatus> refusals;
};

/// One line for each answer. Bytes that would break a line or a word are written as "%hh".
std::string FormatCaptureAnswers(const TCaptureAnswers& answers);

/// Lines of another form are skipped, so that an older program reads what a newer one wrote.
TCaptureAnswers ParseCaptureAnswers(std::string_view text);

/// Adds to `answers` what `more` holds; where both have a single value, that of `more` replaces it.
void MergeCaptureAnswers(const TCaptureAnswers& more, TCaptureAnswers& answers);

/// Of the tree behind `files`; ok with nothing in it when the tree keeps none.
TReadResult<TCaptureAnswers> ReadCaptureAnswers(const ISystemFiles& files);

}  // namespace NVORHOST
