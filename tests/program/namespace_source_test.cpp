#include "program/namespace_source.h"

#include "temporary_directory.h"
#include "vorhost/run/run_failure.h"
#include "vorhost/services/core_logger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace NVORHOST {
namespace {

using testing::Contains;
using testing::IsEmpty;
using testing::StartsWith;
using testing::ThrowsMessage;

TSourceOptions FromFile(const std::string& path) {
    TSourceOptions options;
    options.namespaceFile = path;
    return options;
}

TSourceOptions FromTree(const TTemporaryDirectory& tree, const char* collector) {
    TSourceOptions options;
    options.machine.sysroot = tree.GetPath();
    options.machine.collectors.only = {collector};
    return options;
}

// A captured tree, and the lines that the logger receives.
class NamespaceSourceOfATree : public testing::Test {
  protected:
    NamespaceSourceOfATree() {
        std::filesystem::create_directories(tree_ / "sys/class/dmi/id");
        WriteFile(tree_ / "sys/class/dmi/id/product_name", "Server 9\n");
        TCoreLogger::Get().AddSink([this](int, const std::string& line) { lines_.push_back(line); });
    }
    ~NamespaceSourceOfATree() override { TCoreLogger::Get().ClearSinks(); }

    void WriteAnswers(const std::string& text) { WriteFile(tree_ / "noxinfo-system.txt", text); }

    TTemporaryDirectory tree_;
    std::vector<std::string> lines_;
};

TEST(ObtainNamespace, LoadsAFile) {
    const TNamespaceSource source = ObtainNamespace(FromFile(NOXINFO_TEST_DATA "/small-server.xml"));
    EXPECT_EQ(source.origin, "file " NOXINFO_TEST_DATA "/small-server.xml");
    EXPECT_EQ(source.collected->FindClass("KELSG_ComputerSystem")->GetInstances().size(), 1U);
    EXPECT_FALSE(source.outcome.HasGaps());
    EXPECT_EQ(source.localTime, std::nullopt);
}

TEST(ObtainNamespace, ReportsAFileThatCannotBeLoaded) {
    EXPECT_THAT([] { ObtainNamespace(FromFile("/no/such/file.xml")); },
                ThrowsMessage<TRunFailure>(StartsWith("/no/such/file.xml: ")));
}

TEST_F(NamespaceSourceOfATree, CollectsTheChosenCollectors) {
    WriteAnswers("");
    const TNamespaceSource source = ObtainNamespace(FromTree(tree_, "computer-system"));
    EXPECT_EQ(source.origin, "tree " + tree_.GetPath());
    EXPECT_EQ(source.collected->FindClass("KELSG_ComputerSystem")->GetInstances().size(), 1U);
    EXPECT_EQ(source.collected->FindClass("KELSG_Processor"), nullptr);
    EXPECT_EQ(source.localTime, std::nullopt);
}

TEST_F(NamespaceSourceOfATree, HasTheTimeOfTheCapture) {
    WriteAnswers("LocalTime 20240301120000.000000+060\n");
    const TNamespaceSource source = ObtainNamespace(FromTree(tree_, "computer-system"));
    ASSERT_TRUE(source.localTime.has_value());
    EXPECT_EQ(source.localTime->ToString(), "20240301120000.000000+060");
}

TEST_F(NamespaceSourceOfATree, LogsAndCountsADeniedSource) {
    WriteAnswers("denied read /sys/class/dmi/id/product_serial\n");
    const TNamespaceSource source = ObtainNamespace(FromTree(tree_, "computer-system"));
    EXPECT_EQ(source.outcome.deniedSources, std::vector<std::string>{"/sys/class/dmi/id/product_serial"});
    EXPECT_THAT(lines_, Contains("noxinfo-computer-system: permission denied: "
                                 "/sys/class/dmi/id/product_serial"));
}

TEST_F(NamespaceSourceOfATree, LogsNothingForACompleteCollection) {
    WriteAnswers("");
    EXPECT_FALSE(ObtainNamespace(FromTree(tree_, "computer-system")).outcome.HasGaps());
    EXPECT_THAT(lines_, IsEmpty());
}

TEST_F(NamespaceSourceOfATree, RecordsWhatTheCollectorsRead) {
    WriteAnswers("");
    TRecordedMachine machine;
    const TNamespaceSource source = RecordMachine(FromTree(tree_, "computer-system"), machine);
    EXPECT_EQ(source.collected, nullptr);
    EXPECT_EQ(source.origin, "tree " + tree_.GetPath());
    const TCaptureTree::TNode* const name = machine.files.GetTree().Find("/sys/class/dmi/id/product_name");
    ASSERT_NE(name, nullptr);
    EXPECT_EQ(name->bytes, "Server 9\n");
}

TEST_F(NamespaceSourceOfATree, RejectsADirectoryThatIsNotATree) {
    const TTemporaryDirectory empty;
    EXPECT_THAT([&] { ObtainNamespace(FromTree(empty, "computer-system")); },
                ThrowsMessage<TRunFailure>(StartsWith("cannot collect from " + empty.GetPath() + ": ")));
}

}  // namespace
}  // namespace NVORHOST
