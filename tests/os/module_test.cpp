#include "os/module.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>

namespace NVORHOST {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::ThrowsMessage;

using TAnswer = int (*)();

TEST(LoadFunction, LoadsAFunctionThatCanBeCalled) {
    EXPECT_EQ(LoadFunction<TAnswer>(OS_TEST_MODULE, "OsTestAnswer")(), 42);
}

TEST(LoadFunction, ReturnsTheSameFunctionEachTime) {
    EXPECT_EQ(LoadFunction<TAnswer>(OS_TEST_MODULE, "OsTestAnswer"),
              LoadFunction<TAnswer>(OS_TEST_MODULE, "OsTestAnswer"));
}

TEST(LoadSymbol, ThrowsForAMissingModule) {
    EXPECT_THAT([] { LoadSymbol("/no/such/module.so", "OsTestAnswer"); },
                ThrowsMessage<std::runtime_error>(HasSubstr("/no/such/module.so")));
}

TEST(LoadSymbol, ThrowsForAMissingSymbol) {
    EXPECT_THAT([] { LoadSymbol(OS_TEST_MODULE, "NoSuchFunction"); },
                ThrowsMessage<std::runtime_error>(HasSubstr("NoSuchFunction")));
}

TEST(ReadProgramPath, ReturnsThePathOfTheTestProgram) {
    EXPECT_THAT(ReadProgramPath(), EndsWith("/os_test"));
    EXPECT_TRUE(std::filesystem::is_regular_file(ReadProgramPath()));
}

TEST(FindBesideProgram, NormalisesThePath) {
    const std::filesystem::path folder = std::filesystem::path(ReadProgramPath()).parent_path();
    EXPECT_EQ(FindBesideProgram("../lib/part.so"), folder.parent_path().string() + "/lib/part.so");
    EXPECT_EQ(FindBesideProgram("part.so"), folder.string() + "/part.so");
}

TEST(FindBesideObject, StartsAtTheFolderOfTheObjectThatContainsTheAddress) {
    const void* const address = LoadSymbol(OS_TEST_MODULE, "OsTestAnswer");
    const std::filesystem::path folder = std::filesystem::path(OS_TEST_MODULE).parent_path();
    EXPECT_EQ(FindBesideObject(address, "noxinfo/part.so"), folder.string() + "/noxinfo/part.so");
}

TEST(FindBesideObject, ReturnsTheRelativePathForAnUnknownAddress) {
    const int onTheStack = 0;
    EXPECT_EQ(FindBesideObject(&onTheStack, "part.so"), "part.so");
}

}  // namespace
}  // namespace NVORHOST
