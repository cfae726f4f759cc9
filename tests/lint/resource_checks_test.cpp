// Every check on resources: an inventory with the flaw, its finding, and an inventory without the flaw.
#include "lint/resources/resource_checks.h"

#include "tests/lint/finding_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace NLINT {
namespace {

using NINVENTORY::EShape;
using NINVENTORY::TResource;
using testing::ElementsAre;
using testing::IsEmpty;

using TTexts = std::vector<std::pair<std::string, std::string>>;
using TInventory = std::vector<TResource>;

TResource Make(const std::string& type, const TTexts& texts) {
    TResource resource;
    resource.type = type;
    for (const auto& [name, value] : texts) {
        resource.properties.push_back({name, "string", EShape::scalar, {value}});
    }
    return resource;
}

TResource Module(const std::string& tag, TTexts texts) {
    texts.insert(texts.begin(), {"Tag", tag});
    return Make("PhysicalMemory", texts);
}

// A module of 8 GiB.
TResource Module(const std::string& tag) {
    return Module(tag, {{"Capacity", "8589934592"}});
}

TResource Kernel(const std::string& kibibytes) {
    return Make("OperatingSystem", {{"Name", "Linux"}, {"TotalVisibleMemorySize", kibibytes}});
}

TResource Firmware(const std::string& date) {
    return Make("BIOSElement", {{"Name", "System firmware"}, {"ReleaseDate", date}});
}

const TResource collected =
    Make("OperatingSystem", {{"Name", "Linux"}, {"LocalDateTime", "2024-03-01T12:00:00+01:00"}});

TResource Processor(const std::string& socket, const std::string& stepping, const std::string& microcode) {
    return Make("Processor", {{"DeviceID", socket}, {"Stepping", stepping}, {"FirmwareVersion", microcode}});
}

// A port above bus 5, and its bridge; 8 lanes, and 8 GT/s.
const TResource bridge = Make("PCIBridge", {{"DeviceID", "0000:00:01.0"}, {"SecondaryBusNumber", "5"}});
const TResource rootPort =
    Make("PCIPort", {{"DeviceID", "0000:00:01.0"}, {"MaxLinkWidth", "8"}, {"MaxSpeed", "63015384615"}});

// A function with at most 16 lanes at 16 GT/s.
TResource Function(const std::string& lanes, const std::string& bitsPerSecond) {
    return Make("PCIPort", {{"DeviceID", "0000:05:00.0"},
                            {"Name", "Ethernet controller"},
                            {"LinkWidth", lanes},
                            {"MaxLinkWidth", "16"},
                            {"Speed", bitsPerSecond},
                            {"MaxSpeed", "252061538461"}});
}

TResource Path(const std::string& state) {
    return Make("BasedOn", {{"Antecedent", "Disk.DeviceID=\"sda\""},
                            {"Dependent", "Volume.DeviceID=\"mpath\""},
                            {"Role", "path"},
                            {"State", state}});
}

TResource Volume(const std::string& state) {
    TResource volume = Make("LogicalVolume", {{"DeviceID", "md-uuid-1"}});
    volume.properties.push_back({"OperationalStatus", "unsignedShort", EShape::array, {state}});
    return volume;
}

struct TCase {
    std::string check;
    TInventory flawed;
    std::string finding;
    TInventory sound;
};

std::vector<TCase> MakeCases() {
    return {
        {"memory-total",
         {Kernel("25165824"), Module("A"), Module("B")},
         "memory: 24576 MiB (OperatingSystem Linux, property TotalVisibleMemorySize) / 16384 MiB "
         "(PhysicalMemory, sum of the property Capacity)",
         {Kernel("16300000"), Module("A"), Module("B")}},
        {"firmware-date",
         {Firmware("2024-03-02"), collected},
         "system firmware System firmware: 2024-03-02 (BIOSElement System firmware, property ReleaseDate) / "
         "2024-03-01 (OperatingSystem Linux, property LocalDateTime)",
         {Firmware("2024-03-01"), collected}},
        {"memory-speed",
         {Module("A", {{"Speed", "2667"}, {"ConfiguredMemoryClockSpeed", "2133"}})},
         "memory module A: 2133 MT/s (PhysicalMemory A, property ConfiguredMemoryClockSpeed) / 2667 MT/s "
         "(PhysicalMemory A, property Speed)",
         {Module("A", {{"Speed", "2667"}, {"ConfiguredMemoryClockSpeed", "2666"}})}},
        {"memory-mixed-sizes",
         {Module("A"), Module("B", {{"Capacity", "4294967296"}})},
         "memory module B: 4096 MiB (PhysicalMemory B, property Capacity) / 8192 MiB "
         "(PhysicalMemory A, property Capacity)",
         {Module("A"), Module("B")}},
        {"memory-mixed-ranks",
         {Module("A", {{"Rank", "2"}}), Module("B", {{"Rank", "1"}})},
         "memory module B: 1 rank (PhysicalMemory B, property Rank) / 2 ranks (PhysicalMemory A, property "
         "Rank)",
         {Module("A", {{"Rank", "2"}}), Module("B"), Module("C", {{"Rank", "2"}})}},
        {"memory-mixed-parts",
         {Module("A", {{"PartNumber", "P1"}}), Module("B", {{"PartNumber", "P2"}})},
         "memory module B: P2 (PhysicalMemory B, property PartNumber) / P1 (PhysicalMemory A, property "
         "PartNumber)",
         {Module("A", {{"PartNumber", "P1"}}), Module("B", {{"PartNumber", "P1"}})}},
        {"memory-channels",
         {Module("DIMM_A1"), Module("DIMM_A2"), Module("DIMM_B1")},
         "memory channel DIMM_B: 8192 MiB (PhysicalMemory, sum of the property Capacity of DIMM_B) / 16384 "
         "MiB "
         "(PhysicalMemory, sum of the property Capacity of DIMM_A)",
         {Module("DIMM_A1"), Module("DIMM_B1")}},
        {"memory-error-correction",
         {Module("A", {{"TotalWidth", "72"}, {"DataWidth", "64"}, {"ErrorMethodology", "None"}})},
         "memory module A: 72 bits for 64 bits of data (PhysicalMemory A, property TotalWidth) / "
         "no error correction (PhysicalMemory A, property ErrorMethodology)",
         {Module("A", {{"TotalWidth", "72"}, {"DataWidth", "64"}, {"ErrorMethodology", "Single-bit ECC"}}),
          Module("B", {{"TotalWidth", "64"}, {"DataWidth", "64"}, {"ErrorMethodology", "None"}})}},
        {"processor-steppings",
         {Processor("CPU0", "7", "0x1"), Processor("CPU1", "4", "0x1")},
         "processor CPU1: 4 (Processor CPU1, property Stepping) / 7 (Processor CPU0, property Stepping)",
         {Processor("CPU0", "7", "0x1"), Processor("CPU1", "7", "0x1")}},
        {"processor-microcode",
         {Processor("CPU0", "7", "0x5003604"), Processor("CPU1", "7", "0x5003303")},
         "processor CPU1: 0x5003303 (Processor CPU1, property FirmwareVersion) / 0x5003604 "
         "(Processor CPU0, property FirmwareVersion)",
         {Processor("CPU0", "7", "0x5003604"), Processor("CPU1", "7", "0x5003604")}},
        {"pcie-width",
         {bridge, rootPort, Function("4", "31507692307")},
         "PCI function 0000:05:00.0, Ethernet controller: x4 (PCIPort 0000:05:00.0, property "
         "LinkWidth) / x8 "
         "(PCIPort 0000:00:01.0, property MaxLinkWidth)",
         {bridge, rootPort, Function("8", "63015384615")}},
        {"pcie-speed",
         {bridge, rootPort, Function("8", "16000000000")},
         "PCI function 0000:05:00.0, Ethernet controller: 2000 Mbit/s for each lane "
         "(PCIPort 0000:05:00.0, property Speed) / 7876 Mbit/s for each lane (PCIPort 0000:00:01.0, property "
         "MaxSpeed)",
         {bridge, rootPort, Function("8", "63015384615")}},
        {"member-state",
         {Path("offline,active/optimized")},
         "Disk.DeviceID=\"sda\" below Volume.DeviceID=\"mpath\": offline (BasedOn, property State) / running "
         "(state of one that can be used)",
         {Path("running,active/optimized")}},
        {"state",
         {Volume("3")},
         "volume md-uuid-1: Degraded (LogicalVolume md-uuid-1, property OperationalStatus) / OK "
         "(CIM_ManagedSystemElement.OperationalStatus)",
         {Volume("2")}},
    };
}

std::vector<std::string> FindingsOf(const std::string& check, const TInventory& inventory) {
    return RunCheck(GetResourceChecks(), check, TResourceIndex(inventory));
}

class ResourceChecks : public testing::TestWithParam<TCase> {};

INSTANTIATE_TEST_SUITE_P(Check, ResourceChecks, testing::ValuesIn(MakeCases()), [](const auto& value) {
    std::string name = value.param.check;
    std::ranges::replace(name, '-', '_');
    return name;
});

TEST_P(ResourceChecks, NamesBothPiecesOfEvidence) {
    EXPECT_THAT(FindingsOf(GetParam().check, GetParam().flawed), ElementsAre(GetParam().finding));
}

TEST_P(ResourceChecks, HasNoFindingWithoutTheFlaw) {
    EXPECT_THAT(FindingsOf(GetParam().check, GetParam().sound), IsEmpty());
    EXPECT_THAT(FindingsOf(GetParam().check, {}), IsEmpty());
}

TEST(ResourceCheckList, HasACaseForEveryCheck) {
    std::set<std::string> checks;
    for (const TResourceCheck& check : GetResourceChecks()) {
        checks.emplace(check.text.id);
    }
    std::set<std::string> cases;
    for (const TCase& each : MakeCases()) {
        cases.insert(each.check);
    }
    EXPECT_EQ(checks, cases);
}

TEST(ResourceCheckDetails, LeavePersistentMemoryOutOfTheSum) {
    const TResource persistent =
        Module("C", {{"Capacity", "137438953472"}, {"Description", "logical non-volatile DIMM"}});
    EXPECT_THAT(FindingsOf("memory-total", {Kernel("16300000"), Module("A"), Module("B"), persistent}),
                IsEmpty());
}

TEST(ResourceCheckDetails, ReportEachBadStateOfAMemberOfAnArray) {
    const TResource member = Make("BasedOn", {{"Antecedent", "Disk.DeviceID=\"sda\""},
                                              {"Dependent", "Volume.DeviceID=\"md\""},
                                              {"State", "faulty,write_error"}});
    EXPECT_THAT(FindingsOf("member-state", {member}),
                ElementsAre("Disk.DeviceID=\"sda\" below Volume.DeviceID=\"md\": faulty (BasedOn, property "
                            "State) / in_sync (state of one that can be used)",
                            "Disk.DeviceID=\"sda\" below Volume.DeviceID=\"md\": write_error (BasedOn, "
                            "property State) / in_sync (state of one that can be used)"));
}

TEST(ResourceCheckDetails, ReportMemoryThatTheKernelDoesNotHave) {
    EXPECT_THAT(
        FindingsOf("memory-total", {Kernel("8388608"), Module("A"), Module("B")}),
        ElementsAre("memory: 8192 MiB (OperatingSystem Linux, property TotalVisibleMemorySize) / 16384 MiB "
                    "(PhysicalMemory, sum of the property Capacity)"));
}

TEST(ResourceCheckDetails, FindTheChannelInTheNamesOfSlots) {
    for (const auto& [first, second, third] :
         {std::tuple("ChannelA-DIMM0", "ChannelA-DIMM1", "ChannelB-DIMM0"),
          {"P0 CHANNEL A", "P0 CHANNEL A", "P0 CHANNEL B"},
          {"CPU1_DIMM_A1", "CPU1_DIMM_A2", "CPU1_DIMM_B1"},
          {"DIMMA1", "DIMMA2", "DIMMB1"}}) {
        EXPECT_EQ(FindingsOf("memory-channels", {Module(first), Module(second), Module(third)}).size(), 1U)
            << first;
    }
    for (const auto& [first, second, third] : {std::tuple("DIMM 0", "DIMM 1", "DIMM 2"),
                                               {"SODIMM", "SODIMM", "SODIMM"},
                                               {"DIMM_A1", "DIMM_A2", "Slot 3"}}) {
        EXPECT_EQ(FindingsOf("memory-channels", {Module(first), Module(second), Module(third)}).size(), 0U)
            << first;
    }
}

}  // namespace
}  // namespace NLINT
