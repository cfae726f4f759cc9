// Documents that the writer makes of random namespaces, with any bytes in texts: reading and writing them
// again gives the same bytes, and the schema accepts them.
#include "inventory/write/document_writer.h"
#include "tests/inventory/read/recorded_events.h"
#include "vorhost/model/memory_namespace.h"
#include "writer/catalogue/resource_catalogue.h"
#include "writer/nox_xml_writer.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace NINVENTORY {
namespace {

namespace fs = std::filesystem;

using NVORHOST::TCIMValue;
using NVORHOST::TMemoryNamespace;
using TNamespacePtr = boost::shared_ptr<TMemoryNamespace>;
using TType = TCIMValue::TCIMType;

constexpr unsigned documentCount = 60;

// Generates the same sequence for a seed on every platform.
class TRandom {
  public:
    explicit TRandom(unsigned seed) : engine_(seed) {}

    unsigned Below(std::size_t limit) { return static_cast<unsigned>(engine_() % limit); }
    std::string Bytes(std::size_t maxLength) {
        std::string bytes(Below(maxLength + 1), '\0');
        std::ranges::generate(bytes, [this] { return static_cast<char>(Below(256)); });
        return bytes;
    }

  private:
    std::mt19937 engine_;
};

std::string MakeText(TRandom& random) {
    static constexpr std::string_view pieces[] = {"&amp;",      "<",        "]]>",           "\"",
                                                  "</Value>\n", "\r\n",     "</Property>\n", "<Value>",
                                                  "\xC3\xA9",   "\xE2\x80", "plain text"};
    std::string text;
    for (unsigned i = random.Below(4); i > 0; --i) {
        text += random.Bytes(12);
        text += pieces[random.Below(std::size(pieces))];
    }
    return text;
}

TCIMValue MakeScalar(TRandom& random) {
    switch (random.Below(8)) {
        case 0:
            return TCIMValue(random.Below(2) == 0);
        case 1:
            return TCIMValue(static_cast<std::int64_t>(random.Below(1000)) - 500);
        case 2:
            return TCIMValue(static_cast<std::uint64_t>(random.Below(1000)) << 50U);
        case 3:
            return TCIMValue(TType::eString);
        default:
            return TCIMValue(MakeText(random));
    }
}

TCIMValue MakeValue(TRandom& random) {
    if (random.Below(4) != 0) {
        return MakeScalar(random);
    }
    TCIMValue::TElements elements;
    for (unsigned i = random.Below(4); i > 0; --i) {
        elements.emplace_back(MakeText(random));
    }
    return TCIMValue::Array(TType::eString, elements);
}

std::set<std::string> ListSources(const TResourceClass& resourceClass) {
    std::set<std::string> names{std::string(resourceClass.keyProperty)};
    for (const TPropertyRow& row : resourceClass.head) {
        names.emplace(row.sourceName);
    }
    for (const TPropertyRow& row : resourceClass.properties) {
        names.emplace(row.sourceName);
    }
    names.erase("");
    // The writer does not finish the document of a product name without a model.
    names.erase("ProductName");
    return names;
}

TNamespacePtr MakeNamespace(TRandom& random) {
    auto collected = boost::make_shared<TMemoryNamespace>();
    for (const TResourceClass& resourceClass : GetResourceCatalogue()) {
        if (random.Below(3) == 0) {
            continue;
        }
        const auto added = collected->AddClass(std::string(resourceClass.className));
        for (unsigned i = random.Below(4); i > 0; --i) {
            const auto instance = added->NewInstance();
            for (const std::string& name : ListSources(resourceClass)) {
                if (random.Below(4) != 0) {
                    instance->Set(name, MakeValue(random));
                }
            }
            instance->CommitInstance({});
        }
    }
    return collected;
}

void AddInstance(TMemoryNamespace& collected, const std::string& className,
                 const std::vector<std::pair<std::string, std::string>>& properties) {
    const auto instance = collected.AddClass(className)->NewInstance();
    for (const auto& [name, value] : properties) {
        instance->Set(name, TCIMValue(value));
    }
    instance->CommitInstance({});
}

std::string WriteHardware(const TNamespacePtr& collected) {
    std::ostringstream out;
    TNOXXMLWriterImpl(out).WriteNamespace(collected);
    return out.str();
}

std::string WriteSystemInformation(const TNamespacePtr& collected) {
    std::ostringstream out;
    TNOXXMLWriterImpl(out).WriteSysInfoNamespace(collected);
    return out.str();
}

std::string Rewrite(std::string_view text) {
    TDocumentInput input("document", text);
    std::ostringstream out;
    TDocumentWriter writer(out);
    ReadDocument(input, writer);
    writer.Finish();
    return out.str();
}

TEST(RandomNamespaces, GiveHardwareDocumentsThatAreWrittenAsTheyWereRead) {
    std::size_t resources = 0;
    for (unsigned seed = 0; seed < documentCount; ++seed) {
        TRandom random(seed);
        const std::string text = WriteHardware(MakeNamespace(random));
        ASSERT_EQ(Rewrite(text), text) << "seed " << seed;
        resources += ReadText(text).resources.size();
    }
    EXPECT_GT(resources, documentCount);
}

TEST(RandomNamespaces, GiveHardwareDocumentsThatTheSchemaAccepts) {
    const fs::path folder = fs::temp_directory_path() / ("noxinfo-random-" + std::to_string(::getpid()));
    fs::create_directory(folder);
    for (unsigned seed = 0; seed < documentCount; ++seed) {
        TRandom random(seed);
        std::ofstream(folder / (std::to_string(seed) + ".xml"), std::ios::binary)
            << WriteHardware(MakeNamespace(random));
    }
    const std::string command =
        "xmllint --nonet --noout --schema " NOXINFO_SCHEMA " " + folder.string() + "/*.xml >/dev/null 2>&1";
    EXPECT_EQ(std::system(command.c_str()), 0) << folder;
    fs::remove_all(folder);
}

TEST(RandomNamespaces, GiveSystemInformationThatIsWrittenAsItWasRead) {
    for (unsigned seed = 0; seed < documentCount; ++seed) {
        TRandom random(seed);
        const auto collected = boost::make_shared<TMemoryNamespace>();
        AddInstance(*collected, "KELSG_ComputerSystem",
                    {{"Manufacturer", MakeText(random)},
                     {"ProductName", MakeText(random)},
                     {"SerialNumber", MakeText(random)}});
        AddInstance(*collected, "KELSG_OperatingSystem", {{"Version", MakeText(random)}});
        AddInstance(*collected, "KELSG_DataSource", {{"Version", MakeText(random)}});
        const std::string text = WriteSystemInformation(collected);
        ASSERT_EQ(Rewrite(text), text) << "seed " << seed;
    }
}

TEST(RandomNamespaces, GiveSystemInformationWhoseValuesAreReadAsTheyWereCollected) {
    constexpr std::size_t maxLength = 200;
    for (unsigned seed = 0; seed < documentCount; ++seed) {
        TRandom random(seed);
        const std::string manufacturer = "M" + random.Bytes(maxLength);
        const std::string product = "P" + random.Bytes(maxLength);
        const std::string serial = "S" + random.Bytes(maxLength);
        const std::string version = "V" + random.Bytes(maxLength);
        const auto collected = boost::make_shared<TMemoryNamespace>();
        AddInstance(*collected, "KELSG_ComputerSystem",
                    {{"Manufacturer", manufacturer}, {"ProductName", product}, {"SerialNumber", serial}});
        AddInstance(*collected, "KELSG_OperatingSystem", {{"Version", version}});
        const TRecordedEvents events = ReadText(WriteSystemInformation(collected));
        ASSERT_EQ(events.resources.size(), 1U);
        const TResource& system = events.resources.front();
        ASSERT_EQ(system.GetText("Manufacturer"), manufacturer) << "seed " << seed;
        ASSERT_EQ(system.GetText("MachineType"), product) << "seed " << seed;
        ASSERT_EQ(system.GetText("SerialNumber"), serial) << "seed " << seed;
        ASSERT_EQ(system.GetText("OSVersion"), version) << "seed " << seed;
    }
}

}  // namespace
}  // namespace NINVENTORY
