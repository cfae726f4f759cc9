// Calls with every allocation fenced: an access past the end, or to freed memory, ends the program.
#include "fenced_memory.h"

#include "full_namespace.h"
#include "gzstream/gzstreams.h"
#include "tests/plugin/request_fixture.h"
#include "tests/plugin/working_directory.h"
#include "writer/nox_xml_writer.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace {

/// Returns a text of every kind of byte, longer than a short string, which would not be fenced.
std::string Bytes(std::size_t size) {
    std::string text(size, '\0');
    for (std::size_t i = 0; i < size; ++i) {
        text[i] = static_cast<char>(i * 7 + size);
    }
    return text;
}

/// Calls `use` with texts of many sizes while allocations are fenced.
template <typename TUse>
void RunFenced(TUse use) {
    for (std::size_t size = 16; size <= 300; ++size) {
        const TFencedMemory fence;
        use(Bytes(size));
        EXPECT_GT(fence.Count(), 0U);
    }
}

using FencedDeathTest = testing::Test;

TEST_F(FencedDeathTest, AReadPastAnAllocationEndsTheProgram) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_DEATH(
        {
            const TFencedMemory fence;
            const auto* const memory = new char[20]();
            const volatile char* const behind = memory + 20;
            std::exit(*behind);
        },
        "");
}

TEST_F(FencedDeathTest, AWriteBeforeAnAllocationEndsTheProgram) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_DEATH(
        {
            const TFencedMemory fence;
            auto* const memory = new char[20]();
            volatile char* const before = memory - 1;
            *before = '\0';
            delete[] memory;
        },
        "");
}

TEST_F(FencedDeathTest, AReadOfAFreedAllocationEndsTheProgram) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_DEATH(
        {
            const TFencedMemory fence;
            auto* const memory = new char[20]();
            // As a number, because compilers diagnose the use of a freed pointer.
            const volatile auto gone = reinterpret_cast<std::uintptr_t>(memory);
            delete[] memory;
            // NOLINTNEXTLINE(performance-no-int-to-ptr)
            std::exit(*reinterpret_cast<const volatile char*>(gone));
        },
        "");
}

TEST(Fenced, QuoteStringStaysWithinItsText) {
    RunFenced([](const std::string& text) { (void)TNOXXMLWriterImpl::QuoteString(text); });
    RunFenced([](const std::string& text) {
        EXPECT_EQ(TNOXXMLWriterImpl::QuoteString(std::string(text.size(), '&')).size(), 5 * text.size());
    });
}

TEST(Fenced, ProductNamesAreCutWithinTheirText) {
    RunFenced([](const std::string& text) {
        (void)TNOXXMLWriterImpl::GetMachineTypeFromCIM(text + "-[");
        (void)TNOXXMLWriterImpl::GetMachineTypeFromCIM(text + "-");
        (void)TNOXXMLWriterImpl::GetModelNumber(text + "-[1234");
        (void)TNOXXMLWriterImpl::GetModelNumber(text + "-[1234567");
    });
}

TEST(Fenced, MD5StaysWithinItsMessage) {
    RunFenced([](const std::string& text) {
        const std::vector<char> data(text.begin(), text.end());
        std::vector<unsigned char> out(TNOXXMLWriterImpl::digestLength);
        TNOXXMLWriterImpl::MD5(data.data(), static_cast<unsigned int>(data.size()), out.data());
    });
}

TEST(Fenced, ValuesAreWrittenWithinTheirRoom) {
    RunFenced([](const std::string& text) {
        std::ostringstream out;
        TNOXXMLWriterImpl(out).WriteValue(NKELVOR20::TCIMValue(text));
        TNOXXMLWriterImpl(out).WriteSysInfoProperty(text, text, text);
    });
}

// The room for a line grows in steps: of two lines that differ by a byte, one just fits and the next does
// not.
TEST(Fenced, LinesOfEveryLengthFitTheirRoom) {
    const TFencedMemory fence;
    std::ostringstream out;
    TNOXXMLWriterImpl writer(out);
    for (std::size_t size = 1; size <= 600; ++size) {
        writer.WriteValue(NKELVOR20::TCIMValue(std::string(size, 'x') + '&'));
    }
}

// The default buffer of a stream has 8192 characters, of which one is reserved for overflow.
TEST(Fenced, StreamsStayWithinTheirOwnBuffers) {
    const NTEST::TWorkingDirectory directory;
    for (const std::size_t size : {std::size_t{1}, std::size_t{8190}, std::size_t{8191}, std::size_t{8192},
                                   std::size_t{8193}, std::size_t{20'000}}) {
        const TFencedMemory fence;
        const std::string text = Bytes(size);
        gzofstream written("text.gz");
        for (const char character : text) {
            written.put(character);
        }
        written.write(text.data(), std::ssize(text));
        written.close();
        EXPECT_FALSE(written.fail());

        gzifstream read("text.gz");
        std::string got;
        for (char character = 0; read.get(character);) {
            got += character;
        }
        EXPECT_TRUE(got == text + text) << size;
        EXPECT_GT(fence.Count(), 1U);
    }
}

class FencedPlugin : public NTEST::TRequestFixture {};

TEST_F(FencedPlugin, GZEncodeFromStrStaysWithinItsText) {
    RunFenced([this](const std::string& text) {
        (void)plugin_->GZEncodeFromStr(text, text.size());
        (void)plugin_->GZEncodeFromStr(text, text.size() - 1);
        (void)plugin_->GZEncodeFromStr(text, text.size() + 1000);
    });
}

TEST_F(FencedPlugin, Base64EncodeStaysWithinInputAndOutput) {
    RunFenced([this](const std::string& text) {
        const std::vector<unsigned char> in(text.begin(), text.end());
        std::vector<unsigned char> out((in.size() + 2) / 3 * 4 + 1);
        (void)plugin_->Base64Encode(in.data(), static_cast<unsigned int>(in.size()), out.data(),
                                    static_cast<unsigned int>(out.size() - 1));
        EXPECT_EQ(out.back(), '\0');
    });
}

TEST_F(FencedPlugin, AWholeRequestStaysWithinItsAllocations) {
    collected_ = MakeFullNamespace(2);
    SetIdentity("4711");
    SetReachable("entity-4711");
    const auto resultClass = AddResultClass("KELSG_CADAT");
    {
        const TFencedMemory fence;
        Request();
        EXPECT_GT(fence.Count(), 1000U);
    }
    EXPECT_EQ(PropertiesOfOnlyInstance(*resultClass).size(), 4U);
    EXPECT_EQ(NTEST::Unzip(NTEST::hardwareFile), HardwareDocument());
    EXPECT_EQ(NTEST::Unzip(NTEST::systemFile), SystemDocument());
}

TEST_F(FencedPlugin, ARequestWithAnEmptyHardwareFileStaysWithinItsAllocations) {
    std::filesystem::create_symlink("/dev/null", NTEST::hardwareFile);
    const auto resultClass = AddResultClass("KELSG_CADAT");
    {
        const TFencedMemory fence;
        Request();
    }
    EXPECT_EQ(PropertiesOfOnlyInstance(*resultClass).front().second, "");
}

}  // namespace
