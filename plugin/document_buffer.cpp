#include "plugin/document_buffer.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <ios>
#include <memory>
#include <new>
#include <string>
#include <utility>

namespace {

// This is enough for documents of some tens of thousands of resources, and only address space until text
// fills it. It is reserved once, because a buffer that doubles copies its text and faults in new pages each
// time.
constexpr std::size_t documentRoom = std::size_t{64} << 20;

// Allows the kernel to use large pages: a page fault for each 4 KiB of text takes longer than rendering it.
// A failure is harmless.
void AdviseLargePages(std::string& room) {
    const auto pageSize = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    void* begin = room.data();
    std::size_t size = room.capacity();
    if (std::align(pageSize, pageSize, begin, size) != nullptr) {
        (void)::madvise(begin, size / pageSize * pageSize, MADV_HUGEPAGE);
    }
}

}  // namespace

std::stringstream MakeDocumentBuffer() {
    std::string room;
    try {
        room.reserve(documentRoom);
        AdviseLargePages(room);
    } catch (const std::bad_alloc&) {
        // The documents of most machines need a hundredth of it: start small and grow.
    }
    std::stringstream buffer(std::move(room), std::ios_base::in | std::ios_base::out);
    // A stream discards text that it has no memory for. Without the exception, half a document would be
    // delivered as a whole one.
    buffer.exceptions(std::ios_base::badbit);
    return buffer;
}
