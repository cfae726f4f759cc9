// Sends to a real nginx that fails in every way: nothing is lost, and nothing arrives twice.

#include "local_http_server.h"
#include "nginx_server.h"
#include "program_run.h"
#include "sanitized.h"
#include "sending/spool.h"
#include "temporary_directory.h"
#include "waiting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <deque>
#include <filesystem>
#include <iostream>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace NVORHOST {
namespace {

using ::testing::HasSubstr;
using TWords = std::vector<std::string>;

constexpr int exitDone = 0;
constexpr int exitUnsent = 4;
const std::string smallServer = NOXINFO_TEST_DATA "/small-server.xml";

/// The bytes of files by their paths.
using TFiles = std::map<std::string, std::string>;

// Reads the files of a folder and below; paths are relative to it.
TFiles ReadTree(const std::string& folder) {
    TFiles files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file()) {
            files[std::filesystem::relative(entry.path(), folder)] = ReadFile(entry.path());
        }
    }
    return files;
}

// Returns random bytes, of which large files repeat a part.
std::string RandomBytes(std::mt19937& random, std::size_t size) {
    constexpr std::size_t partSize = 4099;
    std::string part(std::min(size, partSize), ' ');
    std::ranges::generate(part, [&] { return static_cast<char>(random()); });
    std::string bytes;
    while (bytes.size() < size) {
        bytes.append(part, 0, size - bytes.size());
    }
    return bytes;
}

// A spool with runs of one machine, and what the server must have in the end.
class TMachine {
  public:
    explicit TMachine(std::string name, unsigned seed = 1)
        : name_(std::move(name)), random_(seed), spool_(directory_ / "spool") {}

    void AddRun(const std::string& date, const TWords& names, std::size_t size = 2000) {
        std::vector<TOutgoingFile> files;
        for (const std::string& name : names) {
            files.push_back({name, RandomBytes(random_, size)});
            expected_[name_ + "/" + date + "/" + name] = files.back().bytes;
        }
        spool_.Add({"https://unused.example/", {name_, "host", date, "000000"}}, files, /*syncs=*/false);
    }

    TWords GetArguments(const std::string& site, const TWords& more) const {
        TWords arguments{"send", "--send", site + "%{machine}/%{date}/", directory_ / "spool"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }

    TFiles GetWaiting() const {
        TFiles waiting;
        for (const TWaitingRun& run : spool_.List().runs) {
            for (const TWaitingFile& file : run.files) {
                waiting[name_ + "/" + run.record.values.date + "/" + file.name] =
                    spool_.Read(run, file.name).value_or("");
            }
        }
        return waiting;
    }
    const TFiles& GetExpected() const { return expected_; }
    std::string GetPath() const { return directory_ / "spool"; }

  private:
    TTemporaryDirectory directory_;
    std::string name_;
    std::mt19937 random_;
    TFiles expected_;
    TSpool spool_;
};

// Counts what was lost and what is on the server besides the files that were sent.
struct TAccount {
    std::size_t tried = 0;
    std::size_t lost = 0;     // neither on the server nor waiting, with the right bytes
    std::size_t doubled = 0;  // on the server under another name or with other bytes

    void Add(const TFiles& expected, const TFiles& waiting, const TFiles& stored) {
        for (const auto& file : expected) {
            ++tried;
            lost += Has(waiting, file) || Has(stored, file) ? 0 : 1;
        }
        for (const auto& file : stored) {
            doubled += Has(expected, file) ? 0 : 1;
        }
    }

  private:
    static bool Has(const TFiles& files, const TFiles::value_type& file) {
        const auto found = files.find(file.first);
        return found != files.end() && found->second == file.second;
    }
};

class TSendingToNginx : public testing::Test {
  protected:
    TWords Credentials() const {
        return {"--send-ca", GetCertificates() / "servers.pem", "--send-certificate", client_};
    }

    TProgramResult Send(const TMachine& machine, TWords more = {},
                        const std::string& host = "localhost") const {
        const TWords credentials = Credentials();
        more.insert(more.begin(), credentials.begin(), credentials.end());
        return RunNoxinfo({machine.GetArguments(nginx_.GetSite(host), more), "", {}});
    }

    TProgramRun SendingOf(const TMachine& machine) const {
        return {machine.GetArguments(nginx_.GetSite(), Credentials()), "", {}};
    }

    // Requires that nothing is lost now, that a second sending to a sound server delivers the rest, and that
    // nothing is lost or doubled then.
    void ExpectRecovery(const std::string& fault, const TMachine& machine) {
        TAccount during;
        during.Add(machine.GetExpected(), machine.GetWaiting(), ReadTree(nginx_.GetFiles()));
        EXPECT_EQ(during.lost, 0U) << fault;
        nginx_.Start();
        const auto result = Send(machine);
        EXPECT_EQ(result.status, exitDone) << result.standardError << nginx_.GetErrors();
        ExpectArrived(fault, machine);
    }

    void ExpectArrived(const std::string& fault, const TMachine& machine) {
        TAccount account;
        account.Add(machine.GetExpected(), machine.GetWaiting(), ReadTree(nginx_.GetFiles()));
        EXPECT_EQ(account.lost, 0U) << fault;
        EXPECT_EQ(account.doubled, 0U) << fault;
        EXPECT_TRUE(machine.GetWaiting().empty()) << fault;
        EXPECT_EQ(ReadTree(nginx_.GetFiles()), machine.GetExpected()) << fault;
        Print(fault, account);
    }

    static void Print(const std::string& fault, const TAccount& account) {
        std::cout << "| " << fault << " | " << account.tried << " | " << account.lost << " | "
                  << account.doubled << " |\n";
    }

    TNginx nginx_;
    TMachine machine_{"machine-1"};
    std::string client_ = GetCertificates().MakeClient("machine-1");
    const TWords documents_{"hardwareinventory.xml.gz", "result.xml", "snapshot.xml.gz",
                            "systeminformation.xml.gz"};
};

TEST_F(TSendingToNginx, DeliversToASoundServer) {
    nginx_.Start();
    machine_.AddRun("2026-11-21", documents_);
    machine_.AddRun("2026-11-22", documents_);
    const auto result = Send(machine_);
    EXPECT_EQ(result.status, exitDone) << result.standardError << nginx_.GetErrors();
    EXPECT_EQ(result.standardOutput, "Sent        8 files of 2 runs, 16,000 bytes, to " +
                                         nginx_.GetSite().substr(0, nginx_.GetSite().size() - 1) + "\n");
    EXPECT_EQ(
        nginx_.GetRequests(),
        (TWords{"201 PUT /machine-1/2026-11-21/hardwareinventory.xml.gz",
                "201 PUT /machine-1/2026-11-21/result.xml", "201 PUT /machine-1/2026-11-21/snapshot.xml.gz",
                "201 PUT /machine-1/2026-11-21/systeminformation.xml.gz",
                "201 PUT /machine-1/2026-11-22/hardwareinventory.xml.gz",
                "201 PUT /machine-1/2026-11-22/result.xml", "201 PUT /machine-1/2026-11-22/snapshot.xml.gz",
                "201 PUT /machine-1/2026-11-22/systeminformation.xml.gz"}));
    ExpectArrived("none", machine_);
    EXPECT_EQ(Send(machine_).standardOutput, "Nothing waits to be sent.\n");
}

TEST_F(TSendingToNginx, ReplacesAFileOfTheSameNameByTheNewerOne) {
    nginx_.Start();
    for (int run = 0; run < 3; ++run) {
        machine_.AddRun("2026-11-22", documents_);
    }
    EXPECT_EQ(Send(machine_).status, exitDone);
    ExpectArrived("three runs on one day", machine_);
    EXPECT_EQ(nginx_.GetRequests().size(), 12U);
}

TEST_F(TSendingToNginx, SurvivesAMissingServer) {
    machine_.AddRun("2026-11-22", documents_);
    const auto result = Send(machine_, {"--send-time", "1"});
    EXPECT_EQ(result.status, exitUnsent);
    EXPECT_THAT(result.standardError, HasSubstr("hardwareinventory.xml.gz of 2026-11-22: Failed to connect"));
    EXPECT_EQ(machine_.GetWaiting(), machine_.GetExpected());
    ExpectRecovery("no server", machine_);
}

// The sender that is under way delivers to the server that comes back.
TEST_F(TSendingToNginx, SurvivesAServerThatIsKilledInTheMiddle) {
    constexpr std::size_t largeBytes = 24'000'000;
    nginx_.Start();
    machine_.AddRun("2026-11-21", documents_);
    machine_.AddRun("2026-11-22", {"large-1", "large-2"}, largeBytes);
    TRunningProgram sender = StartNoxinfo(SendingOf(machine_));
    int kills = 0;
    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(WaitUntil([this] {
            return !std::filesystem::is_empty(nginx_.GetUploads()) ||
                   ReadTree(nginx_.GetFiles()).size() == machine_.GetExpected().size();
        }));
        kills += std::filesystem::is_empty(nginx_.GetUploads()) ? 0 : 1;
        nginx_.Kill();
        TAccount during;
        during.Add(machine_.GetExpected(), machine_.GetWaiting(), ReadTree(nginx_.GetFiles()));
        EXPECT_EQ(during.lost, 0U);
        EXPECT_EQ(during.doubled, 0U);
        std::filesystem::remove_all(nginx_.GetUploads());
        std::filesystem::create_directory(nginx_.GetUploads());
        nginx_.Start();
    }
    const auto result = sender.Wait();
    EXPECT_EQ(result.status, exitDone) << result.standardError;
    EXPECT_GT(kills, 0);
    ExpectArrived("server killed in the middle, " + std::to_string(kills) + " times", machine_);
}

// Only root can mount the small file system.
TEST_F(TSendingToNginx, SurvivesAFullDisk) {
    machine_.AddRun("2026-11-21", {"small"});
    machine_.AddRun("2026-11-22", {"large"}, 1'000'000);
    const std::string disk = std::filesystem::path(nginx_.GetFiles()).parent_path();
    if (::mount("noxinfo-test", disk.c_str(), "tmpfs", 0, "size=256k") != 0) {
        GTEST_SKIP() << "a file system cannot be mounted here";
    }
    std::filesystem::create_directory(nginx_.GetFiles());
    std::filesystem::create_directory(nginx_.GetUploads());
    nginx_.Start();
    const auto result = Send(machine_, {"--send-time", "2"});
    const auto stored = ReadTree(nginx_.GetFiles());
    nginx_.Kill();
    ASSERT_EQ(::umount(disk.c_str()), 0);
    EXPECT_EQ(result.status, exitUnsent);
    EXPECT_THAT(result.standardError,
                HasSubstr("large of 2026-11-22: the server has failed (HTTP status 500)"));
    TAccount account;
    account.Add(machine_.GetExpected(), machine_.GetWaiting(), stored);
    EXPECT_EQ(account.lost, 0U);
    EXPECT_EQ(account.doubled, 0U);
    Print("disk of the server full", account);
    EXPECT_EQ(stored.size(), 1U);
    nginx_.Start();
    EXPECT_EQ(Send(machine_).status, exitDone);
    EXPECT_TRUE(machine_.GetWaiting().empty());
}

TEST_F(TSendingToNginx, SurvivesAnswersOfFailure) {
    machine_.AddRun("2026-11-22", documents_);
    std::size_t requests = 0;
    for (const char* status : {"500", "503", "507", "429"}) {
        nginx_.Start({.first = std::string("if ($request_method = PUT) { return ") + status + "; }"});
        const auto result = Send(machine_, {"--send-time", "2"});
        EXPECT_EQ(result.status, exitUnsent);
        EXPECT_THAT(result.standardError, HasSubstr(std::string("(HTTP status ") + status + ")"));
        EXPECT_GE(nginx_.GetRequests().size(), requests + 2) << status;
        requests = nginx_.GetRequests().size();
        EXPECT_EQ(machine_.GetWaiting(), machine_.GetExpected());
    }
    ExpectRecovery("answers 500, 503, 507, 429", machine_);
}

TEST_F(TSendingToNginx, KeepsRefusedFiles) {
    machine_.AddRun("2026-11-22", documents_);
    nginx_.Start({.first = "if ($uri ~ snapshot) { return 413; }"});
    const auto result = Send(machine_);
    EXPECT_EQ(result.status, exitUnsent);
    EXPECT_EQ(result.standardError,
              "noxinfo: not sent: snapshot.xml.gz of 2026-11-22: the server refuses it (HTTP status 413)\n");
    EXPECT_EQ(machine_.GetWaiting().size(), 1U);
    ExpectRecovery("one file refused", machine_);
}

TEST_F(TSendingToNginx, SurvivesAServerThatDoesNotAnswerInTime) {
    nginx_.Start();
    machine_.AddRun("2026-11-22", documents_);
    nginx_.Send(SIGSTOP);
    const auto result = Send(machine_, {"--send-time", "1"});
    nginx_.Send(SIGCONT);
    EXPECT_EQ(result.status, exitUnsent);
    EXPECT_THAT(result.standardError, HasSubstr("timed out"));
    EXPECT_EQ(machine_.GetWaiting(), machine_.GetExpected());
    ExpectRecovery("server does not answer in time", machine_);
}

TEST_F(TSendingToNginx, SurvivesASlowServer) {
    nginx_.Start();
    machine_.AddRun("2026-11-22", {"large"}, 24'000'000);
    TRunningProgram sender = StartNoxinfo(SendingOf(machine_));
    for (int pause = 0; pause < 10; ++pause) {
        ::usleep(20'000);
        nginx_.Send(SIGSTOP);
        ::usleep(50'000);
        nginx_.Send(SIGCONT);
    }
    EXPECT_EQ(sender.Wait().status, exitDone);
    ExpectArrived("slow server", machine_);
}

TEST_F(TSendingToNginx, FollowsNoRedirects) {
    TLocalHttpServer other("HTTP/1.1 201 Created\r\nContent-Length: 0\r\n\r\n");
    machine_.AddRun("2026-11-22", documents_);
    for (const char* status : {"301", "302", "307", "308"}) {
        nginx_.Start({.first = std::string("if ($request_method = PUT) { return ") + status + " " +
                               other.GetUrl() + "$uri; }"});
        const auto result = Send(machine_);
        EXPECT_EQ(result.status, exitUnsent);
        EXPECT_EQ(
            result.standardError,
            std::string("noxinfo: not sent: hardwareinventory.xml.gz of 2026-11-22: the server redirects "
                        "to another place, which is not followed (HTTP status ") +
                status + ")\n");
    }
    EXPECT_EQ(other.TakeRequest(), "");
    ExpectRecovery("redirects", machine_);
}

TEST_F(TSendingToNginx, SurvivesNonsense) {
    machine_.AddRun("2026-11-22", documents_);
    for (const std::string nonsense :
         {"", "SSH-2.0-server\r\n", "HTTP/1.1 200\r\nContent-Length: 9\r\n\r\n"}) {
        const TLocalHttpServer server(nonsense);
        const std::string site = server.GetUrl().substr(0, server.GetUrl().rfind('/') + 1);
        const auto result = RunNoxinfo({machine_.GetArguments(site, {"--send-time", "0.4"}), "", {}});
        EXPECT_EQ(result.status, exitUnsent) << nonsense;
        EXPECT_EQ(machine_.GetWaiting(), machine_.GetExpected());
    }
    ExpectRecovery("nonsense", machine_);
}

TEST_F(TSendingToNginx, RefusesServersWithoutValidCertificates) {
    machine_.AddRun("2026-11-22", documents_);
    struct TRow {
        std::string server;
        std::string authority;
        std::string problem;
    };
    for (const TRow& row :
         {TRow{"server", "others", "unable to get local issuer certificate"},
          TRow{"expired", "servers", "certificate has expired"},
          TRow{"other-host", "servers", "no alternative certificate subject name matches"}}) {
        nginx_.Start({.server = row.server});
        const TWords more{"--send-ca", GetCertificates() / (row.authority + ".pem"), "--send-certificate",
                          client_};
        const auto result = RunNoxinfo({machine_.GetArguments(nginx_.GetSite(), more), "", {}});
        EXPECT_EQ(result.status, exitUnsent);
        EXPECT_THAT(result.standardError, HasSubstr(row.problem));
    }
    nginx_.Start();
    const auto system =
        RunNoxinfo({machine_.GetArguments(nginx_.GetSite(), {"--send-certificate", client_}), "", {}});
    EXPECT_EQ(system.status, exitUnsent);
    EXPECT_THAT(system.standardError, HasSubstr("unable to get local issuer certificate"));
    EXPECT_EQ(nginx_.GetRequests(), TWords{});
    ExpectRecovery("certificates of the server: unknown, expired, other host", machine_);
}

TEST_F(TSendingToNginx, ReportsRefusedCertificatesOfTheMachine) {
    nginx_.Start();
    machine_.AddRun("2026-11-22", {"a"});
    const std::string ca = GetCertificates() / "servers.pem";
    struct TRow {
        TWords options;
        std::string problem;
    };
    const std::string refused = "a of 2026-11-22: the server refuses it (HTTP status ";
    for (const TRow& row :
         {TRow{{"--send-ca", ca}, refused + "400)"},
          TRow{{"--send-ca", ca, "--send-certificate", GetCertificates().MakeClient("machine-1", "others")},
               refused + "400)"},
          TRow{{"--send-ca", ca, "--send-certificate", GetCertificates().MakeClient("machine-2")},
               refused + "403)"}}) {
        const auto result = RunNoxinfo({machine_.GetArguments(nginx_.GetSite(), row.options), "", {}});
        EXPECT_EQ(result.status, exitUnsent);
        EXPECT_THAT(result.standardError, HasSubstr(row.problem));
    }
    EXPECT_TRUE(ReadTree(nginx_.GetFiles()).empty());
    ExpectRecovery("certificates of the machine: none, unknown, other machine", machine_);
}

TEST_F(TSendingToNginx, WritesOnlyBelowTheNameOfTheMachine) {
    nginx_.Start();
    machine_.AddRun("2026-11-22", {"a"});
    EXPECT_EQ(Send(machine_).status, exitDone);
    for (const char* path : {"%{machine}/", "%{machine}/%{date}/%{time}/", "%{date}/%{machine}/"}) {
        machine_.AddRun("2026-11-22", {"a"});
        TWords arguments = machine_.GetArguments(nginx_.GetSite(), Credentials());
        arguments[2] = nginx_.GetSite() + path;
        EXPECT_EQ(RunNoxinfo({arguments, "", {}}).status, exitUnsent) << path;
    }
    EXPECT_EQ(ReadTree(nginx_.GetFiles()).size(), 1U);
}

TEST_F(TSendingToNginx, TakesTurnsInOneSpool) {
    nginx_.Start();
    machine_.AddRun("2026-11-21", documents_);
    machine_.AddRun("2026-11-22", documents_);
    std::deque<TRunningProgram> senders;
    for (int i = 0; i < 8; ++i) {
        senders.emplace_back(NOXINFO_PROGRAM, SendingOf(machine_));
    }
    for (TRunningProgram& sender : senders) {
        const auto result = sender.Wait();
        EXPECT_EQ(result.status, exitDone) << result.standardError;
    }
    EXPECT_EQ(nginx_.GetRequests().size(), 8U);
    ExpectArrived("8 senders of one spool at once", machine_);
}

// Each sender is killed soon after the server has answered some of its requests.
TEST_F(TSendingToNginx, SurvivesKilledSenders) {
    constexpr int rounds = 30;
    nginx_.Start();
    std::mt19937 random(4);
    int kills = 0;
    for (int round = 0; round < rounds; ++round) {
        machine_.AddRun("run-" + std::to_string(round), documents_, 20'000);
        TRunningProgram sender = StartNoxinfo(SendingOf(machine_));
        const std::size_t enough = nginx_.GetRequests().size() + random() % 4;
        ASSERT_TRUE(WaitUntil(
            [&] { return nginx_.GetRequests().size() >= enough || machine_.GetWaiting().empty(); }));
        ::usleep(static_cast<useconds_t>(random() % 5'000));
        sender.Send(SIGKILL);
        kills += sender.Wait().isKilled ? 1 : 0;
        TAccount during;
        during.Add(machine_.GetExpected(), machine_.GetWaiting(), ReadTree(nginx_.GetFiles()));
        ASSERT_EQ(during.lost, 0U);
        ASSERT_EQ(during.doubled, 0U);
    }
    EXPECT_GT(kills, 0);
    const auto result = Send(machine_);
    EXPECT_EQ(result.status, exitDone) << result.standardError;
    ExpectArrived("sender killed, " + std::to_string(kills) + " times", machine_);
}

TEST_F(TSendingToNginx, DeliversFromManyMachinesAtOnce) {
    constexpr int machineCount = isSanitized ? 40 : 200;  // the sanitizer's runtime takes much memory
    std::deque<TMachine> machines;
    std::string tokens;
    const TTemporaryDirectory directory;
    for (int i = 0; i < machineCount; ++i) {
        const std::string name = "machine-" + std::to_string(i);
        machines.emplace_back(name, static_cast<unsigned>(i)).AddRun("2026-11-22", documents_);
        const std::string token = std::string(60, 'a') + std::to_string(1000 + i);
        tokens += "\"Bearer " + token + "\" \"" + name + "\";\n";
        WriteFile(directory / name, token);
        std::filesystem::permissions(directory / name, std::filesystem::perms::owner_read);
    }
    nginx_.Start({.proof = EClientProof::token, .tokens = tokens});
    std::deque<TRunningProgram> senders;
    for (int i = 0; i < machineCount; ++i) {
        const TWords more{"--send-ca", GetCertificates() / "servers.pem", "--send-token-file",
                          directory / ("machine-" + std::to_string(i))};
        const TMachine& machine = machines[static_cast<std::size_t>(i)];
        senders.emplace_back(NOXINFO_PROGRAM,
                             TProgramRun{machine.GetArguments(nginx_.GetSite(), more), "", {}});
    }
    TFiles expected;
    TFiles waiting;
    for (int i = 0; i < machineCount; ++i) {
        const auto result = senders[static_cast<std::size_t>(i)].Wait();
        EXPECT_EQ(result.status, exitDone) << result.standardError;
        expected.merge(std::map(machines[static_cast<std::size_t>(i)].GetExpected()));
        waiting.merge(machines[static_cast<std::size_t>(i)].GetWaiting());
    }
    EXPECT_EQ(waiting.size(), 0U);
    EXPECT_EQ(ReadTree(nginx_.GetFiles()), expected);
    TAccount account;
    account.Add(expected, waiting, ReadTree(nginx_.GetFiles()));
    Print(std::to_string(machineCount) + " machines at once", account);
}

TEST_F(TSendingToNginx, ReportsRefusedTokens) {
    nginx_.Start({.proof = EClientProof::token, .tokens = "\"Bearer good\" \"machine-1\";\n"});
    machine_.AddRun("2026-11-22", {"a"});
    const TTemporaryDirectory directory;
    const std::string tokenFile = directory / "token";
    const TWords more{"--send-ca", GetCertificates() / "servers.pem", "--send-token-file", tokenFile};
    WriteFile(tokenFile, "bad\n");
    std::filesystem::permissions(tokenFile, std::filesystem::perms(0600));
    const auto result = RunNoxinfo({machine_.GetArguments(nginx_.GetSite(), more), "", {}});
    EXPECT_EQ(result.status, exitUnsent);
    EXPECT_THAT(result.standardError, HasSubstr("(HTTP status 403)"));
    WriteFile(tokenFile, "good\n");
    EXPECT_EQ(RunNoxinfo({machine_.GetArguments(nginx_.GetSite(), more), "", {}}).status, exitDone);
    ExpectArrived("token: wrong", machine_);
}

// The arguments of a run of collect on the given day of November 2026.
TWords CollectArguments(const std::string& day, const std::string& url, const TWords& more) {
    TWords arguments{"collect",  "--namespace",  smallServer,
                     "--kel-id", "K1",           "--reachability",
                     "no",       "--local-time", "202611" + day + "063000.000000+060",
                     "--spool",  "spool",        "--send",
                     url};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

TEST_F(TSendingToNginx, KeepsRunsOfCollectUntilTheNextOne) {
    const TTemporaryDirectory directory;
    const std::string machine = "4C4C4544-0042-3510-8054-B9C04F503231";
    client_ = GetCertificates().MakeClient(machine);
    const std::string url = nginx_.GetSite() + "%{machine}/%{date}/";
    TWords more = Credentials();
    more.insert(more.end(), {"--send-time", "0.3"});
    const auto first = RunNoxinfo({CollectArguments("21", url, more), directory.GetPath(), {}});
    EXPECT_EQ(first.status, exitUnsent);
    EXPECT_THAT(first.standardOutput, HasSubstr("\nWaiting     4 files of 1 run in spool\n"));
    const std::string earlier = ReadFile(directory / "hardwareinventory.xml.gz");
    nginx_.Start();
    const auto second = RunNoxinfo({CollectArguments("22", url, Credentials()), directory.GetPath(), {}});
    EXPECT_EQ(second.status, exitDone) << second.standardError;
    EXPECT_THAT(second.standardOutput, HasSubstr("\nSent        8 files of 2 runs, "));
    EXPECT_EQ(nginx_.GetRequests().front(), "201 PUT /" + machine + "/2026-11-21/hardwareinventory.xml.gz");
    const auto stored = ReadTree(nginx_.GetFiles());
    ASSERT_EQ(stored.size(), 8U);
    EXPECT_EQ(stored.at(machine + "/2026-11-21/hardwareinventory.xml.gz"), earlier);
    EXPECT_EQ(stored.at(machine + "/2026-11-22/hardwareinventory.xml.gz"),
              ReadFile(directory / "hardwareinventory.xml.gz"));
    EXPECT_EQ(stored.at(machine + "/2026-11-22/systeminformation.xml.gz"),
              ReadFile(directory / "systeminformation.xml.gz"));
    EXPECT_THAT(stored.at(machine + "/2026-11-22/result.xml"), HasSubstr("KELSG_CADAT"));
    EXPECT_EQ(TTemporaryDirectory().GetNames(), TWords{});
    EXPECT_EQ(directory.GetNames(),
              (TWords{"hardwareinventory.xml.gz", "spool", "systeminformation.xml.gz"}));
}

// A run of collect appears in the spool with all of its files or not at all.
TEST_F(TSendingToNginx, DeliversWholeRunsOfKilledCollections) {
    constexpr int rounds = 20;
    const TTemporaryDirectory directory;
    const std::string machine = "4C4C4544-0042-3510-8054-B9C04F503231";
    client_ = GetCertificates().MakeClient(machine);
    const std::string url = nginx_.GetSite() + "%{machine}/%{date}/";
    nginx_.Start();
    std::mt19937 random(5);
    int kills = 0;
    for (int round = 1; round <= rounds; ++round) {
        const std::string day = std::to_string(100 + round).substr(1);
        TRunningProgram run(NOXINFO_PROGRAM,
                            TProgramRun{CollectArguments(day, url, Credentials()), directory.GetPath(), {}});
        const std::size_t requests = nginx_.GetRequests().size();
        const bool isLate = round % 2 != 0;
        ASSERT_TRUE(WaitUntil([&] {
            return HasUnfinished(directory.GetPath(), "systeminformation.xml.gz") ||
                   nginx_.GetRequests().size() > requests;
        }));
        ASSERT_TRUE(WaitUntil([&] { return !isLate || nginx_.GetRequests().size() > requests; }));
        ::usleep(static_cast<useconds_t>(random() % 10'000));
        run.Send(SIGKILL);
        kills += run.Wait().isKilled ? 1 : 0;
    }
    EXPECT_GT(kills, 0);
    const auto last = RunNoxinfo({CollectArguments("28", url, Credentials()), directory.GetPath(), {}});
    EXPECT_EQ(last.status, exitDone) << last.standardError;
    EXPECT_EQ(TSpool(directory / "spool").List().runs.size(), 0U);
    std::map<std::string, TWords> runs;
    for (const auto& [path, bytes] : ReadTree(nginx_.GetFiles())) {
        const std::filesystem::path parts(path);
        EXPECT_GT(bytes.size(), 0U) << path;
        runs[parts.parent_path().filename()].push_back(parts.filename());
    }
    for (const auto& [date, names] : runs) {
        EXPECT_EQ(names, documents_) << date;
    }
    std::cout << kills << " of " << rounds << " collections killed, " << runs.size() << " runs delivered\n";
    EXPECT_EQ(runs.count("2026-11-28"), 1U);
}

}  // namespace
}  // namespace NVORHOST
