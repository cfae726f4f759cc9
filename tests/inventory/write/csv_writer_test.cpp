#include "inventory/write/csv_writer.h"

#include "helper_program.h"

#include <gtest/gtest.h>

#include <sstream>
#include <vector>

namespace NINVENTORY {
namespace {

const std::string header =
    R"("source","timestamp","resourceType","resourceId","property","index","value","unit","word")"
    "\r\n";

std::string WriteTable(std::vector<TProperty> properties) {
    std::ostringstream out;
    const auto writer = MakeCsvWriter(out);
    writer->BeginSource("s");
    writer->BeginDocument({EDocument::hardware, "u", "t"});
    writer->AddResource({"AB", "PhysicalMemory", "PhysicalElement", {}, std::move(properties)});
    writer->Finish();
    return out.str();
}

TEST(CsvWriter, WritesTitlesWithoutSources) {
    std::ostringstream out;
    MakeCsvWriter(out)->Finish();
    EXPECT_EQ(out.str(), header);
}

TEST(CsvWriter, WritesARowForAValueWithItsUnitAndItsWord) {
    EXPECT_EQ(WriteTable({{"Capacity", "unsignedLong", EShape::scalar, {"17179869184"}},
                          {"MemoryType", "unsignedShort", EShape::scalar, {"26"}}}),
              header + R"("s","t","PhysicalMemory","AB","Capacity",,"17179869184","B",)"
                       "\r\n"
                       R"("s","t","PhysicalMemory","AB","MemoryType",,"26",,"DDR4")"
                       "\r\n");
}

TEST(CsvWriter, WritesARowForEachElementOfAnArrayWithItsIndex) {
    EXPECT_EQ(WriteTable({{"OperationalStatus", "unsignedShort", EShape::array, {"2", "99"}}}),
              header + R"("s","t","PhysicalMemory","AB","OperationalStatus","0","2",,"OK")"
                       "\r\n"
                       R"("s","t","PhysicalMemory","AB","OperationalStatus","1","99",,)"
                       "\r\n");
}

TEST(CsvWriter, DistinguishesNullFromAnEmptyText) {
    EXPECT_EQ(WriteTable({{"X", "string", EShape::null, {}}, {"Y", "string", EShape::scalar, {""}}}),
              header + R"("s","t","PhysicalMemory","AB","X",,,,)"
                       "\r\n"
                       R"("s","t","PhysicalMemory","AB","Y",,"",,)"
                       "\r\n");
}

TEST(CsvWriter, ReplacesMalformedUtf8AndNul) {
    EXPECT_NE(WriteTable({{"X", "string", EShape::scalar, {std::string("a\xFF\0b", 4)}}})
                  .find("\"a\xEF\xBF\xBD\xEF\xBF\xBD"
                        "b\""),
              std::string::npos);
}

TEST(CsvWriter, WritesWhatAnotherReaderReadsBack) {
    const std::vector<std::string> values = {"",   "\"",    "\"\"",     ",",        "a,b\"c", "\r\n",
                                             "\n", " a\t ", "=1+1\"\"", "\xC3\xA4", ";",      "'"};
    const std::string rows =
        RunHelper(NOXINFO_PYTHON
                  " -c '"
                  "import csv, sys\n"
                  "rows = list(csv.reader(open(sys.argv[1], newline=\"\"), strict=True))\n"
                  "for row in rows[1:]: print(len(row), row[6].encode().hex())'",
                  WriteTable({{"X", "string", EShape::array, values}}))
            .output;
    std::ostringstream expected;
    for (const std::string& value : values) {
        expected << "9 " << std::hex;
        for (const char c : value) {
            expected << (static_cast<unsigned char>(c) >> 4) << (static_cast<unsigned char>(c) & 0xF);
        }
        expected << '\n';
    }
    EXPECT_EQ(rows, expected.str());
}

}  // namespace
}  // namespace NINVENTORY
