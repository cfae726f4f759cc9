// Loads the reader from its module, as programs do.
#include "vorhost/cimxml/load.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

namespace NVORHOST {
namespace {

// A file in a temporary directory, which is removed on destruction.
class TTemporaryFile {
  public:
    explicit TTemporaryFile(const std::string& text) {
        std::string pattern = (std::filesystem::temp_directory_path() / "cimxml-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no temporary directory");
        }
        directory_ = pattern;
        std::ofstream(GetPath()) << text;
    }
    TTemporaryFile(const TTemporaryFile&) = delete;
    TTemporaryFile& operator=(const TTemporaryFile&) = delete;
    ~TTemporaryFile() { std::filesystem::remove_all(directory_); }

    std::string GetPath() const { return (directory_ / "namespace.xml").string(); }
    std::string GetDirectory() const { return directory_.string(); }

  private:
    std::filesystem::path directory_;
};

std::string LoadError(const std::string& path) {
    TMemoryNamespace target;
    try {
        LoadNamespace(path, target);
    } catch (const TDocumentError& error) {
        return error.what();
    }
    return "loaded";
}

constexpr char document[] =
    "<CIM><DECLARATION><DECLGROUP><VALUE.OBJECT><INSTANCE CLASSNAME=\"C\">"
    "<PROPERTY NAME=\"P\" TYPE=\"uint8\"><VALUE>200</VALUE></PROPERTY>"
    "</INSTANCE></VALUE.OBJECT></DECLGROUP></DECLARATION></CIM>";

bool IsLoaded(const std::string& library) {
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        if (line.find(library) != std::string::npos) {
            return true;
        }
    }
    return false;
}

TEST(LoadModule, LoadsTheXmlLibraryOnlyForADocument) {
    const TTemporaryFile file(document);
    EXPECT_FALSE(IsLoaded("libxml2"));
    TMemoryNamespace target;
    LoadNamespace(file.GetPath(), target);
    EXPECT_TRUE(IsLoaded("libxml2"));
}

TEST(LoadModule, ReadsAFile) {
    const TTemporaryFile file(document);
    TMemoryNamespace target;
    LoadNamespace(file.GetPath(), target);
    ASSERT_NE(target.FindClass("C"), nullptr);
    ASSERT_EQ(target.FindClass("C")->GetInstances().size(), 1U);
    EXPECT_EQ(*target.FindClass("C")->GetInstances().front()->Find("P"), TCIMValue(std::uint8_t{200}));
}

TEST(LoadModule, ReadsAFileOfManyReads) {
    const std::string value(1'000'000, 'x');
    std::string text = document;
    text.replace(text.find("200"), 3, value);
    text.replace(text.find("uint8"), 5, "string");
    const TTemporaryFile file(text);
    TMemoryNamespace target;
    LoadNamespace(file.GetPath(), target);
    EXPECT_EQ(*target.FindClass("C")->GetInstances().front()->Find("P"), TCIMValue(value));
}

TEST(LoadModule, ThrowsErrorsThatTheProgramCanCatchByType) {
    std::string text = document;
    text.replace(text.find("200"), 3, "256");
    const TTemporaryFile file(text);
    EXPECT_EQ(LoadError(file.GetPath()),
              file.GetPath() + ":1: class C, property P: \"256\" is out of range for uint8");
}

TEST(LoadModule, ReportsWhyAFileCannotBeRead) {
    const TTemporaryFile file(document);
    EXPECT_EQ(LoadError("/nonexistent/x.xml"),
              "/nonexistent/x.xml: cannot be read: No such file or directory");
    EXPECT_EQ(LoadError(file.GetDirectory()), file.GetDirectory() + ": cannot be read: Is a directory");
}

TEST(LoadModule, ReadsAPipe) {
    EXPECT_EQ(LoadError("/dev/null"), "/dev/null:1: truncated document");
}

}  // namespace
}  // namespace NVORHOST
