#include "commandline/usage_check.h"

#include <gtest/gtest.h>

#include <vector>

namespace NVORHOST {
namespace {

class UsageCheck : public testing::Test {
  protected:
    UsageCheck() {
        CLI::App& collect = *program_.add_subcommand("collect", "");
        collect.add_option("--directory", text_)->type_name("DIR");
        collect.add_option("--only", text_)->type_name("NAME,...");
        collect.add_flag("--verbose", flag_);
        CLI::App& snapshot = *program_.add_subcommand("snapshot", "");
        snapshot.add_option("FILE", text_)->type_name("FILE");
    }

    std::string RefusalOf(const std::vector<std::string>& words) const {
        try {
            CheckWords(program_, words);
        } catch (const CLI::ValidationError& error) {
            return error.what();
        }
        return "accepted";
    }

    CLI::App program_{"", "noxinfo"};
    std::string text_;
    bool flag_ = false;
};

TEST_F(UsageCheck, AcceptsKnownWords) {
    EXPECT_EQ(RefusalOf({"collect", "--directory", "a", "--only=b,c", "--only", "d", "--verbose"}),
              "accepted");
    EXPECT_EQ(RefusalOf({"snapshot", "--", "--file"}), "accepted");
}

TEST_F(UsageCheck, SuggestsTheNearestCommandAndOption) {
    EXPECT_EQ(RefusalOf({"colect"}), "unknown command 'colect': did you mean collect?");
    EXPECT_EQ(RefusalOf({"collect", "--directry", "a"}),
              "unknown option --directry: did you mean --directory?");
    EXPECT_EQ(RefusalOf({"collect", "--weather"}), "unknown option --weather");
}

TEST_F(UsageCheck, NamesTheCommandThatHasTheOption) {
    EXPECT_EQ(RefusalOf({"--verbose", "collect"}),
              "option --verbose must follow the command, as in noxinfo collect --verbose");
    EXPECT_EQ(RefusalOf({"snapshot", "--verbose"}),
              "option --verbose belongs to noxinfo collect, not to noxinfo snapshot");
}

TEST_F(UsageCheck, RejectsMissingEmptyAndDuplicateValues) {
    EXPECT_EQ(RefusalOf({"collect", "--directory"}), "--directory requires a value: DIR");
    EXPECT_EQ(RefusalOf({"collect", "--directory="}), "--directory: empty value; DIR is required");
    EXPECT_EQ(RefusalOf({"collect", "--only", "a,,b"}), "--only: empty name in 'a,,b'");
    EXPECT_EQ(RefusalOf({"collect", "--directory", "a", "--directory", "b"}), "--directory is given twice");
    EXPECT_EQ(RefusalOf({"collect", "--verbose=1"}), "--verbose takes no value");
}

TEST_F(UsageCheck, RejectsEmptyAndUnexpectedArguments) {
    EXPECT_EQ(RefusalOf({"snapshot", ""}), "empty argument FILE");
    EXPECT_EQ(RefusalOf({"snapshot", "a", "b"}), "unexpected argument 'b'");
}

TEST_F(UsageCheck, FindsTheCommandAfterOptions) {
    EXPECT_EQ(FindCommand(program_, std::vector<std::string>{"--verbose", "snapshot"})->get_name(),
              "snapshot");
    EXPECT_EQ(FindCommand(program_, std::vector<std::string>{"--verbose"}), nullptr);
}

}  // namespace
}  // namespace NVORHOST
