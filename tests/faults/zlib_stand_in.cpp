// The linker's --wrap option determines the names of the wrappers.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,readability-identifier-naming)
#include "zlib_stand_in.h"

#include <algorithm>

TZlibStandIn& Zlib() {
    static TZlibStandIn standIn;
    return standIn;
}

gzFile TZlibStandIn::Open(const char* mode) {
    calls.emplace_back('o', 0);
    if (faults.Strike(EZlibFault::openFails)) {
        return nullptr;
    }
    auto* const file = new TFile;  // freed by close, or when `leftOpen` is emptied
    if (mode[0] == 'w') {
        file->writtenIndex = written.size();
        written.emplace_back();
    }
    auto* const handle = reinterpret_cast<gzFile>(file);
    Opened(handle);
    return handle;
}

int TZlibStandIn::Read(gzFile file, char* target, std::size_t size) {
    calls.emplace_back('r', size);
    if (faults.Strike(EZlibFault::readError)) {
        return -1;
    }
    const std::size_t got = readable.copy(target, size, FileOf(file).readAt);
    FileOf(file).readAt += got;
    return static_cast<int>(got);
}

int TZlibStandIn::Write(gzFile file, const char* source, std::size_t size) {
    calls.emplace_back('w', size);
    if (faults.Strike(EZlibFault::nothingWritten)) {
        return 0;
    }
    if (faults.Strike(EZlibFault::writeError)) {
        return -1;
    }
    const std::size_t taken = faults.Strike(EZlibFault::shortWrite) ? size - 1 : size;
    written[FileOf(file).writtenIndex].append(source, taken);
    return static_cast<int>(taken);
}

int TZlibStandIn::Close(gzFile file) {
    calls.emplace_back('c', 0);
    Closed(file);
    delete &FileOf(file);
    return faults.Strike(EZlibFault::closeError) ? Z_ERRNO : Z_OK;
}

void TZlibStandIn::Opened(gzFile file) {
    if (file != nullptr) {
        leftOpen.push_back(file);
    }
}

void TZlibStandIn::Closed(gzFile file) {
    leftOpen.erase(std::remove(leftOpen.begin(), leftOpen.end(), file), leftOpen.end());
}

extern "C" {

gzFile __real_gzopen(const char* name, const char* mode);
gzFile __real_gzdopen(int fd, const char* mode);
int __real_gzread(gzFile file, voidp target, unsigned size);
int __real_gzwrite(gzFile file, voidpc source, unsigned size);
int __real_gzclose(gzFile file);

gzFile __wrap_gzopen(const char* name, const char* mode) {
    if (!Zlib().isReal) {
        return Zlib().Open(mode);
    }
    gzFile const file = __real_gzopen(name, mode);
    Zlib().Opened(file);
    return file;
}

gzFile __wrap_gzdopen(int fd, const char* mode) {
    if (!Zlib().isReal) {
        return Zlib().Open(mode);
    }
    gzFile const file = __real_gzdopen(fd, mode);
    Zlib().Opened(file);
    return file;
}

int __wrap_gzread(gzFile file, voidp target, unsigned size) {
    return Zlib().isReal ? __real_gzread(file, target, size)
                         : Zlib().Read(file, static_cast<char*>(target), size);
}

int __wrap_gzwrite(gzFile file, voidpc source, unsigned size) {
    return Zlib().isReal ? __real_gzwrite(file, source, size)
                         : Zlib().Write(file, static_cast<const char*>(source), size);
}

int __wrap_gzclose(gzFile file) {
    if (!Zlib().isReal) {
        return Zlib().Close(file);
    }
    Zlib().Closed(file);
    return __real_gzclose(file);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,readability-identifier-naming)
