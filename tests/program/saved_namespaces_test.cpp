// The namespace beside the documents: --snapshot, compressed snapshots, and --documents-only.

#include "program_run.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace NVORHOST {
namespace {

using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

constexpr char time[] = "20240229134500.000000+060";
const std::string smallServer = NOXINFO_TEST_DATA "/small-server.xml";

TProgramResult RunIn(const TTemporaryDirectory& directory, std::vector<std::string> arguments) {
    return RunNoxinfo({std::move(arguments), directory.GetPath(), {}});
}

TProgramResult Collect(const TTemporaryDirectory& directory, const std::vector<std::string>& arguments) {
    std::vector<std::string> all{"collect", "--local-time", time, "--reachability", "no"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return RunIn(directory, all);
}

TEST(SnapshotOption, SavesTheNamespaceOfTheDocuments) {
    const TTemporaryDirectory live;
    const TTemporaryDirectory replayed;
    const auto collected = Collect(live, {"--kel-id", "K1", "--snapshot", "machine.xml"});
    ASSERT_EQ(collected.status, 0) << collected.standardError;
    const auto again = Collect(replayed, {"--kel-id", "K1", "--namespace", live / "machine.xml"});
    ASSERT_EQ(again.status, 0) << again.standardError;
    for (const char* file : {"hardwareinventory.xml.gz", "systeminformation.xml.gz"}) {
        EXPECT_EQ(ReadFile(replayed / file), ReadFile(live / file));
    }
}

TEST(SnapshotOption, WritesTheSameFileAsTheSnapshotCommand) {
    const TTemporaryDirectory directory;
    ASSERT_EQ(Collect(directory, {"--namespace", smallServer, "--snapshot", "a.xml"}).status, 0);
    ASSERT_EQ(RunIn(directory, {"snapshot", "--namespace", smallServer, "b.xml"}).status, 0);
    EXPECT_EQ(ReadFile(directory / "a.xml"), ReadFile(directory / "b.xml"));
}

TEST(SnapshotOption, CompressesAFileWhoseNameEndsInGz) {
    const TTemporaryDirectory directory;
    ASSERT_EQ(Collect(directory, {"--namespace", smallServer, "--snapshot", "a.xml.gz"}).status, 0);
    ASSERT_EQ(RunIn(directory, {"snapshot", "--namespace", smallServer, "b.xml"}).status, 0);
    EXPECT_THAT(ReadFile(directory / "a.xml.gz"), StartsWith("\x1F\x8B"));
    EXPECT_EQ(ReadCompressedFile(directory / "a.xml.gz"), ReadFile(directory / "b.xml"));
}

TEST(SnapshotOption, WritesADashToStandardOutput) {
    const TTemporaryDirectory directory;
    const auto result = Collect(directory, {"--namespace", smallServer, "--snapshot", "-"});
    EXPECT_EQ(result.status, 0) << result.standardError;
    EXPECT_THAT(result.standardOutput, StartsWith("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"));
}

TEST(SnapshotOption, WritesNothingToStandardOutputIfTheRequestFails) {
    const TTemporaryDirectory directory;
    WriteFile(directory / "no-plugin.so", "");
    const auto result = Collect(
        directory, {"--namespace", smallServer, "--plugin", directory / "no-plugin.so", "--snapshot", "-"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standardOutput, "");
}

TEST(SnapshotOption, HasAStepOfItsOwnInTheSummary) {
    const TTemporaryDirectory directory;
    const auto result = Collect(directory, {"--namespace", smallServer, "--snapshot", "a.xml"});
    EXPECT_THAT(result.standardOutput,
                ContainsRegex("Time        collect [0-9.]+ ms, save snapshot [0-9.]+ ms, load plug-in "
                              "[0-9.]+ ms, request [0-9.]+ ms, finish [0-9.]+ ms, total [0-9.]+ ms\n"));
}

TEST(SnapshotOption, LeavesNothingIfTheFileCannotBeWritten) {
    const TTemporaryDirectory directory;
    const auto result = Collect(directory, {"--namespace", smallServer, "--snapshot", "absent/a.xml"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.standardError, StartsWith("noxinfo: cannot write absent/a.xml: "));
    EXPECT_TRUE(directory.IsEmpty());
}

TEST(SnapshotOption, RejectsTheFileOfAnotherOutput) {
    const TTemporaryDirectory directory;
    const auto result =
        Collect(directory, {"--namespace", smallServer, "--result", "a.xml", "--snapshot", "./a.xml"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standardError,
              "noxinfo: the result file a.xml and the snapshot ./a.xml are the same file\n");
    EXPECT_TRUE(directory.IsEmpty());
}

TEST(CompressedSnapshot, IsReadBackUnderAnyName) {
    const TTemporaryDirectory directory;
    ASSERT_EQ(RunIn(directory, {"snapshot", "--namespace", smallServer, "a.xml.gz"}).status, 0);
    WriteFile(directory / "plain-name", ReadFile(directory / "a.xml.gz"));
    ASSERT_EQ(RunIn(directory, {"snapshot", "--namespace", "plain-name", "b.xml"}).status, 0);
    ASSERT_EQ(RunIn(directory, {"snapshot", "--namespace", smallServer, "c.xml"}).status, 0);
    EXPECT_EQ(ReadFile(directory / "b.xml"), ReadFile(directory / "c.xml"));
}

TEST(CompressedSnapshot, IsTheSameForTheSameNamespace) {
    const TTemporaryDirectory directory;
    ASSERT_EQ(RunIn(directory, {"snapshot", "--namespace", smallServer, "a.xml.gz"}).status, 0);
    ASSERT_EQ(RunIn(directory, {"snapshot", "--namespace", smallServer, "b.xml.gz"}).status, 0);
    EXPECT_EQ(ReadFile(directory / "a.xml.gz"), ReadFile(directory / "b.xml.gz"));
}

TEST(CompressedSnapshot, OfAFullDeviceIsAFailure) {
    const TTemporaryDirectory directory;
    std::filesystem::create_symlink("/dev/full", directory / "full.gz");
    const auto result = RunIn(directory, {"snapshot", "--namespace", smallServer, "full.gz"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standardError, "noxinfo: cannot write full.gz: No space left on device\n");
}

TEST(DocumentsOnly, GivesTheSameDocuments) {
    const TTemporaryDirectory whole;
    const TTemporaryDirectory part;
    ASSERT_EQ(RunIn(whole, {"capture", "m.tar.xz"}).status, 0);
    ASSERT_EQ(RunProgram("tar", {{"-xJf", whole / "m.tar.xz", "-C", part.GetPath()}, "", {}}).status, 0);
    const TTemporaryDirectory first;
    const TTemporaryDirectory second;
    ASSERT_EQ(Collect(first, {"--kel-id", "K1", "--sysroot", part.GetPath()}).status, 0);
    ASSERT_EQ(Collect(second, {"--kel-id", "K1", "--sysroot", part.GetPath(), "--documents-only"}).status, 0);
    for (const char* file : {"hardwareinventory.xml.gz", "systeminformation.xml.gz"}) {
        EXPECT_EQ(ReadFile(second / file), ReadFile(first / file));
    }
}

TEST(DocumentsOnly, LeavesOutClassesOfNoDocument) {
    const TTemporaryDirectory directory;
    ASSERT_EQ(RunIn(directory, {"snapshot", "whole.xml"}).status, 0);
    ASSERT_EQ(RunIn(directory, {"snapshot", "--documents-only", "part.xml"}).status, 0);
    const std::string declaration = "<CLASS NAME=\"KELSG_IPProtocolEndpoint\">";
    EXPECT_THAT(ReadFile(directory / "whole.xml"), HasSubstr(declaration));
    EXPECT_THAT(ReadFile(directory / "part.xml"), Not(HasSubstr(declaration)));
}

TEST(DocumentsOnly, ExcludesAChoiceByName) {
    const TTemporaryDirectory directory;
    const auto result = RunIn(directory, {"snapshot", "--documents-only", "--only", "disk", "s.xml"});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.standardError, HasSubstr("excludes"));
    EXPECT_TRUE(directory.IsEmpty());
}

}  // namespace
}  // namespace NVORHOST
