// Display, USB and IDE controllers on PCI and on other buses.
#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* video = "KELSG_VideoController";
constexpr const char* usb = "KELSG_USBController";
constexpr const char* ide = "KELSG_IDEProtocolController";

// A function at its address whose class is "interface subclass base" as hexadecimal bytes.
std::string Function(const std::string& address, const std::string& classBytes) {
    return "/sys/bus/pci/devices/" + address + " -> ../../../devices/pci0000:00/" + address +
           "\n/sys/devices/pci0000:00/" + address +
           "/config registers 64:\n| 00: 86 80 34 12\n| 09: " + classBytes + "\n";
}

// A root hub of the controller at `controllerPath` below /sys/devices.
std::string RootHub(const std::string& name, const std::string& controllerPath, const std::string& version) {
    return "/sys/bus/usb/devices/" + name + " -> ../../../devices/" + controllerPath + "/" + name +
           "\n/sys/devices/" + controllerPath + "/" + name + "/version = " + version + "\n";
}

std::string Get(const std::string& tree, const char* className, std::string_view property) {
    TCollected collected;
    Collect(tree, collected);
    return collected.Get(className, property);
}

std::vector<std::string> GetKeys(const std::string& tree, const char* className) {
    TCollected collected;
    Collect(tree, collected);
    return collected.GetAll(className, "DeviceID");
}

TEST(Controllers, ArePciFunctionsByTheirClass) {
    TCollected collected;
    Collect(Function("0000:00:01.1", "80 01 01") + Function("0000:00:01.2", "00 03 0c") +
                Function("0000:00:02.0", "00 00 03") + Function("0000:00:03.0", "00 00 02") +
                Function("0000:00:04.0", "00 02 03") + Function("0000:00:05.0", "01 06 01") +
                Function("0000:00:06.0", "00 05 0c"),
            collected);
    EXPECT_THAT(collected.GetAll(ide, "DeviceID"), ElementsAre("0000:00:01.1"));
    EXPECT_THAT(collected.GetAll(usb, "DeviceID"), ElementsAre("0000:00:01.2"));
    EXPECT_THAT(collected.GetAll(video, "DeviceID"), ElementsAre("0000:00:02.0", "0000:00:04.0"));
    EXPECT_THAT(collected.GetAll(video, "Description"),
                ElementsAre("VGA compatible controller", "3D controller"));
}

TEST(Controllers, AreAlsoListedAsPciFunctions) {
    EXPECT_THAT(GetKeys(Function("0000:00:02.0", "00 00 03"), "KELSG_PCIDevice"),
                ElementsAre("0000:00:02.0"));
}

TEST(Controllers, AreRecognisedByTheKernelsCopyIfTheFunctionSleeps) {
    const std::string folder = "/sys/bus/pci/devices/0000:01:00.0/";
    EXPECT_THAT(
        GetKeys(folder + "vendor = 0x10de\n" + folder + "device = 0x1f91\n" + folder + "class = 0x030000\n",
                video),
        ElementsAre("0000:01:00.0"));
}

TEST(VideoControllers, HaveTheMemoryThatTheDriverReports) {
    const std::string function = Function("0000:00:02.0", "00 00 03");
    const auto memory = [&](const std::string& bytes) {
        return Get(function + "/sys/devices/pci0000:00/0000:00:02.0/mem_info_vram_total = " + bytes + "\n",
                   video, "MaxMemorySupported");
    };
    EXPECT_EQ(Get(function, video, "MaxMemorySupported"), "absent");
    EXPECT_EQ(memory("536870912"), "536870912");
    EXPECT_EQ(memory("0"), "absent");
    EXPECT_EQ(memory("4294967295"), "4294967295");
    EXPECT_EQ(memory("8589934592"), "absent");
    EXPECT_EQ(memory("many"), "absent");
}

TEST(VideoControllers, HaveTheirWholeMemoryInAPropertyOf64Bits) {
    const std::string function = Function("0000:00:02.0", "00 00 03");
    const auto memory = [&](const std::string& bytes) {
        return Get(function + "/sys/devices/pci0000:00/0000:00:02.0/mem_info_vram_total = " + bytes + "\n",
                   video, "VideoMemorySize");
    };
    EXPECT_EQ(Get(function, video, "VideoMemorySize"), "absent");
    EXPECT_EQ(memory("0"), "absent");
    EXPECT_EQ(memory("536870912"), "536870912");
    EXPECT_EQ(memory("8589934592"), "8589934592");
}

TEST(VideoControllers, AreCardsOfTheRenderingManagerWithoutPci) {
    TCollected collected;
    Collect(
        "/sys/class/drm/card0 -> ../../devices/platform/simple-framebuffer.0/drm/card0\n"
        "/sys/devices/platform/simple-framebuffer.0/drm/card0/device -> ../../../simple-framebuffer.0\n"
        "/sys/class/drm/card0-Unknown-1 -> ../../devices/platform/simple-framebuffer.0/drm/card0/card0-1\n"
        "/sys/class/drm/renderD128 -> ../../devices/platform/simple-framebuffer.0/drm/renderD128\n"
        "/sys/class/drm/version = drm 1.1.0 20060810\n",
        collected);
    EXPECT_THAT(collected.GetAll(video, "DeviceID"), ElementsAre("simple-framebuffer.0"));
    EXPECT_EQ(collected.Get(video, "ElementName"), "Display controller simple-framebuffer.0");
    EXPECT_EQ(collected.Get(video, "MaxMemorySupported"), "absent");
}

TEST(VideoControllers, AreListedOnceOnPciAlthoughTheyAreCards) {
    EXPECT_THAT(
        GetKeys(Function("0000:00:02.0", "00 00 03") +
                    "/sys/class/drm/card0 -> ../../devices/pci0000:00/0000:00:02.0/drm/card0\n"
                    "/sys/devices/pci0000:00/0000:00:02.0/drm/card0/device -> ../../../0000:00:02.0\n",
                video),
        ElementsAre("0000:00:02.0"));
}

TEST(VideoControllers, AreTheFunctionOfAVirtioDevice) {
    EXPECT_THAT(
        GetKeys(Function("0000:00:02.0", "00 00 03") +
                    "/sys/class/drm/card0 -> ../../devices/pci0000:00/0000:00:02.0/virtio0/drm/card0\n"
                    "/sys/devices/pci0000:00/0000:00:02.0/virtio0/drm/card0/device -> ../../../virtio0\n",
                video),
        ElementsAre("0000:00:02.0"));
}

TEST(VideoControllers, HaveTheirPortAsKeyOnUsb) {
    const auto keys = [](const std::string& bus) {
        const std::string path = "pci0000:00/0000:00:14.0/usb" + bus + "/" + bus + "-2/" + bus + "-2:1.0";
        return GetKeys(Function("0000:00:14.0", "30 03 0c") +
                           RootHub("usb" + bus, "pci0000:00/0000:00:14.0", " 2.00") +
                           "/sys/class/drm/card1 -> ../../devices/" + path + "/drm/card1\n/sys/devices/" +
                           path + "/drm/card1/device -> ../../../" + bus + "-2:1.0\n",
                       video);
    };
    EXPECT_THAT(keys("1"), ElementsAre("0000:00:14.0/usb2/2:1.0"));
    EXPECT_EQ(keys("7"), keys("1"));
}

TEST(VideoControllers, AreListedOnceForADeviceWithSeveralCards) {
    EXPECT_THAT(GetKeys("/sys/class/drm/card0 -> ../../devices/platform/gpu/drm/card0\n"
                        "/sys/devices/platform/gpu/drm/card0/device -> ../../../gpu\n"
                        "/sys/class/drm/card1 -> ../../devices/platform/gpu/drm/card1\n"
                        "/sys/devices/platform/gpu/drm/card1/device -> ../../../gpu\n",
                        video),
                ElementsAre("gpu"));
}

TEST(VideoControllers, AreAbsentWithoutADevice) {
    EXPECT_THAT(GetKeys("/sys/class/drm/card0/dev = 226:0\n", video), IsEmpty());
}

TEST(UsbControllers, HaveTheInterfaceOfThePciProgrammingInterface) {
    const auto of = [](const std::string& interface) {
        TCollected collected;
        Collect(Function("0000:00:1d.0", interface + " 03 0c"), collected);
        return collected.Get(usb, "InterfaceType") + " " + collected.Get(usb, "USBVersion") + " " +
               collected.Get(usb, "Description");
    };
    EXPECT_EQ(of("00"), "2 272 USB controller (UHCI)");
    EXPECT_EQ(of("10"), "3 272 USB controller (OHCI)");
    EXPECT_EQ(of("20"), "1 512 USB controller (EHCI)");
    EXPECT_EQ(of("30"), "1 absent USB controller (xHCI)");
    EXPECT_EQ(of("40"), "1 absent USB controller (USB4)");
    EXPECT_EQ(of("80"), "1 absent USB controller");
    EXPECT_EQ(of("fe"), "1 absent USB controller (device)");
    EXPECT_EQ(of("50"), "absent absent USB controller");
}

TEST(UsbControllers, HaveTheHighestVersionOfTheirRootHubs) {
    const std::string path = "pci0000:00/0000:00:14.0";
    EXPECT_EQ(Get(Function("0000:00:14.0", "30 03 0c") + RootHub("usb1", path, " 3.10") +
                      RootHub("usb2", path, " 2.00") + RootHub("usb3", "pci0000:00/0000:00:15.0", " 3.20"),
                  usb, "USBVersion"),
              "784");
}

TEST(UsbControllers, FallBackToTheVersionOfTheInterface) {
    const auto version = [](const std::string& text) {
        return Get(Function("0000:00:1d.0", "20 03 0c") + RootHub("usb1", "pci0000:00/0000:00:1d.0", text),
                   usb, "USBVersion");
    };
    EXPECT_EQ(version(" 1.10"), "272");
    EXPECT_EQ(version("2"), "512");
    EXPECT_EQ(version(" 2.0"), "512");
    EXPECT_EQ(version("two.00"), "512");
}

TEST(UsbControllers, AreRecognisedByTheirRootHubsWithoutPci) {
    TCollected collected;
    Collect(RootHub("usb1", "platform/dummy_hcd.0", " 2.00") +
                RootHub("usb2", "platform/vhci_hcd.0", " 2.00") +
                RootHub("usb3", "platform/vhci_hcd.0", " 3.00"),
            collected);
    EXPECT_THAT(collected.GetAll(usb, "DeviceID"), ElementsAre("dummy_hcd.0", "vhci_hcd.0"));
    EXPECT_THAT(collected.GetAll(usb, "ElementName"),
                ElementsAre("USB controller dummy_hcd.0", "USB controller vhci_hcd.0"));
    EXPECT_THAT(collected.GetAll(usb, "USBVersion"), ElementsAre("512", "768"));
    EXPECT_THAT(collected.GetAll(usb, "InterfaceType"), ElementsAre("absent", "absent"));
    EXPECT_THAT(collected.GetAll(usb, "MaxNumberControlled"), ElementsAre("127", "127"));
    EXPECT_THAT(collected.GetAll(usb, "ProtocolSupported"), ElementsAre("16", "16"));
}

TEST(UsbControllers, AreListedOnceOnPciAlthoughTheyHaveRootHubs) {
    EXPECT_THAT(
        GetKeys(Function("0000:00:1d.0", "20 03 0c") + RootHub("usb1", "pci0000:00/0000:00:1d.0", " 2.00"),
                usb),
        ElementsAre("0000:00:1d.0"));
}

TEST(Controllers, AreAbsentOnAMachineWithoutAny) {
    TCollected collected;
    Collect("@NodeName = bare\n", collected);
    EXPECT_EQ(collected.CountInstances(video) + collected.CountInstances(usb) + collected.CountInstances(ide),
              0U);
}

}  // namespace
}  // namespace NVORHOST
