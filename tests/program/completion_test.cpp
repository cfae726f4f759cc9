// Tests the completion script by typing keys into an interactive bash.

#include "program_run.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <regex>
#include <string>

namespace NVORHOST {
namespace {

// An interactive bash on a pseudo-terminal, in which noxinfo and sudo are functions that print their
// arguments.
class TBash {
  public:
    explicit TBash(const TTemporaryDirectory& directory) {
        WriteFile(directory / ".completion", RunNoxinfo({{"completion"}, "", {}}).standardOutput);
        WriteFile(directory / ".bashrc",
                  "PS1='ready> '\n"
                  "source .completion\n"
                  "complete -o default -F _noxinfo sudo\n"
                  "bind 'set bell-style none' 'set enable-bracketed-paste off'\n"
                  "noxinfo() { printf '\\nwords:'; printf ' <%s>' \"$@\"; printf '\\n'; }\n"
                  "sudo() { noxinfo \"$@\"; }\n");
        process_ = ::forkpty(&terminal_, nullptr, nullptr, nullptr);
        if (process_ == 0) {
            if (::chdir(directory.GetPath().c_str()) == 0 && ::setenv("TERM", "dumb", 1) == 0) {
                ::execlp("bash", "bash", "--noprofile", "--rcfile", ".bashrc", "-i", nullptr);
            }
            ::_exit(127);
        }
        ReadUntil("ready> ");
    }
    ~TBash() {
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
        ::close(terminal_);
    }
    TBash(const TBash&) = delete;
    TBash& operator=(const TBash&) = delete;

    /// Types `line`, Tab and Enter; returns the arguments that the command receives.
    std::string Complete(const std::string& line) {
        Type(line + "\t");
        Type("\n");
        const std::string printed = ReadUntil("words:.*\n[^\n]*ready> ");
        std::smatch words;
        std::regex_search(printed, words, std::regex("words: ([^\r\n]*)"));
        return words.size() > 1 ? words[1].str() : printed;
    }

  private:
    void Type(const std::string& keys) {
        ASSERT_EQ(::write(terminal_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
    }

    std::string ReadUntil(const std::string& pattern) {
        constexpr int patienceMilliseconds = 20'000;
        const std::regex expected(std::regex_replace(pattern, std::regex("\\."), "[\\s\\S]"));
        std::string text;
        char bytes[4096];
        pollfd readable{terminal_, POLLIN, 0};
        while (!std::regex_search(text, expected)) {
            const bool isReady = ::poll(&readable, 1, patienceMilliseconds) == 1;
            const ssize_t count = isReady ? ::read(terminal_, bytes, sizeof bytes) : -1;
            if (count <= 0) {
                ADD_FAILURE() << "bash printed only " << text;
                return text;
            }
            text.append(bytes, static_cast<std::size_t>(count));
        }
        return text;
    }

    int terminal_ = -1;
    pid_t process_ = -1;
};

class Completion : public testing::Test {
  protected:
    std::string Complete(const std::string& line) { return bash_.Complete(line); }

    TTemporaryDirectory directory_;
    TBash bash_{directory_};
};

TEST_F(Completion, CompletesCommands) {
    EXPECT_EQ(Complete("noxinfo colle"), "<collect>");  // as far as collect and collectors agree
    EXPECT_EQ(Complete("noxinfo snap"), "<snapshot>");
    EXPECT_EQ(Complete("noxinfo help capt"), "<help> <capture>");
}

TEST_F(Completion, CompletesOnlyOptionsOfTheCommand) {
    EXPECT_EQ(Complete("noxinfo collect --dir"), "<collect> <--directory>");
    EXPECT_EQ(Complete("noxinfo snapshot --dir"), "<snapshot> <--dir>");
    EXPECT_EQ(Complete("noxinfo capture --re"), "<capture> <--redact>");
    EXPECT_EQ(Complete("noxinfo --vers"), "<--version>");
}

TEST_F(Completion, CompletesCollectorsAnywhereInAList) {
    EXPECT_EQ(Complete("noxinfo collect --only comp"), "<collect> <--only> <computer-system>");
    EXPECT_EQ(Complete("noxinfo collect --only=comp"), "<collect> <--only=computer-system>");
    EXPECT_EQ(Complete("noxinfo collect --skip board,comp"), "<collect> <--skip> <board,computer-system>");
    EXPECT_EQ(Complete("noxinfo collect --skip=board,disk,comp"),
              "<collect> <--skip=board,disk,computer-system>");
}

TEST_F(Completion, DoesNotCompleteDirectoriesAsCollectors) {
    std::filesystem::create_directory(directory_ / "computer-system");
    EXPECT_EQ(Complete("noxinfo collect --only comp"), "<collect> <--only> <computer-system>");
}

TEST_F(Completion, CompletesChoices) {
    EXPECT_EQ(Complete("noxinfo collect --reachability net"), "<collect> <--reachability> <network>");
    EXPECT_EQ(Complete("noxinfo collect --reachability=ye"), "<collect> <--reachability=yes>");
}

TEST_F(Completion, CompletesTheChoicesOfTheCommand) {
    EXPECT_EQ(Complete("noxinfo show --format cyc"), "<show> <--format> <cyclonedx>");
    EXPECT_EQ(Complete("noxinfo validate --format j"), "<validate> <--format> <json>");
}

TEST_F(Completion, CompletesNamesWithBlanks) {
    WriteFile(directory_ / "my saved machine.xml", "");
    std::filesystem::create_directory(directory_ / "other place");
    EXPECT_EQ(Complete("noxinfo collect --namespace my"), "<collect> <--namespace> <my saved machine.xml>");
    EXPECT_EQ(Complete("noxinfo collect --namespace=my"), "<collect> <--namespace=my saved machine.xml>");
    EXPECT_EQ(Complete("noxinfo snapshot my"), "<snapshot> <my saved machine.xml>");
    EXPECT_EQ(Complete("noxinfo collect --directory oth"), "<collect> <--directory> <other place/>");
    EXPECT_EQ(Complete("noxinfo collect --directory my"), "<collect> <--directory> <my>");
    EXPECT_EQ(Complete("noxinfo collect --directory other\\ place --kel"),
              "<collect> <--directory> <other place> <--kel-id>");
}

TEST_F(Completion, WorksAfterSudo) {
    EXPECT_EQ(Complete("sudo noxinfo snap"), "<noxinfo> <snapshot>");
    EXPECT_EQ(Complete("sudo -u root noxinfo collect --only=comp"),
              "<-u> <root> <noxinfo> <collect> <--only=computer-system>");
    EXPECT_EQ(Complete("sudo /opt/bin/noxinfo collect --dir"), "</opt/bin/noxinfo> <collect> <--directory>");
}

TEST_F(Completion, CompletesNothingForOtherValues) {
    WriteFile(directory_ / "K0000001", "");
    EXPECT_EQ(Complete("noxinfo collect --kel-id K0"), "<collect> <--kel-id> <K0>");
}

}  // namespace
}  // namespace NVORHOST
