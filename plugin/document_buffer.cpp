// Room is made once and ahead: text that has to grow is copied, and its memory touched anew, at every
// doubling.
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

// Enough for the documents of some tens of thousands of resources. It is address space until text fills it.
constexpr std::size_t documentRoom = std::size_t{64} << 20;

// A page fault for each 4 KiB of text takes longer than rendering into it: the kernel may use larger pages.
// An advice: where it is not taken, nothing is lost.
void AdviseLargePages(std::string& room) {
    const auto pageSize = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    void* begin = room.data();
    std::size_t size = room.capacity();
    if (std::align(pageSize, pageSize, begin, size) != nullptr) {
        (void)madvise(begin, size / pageSize * pageSize, MADV_HUGEPAGE);
    }
}

}  // namespace

std::stringstream MakeDocumentBuffer() {
    std::string room;
    try {
        room.reserve(documentRoom);
        AdviseLargePages(room);
    } catch (const std::bad_alloc&) {
        // Documents of most machines need a hundredth of it: start small and grow.
    }
    std::stringstream buffer(std::move(room), std::ios_base::in | std::ios_base::out);
    // A stream swallows what it has no memory for. Without the exception, half a document would be
    // delivered as a whole one.
    buffer.exceptions(std::ios_base::badbit);
    return buffer;
}
