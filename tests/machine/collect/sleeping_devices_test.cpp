// Collects from every machine while each of its devices sleeps. No file may be opened whose read wakes a
// device or sends it a command. The list of such files is this test's own.
#include "machine/system/path_pattern.h"
#include "machine/system/sleep_guard.h"
#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <string_view>

namespace NVORHOST {
namespace {

using testing::IsEmpty;
using testing::IsSupersetOf;

constexpr std::string_view wakingFiles[] = {
    // Registers of PCI functions.
    "/sys/**/*:*:*.*/config",
    "/sys/**/*:*:*.*/current_link_*",
    "/sys/**/*:*:*.*/max_link_*",
    "/sys/**/*:*:*.*/*_bus_number",
    "/sys/**/*:*:*.*/serial_number",
    "/sys/**/*:*:*.*/vpd",
    "/sys/**/*:*:*.*/rom",
    "/sys/**/*:*:*.*/resource*",
    "/sys/bus/pci/slots/*/adapter",
    "/sys/bus/pci/slots/*/latch",
    "/sys/bus/pci/slots/*/power",
    "/proc/bus/pci/**",
    // The link of a network interface.
    "/sys/class/net/*/duplex",
    "/sys/class/net/*/speed",
    // Commands to enclosures, drives, wireless devices and sensors.
    "/dev/**",
    "/sys/**/enclosure/*/*/active",
    "/sys/**/enclosure/*/*/fault",
    "/sys/**/enclosure/*/*/locate",
    "/sys/**/enclosure/*/*/power_status",
    "/sys/**/enclosure/*/*/status",
    "/sys/**/hwmon*/**",
    "/sys/class/power_supply/*/capacity",
    "/sys/class/power_supply/*/status",
    "/sys/class/power_supply/*/uevent",
    "/sys/class/thermal/**",
};

// Shows every device of a machine as asleep, and notes the files that would wake one.
class TSleepingMachine final : public ISystemFiles {
  public:
    explicit TSleepingMachine(const ISystemFiles& files) : files_(files) {}

    TReadResult<std::string> ReadText(std::string_view path) const override {
        if (path.ends_with("/power_state")) {
            return {EReadStatus::ok, "D3cold\n", {}};
        }
        if (path.ends_with("/power/runtime_status")) {
            return {EReadStatus::ok, "suspended\n", {}};
        }
        Note(path);
        return files_.ReadText(path);
    }
    TReadResult<std::string> ReadBytes(std::string_view path, std::size_t maxBytes) const override {
        Note(path);
        return files_.ReadBytes(path, maxBytes);
    }
    TReadResult<std::vector<std::string>> List(std::string_view path) const override {
        return files_.List(path);
    }
    TReadResult<std::string> ReadLink(std::string_view path) const override { return files_.ReadLink(path); }
    bool Exists(std::string_view path) const override { return files_.Exists(path); }

    std::set<std::string> GetWoken() const { return woken_; }

  private:
    void Note(std::string_view path) const {
        for (const std::string_view pattern : wakingFiles) {
            if (MatchesPathPattern(pattern, path)) {
                woken_.insert(std::string(path.substr(path.rfind('/') + 1)));
            }
        }
    }

    const ISystemFiles& files_;
    mutable std::set<std::string> woken_;  // reading is const: it does not change the machine
};

std::vector<TMachine> ReadMachines() {
    std::vector<TMachine> machines;
    for (const auto& entry : std::filesystem::directory_iterator(NOXINFO_MACHINES)) {
        std::ifstream file(entry.path() / "tree.txt", std::ios::binary);
        if (file) {
            machines.push_back(ParseMachineTree(std::string(std::istreambuf_iterator<char>(file), {})));
        }
    }
    return machines;
}

// Returns the names of the files that would have woken a device of any machine.
std::set<std::string> CollectAsleep(bool isGuarded) {
    std::set<std::string> woken;
    for (const TMachine& machine : ReadMachines()) {
        const TSleepingMachine sleeping(machine.files);
        const TSleepGuard guard(sleeping);
        TMemoryNamespace target;
        const ISystemFiles& files = isGuarded ? static_cast<const ISystemFiles&>(guard) : sleeping;
        (void)CollectAll({files, machine.calls, target, CollectionTime()}, GetCollectors());
        woken.merge(sleeping.GetWoken());
    }
    return woken;
}

TEST(SleepingDevices, AreNotWokenByACollection) {
    EXPECT_THAT(CollectAsleep(/*isGuarded=*/true), IsEmpty());
}

TEST(SleepingDevices, WouldBeWokenWithoutTheGuard) {
    EXPECT_THAT(CollectAsleep(/*isGuarded=*/false),
                IsSupersetOf(std::set<std::string>{"config", "duplex", "speed"}));
}

TEST(SleepingDevices, KeepWhatTheKernelHasOfThem) {
    const TMachine machine = ParseMachineTree(
        "/sys/bus/pci/devices/0000:01:00.0/power_state = D3cold\n"
        "/sys/bus/pci/devices/0000:01:00.0/config registers 64:\n| 00: 86 80 0e 10\n| 3c: 0b 01\n"
        "/sys/bus/pci/devices/0000:01:00.0/vendor = 0x10de\n"
        "/sys/bus/pci/devices/0000:01:00.0/device = 0x25a0\n"
        "/sys/bus/pci/devices/0000:01:00.0/class = 0x030200\n"
        "/sys/bus/pci/devices/0000:01:00.0/subsystem_vendor = 0x17aa\n"
        "/sys/bus/pci/devices/0000:01:00.0/subsystem_device = 0x3a5d\n");
    const TSleepGuard guard(machine.files);
    TCollected collected;
    Collect(guard, machine.calls, collected);
    EXPECT_EQ(collected.Get("KELSG_PCIDevice", "ElementName"), "3D controller 10de:25a0");
    EXPECT_EQ(collected.Get("KELSG_PCIDevice", "ClassCode"), "3");
    EXPECT_EQ(collected.Get("KELSG_PCIDevice", "SubsystemID"), "14941");
    EXPECT_EQ(collected.Get("KELSG_PCIDevice", "InterruptPin"), "absent");
    EXPECT_EQ(collected.Get("CIM_PCIPort", "PowerState"), "D3cold");
    EXPECT_EQ(collected.GetReport("pci").asleepSources,
              std::vector<std::string>{"/sys/bus/pci/devices/0000:01:00.0/config"});
}

}  // namespace
}  // namespace NVORHOST
