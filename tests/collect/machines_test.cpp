// Whole machines: tests/machines/<shape>/tree.txt is what the machine holds, expected.txt the namespace that
// a collection makes of it. NOXINFO_BLESS=1 in the environment writes expected.txt anew.
#include "tests/collect/collect_fixture.h"
#include "tests/collect/namespace_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>

namespace NVORHOST {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;

constexpr const char* shapes[] = {"server-two-sockets", "vm-without-smbios", "nvme-laptop", "desktop-dos"};

std::string PathOf(const std::string& shape, const std::string& file) {
    return std::string(NOXINFO_MACHINES) + "/" + shape + "/" + file;
}

std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

class TMachineTest : public testing::TestWithParam<const char*> {
  protected:
    TMachine machine_ = ParseMachineTree(ReadFile(PathOf(GetParam(), "tree.txt")));
};

INSTANTIATE_TEST_SUITE_P(Shape, TMachineTest, testing::ValuesIn(shapes), [](const auto& value) {
    std::string name = value.param;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
});

TEST_P(TMachineTest, GivesTheExpectedNamespace) {
    TCollected collected;
    Collect(machine_.files, machine_.calls, collected);
    const std::string text = ToText(collected.target);
    const std::string path = PathOf(GetParam(), "expected.txt");
    if (std::getenv("NOXINFO_BLESS") != nullptr) {
        std::ofstream(path, std::ios::binary) << text;
    }
    EXPECT_EQ(text, ReadFile(path));
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
        EXPECT_THAT(collected.reports, Each(Field(&TCollectReport::failure, IsEmpty()))) << failing;
        EXPECT_NE(collected.Get("KELSG_ComputerSystem", "ProductName"), "absent") << failing;
        accesses = files.GetAccesses();
    }
    EXPECT_GT(accesses, 30);
}

TEST(Machines, AnOrdinaryUsersDeniedSourcesAreReportedOnceEach) {
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
