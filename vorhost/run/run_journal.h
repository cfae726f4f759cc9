// The file ".noxinfo-journal" of a private directory. Its first line is the name of that directory, which
// proves that the directory is one of this program's, also after somebody has renamed a directory. Before
// several files are moved out, it receives a line for each of them, so that the next run can complete what a
// run that was killed between two moves had begun.
#pragma once

#include "os/file_descriptor.h"

#include <sys/stat.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace NVORHOST {

inline constexpr char journalName[] = ".noxinfo-journal";

/// A finished file, known by more than its name. Moving the file changes none of it.
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
    std::vector<TMovedFile> moves;  ///< empty unless the list was written to its end
};

/// Creates the journal in a private directory of that name. Errors: `error` is an errno, else 0; the file may
/// be open nonetheless, incomplete.
TFileDescriptor BeginJournal(int directory, const std::string& directoryName, int& error);

/// Appends the list of moves. False, with errno, when it cannot be written.
bool RecordMoves(int journal, const std::vector<TMovedFile>& moves);

/// Absent when there is no journal, or a malformed one.
std::optional<TRunJournal> ReadJournal(int directory);

}  // namespace NVORHOST
