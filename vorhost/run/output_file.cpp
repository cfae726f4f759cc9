#include "vorhost/run/output_file.h"

#include "vorhost/run/run_failure.h"

#include <ext/stdio_filebuf.h>
#include <fcntl.h>

#include <cerrno>
#include <iostream>
#include <system_error>
#include <utility>

namespace NVORHOST {
namespace {

[[noreturn]] void Fail(const std::string& path, int error) {
    throw TRunFailure("cannot write " + path + ": " + std::generic_category().message(error));
}

}  // namespace

void WriteToDescriptor(const TFileDescriptor& file, const std::string& path,
                       const std::function<void(std::ostream&)>& write) {
    // Closing a duplicate reports errors.
    TFileDescriptor duplicate(file.IsOpen() ? ::fcntl(file.Get(), F_DUPFD_CLOEXEC, 0) : -1);
    if (!duplicate.IsOpen()) {
        Fail(path, errno);
    }
    __gnu_cxx::stdio_filebuf<char> buffer(duplicate.Get(), std::ios::out | std::ios::binary);
    if (!buffer.is_open()) {
        Fail(path, errno);
    }
    (void)duplicate.Release();
    std::ostream stream(&buffer);
    errno = 0;
    write(stream);
    if (!stream || buffer.close() == nullptr) {
        Fail(path, errno != 0 ? errno : EIO);
    }
}

void WriteStandardOutput(const std::function<void(std::ostream&)>& write) {
    errno = 0;
    write(std::cout);
    if (std::cout) {
        errno = 0;  // may be left over from a call that was not an output error
    }
    if (!std::cout.flush()) {
        Fail("standard output", errno != 0 ? errno : EIO);
    }
}

TOutputFile::TOutputFile(const TOutputPlace& place, const std::string& path, bool syncs,
                         const std::function<void(std::ostream&)>& write) {
    if (place.IsStandardOutput()) {
        WriteStandardOutput(write);
    } else if (place.GetKind() != TOutputPlace::EKind::file) {
        WriteToDescriptor(place.OpenDirectly(), path, write);
    } else {
        workplace_.emplace(*place.FindDirectory(), "cannot write " + path, syncs);
        TFileDescriptor file = workplace_->OpenFile(place.GetName(), O_WRONLY | O_CREAT | O_EXCL);
        WriteToDescriptor(file, path, write);
        workplace_->Finish(place.GetName(), std::move(file));
    }
}

void TOutputFile::MoveIntoPlace(const TSignalGuard& guard) {
    if (workplace_) {
        workplace_->MoveOut(guard);
    }
}

void TOutputFile::SyncMove() const {
    if (workplace_) {
        workplace_->SyncMoves();
    }
}

void WriteOutputFile(const TOutputPlace& place, const std::string& path, bool syncs,
                     const std::function<void(std::ostream&)>& write) {
    TOutputFile file(place, path, syncs, write);
    {
        const TSignalGuard guard;
        file.MoveIntoPlace(guard);
    }
    file.SyncMove();
}

}  // namespace NVORHOST
