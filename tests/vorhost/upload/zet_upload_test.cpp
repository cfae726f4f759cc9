#include "host/zet_upload.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

namespace {

using NKELVOR20::TZETUpload;

// The expected identifiers were made with another implementation of RFC 4122's name-based UUIDs.
TEST(EntityId, IsTheNameBasedUuidOfTheArgumentsInLines) {
    EXPECT_EQ(TZETUpload::ZETGetEntityId("INVENTORY", "application/x-gzip", "KEL-4711", "/upload/endpoint",
                                         "/inventory"),
              "46e6dc99-8649-5bc5-a0ab-40cd413bca2a");
    EXPECT_EQ(TZETUpload::ZETGetEntityId("a", "b", "c", "d", "e"), "199e4162-3ae1-5045-8182-8565f4f8542b");
}

TEST(EntityId, IsMadeOfTheBytesOfTheArguments) {
    EXPECT_EQ(TZETUpload::ZETGetEntityId("\xC3\xA4", "b", "c", "d", "e"),
              "7b531ce9-6bfe-5dc2-b30a-5607ed34a1b7");
}

TEST(EntityId, ExistsForEmptyArguments) {
    EXPECT_EQ(TZETUpload::ZETGetEntityId("", "", "", "", ""), "82571904-d41b-5266-95a5-99d3006c61af");
}

TEST(EntityId, DependsOnEachArgument) {
    const auto id = TZETUpload::ZETGetEntityId("a", "b", "c", "d", "e");
    EXPECT_NE(TZETUpload::ZETGetEntityId("x", "b", "c", "d", "e"), id);
    EXPECT_NE(TZETUpload::ZETGetEntityId("a", "x", "c", "d", "e"), id);
    EXPECT_NE(TZETUpload::ZETGetEntityId("a", "b", "x", "d", "e"), id);
    EXPECT_NE(TZETUpload::ZETGetEntityId("a", "b", "c", "x", "e"), id);
    EXPECT_NE(TZETUpload::ZETGetEntityId("a", "b", "c", "d", "x"), id);
}

// ctest runs each test in a separate process, so no earlier test has loaded the HTTP module.
TEST(EntityId, IsDerivedWithoutLoadingCurl) {
    EXPECT_NE(TZETUpload::ZETGetEntityId("a", "b", "c", "d", "e"), "");
    std::ifstream file("/proc/self/maps");
    const std::string maps((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    ASSERT_NE(maps.find("libzetupload"), std::string::npos);
    if (maps.find("libzetupload-http") != std::string::npos) {
        GTEST_SKIP() << "an earlier test of this process has asked an entity service";
    }
    EXPECT_EQ(maps.find("libcurl"), std::string::npos);
}

}  // namespace
