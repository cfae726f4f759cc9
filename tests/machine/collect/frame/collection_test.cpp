#include "machine/collect/frame/collection.h"

#include "tests/machine/collect/collect_fixture.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

struct TText {
    std::string text;
};

TText ReadFirst(TCollection& collection) {
    collection.Note("first");
    return {"first"};
}

TText ReadSecond(TCollection& collection) {
    return {"second after " + collection.ReadOnce(ReadFirst).text};
}

class TCollectionTest : public testing::Test {
  protected:
    TMachine machine_ = ParseMachineTree("");
    TMemoryNamespace target_;
    TCollectContext context_{machine_.files, machine_.calls, target_, std::nullopt};
    TCollection collection_{context_, machine_.files};
};

TEST_F(TCollectionTest, ReadsASharedSourceOnce) {
    const TText& source = collection_.ReadOnce(ReadFirst);
    EXPECT_EQ(&collection_.ReadOnce(ReadFirst), &source);
    EXPECT_EQ(collection_.TakeNotes().size(), 1U);
}

TEST_F(TCollectionTest, KeepsSourcesOfOneTypeApart) {
    EXPECT_EQ(collection_.ReadOnce(ReadSecond).text, "second after first");
    EXPECT_EQ(collection_.ReadOnce(ReadFirst).text, "first");
}

TEST_F(TCollectionTest, FallsBackToUtcForAnUnknownZone) {
    EXPECT_EQ(collection_.ToDateTime(0).ToString(), "19700101000000.000000+000");
}

}  // namespace
}  // namespace NVORHOST
