// Where values come from, or why there are none: show --sources, explain, snapshot --with-sources and diff on
// captures that root and an ordinary user made of one machine.
#include "program_run.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace NVORHOST {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr char excerpt[] = "/sys/class/dmi/id/";

class Sources : public testing::Test {
  protected:
    Sources() {
        for (const std::string tree : {"root", "user"}) {
            Add(tree, "proc/cpuinfo", "");
            Add(tree, std::string(excerpt) + "board_vendor", "Acme\n");
            Add(tree, std::string(excerpt) + "board_name", "Board 1\n");
            Add(tree, std::string(excerpt) + "board_asset_tag", "Not Specified\n");
        }
        Add("root", std::string(excerpt) + "board_serial", "B-17\n");
        Add("root", "noxinfo-system.txt", "NodeName server-1\n");
        Add("user", "noxinfo-system.txt",
            "NodeName server-1\n"
            "denied read /sys/firmware/dmi/tables/DMI\n"
            "denied read /sys/class/dmi/id/board_serial\n");
    }

    void Add(const std::string& tree, const std::string& path, const std::string& text) const {
        const std::filesystem::path file = folder_ / (tree + "/" + path);
        std::filesystem::create_directories(file.parent_path());
        WriteFile(file.string(), text);
    }

    TProgramResult Run(std::vector<std::string> arguments) const {
        return RunNoxinfo({std::move(arguments), folder_.GetPath(), {}});
    }

    TTemporaryDirectory folder_;
};

// The board as the user's capture has it.
constexpr char boardOfUser[] =
    "Card 3024AA6E671230541444DFDDC91D357B\n"
    "  Name                   Acme Board 1                      property Manufacturer; property Model\n"
    "  Description            Baseboard                         type 2, 0Dh\n"
    "  ObjectType             Card\n"
    "  Manufacturer           Acme                              type 2, 04h; /sys/class/dmi/id/board_vendor\n"
    "  Model                  Board 1                           type 2, 05h; /sys/class/dmi/id/board_name\n"
    "  Tag                    Baseboard                         type 2, 0Ah\n"
    "  GUID                   3024AA6E671230541444DFDDC91D357B\n"
    "  SerialNumber           denied (needs root)               type 2, 07h; /sys/class/dmi/id/board_serial\n"
    "  RemovalConditions      denied (needs root)               type 2, 09h\n"
    "  UserTracking           placeholder \"Not Specified\"       type 2, 08h; "
    "/sys/class/dmi/id/board_asset_tag\n"
    "  HostingBoard           denied (needs root)               type 2, 09h bit 0\n"
    "  RequiresDaughterBoard  denied (needs root)               type 2, 09h bit 1\n";

constexpr char explainedBoard[] =
    "\nproperties\n"
    "  Name                   Acme Board 1                      property Manufacturer; property Model\n"
    "  Description            Baseboard                         type 2, 0Dh\n"
    "  ObjectType             Card\n"
    "  Manufacturer           Acme                              type 2, 04h; /sys/class/dmi/id/board_vendor\n"
    "  Model                  Board 1                           type 2, 05h; /sys/class/dmi/id/board_name\n"
    "  Tag                    Baseboard                         type 2, 0Ah\n"
    "  GUID                   3024AA6E671230541444DFDDC91D357B\n"
    "  ManufactureDate        absent                            none: no such field\n"
    "  PartNumber             absent                            none: no such field\n"
    "  SerialNumber           denied (needs root)               type 2, 07h; /sys/class/dmi/id/board_serial\n"
    "  Version                absent                            type 2, 06h; "
    "/sys/class/dmi/id/board_version\n"
    "  RemovalConditions      denied (needs root)               type 2, 09h\n"
    "  UserTracking           placeholder \"Not Specified\"       type 2, 08h; "
    "/sys/class/dmi/id/board_asset_tag\n"
    "  HostingBoard           denied (needs root)               type 2, 09h bit 0\n"
    "  RequiresDaughterBoard  denied (needs root)               type 2, 09h bit 1\n"
    "  SpecialRequirements    absent                            none: no such field\n";

TEST_F(Sources, AreShownBesideTheValues) {
    const auto result = Run({"show", "--sources", "--type", "Card", "user"});
    EXPECT_EQ(result.status, 0) << result.standardError;
    EXPECT_EQ(result.standardOutput.substr(0, result.standardOutput.find("Denied ")), boardOfUser);
    EXPECT_THAT(
        result.standardOutput,
        HasSubstr("Values      6 values not known: 5 denied, 1 placeholder; see noxinfo show --sources\n"));
}

TEST_F(Sources, AreNotShownUnlessTheyAreWanted) {
    const auto result = Run({"show", "--long", "--type", "Card", "user"});
    EXPECT_THAT(result.standardOutput, Not(HasSubstr("type 2")));
    EXPECT_THAT(Run({"show", "--format", "json", "user"}).standardOutput, Not(HasSubstr("\"status\"")));
}

TEST_F(Sources, AreExplainedForEveryProperty) {
    const auto result = Run({"explain", "Baseboard", "user"});
    EXPECT_EQ(result.status, 0) << result.standardError;
    const std::size_t properties = result.standardOutput.find("\nproperties\n");
    ASSERT_NE(properties, std::string::npos) << result.standardOutput;
    EXPECT_EQ(result.standardOutput.substr(properties), explainedBoard);
}

TEST_F(Sources, AreInJson) {
    const auto result = Run({"show", "--format", "ndjson", "--sources", "--type", "Card", "--property",
                             "SerialNumber,UserTracking", "user"});
    EXPECT_EQ(result.standardOutput,
              "{\"source\":\"tree user\",\"kind\":\"namespace\","
              "\"resourceId\":\"3024AA6E671230541444DFDDC91D357B\",\"resourceType\":\"Card\",\"properties\":{"
              "\"SerialNumber\":{\"value\":null,\"status\":\"denied\","
              "\"sources\":[\"type 2, 07h\",\"/sys/class/dmi/id/board_serial\"]},"
              "\"UserTracking\":{\"value\":null,\"status\":\"placeholder\",\"passedOver\":\"Not Specified\","
              "\"sources\":[\"type 2, 08h\",\"/sys/class/dmi/id/board_asset_tag\"]}}}\n");
}

TEST_F(Sources, MatchTheSchemas) {
    ASSERT_EQ(Run({"show", "--format", "json", "--sources", "--output", "a.json", "user"}).status, 0);
    ASSERT_EQ(Run({"show", "--format", "ndjson", "--sources", "--output", "a.ndjson", "user"}).status, 0);
    ASSERT_EQ(Run({"diff", "--format", "json", "--output", "diff.json", "root", "user"}).status, 0);
    const auto check = [&](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), NOXINFO_CHECK_JSON);
        const auto result = RunProgram(NOXINFO_PYTHON, {std::move(arguments), folder_.GetPath(), {}});
        EXPECT_EQ(result.status, 0) << result.standardOutput << result.standardError;
    };
    EXPECT_THAT(ReadFile(folder_ / "diff.json"), HasSubstr("\"notKnown\":[{"));
    check({NOXINFO_JSON_SCHEMA, "a.json", "a.ndjson"});
    check({NOXINFO_DIFF_SCHEMA, "diff.json"});
}

TEST_F(Sources, AreKeptInASnapshotAndReadBack) {
    ASSERT_EQ(Run({"snapshot", "--with-sources", "--sysroot", "user", "user.xml"}).status, 0);
    const std::vector<std::string> show{"show", "--sources", "--type", "Card", "user.xml"};
    EXPECT_EQ(Run(show).standardOutput, boardOfUser);
}

TEST_F(Sources, LeaveAPlainSnapshotAsItIs) {
    ASSERT_EQ(Run({"snapshot", "--sysroot", "user", "user.xml"}).status, 0);
    EXPECT_THAT(ReadFile(folder_ / "user.xml"), Not(HasSubstr("QUALIFIER")));
    EXPECT_EQ(Run({"show", "--sources", "--type", "Card", "user.xml"}).standardOutput,
              Run({"show", "--long", "--type", "Card", "user.xml"}).standardOutput);
}

TEST_F(Sources, OfASnapshotDoNotChangeTheDocuments) {
    const auto collect = [&](const std::string& snapshot) {
        EXPECT_EQ(Run({"collect", "--namespace", snapshot, "--local-time", "20240301120000.000000+060",
                       "--directory", folder_ / "documents"})
                      .status,
                  0);
        return ReadCompressedFile(folder_ / "documents/hardwareinventory.xml.gz");
    };
    std::filesystem::create_directory(folder_ / "documents");
    ASSERT_EQ(Run({"snapshot", "--sysroot", "user", "plain.xml"}).status, 0);
    ASSERT_EQ(Run({"snapshot", "--with-sources", "--sysroot", "user", "full.xml"}).status, 0);
    EXPECT_EQ(collect("full.xml"), collect("plain.xml"));
}

TEST_F(Sources, KeepAComparisonFromCallingADeniedValueGone) {
    const auto result = Run({"diff", "root", "user"});
    EXPECT_EQ(result.status, 0) << result.standardOutput;
    EXPECT_THAT(result.standardOutput, HasSubstr("no changes\n"));
    EXPECT_THAT(result.standardOutput,
                HasSubstr("not known in NEW (needs root): serial number B-17 of board Acme Board 1\n"));
    const auto swapped = Run({"diff", "user", "root"});
    EXPECT_EQ(swapped.status, 0);
    EXPECT_THAT(swapped.standardOutput, HasSubstr("not known in OLD (needs root): "));
}

TEST_F(Sources, AreCountedInTheSummaryOfACollection) {
    const auto result = Run({"collect", "--sysroot", "user"});
    EXPECT_EQ(result.status, 0) << result.standardError;
    EXPECT_THAT(result.standardOutput,
                HasSubstr("\nValues      6 values not known: 5 denied, 1 placeholder; "));
}

}  // namespace
}  // namespace NVORHOST
