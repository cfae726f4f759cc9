// The inventories of whole machines in every format. NOXINFO_BLESS=1 writes the expected files.
#include "inventory/read/document_reader.h"
#include "inventory/report/report_writer.h"
#include "inventory/write/csv_writer.h"
#include "inventory/write/cyclonedx_writer.h"
#include "inventory/write/json_writer.h"
#include "inventory/write/openmetrics_writer.h"
#include "inventory/write/text_writer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <sstream>

namespace NINVENTORY {
namespace {

namespace fs = std::filesystem;

struct TFormat {
    std::string name;
    std::function<std::unique_ptr<IInventoryFormat>(std::ostream&)> make;
};

const TFormat formats[] = {
    {"txt", [](std::ostream& out) { return MakeTextWriter(out, {.layout = {.width = 80}}); }},
    {"json", MakeJsonWriter},
    {"ndjson", MakeNdjsonWriter},
    {"csv", MakeCsvWriter},
    {"prom", MakeOpenMetricsWriter},
    {"cdx.json", MakeCycloneDxWriter},
    {"html", [](std::ostream& out) { return MakeReportWriter(out, EReportSources::separate); }},
};

std::string ReadFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string Convert(const std::string& machine, const TFormat& format) {
    std::ostringstream out;
    const auto writer = format.make(out);
    writer->BeginSource(machine);
    for (const char* document : {"expected.xml", "expected-system.xml"}) {
        TDocumentInput input((fs::path(NOXINFO_MACHINES) / machine / document).string());
        ReadDocument(input, *writer);
    }
    writer->Finish();
    return out.str();
}

std::vector<std::string> ListMachines() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(NOXINFO_MACHINES)) {
        if (entry.is_directory()) {
            names.push_back(entry.path().filename().string());
        }
    }
    std::ranges::sort(names);
    return names;
}

class TFormats : public testing::TestWithParam<std::tuple<std::string, TFormat>> {};

TEST_P(TFormats, ShowTheMachine) {
    const auto& [machine, format] = GetParam();
    const fs::path expected = fs::path(NOXINFO_SHOWN_MACHINES) / (machine + "." + format.name);
    const std::string text = Convert(machine, format);
    if (std::getenv("NOXINFO_BLESS") != nullptr) {
        std::ofstream(expected, std::ios::binary) << text;
    }
    EXPECT_EQ(text, ReadFile(expected));
}

INSTANTIATE_TEST_SUITE_P(Machines, TFormats,
                         testing::Combine(testing::ValuesIn(ListMachines()), testing::ValuesIn(formats)),
                         [](const auto& value) {
                             std::string name =
                                 std::get<0>(value.param) + "_" + std::get<1>(value.param).name;
                             std::ranges::replace(name, '-', '_');
                             std::ranges::replace(name, '.', '_');
                             return name;
                         });

}  // namespace
}  // namespace NINVENTORY
