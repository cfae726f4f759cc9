// The writer without memory for a digest. This program replaces the array form of new, which only the
// digest's buffer uses here.
#include "tests/doubles/cim_doubles.h"
#include "tests/doubles/host_doubles.h"
#include "writer/nox_xml_writer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <sstream>
#include <string>

namespace {

bool hasMemory = true;
int held = 0;

/// While this object exists, array allocations fail.
class TNoMemory {
  public:
    TNoMemory() { hasMemory = false; }
    ~TNoMemory() { hasMemory = true; }
    TNoMemory(const TNoMemory&) = delete;
    TNoMemory& operator=(const TNoMemory&) = delete;
};

}  // namespace

void* operator new[](std::size_t size) {
    void* const memory = hasMemory ? std::malloc(size) : nullptr;
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    ++held;
    return memory;
}

void operator delete[](void* memory) noexcept {
    held -= memory != nullptr ? 1 : 0;
    std::free(memory);
}

void operator delete[](void* memory, std::size_t /*size*/) noexcept {
    operator delete[](memory);
}

namespace {

using NDOUBLES::Host;
using NDOUBLES::TLogLine;

TEST(NoMemory, WritesAnEmptySystemIdentifierAndLogsOneLine) {
    NDOUBLES::ResetHost();
    std::ostringstream out;
    TNOXXMLWriterImpl writer(out);
    {
        const TNoMemory noMemory;
        EXPECT_TRUE(writer.WriteResourceListForSysInfo("NOXSystemInfo",
                                                       boost::make_shared<NDOUBLES::TNamespaceDouble>()));
    }
    EXPECT_THAT(out.str(), testing::StartsWith("<ResourceList resourceType=\"NOXSystemInfo\">\n"
                                               "<ResourceInstance resourceId=\"\""
                                               " resourceName=\",8840-21X-KQ12345\""
                                               " resourceType=\"NOXSystemInfo\">\n"));
    EXPECT_THAT(Host().log, testing::ElementsAre(TLogLine{
                                3, "TNOXXML-WriteResourceListForSysInfo-when get resource id error!"}));
}

TEST(NoMemory, ThrowsBadAllocFromTheDigestAndFromTheIdentifierOfAnInstance) {
    NDOUBLES::ResetHost();
    const auto instance = boost::make_shared<NDOUBLES::TInstanceDouble>();
    instance->Add("DeviceID", "CPU0");
    const TNoMemory noMemory;
    unsigned char digest[TNOXXMLWriterImpl::digestLength];
    EXPECT_THROW(TNOXXMLWriterImpl::MD5("a", 1, digest), std::bad_alloc);
    EXPECT_THROW(TNOXXMLWriterImpl::GetResourceID("Processor", instance, "DeviceID", "", ""), std::bad_alloc);
}

TEST(Digest, FreesItsBuffer) {
    const int before = held;
    unsigned char digest[TNOXXMLWriterImpl::digestLength];
    TNOXXMLWriterImpl::MD5("a", 1, digest);
    EXPECT_EQ(held, before);
}

}  // namespace
