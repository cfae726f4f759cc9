// The sources that collectors declare, compared with their accesses on machines.
#include "machine/system/access_log.h"
#include "machine/system/path_pattern.h"
#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace NVORHOST {
namespace {

using testing::IsEmpty;

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

// Returns the paths that each collector accesses if it runs alone, on all machines together.
std::map<std::string_view, std::set<std::string>> RecordAccesses() {
    std::map<std::string_view, std::set<std::string>> accesses;
    for (const TMachine& machine : ReadMachines()) {
        for (const TCollector& collector : GetCollectors()) {
            TAccessLog recording(machine.files);
            TMemoryNamespace target;
            (void)CollectAll({recording, machine.calls, target, CollectionTime()}, std::span(&collector, 1));
            for (const auto& access : recording.TakeAccesses()) {
                accesses[collector.name].insert(access.path);
            }
        }
    }
    return accesses;
}

TEST(Sources, CoverEveryAccessOfACollector) {
    const auto accesses = RecordAccesses();
    ASSERT_GE(accesses.size(), 8U);
    std::vector<std::string> unstated;
    for (const TCollector& collector : GetCollectors()) {
        const auto found = accesses.find(collector.name);
        for (const std::string& path : found == accesses.end() ? std::set<std::string>() : found->second) {
            const bool isStated = std::ranges::any_of(
                collector.reads, [&](TSourcePattern pattern) { return MatchesPathPattern(pattern, path); });
            if (!isStated) {
                unstated.push_back(std::string(collector.name) + ": " + path);
            }
        }
    }
    EXPECT_THAT(unstated, IsEmpty());
}

TEST(Sources, AreListedOnce) {
    for (const TCollector& collector : GetCollectors()) {
        const std::set<std::string_view> patterns(collector.reads.begin(), collector.reads.end());
        EXPECT_EQ(patterns.size(), collector.reads.size()) << collector.name;
    }
}

TEST(Sources, AreNotEmptyForCollectorsThatRead) {
    for (const TCollector& collector : GetCollectors()) {
        const bool readsNothing = collector.name == "data-source" || collector.name == "result";
        EXPECT_EQ(collector.reads.empty(), readsNothing) << collector.name;
    }
}

}  // namespace
}  // namespace NVORHOST
