#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

constexpr const char* system_ = "CIM_ComputerSystem";
constexpr const char* bareProcessor = "/proc/cpuinfo:\n| processor : 0\n| flags : fpu lm\n";
constexpr const char* guestProcessor = "/proc/cpuinfo:\n| processor : 0\n| flags : fpu lm hypervisor\n";

std::string FirmwareText(const std::string& name, const std::string& text) {
    return "/sys/class/dmi/id/" + name + " = " + text + "\n";
}

std::string FindKind(const std::string& tree) {
    TCollected collected;
    Collect(tree, collected);
    return collected.CountInstances(system_) == 0 ? "no instance" : collected.Get(system_, "VirtualSystem");
}

TEST(SystemKind, IsBareMetalWithoutAHypervisor) {
    TCollected collected;
    Collect("@NodeName = host\n" + std::string(bareProcessor) + FirmwareText("sys_vendor", "Maker"),
            collected);
    ASSERT_EQ(collected.CountInstances(system_), 1U);
    EXPECT_EQ(collected.Get(system_, "ElementName"), "host");
    EXPECT_EQ(collected.Get(system_, "Name"), "host");
    EXPECT_EQ(collected.Get(system_, "Description"), "Bare metal");
    EXPECT_EQ(collected.Get(system_, "VirtualSystem"), "none");
    EXPECT_EQ(collected.Get(system_, "OtherIdentifyingInfo"), "absent");
}

TEST(SystemKind, IsAVirtualMachineOfItsSignature) {
    TCollected collected;
    Collect("@HypervisorSignature = KVMKVMKVM\n" + std::string(guestProcessor) +
                FirmwareText("sys_vendor", "QEMU"),
            collected);
    EXPECT_EQ(collected.Get(system_, "VirtualSystem"), "kvm");
    EXPECT_EQ(collected.Get(system_, "Description"), "Virtual machine, KVM");
    EXPECT_EQ(collected.Get(system_, "OtherIdentifyingInfo"), "{KVM}");
    EXPECT_EQ(collected.Get(system_, "IdentifyingDescriptions"), "{Hypervisor}");
}

TEST(SystemKind, IsNamedByTheFirmwareWithoutASignature) {
    EXPECT_EQ(FindKind(FirmwareText("product_name", "VMware Virtual Platform")), "vmware");
    EXPECT_EQ(FindKind(FirmwareText("sys_vendor", "QEMU")), "qemu");
    EXPECT_EQ(FindKind(FirmwareText("bios_vendor", "BHYVE")), "bhyve");
    EXPECT_EQ(FindKind(FirmwareText("product_version", "Hyper-V UEFI Release v4.1")), "microsoft");
    EXPECT_EQ(FindKind(FirmwareText("board_vendor", "Bochs")), "bochs");
    EXPECT_EQ(FindKind(guestProcessor), "vm-other");
}

TEST(SystemKind, IsNamedByTheFirmwareBeforeTheSignatureForSomeHypervisors) {
    const std::string guest = "@HypervisorSignature = KVMKVMKVM\n" + std::string(guestProcessor);
    EXPECT_EQ(FindKind(guest + FirmwareText("product_name", "VirtualBox")), "oracle");
    EXPECT_EQ(FindKind(guest + FirmwareText("sys_vendor", "innotek GmbH")), "oracle");
    EXPECT_EQ(FindKind(guest + FirmwareText("sys_vendor", "Parallels Software International Inc.")),
              "parallels");
    EXPECT_EQ(FindKind(guest + FirmwareText("product_name", "Google Compute Engine")), "google");
    EXPECT_EQ(FindKind(guest + FirmwareText("sys_vendor", "Bochs")), "kvm");
}

TEST(SystemKind, HasTypeAndIdOfAnEc2Instance) {
    const std::string firmware = FirmwareText("sys_vendor", "Amazon EC2") +
                                 FirmwareText("product_name", "m5.large") +
                                 FirmwareText("board_asset_tag", "i-0123456789abcdef0");
    TCollected collected;
    Collect("@HypervisorSignature = KVMKVMKVM\n" + std::string(guestProcessor) + firmware, collected);
    EXPECT_EQ(collected.Get(system_, "VirtualSystem"), "amazon");
    EXPECT_EQ(collected.Get(system_, "Description"), "Virtual machine, Amazon EC2");
    EXPECT_EQ(collected.Get(system_, "OtherIdentifyingInfo"),
              "{Amazon EC2, Amazon EC2, m5.large, i-0123456789abcdef0}");
    EXPECT_EQ(collected.Get(system_, "IdentifyingDescriptions"),
              "{Hypervisor, Cloud, Instance type, Instance ID}");
    TCollected metal;
    Collect(bareProcessor + firmware, metal);
    EXPECT_EQ(metal.Get(system_, "VirtualSystem"), "none");
    EXPECT_EQ(metal.Get(system_, "OtherIdentifyingInfo"), "{Amazon EC2, m5.large, i-0123456789abcdef0}");
}

TEST(SystemKind, HasTheCloudOfTheFirmware) {
    const auto find = [](const std::string& firmware) {
        TCollected collected;
        Collect(guestProcessor + firmware, collected);
        return collected.Get(system_, "OtherIdentifyingInfo");
    };
    EXPECT_EQ(find(FirmwareText("chassis_asset_tag", "7783-7084-3265-9085-8269-3286-77")),
              "{Microsoft Azure}");
    EXPECT_EQ(find(FirmwareText("chassis_asset_tag", "OracleCloud.com")), "{Oracle Cloud}");
    EXPECT_EQ(find(FirmwareText("sys_vendor", "DigitalOcean") + FirmwareText("product_serial", "1234567")),
              "{DigitalOcean, 1234567}");
    EXPECT_EQ(find(FirmwareText("sys_vendor", "Amazon EC2") + FirmwareText("board_asset_tag", "tag")),
              "{Amazon EC2, Amazon EC2}");
}

TEST(SystemKind, IsAContainerByTheWordOfItsManager) {
    EXPECT_EQ(FindKind("/run/systemd/container = lxc\n"), "lxc");
    EXPECT_EQ(FindKind("/run/host/container-manager = systemd-nspawn\n/run/systemd/container = lxc\n"),
              "systemd-nspawn");
    EXPECT_EQ(FindKind("/run/systemd/container = unheard-of\n"), "container-other");
    EXPECT_EQ(FindKind("/run/systemd/container = oci\n"), "container-other");
    EXPECT_EQ(FindKind("/run/systemd/container = oci\n/.dockerenv:\n"), "docker");
}

TEST(SystemKind, IsAContainerByTheFilesOfItsManager) {
    EXPECT_EQ(FindKind("/.dockerenv:\n"), "docker");
    EXPECT_EQ(FindKind("/run/.containerenv:\n/.dockerenv:\n"), "podman");
    EXPECT_EQ(FindKind("/proc/vz/\n"), "openvz");
    EXPECT_EQ(FindKind("/proc/vz/\n/proc/bc/\n" + std::string(bareProcessor)), "none");
    EXPECT_EQ(FindKind("@KernelRelease = 5.15.90.1-microsoft-standard-WSL2\n"), "wsl");
}

TEST(SystemKind, IsAContainerInAVirtualMachine) {
    TCollected collected;
    Collect("@HypervisorSignature = KVMKVMKVM\n" + std::string(guestProcessor) + "/.dockerenv:\n", collected);
    EXPECT_EQ(collected.Get(system_, "VirtualSystem"), "docker");
    EXPECT_EQ(collected.Get(system_, "Description"), "Container, docker, in a virtual machine, KVM");
    EXPECT_EQ(collected.Get(system_, "OtherIdentifyingInfo"), "{KVM, docker}");
    EXPECT_EQ(collected.Get(system_, "IdentifyingDescriptions"), "{Hypervisor, Container}");
}

TEST(SystemKind, IsTheMachineItselfInXensControlDomain) {
    EXPECT_EQ(FindKind("@HypervisorSignature = XenVMMXenVMM\n/sys/hypervisor/type = xen\n" +
                       std::string(guestProcessor) + FirmwareText("sys_vendor", "Maker") +
                       "/sys/hypervisor/properties/features = 00000800\n"),
              "none");
    EXPECT_EQ(FindKind("/sys/hypervisor/type = xen\n"), "xen");
}

TEST(SystemKind, IsUnknownWithoutASource) {
    EXPECT_EQ(FindKind("/proc/cpuinfo:\n| processor : 0\n| model name : ARMv7\n"), "no instance");
}

}  // namespace
}  // namespace NVORHOST
