// In a file of its own, so that no operator is inlined into what allocates and its counterpart is not.
#include "allocation_faults.h"

#include <libxml/parser.h>
#include <libxml/xmlmemory.h>

#include <cstdlib>
#include <cstring>
#include <new>
#include <stdexcept>

namespace NVORHOST::NTEST {

std::size_t newsUntilFailure = 0;
std::size_t mallocsUntilFailure = 0;

namespace {

bool Fails(std::size_t& untilFailure) {
    return untilFailure > 0 && --untilFailure == 0;
}

void* FailingMalloc(std::size_t size) {
    return Fails(mallocsUntilFailure) ? nullptr : std::malloc(size);
}

void* FailingRealloc(void* memory, std::size_t size) {
    return Fails(mallocsUntilFailure) ? nullptr : std::realloc(memory, size);
}

char* FailingStrdup(const char* text) {
    return Fails(mallocsUntilFailure) ? nullptr : strdup(text);
}

}  // namespace

void LetXmlAllocationsFail() {
    xmlInitParser();  // what the library sets up once would hide the failures of each document
    if (xmlMemSetup(&std::free, &FailingMalloc, &FailingRealloc, &FailingStrdup) != 0) {
        throw std::runtime_error("the XML library keeps its own allocations");
    }
}

}  // namespace NVORHOST::NTEST

void* operator new(std::size_t size) {
    const bool fails = NVORHOST::NTEST::Fails(NVORHOST::NTEST::newsUntilFailure);
    void* const memory = fails ? nullptr : std::malloc(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}
