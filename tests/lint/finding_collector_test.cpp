#include "lint/run/finding_collector.h"

#include "machine/collect/run/collection_run.h"
#include "machine/system/access_log.h"
#include "machine/system/path_pattern.h"
#include "tests/lint/finding_text.h"
#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace NLINT {
namespace {

using NVORHOST::TMachine;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr char flawed[] =
    "/sys/firmware/dmi/tables/DMI smbios:\n"
    "| 16: 03 03 03 00 00 10 00 fe ff 02 00\n"
    "| 127:\n";

std::vector<NVORHOST::TCollectReport> Collect(const NVORHOST::ISystemFiles& files, const TMachine& machine,
                                              NVORHOST::TMemoryNamespace& target) {
    return NVORHOST::CollectAll({files, machine.calls, target, NVORHOST::CollectionTime()},
                                std::span(&findingCollector, 1));
}

TEST(FindingCollector, CommitsEachFindingAsAnInstance) {
    const TMachine machine = NVORHOST::ParseMachineTree(flawed);
    NVORHOST::TMemoryNamespace target;
    const auto reports = Collect(machine.files, machine, target);
    EXPECT_EQ(reports.at(0).failure, std::nullopt);
    const auto findings = GetFindings(target);
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].check, "memory-array-slots");
    EXPECT_EQ(ToText(findings[0]),
              "memory array 0100h: 2 slots (SMBIOS type 16, handle 0100h, 0Dh) / 0 memory devices "
              "(SMBIOS type 17, 04h)");
}

TEST(FindingCollector, FindsNothingInANamespaceWithoutTheClass) {
    EXPECT_THAT(GetFindings(NVORHOST::TMemoryNamespace()), IsEmpty());
}

TEST(FindingCollector, StatesEveryPathThatItReads) {
    std::vector<std::string> unstated;
    for (const auto& entry : std::filesystem::directory_iterator(NOXINFO_MACHINES)) {
        std::ifstream file(entry.path() / "tree.txt", std::ios::binary);
        const TMachine machine =
            NVORHOST::ParseMachineTree(std::string(std::istreambuf_iterator<char>(file), {}));
        NVORHOST::TAccessLog recording(machine.files);
        NVORHOST::TMemoryNamespace target;
        (void)Collect(recording, machine, target);
        for (const auto& access : recording.TakeAccesses()) {
            if (std::ranges::none_of(findingCollector.reads, [&](NVORHOST::TSourcePattern pattern) {
                    return NVORHOST::MatchesPathPattern(pattern, access.path);
                })) {
                unstated.push_back(access.path);
            }
        }
    }
    EXPECT_THAT(unstated, IsEmpty());
}

}  // namespace
}  // namespace NLINT
