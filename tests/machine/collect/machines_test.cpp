// Whole machines: tests/machines/<shape>/tree.txt has the files of the machine, expected.txt the namespace of
// a collection, expected.xml its hardware document, and expected-system.xml its system-information document.
// NOXINFO_BLESS=1 in the environment rewrites the expected files. Each folder is a test case.
#include "tests/machine/collect/collect_fixture.h"
#include "tests/machine/collect/namespace_text.h"
#include "vorhost/services/host_settings.h"
#include "writer/nox_xml_writer.h"

#include <boost/make_shared.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace NVORHOST {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

// Sorted, so that the tests are in the same order everywhere.
std::vector<std::string> ListShapes() {
    std::vector<std::string> shapes;
    for (const auto& entry : std::filesystem::directory_iterator(NOXINFO_MACHINES)) {
        if (std::filesystem::exists(entry.path() / "tree.txt")) {
            shapes.push_back(entry.path().filename().string());
        }
    }
    std::sort(shapes.begin(), shapes.end());
    return shapes;
}

std::string PathOf(const std::string& shape, const std::string& file) {
    return std::string(NOXINFO_MACHINES) + "/" + shape + "/" + file;
}

std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

// Compares `text` with the file, or rewrites the file if NOXINFO_BLESS is set.
void ExpectFile(const std::string& path, const std::string& text) {
    EXPECT_NE(text, "");
    if (std::getenv("NOXINFO_BLESS") != nullptr) {
        std::ofstream(path, std::ios::binary) << text;
    }
    EXPECT_EQ(text, ReadFile(path));
}

using TWriteDocument = bool (TNOXXMLWriterImpl::*)(boost::shared_ptr<ICIMNamespace>);

std::string WriteDocument(TWriteDocument write, const boost::shared_ptr<TMemoryNamespace>& collected) {
    THostSettings settings;
    settings.localTime = CollectionTime();
    settings.collected = collected;
    SetHostSettings(settings);
    std::ostringstream document;
    TNOXXMLWriterImpl writer(document);
    EXPECT_TRUE((writer.*write)(collected));
    SetHostSettings({});
    return document.str();
}

class TMachineTest : public testing::TestWithParam<std::string> {
  protected:
    TMachine machine_ = ParseMachineTree(ReadFile(PathOf(GetParam(), "tree.txt")));
};

INSTANTIATE_TEST_SUITE_P(Shape, TMachineTest, testing::ValuesIn(ListShapes()), [](const auto& value) {
    std::string name = value.param;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
});

TEST_P(TMachineTest, GivesTheExpectedNamespace) {
    TCollected collected;
    Collect(machine_.files, machine_.calls, collected);
    ExpectFile(PathOf(GetParam(), "expected.txt"), ToText(collected.target));
}

TEST_P(TMachineTest, GivesTheExpectedHardwareDocument) {
    const auto target = boost::make_shared<TMemoryNamespace>();
    CollectAll({machine_.files, machine_.calls, *target, CollectionTime()});
    ExpectFile(PathOf(GetParam(), "expected.xml"), WriteDocument(&TNOXXMLWriterImpl::WriteNamespace, target));
}

TEST_P(TMachineTest, GivesTheExpectedSystemDocument) {
    const auto target = boost::make_shared<TMemoryNamespace>();
    CollectAll({machine_.files, machine_.calls, *target, CollectionTime()});
    ExpectFile(PathOf(GetParam(), "expected-system.xml"),
               WriteDocument(&TNOXXMLWriterImpl::WriteSysInfoNamespace, target));
}

TEST_P(TMachineTest, GivesTheSameNamespaceTwice) {
    TCollected first;
    TCollected second;
    Collect(machine_.files, machine_.calls, first);
    Collect(machine_.files, machine_.calls, second);
    EXPECT_EQ(ToText(first.target), ToText(second.target));
}

TEST_P(TMachineTest, FailsNoCollectorWhicheverAccessFails) {
    int accesses = 1;
    for (int failing = 1; failing <= accesses; ++failing) {
        const TFailingFiles files(machine_.files, failing);
        TCollected collected;
        Collect(files, machine_.calls, collected);
        EXPECT_THAT(collected.reports, Each(Field(&TCollectReport::failure, testing::Eq(std::nullopt))))
            << failing;
        EXPECT_NE(collected.Get("KELSG_ComputerSystem", "ProductName"), "absent") << failing;
        accesses = files.GetAccesses();
    }
    EXPECT_GT(accesses, 20);
}

TEST(Machines, HaveOneWarningAndNoPhantomsWithMalformedFirmware) {
    const TMachine machine = ParseMachineTree(ReadFile(PathOf("malformed-smbios", "tree.txt")));
    TCollected collected;
    Collect(machine.files, machine.calls, collected);
    std::vector<std::string> warnings;
    for (const TCollectReport& report : collected.reports) {
        warnings.insert(warnings.end(), report.warnings.begin(), report.warnings.end());
    }
    EXPECT_THAT(
        warnings,
        ElementsAre("malformed SMBIOS table: byte 307 of 397, after 9 structures: a structure is shorter "
                    "than its header; 2 malformed places in all; 2 structures shorter than the minimum "
                    "length of the type"));
    EXPECT_THAT(ToText(collected.target), Not(HasSubstr("PHANTOM")));
}

TEST(Machines, HaveTheVisiblePartsInAContainer) {
    const TMachine machine = ParseMachineTree(ReadFile(PathOf("container", "tree.txt")));
    TCollected collected;
    Collect(machine.files, machine.calls, collected);
    EXPECT_EQ(collected.CountInstances("KELSG_Processor"), 1U);
    EXPECT_EQ(collected.CountInstances("KELSG_IPProtocolEndpoint"), 2U);
    EXPECT_EQ(collected.CountInstances("KELSG_SPDData"), 0U);
    EXPECT_EQ(collected.CountInstances("KELSG_DiskDrive"), 0U);
    EXPECT_EQ(collected.CountInstances("KELSG_PCIDevice"), 0U);
    EXPECT_EQ(collected.Get("KELSG_ComputerSystem", "SerialNumber"), "absent");
    EXPECT_THAT(collected.GetReport("memory-map").deniedSources, ElementsAre("/proc/iomem"));
}

TEST(Machines, ReportEachDeniedSourceOnceToAnOrdinaryUser) {
    const TMachine machine = ParseMachineTree(ReadFile(PathOf("nvme-laptop", "tree.txt")));
    TCollected collected;
    Collect(machine.files, machine.calls, collected);
    EXPECT_THAT(collected.GetReport("computer-system").deniedSources,
                ElementsAre("/sys/firmware/dmi/tables/DMI", "/sys/class/dmi/id/product_serial",
                            "/sys/class/dmi/id/product_uuid"));
    EXPECT_THAT(collected.GetReport("processor").deniedSources,
                ElementsAre("/sys/devices/system/cpu/cpu0/topology/ppin"));
    EXPECT_THAT(collected.GetReport("disk").deniedSources, IsEmpty());
}

}  // namespace
}  // namespace NVORHOST
