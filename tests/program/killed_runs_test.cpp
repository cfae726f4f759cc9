// Concurrent and killed runs never leave a pair of documents of different runs.

#include "program_run.h"
#include "rounds.h"
#include "temporary_directory.h"
#include "waiting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <deque>
#include <iostream>
#include <random>
#include <string>
#include <vector>

namespace NVORHOST {
namespace {

using TNames = std::vector<std::string>;

const std::string smallServer = NOXINFO_TEST_DATA "/small-server.xml";
const TNames inventory{"hardwareinventory.xml.gz", "systeminformation.xml.gz"};

/// The number of a run is the second of its time, which both documents contain.
std::vector<std::string> CollectArguments(int number) {
    const std::string digits = std::to_string(100 + number % 60).substr(1);
    return {
        "collect",        "--namespace", smallServer, "--local-time", "202402291345" + digits + ".000000+060",
        "--reachability", "no",          "--kel-id",  "K0000001",     "--no-sync"};
}

std::string TimeIn(const std::string& path) {
    const std::string text = ReadCompressedFile(path);
    const std::size_t start = text.find('T', text.find("timestamp=")) + 1;
    return text.substr(start, 8);
}

void ExpectPair(const TTemporaryDirectory& directory) {
    EXPECT_EQ(TimeIn(directory / inventory[0]), TimeIn(directory / inventory[1]));
}

TEST(ParallelRuns, LeaveTheDocumentsOfOneRun) {
    constexpr int runsAtATime = 8;
    const TTemporaryDirectory directory;
    for (int round = 0; round < Rounds(4); ++round) {
        std::deque<TRunningProgram> runs;
        for (int number = 0; number < runsAtATime; ++number) {
            runs.emplace_back(NOXINFO_PROGRAM,
                              TProgramRun{CollectArguments(number), directory.GetPath(), {}});
        }
        for (TRunningProgram& run : runs) {
            const auto result = run.Wait();
            EXPECT_EQ(result.status, 0) << result.standardError;
        }
        ExpectPair(directory);
        EXPECT_EQ(directory.GetNames(), inventory);
    }
}

// The next run does not write these documents; it only cleans up.
TEST(KilledRuns, HaveTheirMovesCompletedByTheNextRun) {
    const TTemporaryDirectory directory;
    ASSERT_EQ(RunNoxinfo({CollectArguments(0), directory.GetPath(), {}}).status, 0);
    std::mt19937 random(1);
    int kills = 0;
    for (int round = 1; round <= Rounds(20); ++round) {
        TRunningProgram run(NOXINFO_PROGRAM, {CollectArguments(round), directory.GetPath(), {}});
        ::usleep(static_cast<useconds_t>(random() % 25'000));
        run.Send(SIGKILL);
        kills += run.Wait().isKilled ? 1 : 0;
        const auto next = RunNoxinfo(
            {{"snapshot", "s.xml", "--no-sync", "--namespace", smallServer}, directory.GetPath(), {}});
        EXPECT_EQ(next.status, 0) << next.standardError;
        ExpectPair(directory);
        EXPECT_EQ(directory.GetNames(), (TNames{inventory[0], "s.xml", inventory[1]}));
    }
    EXPECT_GT(kills, 0);
    std::cout << kills << " kills\n";
}

// Each half of the runs has its own host name and process namespace, and obtains every lock.
constexpr char runsOfAHost[] = R"(
hostname "$1" || exit 125
failures=0
for round in $(seq "$2"); do
    for number in 1 2; do
        LD_PRELOAD=$3 NOXINFO_FAULT=lock:1+:DONE NOXINFO_FAULT_PATHS=$PWD "$4" collect --namespace "$5" \
            --reachability no --kel-id K1 --no-sync >/dev/null || echo failed &
    done
    wait
done
)";

TEST(SeveralHosts, NeverRemoveEachOthersFiles) {
    const TTemporaryDirectory directory;
    std::deque<TRunningProgram> hosts;
    for (const char* name : {"alpha", "beta"}) {
        hosts.emplace_back(
            "unshare", TProgramRun{{"--user", "--map-root-user", "--uts", "--pid", "--fork", "--mount-proc",
                                    "sh", "-c", runsOfAHost, "sh", name, std::to_string(Rounds(5)),
                                    NOXINFO_IO_FAULTS, NOXINFO_PROGRAM, smallServer},
                                   directory.GetPath(),
                                   {}});
    }
    for (TRunningProgram& host : hosts) {
        const auto result = host.Wait();
        if (result.status == 125 || result.standardError.starts_with("unshare:")) {
            GTEST_SKIP() << "a host name cannot be set here: " << result.standardError;
        }
        EXPECT_EQ(result.standardOutput, "");
        EXPECT_EQ(result.standardError, "");
    }
    EXPECT_EQ(directory.GetNames(), inventory);
}

// The run of the first host has finished its documents and blocks on the pipe of its result.
constexpr char runOfAHost[] = R"(
hostname "$1" || exit 125
LD_PRELOAD=$2 NOXINFO_FAULT=lock:1+:DONE NOXINFO_FAULT_PATHS=$PWD exec "$3" collect --namespace "$4" \
    --reachability no --kel-id K1 --no-sync --result "$5" >/dev/null
)";

TProgramRun RunOnHost(const std::string& host, const TTemporaryDirectory& directory,
                      const std::string& result) {
    return {{"--user", "--map-root-user", "--uts", "--pid", "--fork", "--mount-proc", "sh", "-c", runOfAHost,
             "sh", host, NOXINFO_IO_FAULTS, NOXINFO_PROGRAM, smallServer, result},
            directory.GetPath(),
            {}};
}

TEST(SeveralHosts, DoNotDisturbARunOnAnotherHost) {
    const TTemporaryDirectory directory;
    const TTemporaryDirectory elsewhere;
    ASSERT_EQ(::mkfifo((elsewhere / "pipe").c_str(), S_IRUSR | S_IWUSR), 0);
    if (RunProgram("unshare", RunOnHost("beta", directory, "/dev/null")).status != 0) {
        GTEST_SKIP() << "a host name cannot be set here";
    }
    for (int round = 0; round < Rounds(2); ++round) {
        TRunningProgram waiting("unshare", RunOnHost("alpha", directory, elsewhere / "pipe"));
        ASSERT_TRUE(WaitUntil([&] { return HasUnfinished(directory.GetPath(), inventory[1]); }));
        EXPECT_EQ(RunProgram("unshare", RunOnHost("beta", directory, "/dev/null")).status, 0);
        EXPECT_NE(ReadFile(elsewhere / "pipe"), "");
        const auto result = waiting.Wait();
        EXPECT_EQ(result.status, 0) << result.standardError;
        EXPECT_EQ(directory.GetNames(), inventory);
    }
}

}  // namespace
}  // namespace NVORHOST
