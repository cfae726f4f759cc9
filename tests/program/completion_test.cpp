// Tests the completion scripts in the shells: by typing keys into bash and zsh, and by what fish offers.

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
#include <optional>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

// An interactive shell on a pseudo-terminal, in which noxinfo is a function that prints its arguments.
class TShell {
  public:
    TShell(const TTemporaryDirectory& directory, const std::vector<std::string>& command) {
        std::vector<const char*> words;
        words.reserve(command.size() + 1);
        for (const std::string& word : command) {
            words.push_back(word.c_str());
        }
        words.push_back(nullptr);
        process_ = ::forkpty(&terminal_, nullptr, nullptr, nullptr);
        if (process_ == 0) {
            if (::chdir(directory.GetPath().c_str()) == 0 && ::setenv("TERM", "dumb", 1) == 0 &&
                ::setenv("ZDOTDIR", ".", 1) == 0) {
                ::execvp(words.front(), const_cast<char* const*>(words.data()));
            }
            ::_exit(127);
        }
        ReadUntil("ready> ");
    }
    ~TShell() {
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
        ::close(terminal_);
    }
    TShell(const TShell&) = delete;
    TShell& operator=(const TShell&) = delete;

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
                ADD_FAILURE() << "the shell printed only " << text;
                return text;
            }
            text.append(bytes, static_cast<std::size_t>(count));
        }
        return text;
    }

    int terminal_ = -1;
    pid_t process_ = -1;
};

std::string ScriptOf(const std::string& shell) {
    return RunNoxinfo({{"completion", shell}, "", {}}).standardOutput;
}

TEST(CompletionCommand, PrintsTheScriptOfBashByDefault) {
    EXPECT_EQ(RunNoxinfo({{"completion"}, "", {}}).standardOutput, ScriptOf("bash"));
    EXPECT_NE(ScriptOf("zsh"), ScriptOf("bash"));
    const auto refused = RunNoxinfo({{"completion", "tcsh"}, "", {}});
    EXPECT_EQ(refused.status, 2);
    EXPECT_THAT(refused.standardError, testing::HasSubstr("tcsh not in {bash,zsh,fish}"));
}

class Completion : public testing::Test {
  protected:
    Completion() {
        WriteFile(directory_ / ".completion", ScriptOf("bash"));
        WriteFile(directory_ / ".bashrc",
                  "PS1='ready> '\n"
                  "source .completion\n"
                  "complete -o default -F _noxinfo sudo\n"
                  "bind 'set bell-style none' 'set enable-bracketed-paste off'\n"
                  "noxinfo() { printf '\\nwords:'; printf ' <%s>' \"$@\"; printf '\\n'; }\n"
                  "sudo() { noxinfo \"$@\"; }\n");
        bash_.emplace(directory_,
                      std::vector<std::string>{"bash", "--noprofile", "--rcfile", ".bashrc", "-i"});
    }
    std::string Complete(const std::string& line) { return bash_->Complete(line); }

    TTemporaryDirectory directory_;
    std::optional<TShell> bash_;
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

TEST_F(Completion, CompletesChecksOfLintAnywhereInAList) {
    EXPECT_EQ(Complete("noxinfo lint --only memory-tot"), "<lint> <--only> <memory-total>");
    EXPECT_EQ(Complete("noxinfo lint --skip=state,usb"), "<lint> <--skip=state,usb-speed>");
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

TEST_F(Completion, CompletesTypesAndShells) {
    EXPECT_EQ(Complete("noxinfo show --type Server,PhysicalM"), "<show> <--type> <Server,PhysicalMemory>");
    EXPECT_EQ(Complete("noxinfo diff --ignore LocalF"), "<diff> <--ignore> <LocalFileSystem>");
    EXPECT_EQ(Complete("noxinfo completion z"), "<completion> <zsh>");
}

class ZshCompletion : public testing::Test {
  protected:
    ZshCompletion() {
        std::filesystem::create_directory(directory_ / "functions");
        WriteFile(directory_ / "functions/_noxinfo", ScriptOf("zsh"));
        WriteFile(directory_ / ".zshrc",
                  "PS1='ready> '\n"
                  "unsetopt prompt_cr prompt_sp beep\n"
                  "fpath=($PWD/functions $fpath)\n"
                  "autoload -Uz compinit && compinit -u -D\n"
                  "unset zle_bracketed_paste\n"
                  "noxinfo() { printf '\\nwords:'; printf ' <%s>' \"$@\"; printf '\\n'; }\n");
        zsh_.emplace(directory_, std::vector<std::string>{"zsh", "-d", "-i"});
    }
    std::string Complete(const std::string& line) { return zsh_->Complete(line); }

    TTemporaryDirectory directory_;
    std::optional<TShell> zsh_;
};

TEST_F(ZshCompletion, CompletesCommandsAndTheirOptions) {
    EXPECT_EQ(Complete("noxinfo snap"), "<snapshot>");
    EXPECT_EQ(Complete("noxinfo help capt"), "<help> <capture>");
    EXPECT_EQ(Complete("noxinfo --vers"), "<--version>");
    EXPECT_EQ(Complete("noxinfo capture --re"), "<capture> <--redact>");
    EXPECT_EQ(Complete("noxinfo snapshot --redac"), "<snapshot> <--redac>");
}

TEST_F(ZshCompletion, CompletesValues) {
    EXPECT_EQ(Complete("noxinfo collect --only comp"), "<collect> <--only> <computer-system>");
    EXPECT_EQ(Complete("noxinfo collect --skip=board,comp"), "<collect> <--skip=board,computer-system>");
    EXPECT_EQ(Complete("noxinfo show --type Server,PhysicalM"), "<show> <--type> <Server,PhysicalMemory>");
    EXPECT_EQ(Complete("noxinfo show --format=cyc"), "<show> <--format=cyclonedx>");
    EXPECT_EQ(Complete("noxinfo validate --format j"), "<validate> <--format> <json>");
    EXPECT_EQ(Complete("noxinfo completion fi"), "<completion> <fish>");
}

TEST_F(ZshCompletion, CompletesFilesAndFolders) {
    WriteFile(directory_ / "my saved machine.xml", "");
    std::filesystem::create_directory(directory_ / "other place");
    EXPECT_EQ(Complete("noxinfo collect --namespace my"), "<collect> <--namespace> <my saved machine.xml>");
    EXPECT_EQ(Complete("noxinfo show my"), "<show> <my saved machine.xml>");
    EXPECT_EQ(Complete("noxinfo diff x my"), "<diff> <x> <my saved machine.xml>");
    EXPECT_EQ(Complete("noxinfo collect --directory=oth"), "<collect> <--directory=other place>");
}

TEST_F(ZshCompletion, AlsoWorksWhenTheScriptIsSourced) {
    WriteFile(directory_ / "sourced", ScriptOf("zsh"));
    EXPECT_EQ(Complete("compdef -d noxinfo; source ./sourced; noxinfo x"), "<x>");
    EXPECT_EQ(Complete("noxinfo snap"), "<snapshot>");
}

class FishCompletion : public testing::Test {
  protected:
    FishCompletion() { WriteFile(directory_ / "noxinfo.fish", ScriptOf("fish")); }

    // Returns the words that fish offers for the end of the line, without their descriptions.
    std::vector<std::string> Offers(const std::string& line) const {
        const auto result =
            RunProgram("fish", {{"--no-config", "-c", "source noxinfo.fish; complete -C \"$argv[1]\"", line},
                                directory_.GetPath(),
                                {{"HOME", directory_.GetPath()}}});
        EXPECT_EQ(result.standardError, "");
        std::vector<std::string> offers;
        std::istringstream lines(result.standardOutput);
        for (std::string offer; std::getline(lines, offer);) {
            offers.push_back(offer.substr(0, offer.find('\t')));
        }
        return offers;
    }

    TTemporaryDirectory directory_;
};

TEST_F(FishCompletion, OffersCommandsAndTheirOptions) {
    EXPECT_THAT(Offers("noxinfo colle"), UnorderedElementsAre("collect", "collectors"));
    EXPECT_THAT(Offers("noxinfo help capt"), ElementsAre("capture"));
    EXPECT_THAT(Offers("noxinfo --vers"), ElementsAre("--version"));
    EXPECT_THAT(Offers("noxinfo capture --re"), ElementsAre("--redact"));
    EXPECT_THAT(Offers("noxinfo snapshot --redac"), IsEmpty());
    EXPECT_THAT(Offers("noxinfo show sna"), IsEmpty());
}

TEST_F(FishCompletion, OffersValues) {
    EXPECT_THAT(Offers("noxinfo collect --only comp"), ElementsAre("computer-system"));
    EXPECT_THAT(Offers("noxinfo collect --only board,comp"), ElementsAre("board,computer-system"));
    EXPECT_THAT(Offers("noxinfo show --type Server,PhysicalM"), ElementsAre("Server,PhysicalMemory"));
    EXPECT_THAT(Offers("noxinfo lint --skip state,usb"), ElementsAre("state,usb-speed"));
    EXPECT_THAT(Offers("noxinfo show --format cyc"), ElementsAre("cyclonedx"));
    EXPECT_THAT(Offers("noxinfo validate --format=j"), ElementsAre("--format=json"));
    EXPECT_THAT(Offers("noxinfo completion z"), ElementsAre("zsh"));
    EXPECT_THAT(Offers("noxinfo collect --kel-id "), IsEmpty());
}

TEST_F(FishCompletion, OffersFilesAndFolders) {
    WriteFile(directory_ / "my-machine.xml", "");
    std::filesystem::create_directory(directory_ / "my-place");
    EXPECT_THAT(Offers("noxinfo show my-"), UnorderedElementsAre("my-machine.xml", "my-place/"));
    EXPECT_THAT(Offers("noxinfo collect --result my-m"), ElementsAre("my-machine.xml"));
    EXPECT_THAT(Offers("noxinfo collect --directory my-"), ElementsAre("my-place/"));
    EXPECT_THAT(Offers("noxinfo collectors my-"), IsEmpty());
}

}  // namespace
}  // namespace NVORHOST
