// The layout of the help texts: 80 columns, with descriptions wrapped between words.
#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace NVORHOST {

class THelpFormat : public CLI::Formatter {
  public:
    THelpFormat();

    std::string make_option(const CLI::Option* option, bool isPositional) const override;
    std::string make_option_usage(const CLI::Option* option) const override;
    std::string make_subcommand(const CLI::App* command) const override;
    std::string make_description(const CLI::App* app) const override;
};

}  // namespace NVORHOST
