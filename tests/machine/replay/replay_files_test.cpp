#include "machine/replay/replay_files.h"

#include "tests/machine/system/memory_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;

class ReplayFiles : public testing::Test {
  protected:
    ReplayFiles() {
        files_.AddFile("/file", "text");
        files_.AddLink("/link", "file");
    }

    TMemoryFiles files_;
    TCaptureAnswers answers_;
    TReplayFiles replay_{files_, answers_};
};

TEST_F(ReplayFiles, ReturnsTheFilesOfTheTree) {
    EXPECT_EQ(replay_.ReadText("/file").value, "text");
    EXPECT_EQ(replay_.ReadBytes("/file", 2).value, "te");
    EXPECT_EQ(replay_.ReadLink("/link").value, "file");
    EXPECT_THAT(replay_.List("/").value, ElementsAre("file", "link"));
    EXPECT_TRUE(replay_.Exists("/file"));
}

TEST_F(ReplayFiles, RepeatsCapturedFailures) {
    answers_.refusals = {{{EAccess::read, "/file"}, EReadStatus::denied},
                         {{EAccess::list, "/"}, EReadStatus::failed},
                         {{EAccess::readLink, "/link"}, EReadStatus::denied},
                         {{EAccess::exists, "/link"}, EReadStatus::notFound}};
    EXPECT_EQ(replay_.ReadText("/file").status, EReadStatus::denied);
    EXPECT_EQ(replay_.ReadText("/file").value, "");
    EXPECT_EQ(replay_.ReadText("/file").error, "/file: refused on the captured machine");
    EXPECT_EQ(replay_.ReadBytes("/file", 2).status, EReadStatus::denied);
    EXPECT_EQ(replay_.List("/").status, EReadStatus::failed);
    EXPECT_EQ(replay_.ReadLink("/link").status, EReadStatus::denied);
    EXPECT_FALSE(replay_.Exists("/link"));
    EXPECT_TRUE(replay_.Exists("/file"));  // only its content was denied
}

}  // namespace
}  // namespace NVORHOST
