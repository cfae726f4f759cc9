#include "vorhost/run/run_journal.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <sstream>
#include <string_view>
#include <utility>

namespace NVORHOST {
namespace {

constexpr std::string_view endOfMoves = "end\n";
constexpr std::size_t maxJournalBytes = 4096;

bool WriteAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = ::write(descriptor, text.data(), text.size());
        if (count < 0 && errno != EINTR) {
            return false;
        }
        text.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
    }
    return true;
}

std::string ReadAll(int descriptor) {
    std::string text;
    std::array<char, maxJournalBytes> part{};
    while (text.size() < maxJournalBytes) {
        const ssize_t count = ::read(descriptor, part.data(), part.size());
        if (count == 0 || (count < 0 && errno != EINTR)) {
            break;
        }
        text.append(part.data(), count < 0 ? 0 : static_cast<std::size_t>(count));
    }
    return text;
}

bool IsFileName(const std::string& name) {
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos;
}

std::vector<TMovedFile> ParseMoves(std::istream& lines) {
    std::vector<TMovedFile> moves;
    TMovedFile move;
    while (lines >> move.inode >> move.modifiedSeconds >> move.modifiedNanoseconds) {
        if (lines.get() != ' ' || !std::getline(lines, move.fileName) || !IsFileName(move.fileName)) {
            return {};
        }
        moves.push_back(move);
    }
    return moves;
}

}  // namespace

TMovedFile TMovedFile::Make(std::string fileName, const struct stat& status) {
    return {std::move(fileName), status.st_ino, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

TFileDescriptor CreateJournal(int directory, const std::string& directoryName, int& error) {
    TFileDescriptor journal(::openat(directory, journalName,
                                     O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
    error = journal.IsOpen() && WriteAll(journal.Get(), directoryName + "\n") ? 0 : errno;
    return journal;
}

bool WriteMoves(int journal, const std::vector<TMovedFile>& moves) {
    std::ostringstream text;
    for (const TMovedFile& move : moves) {
        text << move.inode << ' ' << move.modifiedSeconds << ' ' << move.modifiedNanoseconds << ' '
             << move.fileName << '\n';
    }
    text << endOfMoves;
    return WriteAll(journal, text.str());
}

std::optional<TRunJournal> ReadJournal(int directory) {
    const TFileDescriptor file(
        ::openat(directory, journalName, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!file.IsOpen()) {
        return std::nullopt;
    }
    const std::string text = ReadAll(file.Get());
    std::istringstream lines(text);
    TRunJournal journal;
    if (!std::getline(lines, journal.directoryName) || lines.eof()) {
        return std::nullopt;
    }
    if (text.ends_with("\n" + std::string(endOfMoves))) {
        journal.moves = ParseMoves(lines);
    }
    return journal;
}

}  // namespace NVORHOST
