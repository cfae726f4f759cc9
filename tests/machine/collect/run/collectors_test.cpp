// The list of collectors, the classes that they declare, and runs of collectors.
#include "host/vor_exception.h"
#include "machine/collect/frame/collection.h"
#include "tests/machine/collect/collect_fixture.h"
#include "tests/machine/collect/namespace_text.h"
#include "writer/catalogue/resource_catalogue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <stdexcept>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Optional;

TEST(GetCollectors, HaveUniqueNamesDescriptionsAndFunctions) {
    std::set<std::string_view> names;
    for (const TCollector& collector : GetCollectors()) {
        EXPECT_TRUE(names.insert(collector.name).second) << collector.name;
        EXPECT_FALSE(collector.description.empty()) << collector.name;
        EXPECT_FALSE(collector.fills.empty()) << collector.name;
        EXPECT_NE(collector.collect, nullptr) << collector.name;
    }
    EXPECT_GE(names.size(), 8U);
}

// Counts the definitions "extern constinit const TCollector" below machine/collect/.
std::size_t CountDefinitions() {
    std::size_t count = 0;
    for (const auto& entry :
         std::filesystem::recursive_directory_iterator(NOXINFO_SOURCE_DIR "/machine/collect")) {
        std::ifstream file(entry.path());
        for (std::string line; std::getline(file, line);) {
            count += line.starts_with("extern constinit const TCollector ") ? 1U : 0U;
        }
    }
    return count;
}

TEST(GetCollectors, ContainsEveryDefinedCollector) {
    EXPECT_EQ(GetCollectors().size(), CountDefinitions());
}

TEST(GetCollectors, DeclareEachClassOnce) {
    std::set<std::string_view> classes;
    for (const TCollector& collector : GetCollectors()) {
        for (const IClassDeclaration* declaration : collector.fills) {
            EXPECT_TRUE(classes.insert(declaration->GetName()).second) << declaration->GetName();
        }
    }
    EXPECT_GE(classes.size(), 10U);
}

// Each of these classes declares every property that the document writer reads.
TEST(GetCollectors, DeclareEveryPropertyThatTheDocumentsWrite) {
    for (const TCollector& collector : GetCollectors()) {
        for (const IClassDeclaration* declaration : collector.fills) {
            const TResourceClass* row = FindResourceClass(declaration->GetName());
            if (row == nullptr) {
                continue;  // not a class of the documents
            }
            std::set<std::string> declared;
            for (const TPropertyDeclaration& property : declaration->GetProperties()) {
                EXPECT_TRUE(declared.insert(property.name).second) << declaration->GetName() << property.name;
            }
            EXPECT_TRUE(declared.contains(std::string(row->keyProperty))) << declaration->GetName();
            for (const auto& property : row->properties) {
                if (property.origin == EValueOrigin::instance) {
                    EXPECT_TRUE(declared.contains(std::string(property.sourceName)))
                        << declaration->GetName() << "." << property.sourceName;
                }
            }
        }
    }
}

std::string ReadMachine(const std::string& shape) {
    std::ifstream file(std::string(NOXINFO_MACHINES) + "/" + shape + "/tree.txt", std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string NameOf(const TMemoryClass& cimClass, std::string_view property) {
    return cimClass.GetName() + "." + std::string(property);
}

void NoteProperties(const TMemoryNamespace& source, std::set<std::string>& declared,
                    std::set<std::string>& set) {
    for (const auto& cimClass : source.GetClasses()) {
        for (const TPropertyDeclaration& declaration : cimClass->GetDeclarations()) {
            declared.insert(NameOf(*cimClass, declaration.name));
        }
        for (const auto& instance : cimClass->GetInstances()) {
            for (const TPropertyView property : instance->GetProperties()) {
                set.insert(NameOf(*cimClass, property.name));
            }
        }
    }
}

// Linux has no source for these, or a plug-in fills them. Every other row of these collectors reaches some
// machine's namespace.
TEST(GetCollectors, SetEveryPropertyButTheseOnSomeMachine) {
    std::set<std::string> declared;
    std::set<std::string> set;
    for (const char* shape : {"server-two-sockets", "vm-without-smbios", "nvme-laptop", "laptop-nvme-only",
                              "desktop-dos", "media-drives"}) {
        const TMachine machine = ParseMachineTree(ReadMachine(shape));
        TMemoryNamespace target;
        const TCollectorChoice choice{{"computer-system", "operating-system", "processor", "disk",
                                       "partition", "pci", "data-source", "result"},
                                      {}};
        (void)CollectAll({machine.files, machine.calls, target, CollectionTime()}, ChooseCollectors(choice));
        NoteProperties(target, declared, set);
    }
    std::set<std::string> unset;
    std::set_difference(declared.begin(), declared.end(), set.begin(), set.end(),
                        std::inserter(unset, unset.end()));
    EXPECT_THAT(unset, ElementsAre("CIM_DiskDrive.LoadTime", "CIM_DiskDrive.MaxAccessTime",
                                   "CIM_DiskDrive.NeedsCleaning", "CIM_DiskDrive.TimeOfLastMount",
                                   "CIM_DiskDrive.UnloadTime", "CIM_DiskPartition.DeltaReservation",
                                   "KELSG_CADAT.Credential", "KELSG_CADAT.InventoryRCF", "KELSG_CADAT.KELID",
                                   "KELSG_CADAT.MachineType", "KELSG_ComputerSystem.PrimaryOwnerContact",
                                   "KELSG_ComputerSystem.PrimaryOwnerName", "KELSG_DiskDrive.LoadTime",
                                   "KELSG_DiskDrive.MaxAccessTime", "KELSG_DiskDrive.NeedsCleaning",
                                   "KELSG_DiskDrive.TimeOfLastMount", "KELSG_DiskDrive.UnloadTime",
                                   "KELSG_PCIBridge.MaxNumberControlled", "KELSG_PCIBridge.OperationalStatus",
                                   "KELSG_PCIBridge.TimeOfLastReset", "KELSG_PCIDevice.MaxNumberControlled",
                                   "KELSG_PCIDevice.OperationalStatus", "KELSG_PCIDevice.TimeOfLastReset"));
    EXPECT_TRUE(std::includes(declared.begin(), declared.end(), set.begin(), set.end()));
}

TEST(GetCollectors, ReturnATypedNullForAnUnsetProperty) {
    TCollected collected;
    Collect("", collected);
    const auto& system = collected.target.FindClass("KELSG_ComputerSystem")->GetInstances().at(0);
    const auto serial = system->GetProperty("SerialNumber", {});
    EXPECT_TRUE(serial->IsNull({}));
    EXPECT_EQ(serial->GetType({}), ECimType::eString);
}

struct TSample {
    std::optional<std::string> text;
};
constexpr TPropertyRow<TSample> sampleRows[] = {{"Text", &TSample::text}};
constexpr TCimClass<TSample> sampleClass{"Sample", sampleRows};
constexpr const IClassDeclaration* sampleClasses[] = {&sampleClass};

void CommitSample(TCollection& collection) {
    collection.Commit(sampleClass, TSample{"sample"});
}

class TRunTest : public testing::Test {
  protected:
    std::vector<TCollectReport> Run(const std::vector<TCollector>& collectors) {
        return CollectAll({machine_.files, machine_.calls, target_, std::nullopt}, collectors);
    }

    TMachine machine_;
    TMemoryNamespace target_;
};

TEST_F(TRunTest, ReportsACollectorThatThrowsAndRunsTheOthers) {
    const auto reports = Run({
        {"first",
         "throws after it committed",
         sampleClasses,
         {},
         [](TCollection& collection) {
             CommitSample(collection);
             throw std::runtime_error("disk on fire");
         }},
        {"second",
         "throws a host exception",
         sampleClasses,
         {},
         [](TCollection&) { throw NKELVOR20::TVORException(NKELVOR20::TVORStatusCode::typeMismatch); }},
        {"third", "goes well", sampleClasses, {}, CommitSample},
    });
    ASSERT_EQ(reports.size(), 3U);
    EXPECT_EQ(reports[0].failure, "disk on fire");
    EXPECT_EQ(reports[0].instances, 1U);
    EXPECT_THAT(reports[1].failure, Optional(HasSubstr("host status 9")));
    EXPECT_EQ(reports[1].instances, 0U);
    EXPECT_EQ(reports[2].collector, "third");
    EXPECT_EQ(reports[2].failure, std::nullopt);
    EXPECT_EQ(target_.FindClass("Sample")->GetInstances().size(), 2U);
}

TEST_F(TRunTest, DeclaresTheClassesOfACollectorThatFindsNothing) {
    (void)Run({{"idle", "finds nothing", sampleClasses, {}, [](TCollection&) {}}});
    ASSERT_NE(target_.FindClass("Sample"), nullptr);
    EXPECT_EQ(target_.FindClass("Sample")->GetDeclarations().at(0).name, "Text");
}

TEST_F(TRunTest, KeepsAClassThatTheNamespaceAlreadyHas) {
    target_.AddClass("Sample");
    (void)Run({{"sample", "commits", sampleClasses, {}, CommitSample}});
    EXPECT_EQ(target_.FindClass("Sample")->GetInstances().size(), 1U);
}

TEST_F(TRunTest, NamesEachDeniedAndFailedSourceOnce) {
    machine_.files.AddRefusal("/secret", EReadStatus::denied);
    machine_.files.AddRefusal("/broken", EReadStatus::failed);
    const auto reports = Run({{"reader", "reads twice", sampleClasses, {}, [](TCollection& collection) {
                                   for (int i = 0; i < 2; ++i) {
                                       (void)collection.GetFiles().ReadText("/secret");
                                       (void)collection.GetFiles().ReadText("/broken");
                                       (void)collection.GetFiles().ReadText("/missing");
                                   }
                               }}});
    EXPECT_THAT(reports[0].deniedSources, ElementsAre("/secret"));
    EXPECT_THAT(reports[0].failedSources, ElementsAre("/broken"));
}

TEST_F(TRunTest, CleansTextsAndCountsWhatItReplaced) {
    const auto reports = Run({{"text", "commits dirt", sampleClasses, {}, [](TCollection& collection) {
                                   const TSample dirty{std::string("  a\xFF\x01z \0", 9)};
                                   collection.Commit(sampleClass, dirty);
                                   collection.Commit(sampleClass, TSample{" \n"});
                               }}});
    EXPECT_EQ(ToText(target_), "Sample[0].Text = string a\xEF\xBF\xBD\xEF\xBF\xBDz\n");
    EXPECT_EQ(reports[0].replacedBytes, 2U);
    EXPECT_EQ(reports[0].instances, 2U);
}

struct TLink {
    std::optional<TCimReference> target;
    std::optional<std::vector<std::string>> words;
};
constexpr TPropertyRow<TLink> linkRows[] = {{"Target", &TLink::target}, {"Words", &TLink::words}};
constexpr TCimClass<TLink> linkClass{"Link", linkRows};
constexpr const IClassDeclaration* linkClasses[] = {&linkClass};

TEST_F(TRunTest, CommitsAReferenceAsAnObjectPathWithACleanQuotedKey) {
    (void)Run({{"link", "refers", linkClasses, {}, [](TCollection& collection) {
                    collection.Commit(linkClass, {TCimReference{"Sample", "Text", " a\"b\\c\x01"}, {}});
                }}});
    EXPECT_EQ(target_.FindClass("Link")->GetDeclarations().at(0).type, ECimType::eReference);
    EXPECT_EQ(ToText(target_), "Link[0].Target = reference Sample.Text=\"a\\\"b\\\\c\xEF\xBF\xBD\"\n");
}

TEST_F(TRunTest, CommitsAnArrayOfTextsWithANullForAnEmptyOne) {
    (void)Run(
        {{"link", "lists", linkClasses, {}, [](TCollection& collection) {
              collection.Commit(linkClass, {std::nullopt, std::vector<std::string>{"one ", " ", "two"}});
          }}});
    EXPECT_TRUE(target_.FindClass("Link")->GetDeclarations().at(1).isArray);
    EXPECT_EQ(ToText(target_), "Link[0].Words = string {one, , two}\n");
}

TEST(CollectAll, SucceedsOnAnEmptyMachine) {
    TCollected collected;
    Collect("", collected);
    for (const TCollectReport& report : collected.reports) {
        EXPECT_EQ(report.failure, std::nullopt) << report.collector;
        EXPECT_THAT(report.deniedSources, IsEmpty());
    }
    EXPECT_EQ(collected.Get("KELSG_ComputerSystem", "ProductName"), "Computer");
    EXPECT_EQ(collected.Get("KELSG_OperatingSystem", "ElementName"), "Linux");
    EXPECT_EQ(collected.CountInstances("KELSG_Processor"), 0U);
    EXPECT_EQ(collected.CountInstances("KELSG_DiskDrive"), 0U);
    EXPECT_EQ(collected.CountInstances("KELSG_PCIDevice"), 0U);
}

}  // namespace
}  // namespace NVORHOST
