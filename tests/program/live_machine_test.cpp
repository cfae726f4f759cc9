#include "program_run.h"
#include "sanitized.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace NVORHOST {
namespace {

using ::testing::ContainsRegex;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

TEST(LiveMachine, HasAnInventoryWithServerOperatingSystemAndProcessor) {
    const TTemporaryDirectory directory;
    const auto result =
        RunNoxinfo({{"collect", "--reachability", "no", "--kel-id", "K1"}, directory.GetPath(), {}});
    ASSERT_EQ(result.status, 0) << result.standardError;
    EXPECT_THAT(result.standardOutput, HasSubstr("Source      this machine\n"));
    const std::string document = ReadCompressedFile(directory / "hardwareinventory.xml.gz");
    EXPECT_THAT(document,
                StartsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<ResourceCollection xmlns="));
    EXPECT_THAT(document, EndsWith("</ResourceList>\n</ResourceCollection>\n"));
    for (const char* type : {"Server", "OperatingSystem", "Processor"}) {
        EXPECT_THAT(document, ContainsRegex("<ResourceInstance resourceId=\"[0-9A-F]+\" resourceType=\"" +
                                            std::string(type) + "\">\n"));
    }
    EXPECT_THAT(document,
                ContainsRegex("<Property name=\"MachineType\" type=\"string\">\n<Value>[^<]+</Value>"));
    EXPECT_THAT(document, HasSubstr("<Property name=\"OSType\" type=\"unsignedShort\">\n<Value>36</Value>"));
}

TEST(LiveMachine, HasTheSameResourcesWhenCollectedTwice) {
    const TTemporaryDirectory first;
    const TTemporaryDirectory second;
    const auto identifiers = [](const TTemporaryDirectory& directory) {
        const auto result = RunNoxinfo({{"collect", "--reachability", "no"}, directory.GetPath(), {}});
        EXPECT_EQ(result.status, 0) << result.standardError;
        std::istringstream document(ReadCompressedFile(directory / "hardwareinventory.xml.gz"));
        std::string starts;
        for (std::string line; std::getline(document, line);) {
            starts += line.starts_with("<ResourceInstance ") ? line + "\n" : "";
        }
        return starts;
    };
    const std::string once = identifiers(first);
    EXPECT_NE(once, "");
    EXPECT_EQ(identifiers(second), once);
}

// Runs a shell command with an empty /proc. Returns nullopt if this user may not create a mount namespace.
std::optional<TProgramResult> RunWithoutProc(const std::string& command, const std::string& directory) {
    const auto run = [&](const std::string& shellCommand) {
        return RunProgram("unshare", {{"--user", "--map-root-user", "--mount", "sh", "-c",
                                       "mount -t tmpfs none /proc || exit 125; " + shellCommand},
                                      directory,
                                      {}});
    };
    if (run("exit 0").status != 0) {
        return std::nullopt;
    }
    return run(command);
}

TEST(LiveMachine, FailsWithOneLineWithoutProc) {
    if (isSanitized) {
        GTEST_SKIP() << "the sanitizer's runtime needs /proc";
    }
    for (const char* arguments :
         {"collect", "collect --namespace any.xml", "snapshot -", "capture c.tar.xz"}) {
        const TTemporaryDirectory directory;
        WriteFile(directory / "hardwareinventory.xml.gz", "earlier");
        const auto result =
            RunWithoutProc(std::string("exec " NOXINFO_PROGRAM " ") + arguments, directory.GetPath());
        if (!result) {
            GTEST_SKIP() << "this user may not mount anything over /proc";
        }
        EXPECT_EQ(result->status, 1);
        EXPECT_EQ(result->standardOutput, "");
        EXPECT_EQ(result->standardError, "noxinfo: /proc is missing: mount the process file system there\n");
        EXPECT_EQ(ReadFile(directory / "hardwareinventory.xml.gz"), "earlier");
    }
}

}  // namespace
}  // namespace NVORHOST
