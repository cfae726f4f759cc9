// The installed schema accepts the documents of all machines and rejects another form.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace NINVENTORY {
namespace {

namespace fs = std::filesystem;

int Xmllint(const std::string& arguments) {
    return std::system(
        ("xmllint --nonet --noout --schema " NOXINFO_SCHEMA " " + arguments + " >/dev/null 2>&1").c_str());
}

TEST(Schema, AcceptsTheDocumentsOfEveryMachine) {
    std::string files;
    for (const auto& machine : fs::directory_iterator(NOXINFO_MACHINES)) {
        if (machine.is_directory()) {
            files += " " + (machine.path() / "expected.xml").string();
            files += " " + (machine.path() / "expected-system.xml").string();
        }
    }
    ASSERT_NE(files, "");
    EXPECT_EQ(Xmllint(files), 0);
}

TEST(Schema, RejectsAnotherForm) {
    const fs::path path =
        fs::temp_directory_path() / ("noxinfo-schema-" + std::to_string(::getpid()) + ".xml");
    std::ifstream good(fs::path(NOXINFO_MACHINES) / "nvme-laptop/expected.xml");
    std::string text{std::istreambuf_iterator<char>(good), {}};
    text.replace(text.find("<Value>"), 7, "<Worth>");
    text.replace(text.find("</Value>"), 8, "</Worth>");
    std::ofstream(path) << text;
    EXPECT_NE(Xmllint(path.string()), 0);
    fs::remove(path);
}

}  // namespace
}  // namespace NINVENTORY
