#include "machine/collect/frame/value_sources.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace NVORHOST {
namespace {

TEST(ValueSourcesOfARow, HaveTypeAndOffsetOfAField) {
    const auto sources = TValueSources("text type 39, 0Ah").List();
    ASSERT_EQ(sources.size(), 1U);
    EXPECT_EQ(sources[0].kind, ESourceKind::smbios);
    EXPECT_EQ(sources[0].form, ESourceForm::text);
    EXPECT_EQ(sources[0].type, 39);
    EXPECT_EQ(sources[0].offset, 0x0A);
    EXPECT_EQ(sources[0].text, "type 39, 0Ah");
    EXPECT_FALSE(sources[0].isOwn);
}

TEST(ValueSourcesOfARow, SeparateSourcesAndCopies) {
    const auto sources = TValueSources("uuid type 1, 08h or /sys/id; @/size; @udev ID_X; constant").List();
    ASSERT_EQ(sources.size(), 5U);
    EXPECT_FALSE(sources[0].isCopy);
    EXPECT_TRUE(sources[1].isCopy);
    EXPECT_EQ(sources[1].form, ESourceForm::uuid);
    EXPECT_EQ(sources[1].name, "/sys/id");
    EXPECT_FALSE(sources[2].isCopy);
    EXPECT_TRUE(sources[2].isOwn);
    EXPECT_EQ(sources[2].name, "/size");
    EXPECT_EQ(sources[2].form, ESourceForm::any);
    EXPECT_EQ(sources[3].kind, ESourceKind::udev);
    EXPECT_EQ(sources[3].name, "ID_X");
    EXPECT_EQ(sources[4].kind, ESourceKind::constant);
}

TEST(ValueSourcesOfARow, HaveTheElementOfAnArrayAndTheDetailOfAFile) {
    const auto sources = TValueSources("[Serial number] text @/serial; /proc/meminfo MemTotal").List();
    ASSERT_EQ(sources.size(), 2U);
    EXPECT_EQ(sources[0].element, "Serial number");
    EXPECT_EQ(sources[0].form, ESourceForm::text);
    EXPECT_EQ(sources[1].element, "");
    EXPECT_EQ(sources[1].name, "/proc/meminfo");
    EXPECT_EQ(sources[1].detail, "MemTotal");
}

TEST(ValueSourcesOfARow, RejectOtherTexts) {
    for (const char* const text : {"", "type 2", "type 300, 04h", "type 2, xxh", "size", "property ",
                                   "none: ", "@size", "/a; nonsense", "call "}) {
        EXPECT_THROW((void)TValueSources(text), std::invalid_argument) << text;
    }
}

}  // namespace
}  // namespace NVORHOST
