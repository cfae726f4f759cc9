// Compares whole documents with golden files. With NOXINFO_BLESS=1 in the environment, files that differ are
// rewritten and the difference is printed.
#include "tests/doubles/host_doubles.h"
#include "vorhost/model/memory_namespace.h"
#include "writer/nox_xml_writer.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace {

using NVORHOST::TCIMDateTime;
using NVORHOST::TCIMValue;
using NVORHOST::TMemoryNamespace;
using TType = TCIMValue::TCIMType;

struct TSetProperty {
    std::string name;
    TCIMValue value;
};

void AddInstance(TMemoryNamespace& collected, const std::string& className,
                 const std::vector<TSetProperty>& properties) {
    auto cimClass = collected.FindClass(className);
    if (!cimClass) {
        cimClass = collected.AddClass(className);
    }
    const auto instance = cimClass->NewInstance();
    for (const TSetProperty& property : properties) {
        instance->Set(property.name, property.value);
    }
    instance->CommitInstance({});
}

TCIMValue Date(const char* text) {
    return TCIMValue(*TCIMDateTime::FromText(text));
}

TCIMValue Status(std::initializer_list<std::uint16_t> codes) {
    TCIMValue::TElements elements;
    for (const std::uint16_t code : codes) {
        elements.emplace_back(code);
    }
    return TCIMValue::Array(TType::eUint16, elements);
}

void AddSystem(TMemoryNamespace& collected) {
    AddInstance(collected, "KELSG_ComputerSystem",
                {{"Name", "4C4C4544-0042-3510-8052-B4C04F4A4D32"},
                 {"Description", "Rack server <2U> & rails"},
                 {"OperationalStatus", Status({2})},
                 {"PrimaryOwnerName", TCIMValue(TType(TType::eString))},
                 {"Dedicated", Status({0, 3})},
                 {"Manufacturer", "Kessel Technologies"},
                 {"ProductName", "System K3650 -[884021X]-"},
                 {"SerialNumber", "KQ12345"}});
    AddInstance(collected, "KELSG_OperatingSystem",
                {{"ElementName", "Debian GNU/Linux 12 (bookworm)"},
                 {"CurrentTimeZone", TCIMValue(std::int16_t{60})},
                 {"FreePhysicalMemory", TCIMValue(std::uint64_t{16302112})},
                 {"KernelRelease", "6.1.0-18-amd64"},
                 {"LastBootUpTime", Date("20260301060000.500000+060")},
                 {"LocalDateTime", Date("20260307140509.000000-210")},
                 {"OSType", TCIMValue(std::uint16_t{36})},
                 {"Version", "6.1.76"}});
}

void AddPhysicalElements(TMemoryNamespace& collected) {
    AddInstance(collected, "KELSG_SystemSlot",
                {{"Tag", "Slot 1"},
                 {"ElementName", "PCI-E x16\r\n"},
                 {"Model", "Model -[kept whole]"},
                 {"MaxDataWidth", TCIMValue(std::uint16_t{16})},
                 {"SupportsHotPlug", TCIMValue(true)}});
    AddInstance(collected, "KELSG_SPDData",
                {{"Tag", "DIMM 1"},
                 {"Manufacturer", "Tessera"},
                 {"Capacity", TCIMValue(std::uint64_t{17179869184U})},
                 {"Speed", TCIMValue(std::uint32_t{2400})}});
    AddInstance(collected, "KELSG_Card", {{"Tag", "Board"}, {"HostingBoard", TCIMValue(true)}});
}

void AddLogicalDevices(TMemoryNamespace& collected) {
    AddInstance(collected, "KELSG_Processor",
                {{"DeviceID", "CPU0"},
                 {"ElementName", "Core\t\xC3\xA9poque"},
                 {"Family", TCIMValue(std::uint16_t{179})},
                 {"MaxClockSpeed", TCIMValue(std::uint32_t{2300})}});
    AddInstance(collected, "KELSG_Processor", {{"DeviceID", "CPU1"}});
    AddInstance(collected, "KELSG_DiskDrive",
                {{"DeviceID", "sda"}, {"MaxMediaSize", TCIMValue(std::uint64_t{976762584})}});
    AddInstance(collected, "CIM_DiskDrive", {{"DeviceID", "sdb"}});
    AddInstance(collected, "KELSG_DVDDrive", {{"DeviceID", "sr0"}, {"MediaIsLocked", TCIMValue(false)}});
    AddInstance(
        collected, "CIM_DiskPartition",
        {{"DeviceID", "sda1"}, {"Bootable", TCIMValue(true)}, {"Size", TCIMValue(std::uint64_t{536870912})}});
    AddInstance(collected, "KELSG_ACPI", {{"ElementName", "without its key property"}});
    AddInstance(collected, "KELSG_PCIDevice",
                {{"DeviceID", "0000:00:1f.2"},
                 {"BaseAddress", TCIMValue::Array(TType::eUint32, {TCIMValue(4026531840U), TCIMValue(0U)})},
                 {"InterruptPin", TCIMValue(std::uint8_t{1})},
                 {"MinGrantTime", TCIMValue(std::int8_t{-1})}});
    AddInstance(collected, "KELSG_Fan", {{"DeviceID", "not in the catalogue"}});
}

std::string Read(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// Returns the lines between the common first and last lines: old ones marked "-", new ones "+".
std::string Difference(const std::string& before, const std::string& after) {
    const auto oldLines = Lines(before);
    const auto newLines = Lines(after);
    const std::size_t most = std::min(oldLines.size(), newLines.size());
    std::size_t head = 0;
    while (head < most && oldLines[head] == newLines[head]) {
        ++head;
    }
    std::size_t tail = 0;
    while (tail < most - head && oldLines.rbegin()[static_cast<std::ptrdiff_t>(tail)] ==
                                     newLines.rbegin()[static_cast<std::ptrdiff_t>(tail)]) {
        ++tail;
    }
    std::string difference = "from line " + std::to_string(head + 1) + ":\n";
    for (std::size_t i = head; i < oldLines.size() - tail; ++i) {
        difference += "-" + oldLines[i] + "\n";
    }
    for (std::size_t i = head; i < newLines.size() - tail; ++i) {
        difference += "+" + newLines[i] + "\n";
    }
    return difference;
}

void ExpectGolden(const std::string& name, const std::string& text) {
    const std::string path = std::string(NOXINFO_GOLDEN_DIR) + "/" + name;
    const std::string expected = Read(path);
    if (expected == text) {
        return;
    }
    const char* const bless = std::getenv("NOXINFO_BLESS");
    if (bless != nullptr && std::string_view(bless) == "1") {
        std::ofstream(path, std::ios::binary) << text;
        std::cout << "rewrote " << name << " " << Difference(expected, text);
        return;
    }
    ADD_FAILURE() << name << " differs " << Difference(expected, text)
                  << "Set NOXINFO_BLESS=1 to rewrite the file if the change is intended.";
}

class Golden : public testing::Test {
  protected:
    Golden() { NDOUBLES::ResetHost(); }

    boost::shared_ptr<TMemoryNamespace> collected = boost::make_shared<TMemoryNamespace>();
    std::ostringstream out;
};

TEST_F(Golden, HardwareDocumentOfASmallMachine) {
    AddSystem(*collected);
    AddPhysicalElements(*collected);
    AddLogicalDevices(*collected);
    TNOXXMLWriterImpl(out).WriteNamespace(collected);
    ExpectGolden("small_machine_hardware.xml", out.str());
}

TEST_F(Golden, HardwareDocumentOfAnEmptyNamespace) {
    TNOXXMLWriterImpl(out).WriteNamespace(collected);
    ExpectGolden("empty_hardware.xml", out.str());
}

TEST_F(Golden, SystemInformationOfASmallMachine) {
    AddSystem(*collected);
    TNOXXMLWriterImpl(out).WriteSysInfoNamespace(collected);
    ExpectGolden("small_machine_system_information.xml", out.str());
}

}  // namespace
