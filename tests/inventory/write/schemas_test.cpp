// Other programs accept what the formats write: of whole machines, and of hostile documents.
#include "helper_program.h"
#include "inventory/read/document_reader.h"
#include "inventory/write/csv_writer.h"
#include "inventory/write/cyclonedx_writer.h"
#include "inventory/write/diff_json_writer.h"
#include "inventory/write/json_writer.h"
#include "inventory/write/openmetrics_writer.h"
#include "tests/inventory/compare/random_inventory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <vector>

namespace NINVENTORY {
namespace {

namespace fs = std::filesystem;

const std::string checkJson = NOXINFO_PYTHON " " NOXINFO_CHECK_JSON " ";

using TMakeFormat = std::unique_ptr<IInventoryFormat> (*)(std::ostream&);

std::string ConvertMachines(TMakeFormat makeFormat) {
    std::ostringstream out;
    const auto writer = makeFormat(out);
    for (const auto& machine : fs::directory_iterator(NOXINFO_MACHINES)) {
        for (const char* const document : {"expected.xml", "expected-system.xml"}) {
            if (const fs::path path = machine.path() / document; fs::exists(path)) {
                writer->BeginSource(path.string());
                TDocumentInput input(path.string());
                ReadDocument(input, *writer);
            }
        }
    }
    writer->Finish();
    return out.str();
}

// Texts that formats have to quote, escape or replace, in every place where a document has a text.
std::string ConvertHostileTexts(TMakeFormat makeFormat) {
    const std::vector<std::string> texts = {"",
                                            "\"",
                                            "\\",
                                            "\n",
                                            "\r\n",
                                            std::string("\0", 1),
                                            "\xFF",
                                            "\xED\xA0\x80",
                                            "{}",
                                            "</x>",
                                            "#  HELP",
                                            "a,b;",
                                            "\x1B",
                                            "1e999",
                                            "\xE2\x80\xAE",
                                            std::string(10000, 'x')};
    std::ostringstream out;
    const auto writer = makeFormat(out);
    writer->BeginSource("s\"\\\n\xFF");
    writer->BeginDocument({EDocument::hardware, "u", "t\"\n"});
    for (const char* const type : {"Server", "PhysicalMemory", "DiskDrive", "BIOSElement", "Unheard\"of\n"}) {
        for (const std::string& text : texts) {
            TResource resource{text, type, {}, {}, {}};
            for (const char* const name :
                 {"Name", "Manufacturer", "SerialNumber", "Version", "Capacity", "X\"\n"}) {
                resource.properties.push_back({name, "unsignedLong", EShape::scalar, {text}});
            }
            resource.properties.push_back({"OperationalStatus", "unsignedShort", EShape::array, texts});
            resource.properties.push_back({"Nothing", "float", EShape::null, {}});
            writer->AddResource(std::move(resource));
        }
    }
    writer->Finish();
    return out.str();
}

class TTexts : public testing::TestWithParam<std::string (*)(TMakeFormat)> {};

INSTANTIATE_TEST_SUITE_P(Of, TTexts, testing::Values(&ConvertMachines, &ConvertHostileTexts),
                         [](const auto& value) {
                             return value.param == &ConvertMachines ? std::string("Machines")
                                                                    : std::string("HostileTexts");
                         });

void ExpectAccepted(const std::string& command, const std::string& text, const std::string& extension = {}) {
    ASSERT_FALSE(text.empty());
    const THelperResult result = RunHelper(command, text, extension);
    EXPECT_EQ(result.status, 0) << result.output.substr(0, 2000);
}

TEST_P(TTexts, AreValidJson) {
    ExpectAccepted(checkJson + NOXINFO_JSON_SCHEMA, GetParam()(&MakeJsonWriter));
}

TEST_P(TTexts, AreValidNdjson) {
    ExpectAccepted(checkJson + NOXINFO_JSON_SCHEMA, GetParam()(&MakeNdjsonWriter), ".ndjson");
}

TEST_P(TTexts, AreAValidBillOfMaterials) {
    ExpectAccepted(checkJson + NOXINFO_BILL_SCHEMA, GetParam()(&MakeCycloneDxWriter));
}

TEST_P(TTexts, AreMetricsThatPromtoolAccepts) {
    if (!HasProgram("promtool")) {
        GTEST_SKIP() << "promtool (Debian package prometheus) is not installed";
    }
    ExpectAccepted("promtool check metrics <", GetParam()(&MakeOpenMetricsWriter));
}

TEST_P(TTexts, AreATableOfNineColumns) {
    ExpectAccepted(NOXINFO_PYTHON
                   " -c '"
                   "import csv, sys\n"
                   "file = open(sys.argv[1], encoding=\"utf-8\", newline=\"\")\n"
                   "lengths = {len(row) for row in csv.reader(file, strict=True)}\n"
                   "sys.exit(lengths != {9})'",
                   GetParam()(&MakeCsvWriter));
}

TInventory ReadMachine(const fs::path& folder) {
    class TRecorder final : public IDocumentEvents {
      public:
        explicit TRecorder(TInventory& inventory) : inventory_(inventory) {}
        void BeginDocument(const TDocumentHead& head) override { inventory_.documents.push_back(head); }
        void BeginList(std::string_view type, int /*line*/) override { inventory_.types.emplace_back(type); }
        void AddResource(TResource&& resource) override {
            inventory_.resources.push_back(std::move(resource));
        }

      private:
        TInventory& inventory_;
    };
    TInventory inventory;
    inventory.source = folder.filename().string();
    TRecorder recorder(inventory);
    TDocumentInput input((folder / "expected.xml").string());
    ReadDocument(input, recorder);
    return inventory;
}

// Writes the comparison as JSON on one line, and its lines of NDJSON.
void WriteComparison(const TInventory& before, const TInventory& after, const TComparisonSettings& settings,
                     std::string& lines) {
    const TComparison comparison = Compare(before, after, settings);
    std::ostringstream json, ndjson;
    WriteDiffJson(comparison, before, after, json);
    WriteDiffNdjson(comparison, before, after, ndjson);
    std::string text = json.str();
    std::erase(text, '\n');  // texts in JSON have none
    lines += text + "\n" + ndjson.str();
}

TEST(DiffSchema, AcceptsComparisonsOfAllMachines) {
    std::vector<TInventory> machines;
    for (const auto& machine : fs::directory_iterator(NOXINFO_MACHINES)) {
        if (machine.is_directory()) {
            machines.push_back(ReadMachine(machine.path()));
        }
    }
    ASSERT_GT(machines.size(), 5U);
    std::string lines;
    for (std::size_t i = 1; i < machines.size(); ++i) {
        WriteComparison(machines[i - 1], machines[i], {.comparesAll = i % 2 == 0}, lines);
    }
    ExpectAccepted(checkJson + NOXINFO_DIFF_SCHEMA, lines, ".ndjson");
}

TEST(DiffSchema, AcceptsComparisonsOfRandomInventories) {
    constexpr unsigned rounds = 30;
    std::string lines;
    for (unsigned seed = 0; seed < rounds; ++seed) {
        std::mt19937 generator(seed);
        const auto take = [&] { return static_cast<std::uint8_t>(generator()); };
        TInventory before = MakeRandomInventory(take);
        TInventory after = MakeRandomInventory(take);
        before.source = after.source = "random";
        WriteComparison(before, after, {.comparesAll = seed % 2 == 0}, lines);
    }
    ExpectAccepted(checkJson + NOXINFO_DIFF_SCHEMA, lines, ".ndjson");
}

TEST(DiffSchema, RejectsAnotherForm) {
    const std::string start = R"({"oldSource":"a","newSource":"b","resourceType":"T",)";
    const std::string side = R"({"resourceId":"A"})";
    const std::string whole = R"({"resourceId":"A","properties":{}})";
    EXPECT_EQ(
        RunHelper(checkJson + NOXINFO_DIFF_SCHEMA,
                  start + R"("change":"moved","properties":{},"old":)" + side + ",\"new\":" + side + "}")
            .status,
        0);
    for (const std::string& text :
         {std::string("{}"), start + R"("change":"moved","old":)" + side + ",\"new\":null}",
          start + R"("change":"added","old":null,"new":)" + side + "}",
          start + R"("change":"removed","old":null,"new":)" + whole + "}",
          start + R"("change":"added","old":null,"more":1,"new":)" + whole + "}",
          start + R"("change":"lost","old":null,"new":)" + whole + "}"}) {
        EXPECT_NE(RunHelper(checkJson + NOXINFO_DIFF_SCHEMA, text).status, 0) << text;
    }
}

TEST(Schemas, RejectAnotherForm) {
    for (const char* const text :
         {"{}", R"({"documents":[{"source":"s","kind":"hardware"}]})", R"({"documents":[],"more":1})",
          R"({"problems":[{"source":"s"}]})",
          R"({"source":"s","kind":"hardware","resourceId":"A","resourceType":"T","properties":{"X":1}})",
          R"({"documents":[],"documents":[]})"}) {
        EXPECT_NE(RunHelper(checkJson + NOXINFO_JSON_SCHEMA, text).status, 0) << text;
    }
    EXPECT_NE(RunHelper(checkJson + NOXINFO_BILL_SCHEMA, R"({"bomFormat":"CycloneDX"})").status, 0);
}

}  // namespace
}  // namespace NINVENTORY
