#include "inventory/write/diff_json_writer.h"
#include "inventory/write/diff_text_writer.h"
#include "tests/inventory/compare/inventories.h"

#include <gtest/gtest.h>

#include <sstream>

namespace NINVENTORY {
namespace {

std::string WriteText(const TInventory& before, const TInventory& after, const TTextLayout& layout) {
    std::ostringstream out;
    WriteDiffText(Compare(before, after, {}), before, after, layout, out);
    return out.str();
}

const TInventory oldMachine = MakeDocument({
    MakeResource(
        "Server", "1",
        {MakeText("Manufacturer", "Example"), MakeText("Model", "X1"), MakeText("SerialNumber", "M1")}),
    MakeModule("P1-DIMM_A1", "1A2A"),
    MakeModule("P1-DIMM_A2", "1A2B"),
    MakeModule("P1-DIMM_B1", "1A2C"),
    MakeModule("P1-DIMM_B2", "1A2D"),
});

const TInventory newMachine = MakeDocument({
    oldMachine.resources[0],
    MakeModule("P1-DIMM_A1", "1A2A"),
    MakeModule("P1-DIMM_A2", "9F00"),
    MakeModule("P1-DIMM_C1", "1A2C"),
});

TEST(DiffTextWriter, WritesSignsInUtf8) {
    EXPECT_EQ(WriteText(oldMachine, newMachine, {}),
              "old          document\n"
              "new          document\n"
              "machine      Example X1, serial number M1, the same in both\n"
              "\n"
              "3 changes: 1 replaced, 1 moved, 1 removed\n"
              "──────────────────────────────────────────────────────────────────────────────\n"
              "± Memory module 16 GiB in P1-DIMM_A2: replaced, serial number 1A2B → 9F00\n"
              "» Memory module 16 GiB: moved from P1-DIMM_B1 to P1-DIMM_C1, serial number 1A2C\n"
              "- Memory module 16 GiB in P1-DIMM_B2: removed, serial number 1A2D\n"
              "──────────────────────────────────────────────────────────────────────────────\n"
              "unchanged    1 machine, 1 memory module\n");
}

TEST(DiffTextWriter, FoldsLinesAtTheWidthOfTheTerminal) {
    EXPECT_EQ(WriteText(oldMachine, newMachine, {.width = 40, .isUtf8 = false}),
              "old          document\n"
              "new          document\n"
              "machine      Example X1, serial number\n"
              "             M1, the same in both\n"
              "\n"
              "3 changes: 1 replaced, 1 moved, 1\n"
              "    removed\n"
              "--------------------------------------\n"
              "* Memory module 16 GiB in P1-DIMM_A2:\n"
              "    replaced, serial number 1A2B -> 9F00\n"
              "> Memory module 16 GiB: moved from\n"
              "    P1-DIMM_B1 to P1-DIMM_C1, serial\n"
              "    number 1A2C\n"
              "- Memory module 16 GiB in P1-DIMM_B2:\n"
              "    removed, serial number 1A2D\n"
              "--------------------------------------\n"
              "unchanged    1 machine, 1 memory module\n");
}

TEST(DiffTextWriter, WritesPartsThatChangedInTheSameWayOnce) {
    const auto make = [](const char* socket, const char* name, const char* clock) {
        return MakeResource("Processor", socket,
                            {MakeText("Name", name),
                             MakeText("DeviceID", socket),
                             {"MaxClockSpeed", "unsignedInt", EShape::scalar, {clock}}});
    };
    const std::string text = WriteText(
        MakeDocument({make("CPU0", "ONE", "2900"), make("CPU1", "ONE", "2900"), make("CPU2", "ONE", "2900")}),
        MakeDocument({make("CPU0", "TWO", "2400"), make("CPU1", "TWO", "2400"), make("CPU2", "TWO", "2900")}),
        {.isUtf8 = false});
    EXPECT_NE(text.find("3 changes: 3 changed\n"), std::string::npos) << text;
    EXPECT_NE(text.find("~ 2 processors ONE in CPU0, CPU1: changed\n"
                        "    name   ONE -> TWO\n"
                        "    clock  2.9 GHz -> 2.4 GHz\n"
                        "~ Processor ONE in CPU2: changed, name ONE -> TWO\n"),
              std::string::npos)
        << text;
}

TEST(DiffTextWriter, WritesTheDigitsOfSizesThatLookAlike) {
    const auto make = [](const char* size) {
        return MakeDocument({MakeResource("DiskPartition", "1", {MakeNumber("PartitionSize", size)})});
    };
    const std::string text = WriteText(make("2000000000000"), make("2000000000512"), {});
    EXPECT_NE(text.find("size 2000000000000 (unsignedLong) → 2000000000512 (unsignedLong)\n"),
              std::string::npos)
        << text;
}

TEST(DiffTextWriter, ListsWhatOnlyOneSideCanHave) {
    const TInventory before = MakeDocument({MakeResource("Card", "1", {})});
    const TInventory after = MakeNamespace(
        {MakeResource("Card", "1", {MakeText("KernelRelease", "1")}), MakeResource("Chassis", "2", {})});
    EXPECT_EQ(WriteText(before, after, {}),
              "old          document\n"
              "new          namespace\n"
              "\n"
              "no changes\n"
              "unchanged    1 board\n"
              "left out     what only new can have (chassis; of boards: kernel release); --all compares "
              "them, too\n");
}

TEST(DiffTextWriter, MakesEveryTextVisible) {
    const TInventory before = MakeDocument({});
    const TInventory after = MakeDocument({MakeModule("A\n\x1B", "S\xE2\x80\xAE")});
    EXPECT_NE(WriteText(before, after, {})
                  .find("+ Memory module 16 GiB in A\\n\\x1b: added, serial number S\\u202e\n"),
              std::string::npos);
}

TEST(DiffJsonWriter, WritesTheValuesOfBothSides) {
    const TInventory before = MakeDocument({MakeModule("A1", "S1"), MakeModule("A2", "S2")});
    const TInventory after = MakeDocument({MakeModule("A1", "S9")});
    const TComparison comparison = Compare(before, after, {});
    std::ostringstream json;
    WriteDiffJson(comparison, before, after, json);
    EXPECT_EQ(
        json.str(),
        R"({"old":{"source":"document","kinds":["hardware"]},"new":{"source":"document","kinds":["hardware"]},)"
        R"("isSame":false,"counts":{"replaced":1,"moved":0,"removed":1,"added":0,"updated":0,"changed":0},)"
        R"("unchanged":{},"leftOut":{"onOneSide":[],"volatile":0,"links":false},"changes":[)"
        "\n"
        R"({"change":"replaced","resourceType":"PhysicalMemory","name":"A1","old":{"resourceId":"ID-A1"},)"
        R"("new":{"resourceId":"ID-A1"},"properties":{"SerialNumber":{"old":{"value":"S1"},"new":{"value":"S9"}}}},)"
        "\n"
        R"({"change":"removed","resourceType":"PhysicalMemory","name":"A2","old":{"resourceId":"ID-A2",)"
        R"("properties":{"Name":{"value":"A2"},"Capacity":{"value":17179869184,"unit":"B"},"Tag":{"value":"A2"},)"
        R"("SerialNumber":{"value":"S2"}}},"new":null})"
        "\n]}\n");
}

TEST(DiffJsonWriter, WritesALineForEachDifference) {
    const TInventory before = MakeDocument({MakeModule("A1", "S1")});
    const TInventory after = MakeDocument({MakeModule("A1", "S9")});
    std::ostringstream ndjson;
    WriteDiffNdjson(Compare(before, after, {}), before, after, ndjson);
    EXPECT_EQ(ndjson.str(),
              R"({"oldSource":"document","newSource":"document","change":"replaced",)"
              R"("resourceType":"PhysicalMemory","name":"A1","old":{"resourceId":"ID-A1"},)"
              R"("new":{"resourceId":"ID-A1"},"properties":{"SerialNumber":{"old":{"value":"S1"},)"
              R"("new":{"value":"S9"}}}})"
              "\n");
}

}  // namespace
}  // namespace NINVENTORY
