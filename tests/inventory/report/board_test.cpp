#include "inventory/report/board_section.h"
#include "inventory/report/memory_board.h"
#include "made_inventory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace NINVENTORY {
namespace {

using testing::AllOf;
using testing::HasSubstr;

TMadeInventory& AddModule(TMadeInventory& made, const std::string& slot, const std::string& bytes) {
    return made.Add("PhysicalConnector", {{"Tag", slot}, {"Description", "Memory slot, DIMM"}})
        .Add("PhysicalMemory", {{"Tag", slot}, {"Capacity", bytes}})
        .Relate("ElementInConnector", "CIM_PhysicalConnector.Tag=\"" + slot + "\"",
                "KELSG_SPDData.Tag=\"" + slot + "\"");
}

std::string Draw(TMadeInventory& made) {
    std::ostringstream out;
    THtmlWriter html(out);
    WriteBoard(html, made.Get());
    return out.str();
}

TEST(FindProcessorNumber, ReadsTheNumberAfterAWordForAProcessor) {
    EXPECT_EQ(FindProcessorNumber("P1-DIMM_A2"), 1);
    EXPECT_EQ(FindProcessorNumber("PROC 2 DIMM 1"), 2);
    EXPECT_EQ(FindProcessorNumber("CPU0_DIMM_A1"), 0);
    EXPECT_EQ(FindProcessorNumber("NODE 1 CHANNEL A"), 1);
}

TEST(FindProcessorNumber, ReturnsNulloptForNamesWithoutOne) {
    for (const char* name : {"", "DIMM 0", "P1A", "DIMMP1", "CPU", "P", "P99999999999"}) {
        EXPECT_FALSE(FindProcessorNumber(name)) << name;
    }
}

TEST(MemoryBoard, GroupsSlotsByProcessor) {
    TMadeInventory made;
    made.Add("Processor", {{"DeviceID", "CPU1"}}).Add("Processor", {{"DeviceID", "CPU2"}});
    AddModule(made, "P2-DIMM_A1", "8589934592");
    AddModule(made, "P1-DIMM_A1", "8589934592");
    const TMemoryBoard board = MakeMemoryBoard(made.Get());
    ASSERT_EQ(board.groups.size(), 2U);
    EXPECT_EQ(board.groups[0].slots.front().name, "P1-DIMM_A1");
    EXPECT_EQ(board.groups[1].slots.front().name, "P2-DIMM_A1");
}

TEST(MemoryBoard, HasOneGroupIfASlotHasNoProcessor) {
    TMadeInventory made;
    made.Add("Processor", {{"DeviceID", "CPU1"}}).Add("Processor", {{"DeviceID", "CPU2"}});
    AddModule(made, "P1-DIMM_A1", "8589934592");
    AddModule(made, "DIMM_A1", "8589934592");
    EXPECT_EQ(MakeMemoryBoard(made.Get()).groups.size(), 1U);
}

TEST(MemoryBoard, DistinguishesEmptySlotsFromUnknownOnes) {
    TMadeInventory made;
    made.Add("PhysicalConnector", {{"Tag", "A1"}, {"Description", "Empty memory slot, DIMM"}})
        .Add("PhysicalConnector", {{"Tag", "A2"}, {"Description", "Memory slot, DIMM"}});
    const TMemoryBoard board = MakeMemoryBoard(made.Get());
    EXPECT_TRUE(board.groups[0].slots[0].isEmpty);
    EXPECT_FALSE(board.groups[0].slots[1].isEmpty);
    EXPECT_THAT(Draw(made),
                AllOf(HasSubstr("<b><bdi>A1</bdi></b> <span class=\"quiet\">empty</span></li>"),
                      HasSubstr("<b><bdi>A2</bdi></b> <span class=\"quiet\">content unknown</span></li>")));
}

TEST(MemoryBoard, MarksTheModuleThatDiffersWithWords) {
    TMadeInventory made;
    for (const char* slot : {"A1", "A2", "A3"}) {
        AddModule(made, slot, slot == std::string("A2") ? "8589934592" : "17179869184");
    }
    EXPECT_EQ(MakeMemoryBoard(made.Get()).groups[0].slots[1].difference, "8 GiB where most have 16 GiB");
    EXPECT_THAT(Draw(made),
                AllOf(HasSubstr("class=\"mark\">!</text>"),
                      HasSubstr("<span class=\"other\">differs: <bdi>8 GiB where most have 16 GiB</bdi>")));
}

TEST(MemoryBoard, MarksNothingWithoutAMajority) {
    TMadeInventory made;
    AddModule(made, "A1", "8589934592");
    AddModule(made, "A2", "17179869184");
    EXPECT_TRUE(ListDifferentModules(MakeMemoryBoard(made.Get())).empty());
}

TEST(BoardSection, FillsASlotAsFarAsItsModuleIsLarge) {
    TMadeInventory made;
    AddModule(made, "A1", "8589934592");
    AddModule(made, "A2", "17179869184");
    EXPECT_THAT(Draw(made),
                AllOf(HasSubstr("<rect class=\"size\" x=\"2\" y=\"58\" width=\"16\" height=\"44\"/>"),
                      HasSubstr("<rect class=\"size\" x=\"22\" y=\"14\" width=\"16\" height=\"88\"/>")));
}

TEST(BoardSection, PutsHalfOfTheSlotsOnEachSideOfAProcessor) {
    TMadeInventory made;
    made.Add("Processor", {{"DeviceID", "CPU1"}});
    AddModule(made, "A1", "8589934592");
    AddModule(made, "A2", "8589934592");
    EXPECT_THAT(Draw(made),
                AllOf(HasSubstr("<rect class=\"case\" x=\"102\" y=\"14\" width=\"16\" height=\"88\"/>"),
                      HasSubstr("<rect class=\"chip\" x=\"128\" y=\"26\" width=\"64\" height=\"64\"/>"),
                      HasSubstr("<rect class=\"case\" x=\"202\" y=\"14\" width=\"16\" height=\"88\"/>")));
}

TEST(BoardSection, HasATextAlternative) {
    TMadeInventory made;
    AddModule(made, "A1", "8589934592");
    made.Add("PhysicalConnector", {{"Tag", "A2"}, {"Description", "Empty memory slot, DIMM"}});
    EXPECT_THAT(
        Draw(made),
        HasSubstr("role=\"img\"><title>Processors and memory slots: 1 filled, 1 empty, 0 unknown</title>"));
}

TEST(BoardSection, StatesThatEmptySlotsAreUnknownInDocuments) {
    TMadeInventory made;
    made.Add("PhysicalMemory", {{"Tag", "A1"}, {"Capacity", "8589934592"}});
    EXPECT_THAT(Draw(made),
                HasSubstr("The source records modules but no slots, so empty slots are unknown."));
}

}  // namespace
}  // namespace NINVENTORY
