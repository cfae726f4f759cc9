#include "vorhost/run/run_journal.h"

#include "tests/program/temporary_directory.h"
#include "vorhost/run/target_directory.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class RunJournal : public testing::Test {
  protected:
    RunJournal() : opened_(OpenDirectory(AT_FDCWD, directory_.GetPath())) {}

    TFileDescriptor Create() const {
        int error = -1;
        TFileDescriptor journal = CreateJournal(opened_.Get(), "name", error);
        EXPECT_EQ(error, 0);
        return journal;
    }

    TTemporaryDirectory directory_;
    TFileDescriptor opened_;
};

TEST_F(RunJournal, BeginsWithTheNameOfTheDirectory) {
    (void)Create();
    EXPECT_EQ(ReadFile(directory_ / ".noxinfo-journal"), "name\n");
    const auto journal = ReadJournal(opened_.Get());
    ASSERT_TRUE(journal.has_value());
    EXPECT_EQ(journal->directoryName, "name");
    EXPECT_THAT(journal->moves, IsEmpty());
}

TEST_F(RunJournal, ReturnsTheMovesThatWereWritten) {
    const std::vector<TMovedFile> moves{{"a b.gz", 12, 34, 56}, {"c", 18446744073709551615U, -1, 0}};
    EXPECT_TRUE(WriteMoves(Create().Get(), moves));
    EXPECT_EQ(ReadFile(directory_ / ".noxinfo-journal"),
              "name\n12 34 56 a b.gz\n18446744073709551615 -1 0 c\nend\n");
    EXPECT_EQ(ReadJournal(opened_.Get())->moves, moves);
}

TEST_F(RunJournal, IgnoresATruncatedListOfMoves) {
    const std::string text = "name\n12 34 56 a\n78 90 12 b\nend\n";
    for (std::size_t size = 5; size < text.size(); ++size) {
        WriteFile(directory_ / ".noxinfo-journal", text.substr(0, size));
        ASSERT_TRUE(ReadJournal(opened_.Get()).has_value()) << size;
        EXPECT_THAT(ReadJournal(opened_.Get())->moves, IsEmpty()) << size;
    }
}

TEST_F(RunJournal, RejectsFileNamesThatLeaveTheDirectory) {
    for (const std::string name : {"../a", "a/b", "..", "."}) {
        WriteFile(directory_ / ".noxinfo-journal", "name\n12 34 56 " + name + "\nend\n");
        EXPECT_THAT(ReadJournal(opened_.Get())->moves, IsEmpty()) << name;
    }
}

TEST_F(RunJournal, IsAbsentWithoutACompleteFirstLine) {
    EXPECT_FALSE(ReadJournal(opened_.Get()).has_value());
    WriteFile(directory_ / ".noxinfo-journal", "nam");
    EXPECT_FALSE(ReadJournal(opened_.Get()).has_value());
}

TEST_F(RunJournal, IsNotCreatedOverAnExistingFile) {
    WriteFile(directory_ / ".noxinfo-journal", "other\n");
    int error = 0;
    EXPECT_FALSE(CreateJournal(opened_.Get(), "name", error).IsOpen());
    EXPECT_EQ(error, EEXIST);
}

}  // namespace
}  // namespace NVORHOST
