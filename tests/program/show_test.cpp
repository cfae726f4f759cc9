// `noxinfo show`: its sources and its output files.
#include "program_run.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace NVORHOST {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

const std::string smallServer = NOXINFO_TEST_DATA "/small-server.xml";
const std::string smallHardware = NOXINFO_TEST_DATA "/small-server.hardware.xml";
const std::string smallSystem = NOXINFO_TEST_DATA "/small-server.system.xml";

class Show : public testing::Test {
  protected:
    TProgramResult Run(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "show");
        return RunNoxinfo({arguments, folder_.GetPath(), {}});
    }
    std::string Output(const std::vector<std::string>& arguments) const {
        const auto result = Run(arguments);
        EXPECT_EQ(result.status, 0) << result.standardError;
        return result.standardOutput;
    }
    std::string Refusal(const std::vector<std::string>& arguments) const {
        const auto result = Run(arguments);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.standardOutput, "");
        return result.standardError;
    }
    void Collect(const std::vector<std::string>& more) const {
        std::vector<std::string> arguments{"collect",  "--namespace",  smallServer,
                                           "--kel-id", "K1",           "--reachability",
                                           "no",       "--local-time", "20240229134500.000000+060"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const auto result = RunNoxinfo({arguments, folder_.GetPath(), {}});
        ASSERT_EQ(result.status, 0) << result.standardError;
    }

    TTemporaryDirectory folder_;
};

TEST_F(Show, WritesADocumentAgainByteForByte) {
    EXPECT_EQ(Output({"--format", "xml", smallHardware}), ReadFile(smallHardware));
    EXPECT_EQ(Output({"--format", "xml", smallSystem}), ReadFile(smallSystem));
}

TEST_F(Show, ReadsCompressedDocumentsAndTheirFolder) {
    Collect({});
    EXPECT_EQ(Output({"--format", "xml", "hardwareinventory.xml.gz"}), ReadFile(smallHardware));
    EXPECT_EQ(Output({"--format", "xml", "."}), ReadFile(smallHardware) + ReadFile(smallSystem));
}

TEST_F(Show, ReadsTheDocumentInASavedResult) {
    Collect({"--result", "result.xml"});
    EXPECT_EQ(Output({"--format", "xml", "result.xml"}), ReadFile(smallHardware));
}

TEST_F(Show, ReadsStandardInput) {
    const auto result = RunProgram("sh", {{"-c", std::string("\"$1\" show --format xml - <\"$2\""), "sh",
                                           NOXINFO_PROGRAM, smallHardware},
                                          "",
                                          {}});
    EXPECT_EQ(result.status, 0) << result.standardError;
    EXPECT_EQ(result.standardOutput, ReadFile(smallHardware));
}

TEST_F(Show, PrefersTheSavedNamespaceOfAFolder) {
    Collect({"--snapshot", "machine.xml.gz"});
    EXPECT_THAT(Output({"--format", "ndjson", "."}),
                AllOf(HasSubstr("\"kind\":\"namespace\""), Not(HasSubstr("\"kind\":\"hardware\""))));
}

TEST_F(Show, GivesANamespaceTheIdentifiersOfItsDocument) {
    const auto idsOf = [&](const std::string& source) {
        return Output({"--format", "ndjson", "--type", "Server,OperatingSystem,Processor,PhysicalMemory",
                       "--property", "ObjectType", source});
    };
    std::string fromDocument = idsOf(smallHardware);
    std::string fromNamespace = idsOf(smallServer);
    for (std::string* text : {&fromDocument, &fromNamespace}) {
        std::string ids;
        for (std::size_t at = text->find("\"resourceId\""); at != std::string::npos;
             at = text->find("\"resourceId\"", at + 1)) {
            ids += text->substr(at, 48) + "\n";
        }
        *text = ids;
    }
    EXPECT_NE(fromDocument, "");
    for (std::size_t at = 0; at < fromDocument.size(); at += 49) {
        EXPECT_THAT(fromNamespace, HasSubstr(fromDocument.substr(at, 48)));
    }
}

TEST_F(Show, FiltersResourcesAndProperties) {
    const std::string shown =
        Output({"--format", "ndjson", "--type", "Processor", "--property", "MaxClockSpeed", "--where",
                "ObjectType=Processor", "--where", "DeviceID~^CPU[0-9]$", smallHardware});
    EXPECT_THAT(shown, HasSubstr("\"properties\":{\"MaxClockSpeed\":{\"value\":2500,\"unit\":\"MHz\"}}"));
    EXPECT_THAT(shown, Not(HasSubstr("\"Name\"")));
    EXPECT_EQ(Output({"--format", "ndjson", "--where", "Name~^no such$", smallHardware}), "");
}

TEST_F(Show, WritesAFileOnlyIfAllSourcesCanBeRead) {
    Output({"--format", "xml", "--output", "copy.xml", smallHardware});
    EXPECT_EQ(ReadFile(folder_ / "copy.xml"), ReadFile(smallHardware));
    EXPECT_EQ(Refusal({"--format", "json", "--output", "copy.xml", smallHardware, "missing.xml"}),
              "noxinfo: missing.xml: cannot be read: No such file or directory\n");
    EXPECT_EQ(ReadFile(folder_ / "copy.xml"), ReadFile(smallHardware));
}

TEST_F(Show, NamesTheFileThePlaceAndTheCauseOfAnError) {
    std::ofstream(folder_ / "broken.xml") << "<ResourceCollection timestamp=\"t\">\n<Part/>\n";
    EXPECT_EQ(Refusal({"broken.xml"}), "noxinfo: broken.xml:2: unexpected element \"Part\"\n");
    std::ofstream(folder_ / "notes.txt") << "hello\n";
    EXPECT_EQ(Refusal({"notes.txt"}), "noxinfo: notes.txt: is not an inventory document\n");
    std::filesystem::create_directory(folder_ / "empty");
    EXPECT_EQ(Refusal({"empty"}), "noxinfo: empty: holds no inventory\n");
}

TEST_F(Show, RefusesAFolderOfSeveralInventories) {
    std::filesystem::copy_file(smallHardware, folder_ / "a.xml");
    std::filesystem::copy_file(smallHardware, folder_ / "b.xml");
    EXPECT_EQ(Refusal({"."}),
              "noxinfo: .: holds several inventories, such as a.xml and b.xml; name one of them\n");
}

TEST_F(Show, RefusesToWriteANamespaceAsADocument) {
    EXPECT_EQ(Refusal({"--format", "xml", smallServer}),
              "noxinfo: " + smallServer + ": is not a document; only documents can be written as xml\n");
}

TEST_F(Show, RefusesWrongOptions) {
    const auto refuse = [&](const std::vector<std::string>& arguments) {
        const auto result = Run(arguments);
        EXPECT_EQ(result.status, 2);
        return result.standardError;
    };
    EXPECT_THAT(refuse({"--format", "yaml"}), StartsWith("noxinfo: --format: "));
    EXPECT_EQ(refuse({"--where", "Name"}),
              "noxinfo: --where: 'Name' is not PROPERTY=VALUE or PROPERTY~EXPRESSION\nTry 'noxinfo show "
              "--help'.\n");
    EXPECT_THAT(refuse({"--sysroot", "/x", "a.xml"}), HasSubstr("excludes"));
}

TEST_F(Show, ShowsTextWithoutColoursWhenPiped) {
    const std::string text = Output({smallHardware});
    EXPECT_THAT(text, StartsWith("model        "));
    EXPECT_THAT(text, Not(HasSubstr("\x1B")));
}

TEST_F(Show, LongTextHasEveryProperty) {
    EXPECT_THAT(Output({"--long", "--type", "OperatingSystem", smallHardware}),
                AllOf(StartsWith("OperatingSystem "), HasSubstr("\n  OSType ")));
}

}  // namespace
}  // namespace NVORHOST
