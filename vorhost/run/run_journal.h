// The file ".noxinfo-journal" of a private directory. Its first line is the name of the directory; it proves
// that the directory was created by this program under this name. Before several files are moved, one line
// for each is appended, so that the next run can complete the moves of a run that was killed between them.
#pragma once

#include "os/file_descriptor.h"

#include <sys/stat.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace NVORHOST {

inline constexpr char journalName[] = ".noxinfo-journal";

/// Identifies a file. Moving the file changes none of the members; replacing it changes at least one.
struct TMovedFile {
    std::string fileName;
    std::uint64_t inode = 0;
    std::int64_t modifiedSeconds = 0;
    std::int64_t modifiedNanoseconds = 0;

    static TMovedFile Make(std::string fileName, const struct stat& status);
    bool operator==(const TMovedFile&) const = default;
};

struct TRunJournal {
    std::string directoryName;
    std::vector<TMovedFile> moves;  ///< empty if the list is truncated or malformed
};

/// Creates the journal in the private directory of that name. Sets `error` to 0 or an errno; the file may be
/// open but incomplete after an error.
TFileDescriptor CreateJournal(int directory, const std::string& directoryName, int& error);

/// Appends the list of moves. Errors: false, with errno.
bool WriteMoves(int journal, const std::vector<TMovedFile>& moves);

/// Reads the journal of a private directory.
/// Absent: nullopt if the file is missing or its first line is incomplete.
std::optional<TRunJournal> ReadJournal(int directory);

}  // namespace NVORHOST
