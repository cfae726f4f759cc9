// The status of every property of every instance, on made machines.
#include "machine/system/sleep_guard.h"
#include "machine/system/watched_files.h"
#include "machine/system/watched_system_calls.h"
#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

void CollectSources(const ISystemFiles& files, const ISystemCalls& calls, TCollected& collected,
                    const TUnansweredPaths* unanswered = nullptr) {
    const TCollectContext context{.files = files,
                                  .calls = calls,
                                  .target = collected.target,
                                  .localTime = CollectionTime(),
                                  .withSources = true,
                                  .unanswered = unanswered};
    collected.reports = CollectAll(context);
}

void CollectSources(std::string_view tree, TCollected& collected) {
    const TMachine machine = ParseMachineTree(tree);
    CollectSources(machine.files, machine.calls, collected);
}

// "denied", or with the text that was passed over "placeholder: None".
std::string Status(const TCollected& collected, std::string_view className, std::string_view property) {
    const TValueSource* const source =
        collected.target.FindClass(className)->GetInstances().at(0)->FindSource(property);
    if (source == nullptr) {
        return "without sources";
    }
    return std::string(NameValueStatus(source->status)) +
           (source->passedOver.empty() ? "" : ": " + source->passedOver);
}

std::vector<std::string> Sources(const TCollected& collected, std::string_view className,
                                 std::string_view property) {
    return collected.target.FindClass(className)->GetInstances().at(0)->FindSource(property)->sources;
}

constexpr std::string_view rootBoard =
    "/sys/firmware/dmi/tables/smbios_entry_point bytes:\n"
    "| \"_SM3_\" 00 18 03 02 00 01 00 00 00 00 00 00 00 00 00 00 00 00 00\n"
    "/sys/firmware/dmi/tables/DMI smbios:\n"
    "| 2: 01 02 00 03 09 05 04 00 00 0a \"Acme\" \"Board 1\" \"To Be Filled By O.E.M.\" \"Shelf 4\"\n";

TEST(ValueSources, ArePresentForAValue) {
    TCollected collected;
    CollectSources(rootBoard, collected);
    EXPECT_EQ(Status(collected, "KELSG_Card", "Manufacturer"), "present");
    EXPECT_THAT(Sources(collected, "KELSG_Card", "Manufacturer"),
                ElementsAre("type 2, 04h", "/sys/class/dmi/id/board_vendor"));
}

TEST(ValueSources, AreAbsentForATextThatTheStructureDoesNotHave) {
    TCollected collected;
    CollectSources(rootBoard, collected);
    EXPECT_EQ(Status(collected, "KELSG_Card", "Version"), "absent");
}

TEST(ValueSources, AreAbsentForAPropertyThatIsNeverSet) {
    TCollected collected;
    CollectSources(rootBoard, collected);
    EXPECT_EQ(Status(collected, "KELSG_Card", "PartNumber"), "absent");
    EXPECT_THAT(Sources(collected, "KELSG_Card", "PartNumber"), ElementsAre("none: no such field"));
}

TEST(ValueSources, KeepThePlaceholderOfTheFirmware) {
    TCollected collected;
    CollectSources(rootBoard, collected);
    EXPECT_EQ(Status(collected, "KELSG_Card", "SerialNumber"), "placeholder: To Be Filled By O.E.M.");
}

TEST(ValueSources, AreMalformedForATextThatIsMissing) {
    TCollected collected;
    CollectSources(rootBoard, collected);
    EXPECT_EQ(Status(collected, "KELSG_Card", "UserTracking"), "malformed: text 9 of 4");
}

constexpr std::string_view userBoard =
    "/sys/firmware/dmi/tables/DMI !denied\n"
    "/sys/class/dmi/id/board_vendor = Acme\n"
    "/sys/class/dmi/id/board_name = Board 1\n"
    "/sys/class/dmi/id/board_asset_tag = Not Specified\n"
    "/sys/class/dmi/id/board_serial !denied\n";

TEST(ValueSources, AreDeniedIfEveryCopyIsDenied) {
    TCollected collected;
    CollectSources(userBoard, collected);
    EXPECT_EQ(Status(collected, "KELSG_Card", "SerialNumber"), "denied");
    EXPECT_EQ(Status(collected, "KELSG_Card", "HostingBoard"), "denied");
}

TEST(ValueSources, AreKnownIfOneCopyCouldBeRead) {
    TCollected collected;
    CollectSources(userBoard, collected);
    EXPECT_EQ(Status(collected, "KELSG_Card", "Manufacturer"), "present");
    EXPECT_EQ(Status(collected, "KELSG_Card", "UserTracking"), "placeholder: Not Specified");
    EXPECT_EQ(Status(collected, "KELSG_Card", "Version"), "absent");
}

TEST(ValueSources, FollowThePropertiesThatAValueIsMadeFrom) {
    TCollected collected;
    CollectSources(
        "/sys/block/sda/device/type = 0\n"
        "/sys/block/sda/size = 100\n"
        "/sys/block/sda/queue/logical_block_size !denied\n",
        collected);
    EXPECT_EQ(Status(collected, "KELSG_DiskDrive", "MaxBlockSize"), "denied");
}

TEST(ValueSources, AreMalformedForANumberThatIsNone) {
    TCollected collected;
    CollectSources(
        "/sys/block/sda/device/type = 0\n"
        "/sys/block/sda/size = large\n",
        collected);
    EXPECT_EQ(Status(collected, "KELSG_DiskDrive", "MaxMediaSize"), "malformed: large");
}

TEST(ValueSources, AreUnreadAfterAnInputError) {
    TCollected collected;
    CollectSources(
        "/sys/block/sda/device/type = 0\n"
        "/sys/block/sda/size !failed\n",
        collected);
    EXPECT_EQ(Status(collected, "KELSG_DiskDrive", "MaxMediaSize"), "unread");
}

TEST(ValueSources, NameTheElementsThatAnArrayLacks) {
    TCollected collected;
    CollectSources(
        "/sys/block/sda/device/type = 0\n"
        "/sys/block/sda/device/rev = 1.0\n"
        "/sys/block/sda/device/vpd_pg80 !denied\n",
        collected);
    const TValueSource* const source = collected.target.FindClass("KELSG_DiskDrive")
                                           ->GetInstances()
                                           .at(0)
                                           ->FindSource("OtherIdentifyingInfo");
    EXPECT_EQ(source->status, EValueStatus::present);
    EXPECT_THAT(source->gaps, ElementsAre("Serial number: denied"));
}

constexpr std::string_view sleepingFunction =
    "/sys/bus/pci/devices/0000:01:00.0/config registers 256:\n"
    "| 00: 86 80 34 12\n"
    "/sys/bus/pci/devices/0000:01:00.0/vendor = 0x8086\n"
    "/sys/bus/pci/devices/0000:01:00.0/device = 0x1234\n"
    "/sys/bus/pci/devices/0000:01:00.0/class = 0x030000\n"
    "/sys/bus/pci/devices/0000:01:00.0/max_link_speed = 8.0 GT/s PCIe\n"
    "/sys/bus/pci/devices/0000:01:00.0/max_link_width = 8\n"
    "/sys/bus/pci/devices/0000:01:00.0/current_link_speed = 8.0 GT/s PCIe\n"
    "/sys/bus/pci/devices/0000:01:00.0/current_link_width = 8\n"
    "/sys/bus/pci/devices/0000:01:00.0/power_state = D3cold\n";

TEST(ValueSources, AreAsleepForADeviceThatWouldHaveToWake) {
    const TMachine machine = ParseMachineTree(sleepingFunction);
    const TSleepGuard guarded(machine.files);
    TCollected collected;
    CollectSources(guarded, machine.calls, collected);
    EXPECT_EQ(Status(collected, "KELSG_PCIDevice", "CacheLineSize"), "asleep");
    EXPECT_EQ(Status(collected, "CIM_PCIPort", "LinkWidth"), "asleep");
    EXPECT_EQ(Status(collected, "CIM_PCIPort", "PowerState"), "present");
}

constexpr std::string_view mountedDisk =
    "/sys/block/sda/device/type = 0\n"
    "/sys/block/sda/size = 100\n"
    "/sys/block/sda/queue/logical_block_size = 512\n"
    "/sys/block/sda/dev = 8:0\n"
    "/sys/dev/block/8:0 -> ../../block/sda\n"
    "/proc/self/mountinfo:\n"
    "| 20 1 8:0 / / rw - ext4 /dev/sda rw\n";

TEST(ValueSources, AreTimedOutForAPathThatDidNotAnswer) {
    const TMachine machine = ParseMachineTree(mountedDisk);
    const TUnansweredPaths unanswered{"/sys/block/sda/queue/logical_block_size", "/"};
    TAccessPlace place{};
    const TWatchedFiles files(machine.files, place, unanswered);
    const TWatchedSystemCalls calls(machine.calls, place, unanswered);
    TCollected collected;
    CollectSources(files, calls, collected, &unanswered);
    EXPECT_EQ(Status(collected, "KELSG_DiskDrive", "DefaultBlockSize"), "timed out");
    EXPECT_EQ(Status(collected, "CIM_LocalFileSystem", "FileSystemSize"), "timed out");
}

TEST(ValueSources, AreNotKeptUnlessTheyAreWanted) {
    TCollected collected;
    Collect(rootBoard, collected);
    EXPECT_THAT(collected.target.FindClass("KELSG_Card")->GetInstances().at(0)->GetSources(), IsEmpty());
    EXPECT_EQ(collected.GetReport("board").values, TValueCounts{});
}

TEST(ValueSources, AreCountedByStatus) {
    TCollected collected;
    CollectSources(rootBoard, collected);
    const TValueCounts& counts = collected.GetReport("board").values;
    EXPECT_EQ(counts[static_cast<std::size_t>(EValueStatus::placeholder)], 1U);
    EXPECT_EQ(counts[static_cast<std::size_t>(EValueStatus::malformed)], 1U);
    EXPECT_EQ(counts[static_cast<std::size_t>(EValueStatus::denied)], 0U);
}

}  // namespace
}  // namespace NVORHOST
