// Compares docs/collectors.md with the code: both have the same collectors, classes, properties and types in
// the same order, and the document has a source for each property.
#include "machine/collect/run/collectors.h"
#include "machine/system/path_pattern.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {
namespace {

using testing::Each;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Not;

constexpr std::string_view collectorHeading = "## `";
constexpr std::string_view classHeading = "### `";
constexpr std::string_view propertyRow = "| `";
constexpr std::string_view pathRow = "| `/";

struct TDocument {
    std::vector<std::string> collectors;
    std::vector<std::string> properties;  // "Class.Property type"
    std::vector<std::string> sources;     // of each property
    std::vector<std::string> rows;        // the sources of each property as its row has them
    std::set<std::string> paths;          // patterns of the table of what reading a source does
};

// Returns the text between the first two backticks of a line.
std::string Quoted(std::string_view line) {
    const auto start = line.find('`') + 1;
    return std::string(line.substr(start, line.find('`', start) - start));
}

// "| `Name` | type | unit | source |" without the blanks around each.
std::vector<std::string> Cells(std::string_view line) {
    std::vector<std::string> cells;
    for (auto start = line.find('|') + 1; line.find('|', start) != std::string_view::npos;) {
        const auto end = line.find('|', start);
        std::string_view cell = line.substr(start, end - start);
        while (cell.starts_with(' ')) {
            cell.remove_prefix(1);
        }
        while (cell.ends_with(' ')) {
            cell.remove_suffix(1);
        }
        cells.emplace_back(cell);
        start = end + 1;
    }
    return cells;
}

// "`/a`, `/b`".
void AddPaths(std::string_view cell, std::set<std::string>& paths) {
    for (auto start = cell.find('`'); start != std::string_view::npos; start = cell.find('`', start)) {
        const auto end = cell.find('`', start + 1);
        paths.emplace(cell.substr(start + 1, end - start - 1));
        start = end + 1;
    }
}

// The patterns of all collectors.
std::set<std::string_view> ListSources() {
    std::set<std::string_view> sources;
    for (const TCollector& collector : GetCollectors()) {
        sources.insert(collector.reads.begin(), collector.reads.end());
    }
    return sources;
}

TDocument ReadDocument() {
    TDocument document;
    std::ifstream file(NOXINFO_SOURCE_DIR "/docs/collectors.md");
    std::string className;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with(collectorHeading)) {
            document.collectors.push_back(Quoted(line));
        } else if (line.starts_with(classHeading)) {
            className = Quoted(line);
        } else if (line.starts_with(pathRow)) {
            AddPaths(Cells(line).at(0), document.paths);
        } else if (line.starts_with(propertyRow)) {
            const auto cells = Cells(line);
            document.properties.push_back(className + "." + Quoted(line) + " " + cells.at(1));
            document.sources.push_back(cells.at(3));
            document.rows.push_back(cells.at(4));
        }
    }
    return document;
}

std::vector<std::string> ListProperties() {
    std::vector<std::string> properties;
    for (const TCollector& collector : GetCollectors()) {
        for (const IClassDeclaration* declaration : collector.fills) {
            for (const TPropertyDeclaration& property : declaration->GetProperties()) {
                const NKELVOR20::TCIMValue::TCIMType type(property.type);
                properties.push_back(std::string(declaration->GetName()) + "." + property.name + " " +
                                     type.ToString() + (property.isArray ? "[]" : ""));
            }
        }
    }
    return properties;
}

std::vector<std::string> ListSourcesOfRows() {
    std::vector<std::string> rows;
    for (const TCollector& collector : GetCollectors()) {
        for (const IClassDeclaration* declaration : collector.fills) {
            for (const TSourcedProperty& property : declaration->GetSources()) {
                rows.push_back("`" + std::string(property.sources.GetText()) + "`");
            }
        }
    }
    return rows;
}

// Replaces the last cell of each property, so that the document has the sources of the rows.
void WriteSourcesOfRows() {
    const auto rows = ListSourcesOfRows();
    auto row = rows.begin();
    std::ostringstream text;
    std::ifstream file(NOXINFO_SOURCE_DIR "/docs/collectors.md");
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with(propertyRow) && !line.starts_with(pathRow) && row != rows.end()) {
            const auto cells = Cells(line);
            line = "| " + cells.at(0) + " | " + cells.at(1) + " | " + cells.at(2) + " | " + cells.at(3) +
                   " | " + *row++ + " |";
        }
        text << line << '\n';
    }
    std::ofstream(NOXINFO_SOURCE_DIR "/docs/collectors.md") << text.str();
}

TEST(CollectorsDocument, HasTheSourcesOfTheRows) {
    if (std::getenv("NOXINFO_BLESS") != nullptr) {
        WriteSourcesOfRows();
    }
    EXPECT_THAT(ReadDocument().rows, ElementsAreArray(ListSourcesOfRows()));
}

TEST(CollectorsDocument, ListsTheCollectorsInTheirOrder) {
    std::vector<std::string> names;
    for (const TCollector& collector : GetCollectors()) {
        names.emplace_back(collector.name);
    }
    EXPECT_THAT(ReadDocument().collectors, ElementsAreArray(names));
}

TEST(CollectorsDocument, ListsEveryPropertyWithItsType) {
    EXPECT_THAT(ReadDocument().properties, ElementsAreArray(ListProperties()));
}

TEST(CollectorsDocument, HasASourceForEveryProperty) {
    const TDocument document = ReadDocument();
    EXPECT_THAT(document.sources, Not(IsEmpty()));
    EXPECT_THAT(document.sources, Each(Not(IsEmpty())));
}

TEST(CollectorsDocument, DescribesWhatReadingEachSourceDoes) {
    const TDocument document = ReadDocument();
    for (const std::string_view source : ListSources()) {
        EXPECT_TRUE(std::ranges::any_of(document.paths, [&](const std::string& pattern) {
            return MatchesPathPattern(pattern, source);
        })) << source;
    }
}

TEST(CollectorsDocument, HasNoRowForASourceThatIsNotRead) {
    const auto sources = ListSources();
    for (const std::string& pattern : ReadDocument().paths) {
        EXPECT_TRUE(std::ranges::any_of(sources, [&](std::string_view source) {
            return MatchesPathPattern(pattern, source) || MatchesPathPattern(source, pattern);
        })) << pattern;
    }
}

}  // namespace
}  // namespace NVORHOST
