// Requests that run out of memory, and hardware files that are read back with other bytes than were written.
#include "tests/allocations/allocation_faults.h"
#include "tests/plugin/plain_base64.h"
#include "tests/plugin/request_fixture.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <new>
#include <random>
#include <thread>

namespace {

using NDOUBLES::TLogLine;
using NTEST::ArrayAllocationsOf;
using NTEST::DebugLine;
using NTEST::LiveAllocations;
using NTEST::TAllocationFault;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;
using testing::Pair;

/// A FIFO in place of the hardware file: accepts what is written to it, then returns other bytes to the
/// reader.
class TExchangedFile {
  public:
    explicit TExchangedFile(std::string bytes)
        : madeFifo_(::mkfifo(NTEST::hardwareFile.c_str(), 0600) == 0),
          exchange_([bytes = std::move(bytes)] { Exchange(bytes); }) {}
    ~TExchangedFile() { exchange_.join(); }
    TExchangedFile(const TExchangedFile&) = delete;
    TExchangedFile& operator=(const TExchangedFile&) = delete;

    bool IsReady() const { return madeFifo_; }

  private:
    static void Exchange(const std::string& bytes) {
        const int written = ::open(NTEST::hardwareFile.c_str(), O_RDONLY);
        for (char block[4096]; ::read(written, block, sizeof(block)) > 0;) {
        }
        ::close(written);
        const int readBack = ::open(NTEST::hardwareFile.c_str(), O_WRONLY);
        for (std::size_t done = 0; done < bytes.size();) {
            const ssize_t count = ::write(readBack, bytes.data() + done, bytes.size() - done);
            if (count < 0) {
                break;  // the reader stopped
            }
            done += static_cast<std::size_t>(count);
        }
        ::close(readBack);
    }

    bool madeFifo_;
    std::thread exchange_;
};

class TReadBack : public NTEST::TRequestFixture {
  protected:
    // The process must survive writing to a reader that stops.
    TReadBack() { (void)std::signal(SIGPIPE, SIG_IGN); }

    /// Returns the properties of the instance that a request creates from a hardware file with these bytes.
    TProperties RequestWithFileOf(const std::string& bytes) {
        const auto resultClass = AddResultClass("KELSG_CADAT");
        const TExchangedFile file(bytes);
        EXPECT_TRUE(file.IsReady());
        Request();
        return PropertiesOfOnlyInstance(*resultClass);
    }
};

TEST_F(TReadBack, EncodesFourBytesAsEightCharactersInAnAllocationOfNine) {
    const std::size_t before = ArrayAllocationsOf(9);
    EXPECT_THAT(RequestWithFileOf("abcd").front(), Pair("InventoryRCF", "YWJjZA=="));
    EXPECT_EQ(ArrayAllocationsOf(9), before + 1);
}

TEST_F(TReadBack, EncodesThreeBytesAsFourCharactersInAnAllocationOfFive) {
    const std::size_t before = ArrayAllocationsOf(5);
    EXPECT_THAT(RequestWithFileOf("abc").front(), Pair("InventoryRCF", "YWJj"));
    EXPECT_EQ(ArrayAllocationsOf(5), before + 1);
}

TEST_F(TReadBack, EncodesNoBytesAsAnEmptyTextInAnAllocationOfOne) {
    const std::size_t before = ArrayAllocationsOf(1);
    EXPECT_THAT(RequestWithFileOf("").front(), Pair("InventoryRCF", ""));
    EXPECT_EQ(ArrayAllocationsOf(1), before + 1);
}

TEST_F(TReadBack, KeepsBytesOfEveryValue) {
    std::string bytes;
    for (int value = 0; value < 256; ++value) {
        bytes += static_cast<char>(value);
    }
    EXPECT_EQ(PlainBase64Decode(RequestWithFileOf(bytes).front().second), bytes);
}

TEST_F(TReadBack, YieldsNoBytesAndNoLogLineForAnEmptyFile) {
    // The device discards what is written.
    std::filesystem::create_symlink("/dev/null", NTEST::hardwareFile);
    const auto resultClass = AddResultClass("KELSG_CADAT");
    Request();
    EXPECT_THAT(PropertiesOfOnlyInstance(*resultClass).front(), Pair("InventoryRCF", ""));
    EXPECT_THAT(host_.log, Not(Contains(DebugLine("When read hwInventoryFile, a problem happened."))));
}

TEST_F(TReadBack, ContinuesWithoutBytesIfTheFileCannotBeRead) {
    const auto resultClass = AddResultClass("KELSG_CADAT");
    // The first such allocation is the text, the next two are the buffers of the output and the input stream.
    const auto fault = TAllocationFault::OfSizeFrom(8192, 3);
    Request();
    ASSERT_TRUE(fault.HasStruck());
    EXPECT_THAT(host_.log, Contains(DebugLine("When read hwInventoryFile, a problem happened.")));
    EXPECT_THAT(PropertiesOfOnlyInstance(*resultClass).front(), Pair("InventoryRCF", ""));
}

TEST_F(TReadBack, ContinuesWithTheBytesReadBeforeAFailure) {
    std::mt19937 random(3);
    std::string bytes(2'000'000, '\0');
    std::generate(bytes.begin(), bytes.end(), [&random] { return static_cast<char>(random()); });
    const auto resultClass = AddResultClass("KELSG_CADAT");
    std::string encoded;
    {
        const TExchangedFile file(bytes);
        // Fails the initial reserve of the text and its later growth.
        const auto fault = TAllocationFault::OfFirst(2, 1'000'000);
        Request();
        ASSERT_TRUE(fault.HasStruck());
    }
    EXPECT_THAT(host_.log, Contains(DebugLine("When read hwInventoryFile, a problem happened.")));
    const std::string collected = PlainBase64Decode(PropertiesOfOnlyInstance(*resultClass).front().second);
    EXPECT_GT(collected.size(), 100'000U);
    EXPECT_LT(collected.size(), bytes.size());
    EXPECT_EQ(collected, bytes.substr(0, collected.size()));
}

TEST_F(TReadBack, CreatesTheInstanceWithoutMemoryForTheEncodedText) {
    SetIdentity("4711");
    SetReachable("entity-4711");
    const auto resultClass = AddResultClass("KELSG_CADAT");
    {
        // The first such allocation is the reserve for the text, the second the encoded text of 333336 bytes.
        const TExchangedFile file(std::string(250'000, 'x'));
        const auto fault = TAllocationFault::OfSizeFrom(300'000, 2);
        Request();
        ASSERT_TRUE(fault.HasStruck());
    }
    EXPECT_THAT(host_.log, Contains(TLogLine{3, "noxinfo-base64 error!"}));
    EXPECT_THAT(PropertiesOfOnlyInstance(*resultClass),
                ElementsAre(Pair("InventoryRCF", "(null)"), Pair("KELID", "4711"),
                            Pair("MachineType", "8840"), Pair("Credential", "entity-4711")));
}

TEST_F(TReadBack, SucceedsWithoutMemoryForTheReserve) {
    const auto fault = TAllocationFault::OfFirst(1, 1'000'000);
    Request();
    ASSERT_TRUE(fault.HasStruck());
    EXPECT_EQ(NTEST::Unzip(NTEST::hardwareFile), HardwareDocument());
}

class TRequestShortOfMemory : public NTEST::TRequestFixture {
  protected:
    /// Resets the host and the result list.
    void StartOver() {
        NDOUBLES::ResetHost();
        SetIdentity("4711");
        SetReachable("entity-4711");
        resultClasses_.clear();
        AddResultClass("KELSG_CADAT");
    }

    /// Returns false if the request needs fewer allocations.
    bool RequestFailingAllocation(std::size_t number) {
        const auto fault = TAllocationFault::OfNumber(number);
        try {
            Request();
        } catch (const std::exception&) {
            // std::bad_alloc, or code 11 for a file that cannot be opened without memory for its buffer.
        }
        return fault.HasStruck();
    }
};

TEST_F(TRequestShortOfMemory, LeaksNothingWhicheverAllocationFails) {
    StartOver();
    Request();  // creates the objects that are kept for the life of the process
    StartOver();
    const std::size_t liveBefore = LiveAllocations();
    std::size_t number = 1;
    for (; RequestFailingAllocation(number); ++number) {
        ASSERT_EQ(resultClasses_.size(), 1U) << "allocation " << number;
        StartOver();
        ASSERT_EQ(LiveAllocations(), liveBefore) << "allocation " << number;
    }
    EXPECT_GT(number, 20U) << "too few for a request";
}

}  // namespace
