#include "machine/system/access_log.h"

#include "tests/machine/system/memory_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

MATCHER_P2(IsAccess, path, status, "") {
    return arg.path == path && arg.status == status;
}

TEST(TAccessLog, ForwardsResultsAndLogsTheirStatus) {
    TMemoryFiles machine;
    machine.AddFile("/file", "text");
    machine.AddLink("/link", "file");
    machine.AddRefusal("/secret", EReadStatus::denied);
    TAccessLog files(machine);

    EXPECT_EQ(files.ReadText("/file").value, "text");
    EXPECT_EQ(files.ReadBytes("/secret", 1).status, EReadStatus::denied);
    EXPECT_EQ(files.List("/none").status, EReadStatus::notFound);
    EXPECT_EQ(files.ReadLink("/link").value, "file");
    EXPECT_TRUE(files.Exists("/link"));
    EXPECT_FALSE(files.Exists("/none"));

    EXPECT_THAT(files.TakeAccesses(),
                ElementsAre(IsAccess("/file", EReadStatus::ok), IsAccess("/secret", EReadStatus::denied),
                            IsAccess("/none", EReadStatus::notFound), IsAccess("/link", EReadStatus::ok),
                            IsAccess("/link", EReadStatus::ok), IsAccess("/none", EReadStatus::notFound)));
}

TEST(TAccessLog, StartsAnewAfterTakeAccesses) {
    TMemoryFiles machine;
    TAccessLog files(machine);
    (void)files.Exists("/a");  // only the record matters
    (void)files.TakeAccesses();
    EXPECT_THAT(files.TakeAccesses(), IsEmpty());
}

}  // namespace
}  // namespace NVORHOST
