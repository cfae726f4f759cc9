// The pages of `noxinfo report` for the documents of a machine of this folder and for a saved namespace.
// NOXINFO_BLESS=1 writes the expected pages, which tools/check-pages opens in a browser.
#include "tests/program/program_run.h"
#include "tests/program/temporary_directory.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace NVORHOST {
namespace {

namespace fs = std::filesystem;

const fs::path expectedPages = fs::path(NOXINFO_REPORTS) / "pages";

std::string Report(const std::vector<std::string>& options, const std::string& directory) {
    std::vector<std::string> arguments{"report", "--output", "-"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const auto result = RunNoxinfo({arguments, directory, {}});
    EXPECT_EQ(result.status, 0) << result.standardError;
    return result.standardOutput;
}

void ExpectPage(const std::string& page, const std::string& name) {
    if (std::getenv("NOXINFO_BLESS") != nullptr) {
        std::ofstream(expectedPages / name, std::ios::binary) << page;
    }
    EXPECT_EQ(page, ReadFile((expectedPages / name).string()));
}

TEST(Reports, ShowTheDocumentsOfALaptop) {
    ExpectPage(Report({"laptop-nvme-only"}, NOXINFO_MACHINES), "laptop-nvme-only.html");
}

TEST(Reports, ShowTheNamespaceOfAServer) {
    ExpectPage(Report({"rack-server.xml"}, (fs::path(NOXINFO_REPORTS) / "data").string()),
               "rack-server.html");
}

}  // namespace
}  // namespace NVORHOST
