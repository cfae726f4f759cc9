// Documents whose size exceeds the encoder's 32-bit counts. The bytes are inaccessible address space, because
// they must be rejected before any of them is read.
#include "plugin/encoded_bytes.h"

#include "tests/plugin/plugin_fixture.h"

#include <gmock/gmock.h>
#include <sys/mman.h>

#include <cstddef>
#include <string_view>

namespace {

using NDOUBLES::TLogLine;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::size_t fiveGiB = std::size_t{5} << 30;

class TEncodedBytes : public NTEST::TPluginFixture {
  protected:
    TEncodedBytes()
        : start_(::mmap(nullptr, fiveGiB, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0)) {}
    ~TEncodedBytes() override {
        if (start_ != MAP_FAILED) {
            ::munmap(start_, fiveGiB);
        }
    }

    void ExpectRejected(std::size_t byteCount) {
        if (start_ == MAP_FAILED) {
            GTEST_SKIP() << "no 5 GiB of address space";
        }
        EXPECT_EQ(EncodeBytes(*plugin_, std::string_view(static_cast<const char*>(start_), byteCount)),
                  nullptr);
        EXPECT_THAT(host_.log, ElementsAre(TLogLine{3, "noxinfo-base64 error!"}));
    }

  private:
    void* start_;
};

TEST_F(TEncodedBytes, AreNulTerminatedText) {
    EXPECT_STREQ(EncodeBytes(*plugin_, "abcd").get(), "YWJjZA==");
    EXPECT_STREQ(EncodeBytes(*plugin_, "").get(), "");
    EXPECT_THAT(host_.log, IsEmpty());
}

TEST_F(TEncodedBytes, AreNullAndLoggedIfTheTextIsTooLongForTheEncoder) {
    ExpectRejected(3221225470);  // one more than 4294967292 characters can encode
}

TEST_F(TEncodedBytes, AreNullAndLoggedIfThereAreTooManyForTheEncoder) {
    ExpectRejected(4294967296);  // 0 modulo 2^32
}

TEST_F(TEncodedBytes, AreNotCountedModulo32Bits) {
    ExpectRejected(4294967300);  // 4 modulo 2^32
}

}  // namespace
