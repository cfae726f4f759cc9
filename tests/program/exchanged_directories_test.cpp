// An attacker with write permission in the target directory replaces the private directory of a run by a
// directory of links. No run may write to their targets.

#include "program_run.h"
#include "rounds.h"
#include "temporary_directory.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

namespace NVORHOST {
namespace {

const std::string smallServer = NOXINFO_TEST_DATA "/small-server.xml";
constexpr const char* writtenNames[] = {"hardwareinventory.xml.gz", "systeminformation.xml.gz", "result.xml",
                                        "s.xml", "m.tar.xz"};

enum class EAttack { onceAtOnce, onceAfterAMoment, againAndAgain };

/// Replaces each private directory that appears by the directory "trap", from construction to destruction.
class TAttacker {
  public:
    TAttacker(const TTemporaryDirectory& directory, EAttack attack)
        : directory_(::open(directory.GetPath().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)),
          events_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)),
          attack_(attack) {
        ::inotify_add_watch(events_, directory.GetPath().c_str(), IN_CREATE);
        thread_ = std::thread([this] { Attack(); });
    }
    ~TAttacker() {
        isDone_ = true;
        thread_.join();
        ::close(events_);
        ::close(directory_);
    }
    TAttacker(const TAttacker&) = delete;
    TAttacker& operator=(const TAttacker&) = delete;

    int CountExchanges() const { return exchanges_; }

  private:
    void Attack() {
        std::string victim;
        bool isWaiting = true;
        while (!isDone_) {
            const std::string created = ReadEvent();
            if (created.starts_with(".noxinfo-")) {
                victim = created;
                isWaiting = true;
            }
            if (victim.empty() || !isWaiting) {
                continue;
            }
            if (attack_ == EAttack::onceAfterAMoment) {
                ::usleep(static_cast<useconds_t>(exchanges_ % 20) * 500);
            }
            const bool isExchanged =
                ::renameat2(directory_, "trap", directory_, victim.c_str(), RENAME_EXCHANGE) == 0;
            exchanges_ += isExchanged ? 1 : 0;
            isWaiting = attack_ == EAttack::againAndAgain;
        }
    }

    std::string ReadEvent() const {
        alignas(inotify_event) std::array<char, 4096> bytes{};
        if (::read(events_, bytes.data(), bytes.size()) <= 0) {
            return {};
        }
        const auto* const event = reinterpret_cast<const inotify_event*>(bytes.data());
        return event->len == 0 ? "" : static_cast<const char*>(event->name);
    }

    int directory_;
    int events_;
    EAttack attack_;
    std::atomic<bool> isDone_ = false;
    std::atomic<int> exchanges_ = 0;
    std::thread thread_;
};

struct TCase {
    const char* name;
    std::vector<std::string> arguments;
};

void PrintTo(const TCase& tested, std::ostream* out) {
    *out << tested.name;
}

class TExchangedDirectory : public testing::TestWithParam<TCase> {
  protected:
    static void MakeTrap(const TTemporaryDirectory& directory, const std::string& victim) {
        std::filesystem::create_directory(directory / "trap");
        for (const char* name : writtenNames) {
            std::filesystem::create_symlink(victim, directory / "trap" + "/" + name);
        }
    }
};

TEST_P(TExchangedDirectory, WritesNoFileElsewhere) {
    int exchanges = 0;
    for (int round = 0; round < Rounds(6); ++round) {
        const TTemporaryDirectory elsewhere;
        WriteFile(elsewhere / "victim", "precious");
        ASSERT_EQ(::chmod((elsewhere / "victim").c_str(), 0644), 0);
        const TTemporaryDirectory directory;
        MakeTrap(directory, elsewhere / "victim");
        {
            const TAttacker attacker(directory, static_cast<EAttack>(round % 3));
            const auto result = RunNoxinfo({GetParam().arguments, directory.GetPath(), {}});
            EXPECT_LE(result.status, 1) << result.standardError;
            exchanges += attacker.CountExchanges();
        }
        struct stat status {};
        ASSERT_EQ(::stat((elsewhere / "victim").c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777U, 0644U) << "round " << round;
        EXPECT_EQ(ReadFile(elsewhere / "victim"), "precious") << "round " << round;
    }
    EXPECT_GT(exchanges, 0);
    std::cout << exchanges << " exchanges\n";
}

const std::vector<TCase> commands = {
    {"Collect", {"collect", "--namespace", smallServer, "--reachability", "no", "--kel-id", "K1"}},
    {"CollectInIsolation",
     {"collect", "--namespace", smallServer, "--reachability", "no", "--kel-id", "K1", "--isolate"}},
    {"Result", {"collect", "--namespace", smallServer, "--reachability", "no", "--result", "result.xml"}},
    {"Snapshot", {"snapshot", "--namespace", smallServer, "s.xml"}},
    {"Capture", {"capture", "--only", "computer-system", "m.tar.xz"}},
};

INSTANTIATE_TEST_SUITE_P(Of, TExchangedDirectory, testing::ValuesIn(commands),
                         [](const auto& value) { return std::string(value.param.name); });

}  // namespace
}  // namespace NVORHOST
