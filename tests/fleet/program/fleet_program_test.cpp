// The program on a made-up fleet: ten machines over three days, a disk that is moved, a module that is
// stolen.
#include "tests/program/program_run.h"
#include "tests/program/temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

namespace NVORHOST {
namespace {

using ::testing::HasSubstr;

constexpr char description[] =
    "[fleet]\nmachines = 10\ndays = 3\n"
    "[model RackStar 2200]\ndisks = 2\nslots = 4\nmodules = 2\nadapters = 1\nports = 1\n"
    "[change moved-disk]\nday = 2\nmachine = 0\nto = 1\n"
    "[change stolen-module]\nday = 3\nmachine = 4\n";

class FleetProgram : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        directory_ = new TTemporaryDirectory;
        WriteFile(*directory_ / "fleet.txt", description);
        EXPECT_EQ(RunProgram(NOXINFO_SYNTHESIZE, {{"fleet.txt", "inbox"}, directory_->GetPath(), {}}).status,
                  0);
        // Files that are newer would be read again.
        std::this_thread::sleep_for(std::chrono::milliseconds(2100));
        EXPECT_EQ(Run({"load", "inbox"}).standardOutput,
                  "loaded 60 inventories from 60 files; 0 known already, 0 set aside\n");
    }
    static void TearDownTestSuite() { delete directory_; }

    static TProgramResult Run(std::vector<std::string> arguments, const std::string& store = "fleet.sqlite") {
        arguments.insert(arguments.end(), {"--store", "sqlite:" + store});
        return RunProgram(NOXINFO_FLEET, {arguments, directory_->GetPath(), {}});
    }
    static std::string Ask(const std::vector<std::string>& arguments) {
        const auto result = Run(arguments);
        EXPECT_EQ(result.status, 0) << result.standardError;
        EXPECT_EQ(result.standardError, "");
        return result.standardOutput;
    }

    static TTemporaryDirectory* directory_;
};

TTemporaryDirectory* FleetProgram::directory_ = nullptr;

TEST_F(FleetProgram, LoadsTheSameAgainWithoutAChange) {
    EXPECT_EQ(Run({"load", "inbox"}).standardOutput,
              "loaded 0 inventories from 60 files, 60 of them unchanged; 60 known already, 0 set aside\n");
    EXPECT_EQ(Run({"load", "--again", "inbox"}).standardOutput,
              "loaded 0 inventories from 60 files; 60 known already, 0 set aside\n");
}

TEST_F(FleetProgram, ReportsAPathWithoutInventories) {
    std::filesystem::create_directories(*directory_ / "empty");
    const auto result = Run({"load", "empty"}, "empty.sqlite");
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.standardOutput, "loaded 0 inventories from 0 files; 0 known already, 0 set aside\n");
    EXPECT_EQ(result.standardError, "noxinfo fleet: empty: contains no inventories\n");
}

TEST_F(FleetProgram, SetsBrokenFilesAsideAndExitsWithStatusThree) {
    std::filesystem::create_directories(*directory_ / "broken");
    WriteFile(*directory_ / "broken/notes.txt", "none\n");
    const auto result = Run({"load", "broken"}, "broken.sqlite");
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.standardOutput, "loaded 0 inventories from 1 file; 0 known already, 1 set aside\n");
    EXPECT_EQ(result.standardError,
              "noxinfo fleet: set aside: broken/notes.txt: is not an inventory document\n");
}

TEST_F(FleetProgram, LoadsTheDocumentsOfTheTestMachines) {
    std::filesystem::create_directories(*directory_ / "server");
    for (const std::string file : {"expected.xml", "expected-system.xml"}) {
        std::filesystem::copy(std::string(NOXINFO_MACHINES) + "/server-two-sockets/" + file,
                              *directory_ / ("server/" + file));
    }
    EXPECT_EQ(Run({"load", "server"}, "server.sqlite").status, 0);
    EXPECT_EQ(Run({"machines"}, "server.sqlite").standardOutput,
              "name              model     vendor           serial number  first seen            last seen"
              "             UUID\n"
              "db-1.example.net  7915-X3G  Example Servers  SRV0012345     2024-03-01T11:00:00Z  "
              "2024-03-01T11:00:00Z  C3D2F100-A5B4-4796-8879-6A5B4C3D2E1F\n");
}

TEST_F(FleetProgram, ListsMachinesThatMeetAConditionOnAPart) {
    EXPECT_EQ(Ask({"machines", "--where", "PhysicalMemory.SerialNumber=MM0000008", "--format", "csv"}),
              "\"name\",\"model\",\"vendor\",\"serial\",\"firstSeen\",\"lastSeen\",\"uuid\",\"key\"\r\n"
              "\"m0000004.example.net\",\"RackStar 2200\",\"Example Servers\",\"EX0000004\","
              "\"2026-03-01T03:04:00Z\",\"2026-03-03T03:04:00Z\",\"00C0FFEE-0000-4000-8000-000000000004\","
              "\"uuid:00C0FFEE-0000-4000-8000-000000000004 serial:EX0000004\"\r\n");
}

TEST_F(FleetProgram, FindsAMachineByEachOfItsNames) {
    const std::string history = Ask({"history", "m0000001.example.net"});
    EXPECT_THAT(history, HasSubstr("naa.5000c50000000003"));
    for (const std::string name : {"EX0000001", "00c0ffee-0000-4000-8000-000000000001",
                                   "uuid:00C0FFEE-0000-4000-8000-000000000001 serial:EX0000001"}) {
        EXPECT_EQ(Ask({"history", name}), history) << name;
    }
}

TEST_F(FleetProgram, RefusesATextThatNamesNoMachine) {
    const std::pair<std::string, std::string> texts[] = {
        {"%", "%"},
        {"m000000%", "m000000%"},
        {"' OR 1=1 --", "' OR 1=1 --"},
        {"00C0FFEE", "00C0FFEE"},
        {"\xFF\n", "\\xff\\n"},
        {std::string(100'000, 'x'), std::string(100'000, 'x')}};
    for (const auto& [text, shown] : texts) {
        for (const std::string command : {"show", "history"}) {
            const auto result = Run({command, text});
            EXPECT_EQ(result.status, 1);
            EXPECT_EQ(result.standardOutput, "");
            EXPECT_EQ(result.standardError,
                      "noxinfo fleet: there is no machine '" + shown + "' in fleet.sqlite\n");
        }
    }
}

TEST_F(FleetProgram, FollowsTheDiskThatWasMoved) {
    EXPECT_EQ(Ask({"where", "naa.5000c50000000001"}),
              "machine               part                            since                 until\n"
              "m0000000.example.net  disk SAMPLE SM600MP0005 600 GB  2026-03-01T03:00:00Z  "
              "2026-03-02T03:00:00Z\n"
              "m0000001.example.net  disk SAMPLE SM600MP0005 600 GB  2026-03-02T03:01:00Z  now\n");
}

TEST_F(FleetProgram, ListsWhatChangedInAMachine) {
    EXPECT_EQ(Ask({"history", "m0000001.example.net", "--format", "csv"}),
              "\"time\",\"machine\",\"key\",\"change\",\"resourceType\",\"resourceId\",\"part\",\"identity\","
              "\"property\",\"before\",\"after\"\r\n"
              "\"2026-03-02T03:01:00Z\",\"m0000001.example.net\","
              "\"uuid:00C0FFEE-0000-4000-8000-000000000001 serial:EX0000001\",\"removed\",\"DiskDrive\","
              "\"A8A586F2B3C750A7B6566C18AEC4914C\",\"disk SAMPLE SM600MP0005 600 GB\","
              "\"naa.5000c50000000003\",,,\r\n"
              "\"2026-03-02T03:01:00Z\",\"m0000001.example.net\","
              "\"uuid:00C0FFEE-0000-4000-8000-000000000001 serial:EX0000001\",\"added\",\"DiskDrive\","
              "\"6823194A5DF40B664B2481CF8EAAF891\",\"disk SAMPLE SM600MP0005 600 GB\","
              "\"naa.5000c50000000001\",,,\r\n");
}

TEST_F(FleetProgram, ListsTheChangesOfAllMachinesSinceATime) {
    EXPECT_EQ(
        Ask({"changes", "--since", "2026-03-03"}),
        "time                  machine               change   part                                           "
        "  "
        "identity   property                before     after\n"
        "2026-03-03T03:04:00Z  m0000004.example.net  changed  operating system Debian GNU/Linux 12 (bookworm)"
        "             TotalVirtualMemorySize  39.25 GiB  23.62 GiB\n"
        "2026-03-03T03:04:00Z  m0000004.example.net  changed  operating system Debian GNU/Linux 12 (bookworm)"
        "             TotalVisibleMemorySize  31.25 GiB  15.62 GiB\n"
        "2026-03-03T03:04:00Z  m0000004.example.net  removed  memory module 16 GiB in P2-DIMM_B1"
        "               MM0000009\n");
}

TEST_F(FleetProgram, FindsTheMachineWithoutTheStolenModule) {
    EXPECT_EQ(
        Ask({"outliers", "--model", "RackStar 2200", "--format", "csv"}),
        "\"model\",\"machine\",\"key\",\"resourceType\",\"part\",\"property\",\"value\",\"usual\","
        "\"machines\",\"of\",\"group\"\r\n"
        "\"RackStar 2200\",\"m0000004.example.net\",\"uuid:00C0FFEE-0000-4000-8000-000000000004 "
        "serial:EX0000004\",\"OperatingSystem\",\"operating system Debian GNU/Linux 12 (bookworm)\","
        "\"TotalVirtualMemorySize\",\"24772604\",\"41156604\",1,10,\"RackStar 2200\"\r\n"
        "\"RackStar 2200\",\"m0000004.example.net\",\"uuid:00C0FFEE-0000-4000-8000-000000000004 "
        "serial:EX0000004\",\"OperatingSystem\",\"operating system Debian GNU/Linux 12 (bookworm)\","
        "\"TotalVisibleMemorySize\",\"16384000\",\"32768000\",1,10,\"RackStar 2200\"\r\n"
        "\"RackStar 2200\",\"m0000004.example.net\",\"uuid:00C0FFEE-0000-4000-8000-000000000004 "
        "serial:EX0000004\",\"PhysicalMemory\",\"memory modules\",\"number\",1,2,1,10,\"RackStar 2200\"\r\n");
}

TEST_F(FleetProgram, ShowsAMachineAtATime) {
    const std::string before = Ask({"show", "m0000001.example.net", "--at", "2026-03-02"});
    EXPECT_THAT(before,
                HasSubstr("key            uuid:00C0FFEE-0000-4000-8000-000000000001 serial:EX0000001\n"
                          "known by       system UUID of the Server"));
    EXPECT_THAT(before, HasSubstr("naa.5000c50000000003"));
    const std::string after = Ask({"show", "m0000001.example.net"});
    EXPECT_THAT(after, HasSubstr("naa.5000c50000000001"));
    EXPECT_THAT(after, HasSubstr("inventories    6\n"));
    EXPECT_THAT(after, HasSubstr("collected    2026-03-03T03:01:00Z\n"));
}

TEST_F(FleetProgram, SummarizesTheFleet) {
    EXPECT_EQ(
        Ask({"summary", "--format", "json"}),
        "{\"question\":\"summary\",\"rows\":[\n"
        "{\"group\":\"models\",\"value\":\"Example Servers RackStar 2200\",\"machines\":10,\"parts\":10},\n"
        "{\"group\":\"memory\",\"value\":\"31.25 GiB\",\"machines\":9,\"parts\":9},\n"
        "{\"group\":\"memory\",\"value\":\"15.62 GiB\",\"machines\":1,\"parts\":1},\n"
        "{\"group\":\"memory modules\",\"value\":\"16 GiB DDR4 2400 MT/s EX16G2400\",\"machines\":null,"
        "\"parts\":19},\n"
        "{\"group\":\"disks\",\"value\":\"SAMPLE SM600MP0005 600 GB\",\"machines\":null,\"parts\":20},\n"
        "{\"group\":\"disks by age\",\"value\":\"less than 7 days\",\"machines\":null,\"parts\":20},\n"
        "{\"group\":\"processors\",\"value\":\"Example CPU 4310 @ "
        "2.10GHz\",\"machines\":null,\"parts\":20},\n"
        "{\"group\":\"systems\",\"value\":\"Debian GNU/Linux 12 (bookworm)\",\"machines\":10,\"parts\":10}\n"
        "]}\n");
}

TEST_F(FleetProgram, WritesJsonThatItsSchemaAllows) {
    const std::vector<std::vector<std::string>> questions{
        {"machines"},
        {"show", "m0000001.example.net"},
        {"history", "m0000001.example.net"},
        {"changes", "--since", "2026-03-01"},
        {"where", "MM0000001"},
        {"outliers"},
        {"stale", "--older-than", "2026-04-01"},
        {"summary"},
        {"sql", "SELECT 1 AS one, 0.5 AS half, NULL AS none"}};
    for (std::vector<std::string> question : questions) {
        question.insert(question.end(), {"--format", "json"});
        const std::string answer = Ask(question);
        EXPECT_TRUE(question.front() == "show" || answer.find("\"rows\":[\n") != std::string::npos)
            << question.front() << " has a row whose columns are checked";
        WriteFile(*directory_ / "answer.json", answer);
        const auto check = RunProgram(
            NOXINFO_PYTHON, {{NOXINFO_CHECK_JSON, NOXINFO_FLEET_SCHEMA, *directory_ / "answer.json"},
                             directory_->GetPath(),
                             {}});
        EXPECT_EQ(check.status, 0) << question.front() << ": " << check.standardOutput << check.standardError;
    }
}

TEST_F(FleetProgram, ListsStaleMachines) {
    EXPECT_EQ(Ask({"stale", "--older-than", "2026-03-03"}), "every machine has a newer inventory\n");
    EXPECT_THAT(Ask({"stale", "--older-than", "2026-03-03T03:01:00Z"}),
                HasSubstr("\nm0000000.example.net  "));
}

TEST_F(FleetProgram, RunsQueriesThatOnlyRead) {
    EXPECT_EQ(Ask({"sql", "SELECT count(*) AS machines FROM machine"}), "machines\n10\n");
    const auto result = Run({"sql", "DELETE FROM machine"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(Ask({"sql", "SELECT count(*) AS machines FROM machine"}), "machines\n10\n");
}

TEST_F(FleetProgram, ExportsEveryMachine) {
    const std::string lines = Ask({"export"});
    for (int i = 0; i < 10; ++i) {
        EXPECT_THAT(lines,
                    HasSubstr("{\"source\":\"uuid:00C0FFEE-0000-4000-8000-00000000000" + std::to_string(i)));
    }
    EXPECT_THAT(Ask({"export", "--format", "csv"}), HasSubstr("\"SerialNumber\",,\"MM0000001\""));
}

TEST_F(FleetProgram, PrunesAndMergesAnotherFleet) {
    EXPECT_EQ(Run({"load", "inbox"}, "other.sqlite").status, 0);
    EXPECT_EQ(Run({"merge", "m0000008.example.net", "m0000009.example.net"}, "other.sqlite").standardOutput,
              "merged m0000008.example.net into m0000009.example.net\n");
    EXPECT_EQ(Run({"sql", "SELECT count(*) AS machines FROM machine"}, "other.sqlite").standardOutput,
              "machines\n9\n");
    EXPECT_EQ(Run({"prune", "--keep", "newest:1"}, "other.sqlite").standardOutput,
              "removed 42 inventories\n");
    EXPECT_EQ(Run({"history", "m0000001.example.net"}, "other.sqlite").standardOutput, "no changes\n");
}

TEST_F(FleetProgram, PrintsTheTablesOfEachEngine) {
    EXPECT_THAT(Ask({"schema"}), HasSubstr("-- noxinfo fleet, SQLite, version 1\n\nCREATE TABLE"));
    const auto cluster = RunProgram(
        NOXINFO_FLEET, {{"schema", "--cluster", "racks", "--store", "clickhouse://localhost/fleet"}, "", {}});
    EXPECT_THAT(cluster.standardOutput, HasSubstr("Distributed(racks"));
    const auto refused = Run({"schema", "--cluster", "racks"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.standardError,
              "noxinfo fleet: --cluster requires --store clickhouse://HOST:PORT/DATABASE\n");
}

TEST_F(FleetProgram, KeepsItsDefaultStoreInTheStateDirectory) {
    const std::string state = *directory_ / "state";
    const auto load =
        RunProgram(NOXINFO_FLEET, {{"load", "inbox"}, directory_->GetPath(), {{"XDG_STATE_HOME", state}}});
    EXPECT_EQ(load.status, 0) << load.standardError;
    EXPECT_TRUE(std::filesystem::exists(state + "/noxinfo/fleet.sqlite"));
    EXPECT_EQ(std::filesystem::status(state + "/noxinfo").permissions(), std::filesystem::perms::owner_all);
}

}  // namespace
}  // namespace NVORHOST
