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

constexpr std::string_view smbiosTable = "/sys/firmware/dmi/tables/DMI";

bool IsRead(const TCollector& collector, std::string_view path) {
    return std::ranges::any_of(collector.reads,
                               [&](TSourcePattern pattern) { return MatchesPathPattern(pattern, path); });
}

// A folder whose name is a source has files that are read.
bool IsReadOrHasReadFiles(const TCollector& collector, std::string_view path) {
    return std::ranges::any_of(collector.reads, [&](TSourcePattern pattern) {
        return MatchesPathPattern(pattern, path) ||
               MatchesPathPattern(pattern.substr(0, pattern.rfind('/')), path);
    });
}

bool IsReadIfItIsAPath(const TCollector& collector, const TSource& source) {
    if (source.kind == ESourceKind::smbios) {
        return IsRead(collector, smbiosTable);
    }
    return source.kind != ESourceKind::file || source.isOwn || IsRead(collector, source.name);
}

TEST(SourcesOfRows, AreNamedForEveryProperty) {
    for (const TCollector& collector : GetCollectors()) {
        for (const IClassDeclaration* declaration : collector.fills) {
            for (const TSourcedProperty& property : declaration->GetSources()) {
                EXPECT_FALSE(property.sources.List().empty()) << declaration->GetName() << property.name;
            }
        }
    }
}

TEST(SourcesOfRows, AreAmongThoseOfTheCollector) {
    for (const TCollector& collector : GetCollectors()) {
        for (const IClassDeclaration* declaration : collector.fills) {
            for (const TSourcedProperty& property : declaration->GetSources()) {
                for (const TSource& source : property.sources.List()) {
                    EXPECT_TRUE(IsReadIfItIsAPath(collector, source))
                        << declaration->GetName() << "." << property.name << ": " << source.text;
                }
            }
        }
    }
}

TEST(SourcesOfRows, NamePropertiesOfTheClass) {
    for (const TCollector& collector : GetCollectors()) {
        for (const IClassDeclaration* declaration : collector.fills) {
            const auto properties = declaration->GetSources();
            for (const TSourcedProperty& property : properties) {
                for (const TSource& source : property.sources.List()) {
                    EXPECT_TRUE(source.kind != ESourceKind::property ||
                                std::ranges::find(properties, source.name, &TSourcedProperty::name) !=
                                    properties.end())
                        << declaration->GetName() << "." << property.name << ": " << source.text;
                }
            }
        }
    }
}

// Sources of an instance that are paths are below its folder, which differs from machine to machine.
TEST(SourcesOfInstances, AreAmongThoseOfTheCollectorOnEveryMachine) {
    std::set<std::string> unstated;
    std::size_t paths = 0;
    for (const TMachine& machine : ReadMachines()) {
        TMemoryNamespace target;
        (void)CollectAll({.files = machine.files,
                          .calls = machine.calls,
                          .target = target,
                          .localTime = CollectionTime(),
                          .withSources = true},
                         GetCollectors());
        for (const TCollector& collector : GetCollectors()) {
            for (const IClassDeclaration* declaration : collector.fills) {
                for (const auto& instance : target.FindClass(declaration->GetName())->GetInstances()) {
                    for (const auto& [name, source] : instance->GetSources()) {
                        for (const std::string& text : source.sources) {
                            paths += text.starts_with('/') ? 1U : 0U;
                            if (text.starts_with('/') &&
                                !IsReadOrHasReadFiles(collector, text.substr(0, text.find(' ')))) {
                                unstated.insert(std::string(collector.name) + " " + name + ": " + text);
                            }
                        }
                    }
                }
            }
        }
    }
    EXPECT_GT(paths, 1000U);
    EXPECT_THAT(unstated, IsEmpty());
}

TEST(SourcesOfInstances, AreKeptForEveryPropertyOfEveryInstance) {
    for (const TMachine& machine : ReadMachines()) {
        TMemoryNamespace target;
        (void)CollectAll({.files = machine.files,
                          .calls = machine.calls,
                          .target = target,
                          .localTime = CollectionTime(),
                          .withSources = true},
                         GetCollectors());
        for (const auto& each : target.GetClasses()) {
            for (const auto& instance : each->GetInstances()) {
                EXPECT_EQ(instance->GetSources().size(), each->GetDeclarations().size()) << each->GetName();
            }
        }
    }
}

}  // namespace
}  // namespace NVORHOST
