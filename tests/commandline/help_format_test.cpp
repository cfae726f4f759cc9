#include "commandline/help_format.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace NVORHOST {
namespace {

TEST(HelpFormat, WrapsDescriptionsAtColumn80AndGivesLongNamesALine) {
    CLI::App app{
        "A description that is longer than eighty columns and is therefore wrapped between two words.",
        "program"};
    app.formatter(std::make_shared<THelpFormat>());
    std::string value;
    app.set_help_flag("-h,--help", "Print this help and exit");
    app.add_option("--an-option-with-a-long-name", value, "Use this value")->type_name("VALUE");
    app.add_option("FILE", value, "File to write whose description is long enough to be wrapped as well")
        ->type_name("FILE");
    EXPECT_EQ(app.help(),
              "A description that is longer than eighty columns and is therefore wrapped\n"
              "between two words.\n"
              "Usage: program [OPTIONS] [FILE]\n"
              "\n"
              "Arguments:\n"
              "  FILE                      File to write whose description is long enough to be\n"
              "                            wrapped as well\n"
              "\n"
              "Options:\n"
              "  -h,--help                 Print this help and exit\n"
              "  --an-option-with-a-long-name VALUE\n"
              "                            Use this value\n"
              "\n");
}

TEST(HelpFormat, MarksArgumentsThatMayBeLeftOutOrRepeated) {
    CLI::App app{"", "program"};
    app.formatter(std::make_shared<THelpFormat>());
    app.set_help_flag();
    std::string value;
    std::vector<std::string> two, many;
    app.add_option("NAME", value, "")->required();
    app.add_option("PLACE", two, "")->expected(0, 2);
    app.add_option("FILE", many, "")->required();
    EXPECT_THAT(app.help(), testing::StartsWith("\nUsage: program NAME [PLACE...] FILE...\n"));
}

}  // namespace
}  // namespace NVORHOST
