#include "vorhost/run/output_place.h"

#include "tests/program/temporary_directory.h"
#include "vorhost/run/run_failure.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace NVORHOST {
namespace {

using EKind = TOutputPlace::EKind;

TOutputPlace Resolve(const std::string& path) {
    return {path, "cannot write " + path};
}

std::string FailureOf(const std::string& path) {
    try {
        (void)Resolve(path);
    } catch (const TRunFailure& failure) {
        return failure.what();
    }
    return "no failure";
}

TEST(OutputPlace, ResolvesANewFileToItsDirectoryAndName) {
    const TTemporaryDirectory directory;
    const TOutputPlace place = Resolve(directory / "file");
    EXPECT_EQ(place.GetKind(), EKind::file);
    EXPECT_EQ(place.GetName(), "file");
    ASSERT_TRUE(place.FindDirectory().has_value());
    EXPECT_EQ(place.FindDirectory()->GetPath("file"), directory / "file");
}

TEST(OutputPlace, FollowsALinkToAFileThatDoesNotExist) {
    const TTemporaryDirectory directory;
    std::filesystem::create_symlink("target", directory / "link");
    EXPECT_EQ(Resolve(directory / "link").GetName(), "target");
}

TEST(OutputPlace, RejectsDirectoriesMissingDirectoriesAndLoopsOfLinks) {
    const TTemporaryDirectory directory;
    std::filesystem::create_symlink("loop", directory / "loop");
    EXPECT_EQ(FailureOf(directory.GetPath()), "cannot write " + directory.GetPath() + ": Is a directory");
    EXPECT_EQ(FailureOf(directory / "absent/file"),
              "cannot write " + (directory / "absent/file") + ": No such file or directory");
    EXPECT_EQ(FailureOf(directory / "loop"),
              "cannot write " + (directory / "loop") + ": Too many levels of symbolic links");
}

TEST(OutputPlace, RecognisesDescriptorsAndDevices) {
    EXPECT_EQ(Resolve("-").GetKind(), EKind::descriptor);
    EXPECT_TRUE(Resolve("-").IsStandardOutput());
    EXPECT_TRUE(Resolve("/dev/stdout").IsStandardOutput());
    EXPECT_EQ(Resolve("/dev/fd/2").GetKind(), EKind::descriptor);
    EXPECT_EQ(Resolve("/dev/null").GetKind(), EKind::special);
    EXPECT_TRUE(Resolve("/dev/null").OpenDirectly().IsOpen());
}

TEST(OutputPlace, IsTheSameForHardLinksAndForNewFilesOfOneName) {
    const TTemporaryDirectory directory;
    WriteFile(directory / "file", "");
    std::filesystem::create_hard_link(directory / "file", directory / "hard");
    EXPECT_TRUE(Resolve(directory / "file").IsSameAs(Resolve(directory / "hard")));
    EXPECT_TRUE(Resolve(directory / "new").IsSameAs(Resolve(directory / "./new")));
    EXPECT_FALSE(Resolve(directory / "file").IsSameAs(Resolve(directory / "new")));
    EXPECT_FALSE(Resolve("/dev/null").IsSameAs(Resolve("/dev/null"))) << "several outputs may share a device";
}

TEST(OutputPlace, IsRejectedIfItIsTheLogFile) {
    const TTemporaryDirectory directory;
    const std::string file = directory / "file";
    try {
        (void)ResolveOutputPlace(file, file);
        FAIL();
    } catch (const TRunFailure& failure) {
        EXPECT_EQ(failure.what(),
                  "the log file " + file + " and the output file " + file + " are the same file");
    }
    EXPECT_EQ(ResolveOutputPlace(file, std::nullopt).GetName(), "file");
}

}  // namespace
}  // namespace NVORHOST
