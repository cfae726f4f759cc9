#include "program_run.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace NVORHOST {
namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

const std::string machines = NOXINFO_MACHINES;

class Redact : public testing::Test {
  protected:
    Redact() { WriteKey("key", 'a'); }

    // Makes a folder with the documents of one of the tests' machines.
    std::string AddMachine(const std::string& name, const std::string& machine) const {
        fs::create_directories(folder_ / name);
        fs::copy_file(machines + "/" + machine + "/expected.xml", folder_ / (name + "/hardware.xml"));
        fs::copy_file(machines + "/" + machine + "/expected-system.xml", folder_ / (name + "/system.xml"));
        return name;
    }
    void Write(const std::string& name, const std::string& text) const {
        std::ofstream(folder_ / name, std::ios::binary) << text;
    }
    void WriteKey(const std::string& name, char letter) const {
        Write(name, std::string(64, letter));
        ASSERT_EQ(::chmod((folder_ / name).c_str(), 0600), 0);
    }
    TProgramResult RunAny(std::vector<std::string> arguments) const {
        return RunNoxinfo({std::move(arguments), folder_.GetPath(), {}});
    }
    TProgramResult Run(const std::vector<std::string>& sources, const std::string& output,
                       const std::string& key = "key") const {
        std::vector<std::string> arguments{"redact", "--output", output};
        if (!key.empty()) {
            arguments.insert(arguments.end(), {"--key-file", key});
        }
        arguments.insert(arguments.end(), sources.begin(), sources.end());
        return RunAny(arguments);
    }
    std::string Read(const std::string& name) const { return ReadFile(folder_ / name); }

    TTemporaryDirectory folder_;
};

TEST_F(Redact, ReplacesWhatIdentifiesAMachineInItsDocuments) {
    AddMachine("server", "server-two-sockets");
    const auto result = Run({"server"}, "out");
    EXPECT_EQ(result.standardError, "");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.standardOutput,
              "Redacted    2 files into out\n"
              "Replaced    5 serial numbers, 3 UUIDs, 2 world-wide names, 1 host name\n"
              "Key         key\n");
    const std::string hardware = Read("out/server/hardware.xml");
    const std::string system = Read("out/server/system.xml");
    for (const char* secret :
         {"SRV0012345", "C3D2F100-A5B4-4796-8879-6A5B4C3D2E1F", "MB0099", "8a1b2c3d4e5f6071",
          "5000c5001234abcd", "Z1X2C3V4", "0c0ffee0-1111-4222-8333-444455556601", "db-1"}) {
        EXPECT_THAT(hardware, Not(HasSubstr(secret)));
        EXPECT_THAT(system, Not(HasSubstr(secret)));
    }
    EXPECT_THAT(hardware, HasSubstr("<Value>Example Servers</Value>"));
    EXPECT_THAT(hardware, HasSubstr("<Value>DAT9017488</Value>"));
    EXPECT_THAT(hardware, HasSubstr("<Value>naa.54e1532396c9ebfc</Value>"));
    EXPECT_THAT(system, HasSubstr(" resourceName=\"Example Servers,7915-X3G-DAT9017488\""));
    EXPECT_THAT(system, HasSubstr("<Value>db-4.vwimmsy.xno</Value>"));
}

TEST_F(Redact, WritesValidDocuments) {
    AddMachine("server", "server-two-sockets");
    ASSERT_EQ(Run({"server"}, "out").status, 0);
    const auto result = RunAny({"validate", "out/server/hardware.xml", "out/server/system.xml"});
    EXPECT_EQ(result.standardOutput, "");
    EXPECT_EQ(result.status, 0);
}

TEST_F(Redact, ComparesAsTheOriginals) {
    AddMachine("a", "server-two-sockets");
    AddMachine("b", "server-two-sockets");
    std::string text = Read("b/hardware.xml");
    for (const auto& [from, to] : {std::pair("MB0099", "MB0100"), std::pair("X3G", "X3H")}) {
        text.replace(text.find(from), std::string(from).size(), to);
    }
    Write("b/hardware.xml", text);
    ASSERT_EQ(Run({"a"}, "out").status, 0);
    ASSERT_EQ(Run({"b"}, "out").status, 0);
    // The shape of a comparison: what changed where, without the values.
    const auto compare = [&](const std::string& before, const std::string& after) {
        const auto result = RunAny({"diff", "--format", "json", before, after});
        EXPECT_EQ(result.status, 1);
        std::string shape;
        for (std::size_t at = 0; (at = result.standardOutput.find_first_of("{}[]", at)) != std::string::npos;
             ++at) {
            shape += result.standardOutput[at];
        }
        return shape;
    };
    EXPECT_EQ(compare("out/a", "out/b"), compare("a", "b"));
}

TEST_F(Redact, GivesOnePseudonymInEveryRunWithOneKey) {
    AddMachine("first", "server-two-sockets");
    AddMachine("second", "nvme-laptop");
    ASSERT_EQ(Run({"first", "second"}, "both").status, 0);
    ASSERT_EQ(Run({"second"}, "later").status, 0);
    ASSERT_EQ(Run({"first/hardware.xml", "first/system.xml"}, "files").status, 0);
    EXPECT_EQ(Read("both/second/hardware.xml"), Read("later/second/hardware.xml"));
    EXPECT_EQ(Read("both/first/hardware.xml"), Read("files/hardware.xml"));
    EXPECT_EQ(Read("both/first/system.xml"), Read("files/system.xml"));
}

TEST_F(Redact, GivesOtherPseudonymsWithAnotherKeyAndInEachRunWithoutOne) {
    AddMachine("server", "server-two-sockets");
    WriteKey("other", 'b');
    ASSERT_EQ(Run({"server"}, "one").status, 0);
    ASSERT_EQ(Run({"server"}, "two", "other").status, 0);
    const auto result = Run({"server"}, "three", "");
    EXPECT_THAT(result.standardOutput, HasSubstr("Key         not kept: other runs give other pseudonyms\n"));
    ASSERT_EQ(Run({"server"}, "four", "").status, 0);
    EXPECT_NE(Read("one/server/hardware.xml"), Read("two/server/hardware.xml"));
    EXPECT_NE(Read("three/server/hardware.xml"), Read("four/server/hardware.xml"));
}

class RedactSaved : public Redact {
  protected:
    RedactSaved() {
        fs::create_directories(folder_ / "day");
        fs::copy_file(NOXINFO_TEST_DATA "/small-server.xml", folder_ / "day/snapshot.xml");
        EXPECT_EQ(RunAny({"collect", "--namespace", "day/snapshot.xml", "--directory", "day", "--result",
                          "day/result.xml", "--reachability", "no", "--kel-id", "K0001234"})
                      .status,
                  0);
    }
};

TEST_F(RedactSaved, GivesOnePseudonymInDocumentsNamespaceAndResult) {
    ASSERT_EQ(Run({"day/snapshot.xml"}, "snapshot").status, 0);
    ASSERT_EQ(Run({"day/result.xml"}, "result").status, 0);
    ASSERT_EQ(Run({"day/hardwareinventory.xml.gz"}, "hardware").status, 0);
    ASSERT_EQ(Run({"day/systeminformation.xml.gz"}, "system").status, 0);
    EXPECT_THAT(Read("snapshot/snapshot.xml"), HasSubstr("<VALUE>MG8816522</VALUE>"));
    const auto hardware = ReadCompressedFile(folder_ / "hardware/hardwareinventory.xml.gz");
    EXPECT_THAT(hardware, HasSubstr("<Value>MG8816522</Value>"));
    EXPECT_THAT(ReadCompressedFile(folder_ / "system/systeminformation.xml.gz"),
                HasSubstr("<Value>MG8816522</Value>"));
    EXPECT_EQ(RunAny({"show", "--format", "xml", "result/result.xml"}).standardOutput, hardware);
    EXPECT_THAT(Read("result/result.xml"), Not(HasSubstr("K0001234")));
}

TEST_F(RedactSaved, WritesInventoriesThatCompareAsOne) {
    ASSERT_EQ(Run({"day"}, "out").status, 0);
    const auto result = RunAny({"diff", "out/day/result.xml", "out/day/hardwareinventory.xml.gz"});
    EXPECT_EQ(result.status, 0) << result.standardOutput;
    EXPECT_EQ(
        RunAny({"validate", "out/day/hardwareinventory.xml.gz", "out/day/systeminformation.xml.gz"}).status,
        0);
}

TEST_F(RedactSaved, WritesANamespaceThatGivesTheRedactedDocuments) {
    ASSERT_EQ(Run({"day"}, "out").status, 0);
    ASSERT_EQ(RunAny({"collect", "--namespace", "out/day/snapshot.xml", "--directory", "out",
                      "--reachability", "no", "--kel-id", "K0001234"})
                  .status,
              0);
    // The time of the run is in the second line.
    const auto resources = [&](const std::string& name) {
        const std::string text = ReadCompressedFile(folder_ / name);
        return text.substr(std::min(text.find("<ResourceCollectionContext>"), text.size()));
    };
    EXPECT_EQ(resources("out/hardwareinventory.xml.gz"), resources("out/day/hardwareinventory.xml.gz"));
    EXPECT_THAT(resources("out/hardwareinventory.xml.gz"), HasSubstr("MG8816522"));
}

TEST_F(RedactSaved, RefusesANamespaceThatIsCutOff) {
    Write("cut.xml", Read("day/snapshot.xml").substr(0, 700));
    const auto result = Run({"cut.xml"}, "out");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.standardError, HasSubstr("noxinfo: cut.xml:"));
    EXPECT_FALSE(fs::exists(folder_ / "out"));
}

TEST_F(Redact, KeepsTheCompressionOfAFile) {
    AddMachine("server", "server-two-sockets");
    ASSERT_EQ(RunProgram("gzip", {{"-k", "hardware.xml"}, folder_ / "server", {}}).status, 0);
    ASSERT_EQ(Run({"server"}, "out").status, 0);
    EXPECT_EQ(ReadCompressedFile(folder_ / "out/server/hardware.xml.gz"), Read("out/server/hardware.xml"));
}

TEST_F(Redact, ReplacesIdentitiesInNamesOfFilesAndFolders) {
    AddMachine("db-1", "server-two-sockets");
    ASSERT_EQ(Run({"db-1"}, "out").status, 0);
    EXPECT_FALSE(fs::exists(folder_ / "out/db-1"));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_ / "out"), {}), 1);
}

TEST_F(Redact, MakesFilesForTheirOwnerAlone) {
    AddMachine("server", "server-two-sockets");
    ASSERT_EQ(Run({"server"}, "out").status, 0);
    for (const auto& [name, mode] : {std::pair("out", 0700U), std::pair("out/server", 0700U),
                                     std::pair("out/server/system.xml", 0600U)}) {
        struct stat status {};
        ASSERT_EQ(::stat((folder_ / name).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777U, mode) << name;
    }
}

TEST_F(Redact, OverwritesNothing) {
    AddMachine("server", "server-two-sockets");
    fs::create_directories(folder_ / "out/server");
    Write("out/server/system.xml", "mine");
    const auto result = Run({"server"}, "out");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standardError,
              "noxinfo: cannot write out/server/system.xml: the file exists, and is not overwritten\n");
    EXPECT_EQ(Read("out/server/system.xml"), "mine");
    EXPECT_FALSE(fs::exists(folder_ / "out/server/hardware.xml"));
}

TEST_F(Redact, RefusesTwoSourcesOfOneName) {
    AddMachine("a", "server-two-sockets");
    AddMachine("b", "nvme-laptop");
    const auto result = Run({"a/hardware.xml", "b/hardware.xml"}, "out");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standardError, "noxinfo: cannot write out/hardware.xml: two sources have this name\n");
    EXPECT_FALSE(fs::exists(folder_ / "out"));
}

// The host name is also the name of a type of resource, which cannot be replaced.
TEST_F(Redact, WritesNothingIfAnIdentityIsLeft) {
    AddMachine("server", "server-two-sockets");
    AddMachine("other", "nvme-laptop");
    std::string text = Read("server/hardware.xml");
    const std::string serial = "MB0099";
    text.replace(text.find(serial), serial.size(), "nsigned5Int77");
    text.replace(text.find("\"unsignedInt\""), 13, "\"Unsigned5INT77\"");
    Write("server/hardware.xml", text);
    const auto result = Run({"other", "server"}, "out");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standardError,
              "noxinfo: nothing was written: serial number left in out/server/hardware.xml "
              "after redaction\n");
    EXPECT_EQ(result.standardOutput, "");
    EXPECT_FALSE(fs::exists(folder_ / "out"));
}

TEST_F(Redact, SkipsOtherFilesOfAFolder) {
    AddMachine("server", "server-two-sockets");
    Write("server/notes.txt", "Remember SRV0012345.\n");
    const auto result = Run({"server"}, "out");
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.standardOutput, HasSubstr("Skipped     server/notes.txt is not an inventory\n"));
    EXPECT_FALSE(fs::exists(folder_ / "out/server/notes.txt"));
}

TEST_F(Redact, ReportsSourcesThatCannotBeRedacted) {
    AddMachine("server", "server-two-sockets");
    Write("notes.txt", "Remember SRV0012345.\n");
    Write("cut.xml", Read("server/hardware.xml").substr(0, 3000));
    fs::create_directories(folder_ / "empty");
    const auto refusal = [&](const std::string& source) {
        const auto result = Run({"server", source}, "out");
        EXPECT_EQ(result.status, 1);
        EXPECT_FALSE(fs::exists(folder_ / "out"));
        return result.standardError;
    };
    EXPECT_EQ(refusal("notes.txt"), "noxinfo: notes.txt: is not an inventory\n");
    EXPECT_EQ(refusal("missing.xml"), "noxinfo: missing.xml: cannot be read: No such file or directory\n");
    EXPECT_EQ(refusal("empty"), "noxinfo: empty: holds no inventory\n");
    EXPECT_THAT(refusal("cut.xml"), HasSubstr("noxinfo: cut.xml:"));
}

class RedactCapture : public Redact {
  protected:
    RedactCapture() {
        fs::create_directories(folder_ / "machine/sys/class/dmi/id");
        fs::create_directories(folder_ / "machine/proc/sys/kernel");
        Write("machine/sys/class/dmi/id/product_serial", "SRV0012345\n");
        Write("machine/proc/sys/kernel/hostname", "db-1.example.net\n");
        Write("machine/proc/cmdline", "quiet srv=srv0012345\n");
        Write("machine/noxinfo-system.txt", "node-name db-1.example.net\n");
        EXPECT_EQ(Tar({"-czf", "../db-1.tar.gz", "."}, "machine").status, 0);
    }
    TProgramResult Tar(const std::vector<std::string>& arguments, const std::string& folder) const {
        return RunProgram("tar", {arguments, folder_ / folder, {}});
    }
    // Returns the files of an archive with their contents, names first.
    std::string Unpack(const std::string& archive) const {
        return RunProgram("tar", {{"-tJf", archive}, folder_.GetPath(), {}}).standardOutput +
               RunProgram("tar", {{"-xJOf", archive}, folder_.GetPath(), {}}).standardOutput;
    }
};

TEST_F(RedactCapture, ReplacesIdentitiesOfAnUnpackedCapture) {
    const auto result = Run({"machine"}, "out");
    EXPECT_EQ(result.standardError, "");
    EXPECT_EQ(result.standardOutput,
              "Redacted    1 file into out\n"
              "Replaced    1 serial number, 1 host name\n"
              "Key         key\n");
    const std::string text = Unpack("out/machine.tar.xz");
    EXPECT_THAT(text, HasSubstr("sys/class/dmi/id/product_serial\n"));
    EXPECT_THAT(text, HasSubstr("DAT9017488\n"));
    EXPECT_THAT(text, HasSubstr("quiet srv=dat9017488\n"));
    EXPECT_THAT(text, HasSubstr("db-4.vwimmsy.xno\n"));
    EXPECT_THAT(text, Not(HasSubstr("db-1")));
}

TEST_F(RedactCapture, ReplacesIdentitiesOfAPackedCaptureAndInItsName) {
    ASSERT_EQ(Run({"machine"}, "unpacked").status, 0);
    ASSERT_EQ(Run({"db-1.tar.gz"}, "packed").status, 0);
    EXPECT_EQ(Read("packed/db-4.tar.xz"), Read("unpacked/machine.tar.xz"));
}

TEST_F(RedactCapture, RefusesArchivesThatAreNotCaptures) {
    Write("empty.tar.xz", "");
    Write("cut.tar.gz", Read("db-1.tar.gz").substr(0, 200));
    ASSERT_EQ(Tar({"-cf", "../other.tar", "proc"}, "machine").status, 0);
    const auto refusal = [&](const std::string& source) {
        const auto result = Run({source}, "out");
        EXPECT_EQ(result.status, 1);
        EXPECT_FALSE(fs::exists(folder_ / "out"));
        return result.standardError;
    };
    EXPECT_THAT(refusal("cut.tar.gz"), HasSubstr("noxinfo: cut.tar.gz: cannot read the archive: "));
    EXPECT_EQ(refusal("other.tar"), "noxinfo: other.tar: is not a capture\n");
    EXPECT_THAT(refusal("empty.tar.xz"), HasSubstr("noxinfo: empty.tar.xz: "));
    EXPECT_EQ(refusal("/"), "noxinfo: /: is this machine; capture --redact packs it\n");
}

TEST_F(Redact, MakesTheKeyFileOnce) {
    AddMachine("server", "server-two-sockets");
    EXPECT_THAT(Run({"server"}, "one", "new").standardOutput,
                HasSubstr("Key         new, made by this run\n"));
    EXPECT_THAT(Run({"server"}, "two", "new").standardOutput, HasSubstr("Key         new\n"));
    EXPECT_EQ(Read("one/server/hardware.xml"), Read("two/server/hardware.xml"));
}

TEST_F(Redact, RefusesAKeyThatOthersCanRead) {
    AddMachine("server", "server-two-sockets");
    ASSERT_EQ(::chmod((folder_ / "key").c_str(), 0644), 0);
    const auto result = Run({"server"}, "out");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standardError,
              "noxinfo: cannot use the key file key: other users have access to it; its "
              "mode must be 0600\n");
    EXPECT_FALSE(fs::exists(folder_ / "out"));
}

}  // namespace
}  // namespace NVORHOST
