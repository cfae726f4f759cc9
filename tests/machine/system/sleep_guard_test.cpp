#include "machine/system/sleep_guard.h"

#include "machine/system/access_log.h"
#include "tests/machine/system/memory_files.h"

#include <gtest/gtest.h>

#include <string>

namespace NVORHOST {
namespace {

constexpr char function[] = "/sys/bus/pci/devices/0000:01:00.0";

class SleepGuard : public testing::Test {
  protected:
    // Returns the status of reading a file of the function.
    EReadStatus Read(const std::string& name) { return ReadAt(std::string(function) + "/" + name); }
    EReadStatus ReadAt(const std::string& path) {
        machine_.AddFile(path, "bytes");
        const EReadStatus status = guard_.ReadText(path).status;
        EXPECT_EQ(guard_.ReadBytes(path, 2).status, status) << path;
        return status;
    }
    void Sleep(const std::string& device) { machine_.AddFile(device + "/power_state", "D3cold\n"); }

    TMemoryFiles machine_;
    TSleepGuard guard_{machine_};
};

TEST_F(SleepGuard, DoesNotReadTheRegistersOfAFunctionInD3cold) {
    Sleep(function);
    for (const char* name :
         {"config", "current_link_speed", "current_link_width", "max_link_speed", "max_link_width",
          "secondary_bus_number", "subordinate_bus_number", "serial_number", "vpd", "rom", "resource0"}) {
        EXPECT_EQ(Read(name), EReadStatus::asleep) << name;
    }
    const auto config = guard_.ReadBytes(std::string(function) + "/config", 64);
    EXPECT_EQ(config.value, "");
    EXPECT_EQ(config.error, "/sys/bus/pci/devices/0000:01:00.0/config: the device is asleep");
}

TEST_F(SleepGuard, ReadsWhatTheKernelKeepsOfAFunctionInD3cold) {
    Sleep(function);
    for (const char* name : {"vendor", "device", "class", "revision", "irq", "resource", "modalias",
                             "numa_node", "power_state", "config.json"}) {
        EXPECT_EQ(Read(name), EReadStatus::ok) << name;
    }
}

TEST_F(SleepGuard, ReadsTheRegistersInEveryOtherPowerState) {
    for (const char* state : {"D0\n", "D1\n", "D2\n", "D3hot\n", "unknown\n", "error\n"}) {
        machine_.AddFile(std::string(function) + "/power_state", state);
        machine_.AddFile(std::string(function) + "/power/runtime_status", "suspended\n");
        EXPECT_EQ(Read("config"), EReadStatus::ok) << state;
    }
}

TEST_F(SleepGuard, FallsBackToTheRuntimeStatus) {
    EXPECT_EQ(Read("config"), EReadStatus::ok);
    machine_.AddFile(std::string(function) + "/power/runtime_status", "active\n");
    EXPECT_EQ(Read("config"), EReadStatus::ok);
    machine_.AddFile(std::string(function) + "/power/runtime_status", "suspended\n");
    EXPECT_EQ(Read("config"), EReadStatus::asleep);
}

TEST_F(SleepGuard, FindsFunctionsBelowTheirBridges) {
    Sleep("/sys/devices/pci0000:00/0000:00:01.0/0000:01:00.0");
    EXPECT_EQ(ReadAt("/sys/devices/pci0000:00/0000:00:01.0/0000:01:00.0/config"), EReadStatus::asleep);
    EXPECT_EQ(ReadAt("/sys/devices/pci0000:00/0000:00:01.0/config"), EReadStatus::ok);
    Sleep("/sys/devices/pci10000:e0/10000:e0:1f.6");
    EXPECT_EQ(ReadAt("/sys/devices/pci10000:e0/10000:e0:1f.6/config"), EReadStatus::asleep);
}

TEST_F(SleepGuard, DoesNotReadTheLatchOfASlotBelowASleepingPort) {
    machine_.AddFile("/sys/bus/pci/slots/4/address", "0000:02:00\n");
    EXPECT_EQ(ReadAt("/sys/bus/pci/slots/4/latch"), EReadStatus::ok);
    Sleep("/sys/class/pci_bus/0000:02/device");
    EXPECT_EQ(ReadAt("/sys/bus/pci/slots/4/latch"), EReadStatus::asleep);
    EXPECT_EQ(ReadAt("/sys/bus/pci/slots/4/address"), EReadStatus::ok);
}

TEST_F(SleepGuard, DoesNotReadTheRateOfAnInterfaceWhoseDeviceIsSuspended) {
    for (const char* name : {"speed", "duplex"}) {
        const std::string path = std::string("/sys/class/net/eth0/") + name;
        machine_.AddFile("/sys/class/net/eth0/device/power/runtime_status", "active\n");
        EXPECT_EQ(ReadAt(path), EReadStatus::ok);
        machine_.AddFile("/sys/class/net/eth0/device/power/runtime_status", "suspended\n");
        EXPECT_EQ(ReadAt(path), EReadStatus::asleep);
    }
    EXPECT_EQ(ReadAt("/sys/class/net/eth0/address"), EReadStatus::ok);
}

TEST_F(SleepGuard, ForwardsEveryOtherAccess) {
    Sleep(function);
    machine_.AddFile(std::string(function) + "/config", "bytes");
    machine_.AddLink(std::string(function) + "/driver", "../drivers/nouveau");
    EXPECT_TRUE(guard_.Exists(std::string(function) + "/config"));
    EXPECT_EQ(guard_.ReadLink(std::string(function) + "/driver").value, "../drivers/nouveau");
    EXPECT_EQ(guard_.List(function).value, (std::vector<std::string>{"config", "driver", "power_state"}));
}

TEST_F(SleepGuard, DoesNotOpenAFileThatItRefuses) {
    Sleep(function);
    TAccessLog opened(machine_);
    (void)TSleepGuard(opened).ReadBytes(std::string(function) + "/config", 64);
    const auto accesses = opened.TakeAccesses();
    ASSERT_EQ(accesses.size(), 1U);
    EXPECT_EQ(accesses[0].path, std::string(function) + "/power_state");
}

}  // namespace
}  // namespace NVORHOST
