#include "commandline/completion_script.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace NVORHOST {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

class CompletionScript : public testing::Test {
  protected:
    CompletionScript() {
        program_.set_help_flag("--help", "");
        CLI::App& collect = *program_.add_subcommand("collect", "");
        collect.set_help_flag();
        collect.add_option("--directory", text_)->type_name("DIR");
        collect.add_option("--log-file", text_)->type_name("FILE");
        collect.add_option("--only", text_)->type_name("NAME,...");
        collect.add_option("--reachability", text_)->type_name("yes|network|no");
        collect.add_option("--deadline", text_)->type_name("SECONDS");
        collect.add_flag("--verbose", flag_);
        CLI::App& snapshot = *program_.add_subcommand("snapshot", "");
        snapshot.set_help_flag();
        snapshot.add_option("file", text_)->type_name("FILE");
        snapshot.add_option("--format", text_)->type_name("xml|json");
        collect.add_option("--format", text_)->type_name("csv|text");
        CLI::App& help = *program_.add_subcommand("help", "");
        help.set_help_flag();
        help.add_option("command", text_)->type_name("COMMAND");
    }

    std::string Write(const char* shell = "bash") const {
        std::ostringstream out;
        TCompletionTable table = MakeCompletionTable(program_);
        table.lists = {{"collectors", {"computer-system", "operating-system"}}};
        WriteCompletionScript(table, shell, out);
        return out.str();
    }

    CLI::App program_{"", "noxinfo"};
    std::string text_;
    bool flag_ = false;
};

TEST_F(CompletionScript, ListsCommandsAndCollectors) {
    EXPECT_THAT(Write(), HasSubstr("\n_noxinfo_commands='collect snapshot help'\n"));
    EXPECT_THAT(Write(), HasSubstr("\n_noxinfo_collectors='computer-system operating-system'\n"));
}

TEST_F(CompletionScript, MapsEveryOptionWithAValueToItsKind) {
    EXPECT_THAT(Write(), HasSubstr("  case $1 in\n"
                                   "    'collect --format') kind='csv text' ;;\n"
                                   "    'snapshot --format') kind='xml json' ;;\n"
                                   "    *' --deadline') kind='nothing' ;;\n"
                                   "    *' --directory') kind='folders' ;;\n"
                                   "    *' --log-file') kind='files' ;;\n"
                                   "    *' --only') kind='list:collectors' ;;\n"
                                   "    *' --reachability') kind='yes network no' ;;\n"
                                   "    *) return 1 ;;\n"
                                   "  esac\n"));
}

TEST_F(CompletionScript, ListsOptionsAndKindOfArgumentOfEachCommand) {
    EXPECT_THAT(Write(),
                HasSubstr("  case $1 in\n"
                          "    collect) options='--directory --log-file --only --reachability --deadline "
                          "--verbose --format' kind='nothing' ;;\n"
                          "    snapshot) options='--format' kind='files' ;;\n"
                          "    help) options='' kind='commands' ;;\n"
                          "    *) options='--help' kind='commands' ;;\n"
                          "  esac\n"));
}

TEST_F(CompletionScript, IsAScriptThatRegistersItself) {
    EXPECT_THAT(Write(), StartsWith("# bash completion for noxinfo, printed by 'noxinfo completion'\n"));
    EXPECT_THAT(Write(), EndsWith("\ncomplete -F _noxinfo noxinfo\n"));
}

TEST_F(CompletionScript, QuotesDescriptionsForZsh) {
    program_.add_subcommand("look", "It's a look: [A\\B]")->set_help_flag();
    program_.get_subcommand("look")->add_flag("--long", flag_, "All of it: 'every' [thing]");
    EXPECT_THAT(Write("zsh"), HasSubstr("    'look:It'\\''s a look\\: [A\\\\B]'\n"));
    EXPECT_THAT(Write("zsh"), HasSubstr(" '--long[All of it\\: '\\''every'\\'' \\[thing\\]]'"));
    EXPECT_THAT(Write("zsh"), HasSubstr(" '--reachability=[]:yes|network|no:(yes network no)'"));
    EXPECT_THAT(Write("zsh"), StartsWith("#compdef noxinfo\n"));
}

TEST_F(CompletionScript, QuotesDescriptionsForFish) {
    program_.add_subcommand("look", "It's a look: A\\B")->set_help_flag();
    EXPECT_THAT(Write("fish"), HasSubstr(" -a look -d 'It\\'s a look: A\\\\B'\n"));
    EXPECT_THAT(
        Write("fish"),
        HasSubstr("-n '__noxinfo_is_command collect' -l reachability -r -f -a 'yes network no' -d ''\n"));
}

}  // namespace
}  // namespace NVORHOST
