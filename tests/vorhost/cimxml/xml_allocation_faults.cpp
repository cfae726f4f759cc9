#include "xml_allocation_faults.h"

#include <libxml/parser.h>
#include <libxml/xmlmemory.h>

#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace NVORHOST::NTEST {
namespace {

std::size_t mallocsUntilFailure = 0;  // 0: none fails

bool FaultIsDue() {
    return mallocsUntilFailure > 0 && --mallocsUntilFailure == 0;
}

void* FailingMalloc(std::size_t size) {
    return FaultIsDue() ? nullptr : std::malloc(size);
}

void* FailingRealloc(void* memory, std::size_t size) {
    return FaultIsDue() ? nullptr : std::realloc(memory, size);
}

char* FailingStrdup(const char* text) {
    return FaultIsDue() ? nullptr : strdup(text);
}

bool TakeOver() {
    xmlInitParser();  // what the library sets up once would hide the failures of each document
    if (xmlMemSetup(&std::free, &FailingMalloc, &FailingRealloc, &FailingStrdup) != 0) {
        throw std::runtime_error("the XML library keeps its own allocations");
    }
    return true;
}

}  // namespace

TXmlAllocationFault::TXmlAllocationFault(std::size_t number) {
    static const bool isTakenOver = TakeOver();
    mallocsUntilFailure = isTakenOver ? number : 0;
}

TXmlAllocationFault::~TXmlAllocationFault() {
    mallocsUntilFailure = 0;
}

bool TXmlAllocationFault::HasStruck() const {
    return mallocsUntilFailure == 0;
}

}  // namespace NVORHOST::NTEST
