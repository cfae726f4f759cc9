#include "program/help_format.h"

#include <gtest/gtest.h>

#include <memory>

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

}  // namespace
}  // namespace NVORHOST
