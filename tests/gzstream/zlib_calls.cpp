// The linker's --wrap option determines the names of the wrappers.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,readability-identifier-naming)
#include "zlib_calls.h"

#include "tests/cancellation/cancelled_thread.h"

#include <new>

TZlibCalls& ZlibCalls() {
    static TZlibCalls calls;
    return calls;
}

extern "C" {

gzFile __real_gzopen(const char* name, const char* mode);
gzFile __real_gzdopen(int fd, const char* mode);
int __real_gzread(gzFile file, voidp target, unsigned size);
int __real_gzwrite(gzFile file, voidpc source, unsigned size);
int __real_gzclose(gzFile file);
int __real_gzsetparams(gzFile file, int level, int strategy);
void* __real__ZnamRKSt9nothrow_t(std::size_t size, const std::nothrow_t& tag) noexcept;
void __real__ZdaPv(void* memory) noexcept;

gzFile __wrap_gzopen(const char* name, const char* mode) {
    ZlibCalls().openModes.emplace_back(mode);
    return ZlibCalls().opened.emplace_back(__real_gzopen(name, mode));
}

gzFile __wrap_gzdopen(int fd, const char* mode) {
    ZlibCalls().openModes.emplace_back(mode);
    return ZlibCalls().opened.emplace_back(__real_gzdopen(fd, mode));
}

int __wrap_gzread(gzFile file, voidp target, unsigned size) {
    ZlibCalls().readSizes.push_back(size);
    return __real_gzread(file, target, size);
}

int __wrap_gzwrite(gzFile file, voidpc source, unsigned size) {
    const std::size_t index = ZlibCalls().writeSizes.size();
    ZlibCalls().writeSizes.push_back(size);
    ZlibCalls().writeSources.push_back(source);
    if (index >= ZlibCalls().failingWrite) {
        return 0;
    }
    if (ZlibCalls().pretendWrites) {
        return static_cast<int>(size);
    }
    return __real_gzwrite(file, source, size) - (index == ZlibCalls().shortWrite ? 1 : 0);
}

int __wrap_gzclose(gzFile file) {
    ZlibCalls().closed.push_back(file);
    const int answer = __real_gzclose(file);
    if (ZlibCalls().cancelsInClose) {
        NTEST::CancelThisThread();
    }
    return answer == Z_OK ? ZlibCalls().closeResult : answer;
}

int __wrap_gzsetparams(gzFile file, int level, int strategy) {
    ZlibCalls().parameters.emplace_back(level, strategy);
    return __real_gzsetparams(file, level, strategy);
}

void* __wrap__ZnamRKSt9nothrow_t(std::size_t size, const std::nothrow_t& tag) noexcept {
    if (ZlibCalls().noMemory) {
        return nullptr;
    }
    return const_cast<void*>(ZlibCalls().heldArrays.emplace_back(__real__ZnamRKSt9nothrow_t(size, tag)));
}

void __wrap__ZdaPv(void* memory) noexcept {
    std::erase(ZlibCalls().heldArrays, memory);
    __real__ZdaPv(memory);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,readability-identifier-naming)
