// A capture of every test machine, also a redacted one, gives the inventory of the machine.
#include "machine/capture/file_recorder.h"
#include "machine/capture/redaction.h"
#include "machine/capture/system_call_recorder.h"
#include "machine/replay/replay_files.h"
#include "machine/replay/replay_system_calls.h"
#include "tests/machine/collect/collect_fixture.h"
#include "tests/machine/collect/namespace_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace NVORHOST {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr TPseudonyms::TKey key{0x0123456789ABCDEFU, 0xFEDCBA9876543210U};

std::vector<std::string> FindShapes() {
    std::vector<std::string> shapes;
    for (const auto& entry : std::filesystem::directory_iterator(NOXINFO_MACHINES)) {
        if (std::filesystem::exists(entry.path() / "tree.txt")) {
            shapes.push_back(entry.path().filename().string());
        }
    }
    std::sort(shapes.begin(), shapes.end());
    return shapes;
}

struct TCapture {
    TCaptureTree tree;
    TCaptureAnswers answers;
};

TCapture CaptureMachine(const TMachine& machine, TCollected& collected) {
    const TFileRecorder files(machine.files);
    const TSystemCallRecorder calls(machine.calls);
    Collect(files, calls, collected);
    TCapture capture{files.GetTree(), calls.GetAnswers()};
    capture.answers.refusals = files.FindRefusals();
    return capture;
}

// The tree after packing and unpacking.
TMemoryFiles Unpack(const TCapture& capture) {
    TMemoryFiles files;
    for (const auto& [path, node] : capture.tree.GetNodes()) {
        switch (node.kind) {
            case TCaptureTree::EKind::name:
            case TCaptureTree::EKind::file:
                files.AddFile(path, node.bytes);
                break;
            case TCaptureTree::EKind::folder:
                files.AddFolder(path);
                break;
            case TCaptureTree::EKind::link:
                files.AddLink(path, node.bytes);
                break;
        }
    }
    files.AddFile(captureAnswersPath, FormatCaptureAnswers(capture.answers));
    return files;
}

void CollectFrom(const TCapture& capture, TCollected& collected) {
    const TMemoryFiles files = Unpack(capture);
    const TReplaySystemCalls calls(files);
    Collect(TReplayFiles(files, calls.GetAnswers()), calls, collected);
}

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

// Returns the name of the property in a line of namespace_text.h.
std::string PropertyOf(const std::string& line) {
    const auto dot = line.find("].");
    return line.substr(0, line.find('[')) + line.substr(dot + 1, line.find(" =") - dot - 1);
}

class TMachineCaptureTest : public testing::TestWithParam<std::string> {
  protected:
    static TMachine ReadMachine() {
        std::ifstream file(std::string(NOXINFO_MACHINES) + "/" + GetParam() + "/tree.txt", std::ios::binary);
        return ParseMachineTree(std::string(std::istreambuf_iterator<char>(file), {}));
    }
};

INSTANTIATE_TEST_SUITE_P(Shape, TMachineCaptureTest, testing::ValuesIn(FindShapes()), [](const auto& value) {
    std::string name = value.param;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
});

TEST_P(TMachineCaptureTest, ReproducesTheNamespaceOfTheMachine) {
    TCollected original;
    TCollected captured;
    const TMachine machine = ReadMachine();
    CollectFrom(CaptureMachine(machine, original), captured);
    EXPECT_EQ(ToText(captured.target), ToText(original.target));
    for (std::size_t i = 0; i < original.reports.size(); ++i) {
        EXPECT_EQ(captured.reports[i].deniedSources, original.reports[i].deniedSources);
        EXPECT_EQ(captured.reports[i].failedSources, original.reports[i].failedSources);
    }
}

// Properties whose values may differ after redaction. All others are unchanged.
bool MayDiffer(const std::string& property) {
    static const std::set<std::string> ends{".ElementName",
                                            ".Description",
                                            ".DeviceID",
                                            ".SerialNumber",
                                            ".Name",
                                            ".CSName",
                                            ".UserTracking",
                                            ".IPv4Address",
                                            ".IPv6Address",
                                            ".Tag",
                                            ".UniqueID",
                                            ".OtherIdentifyingInfo",
                                            ".PermanentAddress",
                                            ".NetworkAddresses",
                                            ".Antecedent",
                                            ".Dependent",
                                            ".Root",
                                            ".Label",
                                            ".UUID"};
    return ends.contains(property.substr(property.rfind('.')));
}

TEST_P(TMachineCaptureTest, RedactionChangesIdentitiesOnly) {
    TCollected original;
    TCollected redacted;
    const TMachine machine = ReadMachine();
    TCapture capture = CaptureMachine(machine, original);
    Redact(key, capture.tree, capture.answers);
    CollectFrom(capture, redacted);
    const auto before = Lines(ToText(original.target));
    const auto after = Lines(ToText(redacted.target));
    ASSERT_EQ(after.size(), before.size());
    for (std::size_t i = 0; i < before.size(); ++i) {
        EXPECT_EQ(PropertyOf(after[i]), PropertyOf(before[i]));
        if (!MayDiffer(PropertyOf(before[i]))) {
            EXPECT_EQ(after[i], before[i]);
        }
        EXPECT_EQ(after[i].size(), before[i].size()) << before[i] << "\n" << after[i];
    }
}

// Returns "525400B20001" in the form of the files, "52:54:00:B2:00:01".
std::string WithColons(const std::string& digits) {
    std::string text = digits.substr(0, 2);
    for (std::size_t i = 2; i < digits.size(); i += 2) {
        text += ":" + digits.substr(i, 2);
    }
    return text;
}

// Collects the values of the inventory that are identities: serial numbers, UUIDs, world-wide names and
// addresses.
std::set<std::string> FindIdentities(const TCollected& collected) {
    constexpr std::pair<const char*, const char*> properties[] = {
        {"KELSG_ComputerSystem", "SerialNumber"},
        {"KELSG_ComputerSystem", "Name"},
        {"KELSG_Card", "SerialNumber"},
        {"KELSG_Card", "UserTracking"},
        {"KELSG_SPDData", "SerialNumber"},
        {"KELSG_Processor", "UniqueID"},
        {"CIM_EthernetPort", "PermanentAddress"},
        {"CIM_WiFiPort", "PermanentAddress"},
        {"CIM_IBPort", "PermanentAddress"},
        {"CIM_DiskPartition", "DeviceID"},
        {"KELSG_DiskDrive", "DeviceID"},
        {"CIM_DiskDrive", "DeviceID"},
        {"KELSG_DVDDrive", "DeviceID"},
        {"KELSG_CDROMDrive", "DeviceID"},
        {"KELSG_TapeDrive", "DeviceID"},
        {"KELSG_LogicalDisk", "DeviceID"},
        {"KELSG_IPProtocolEndpoint", "IPv4Address"},
        {"KELSG_IPProtocolEndpoint", "IPv6Address"},
    };
    std::set<std::string> identities;
    for (const auto& [className, property] : properties) {
        for (const std::string& value : collected.GetAll(className, property)) {
            if (value != "absent") {
                identities.insert(property == std::string_view("PermanentAddress") ? WithColons(value)
                                                                                   : value);
            }
        }
    }
    return identities;
}

// Keys that are positions, and addresses and names that every machine has.
bool IsNoIdentity(const std::string& value) {
    static const std::set<std::string> common{"127.0.0.1", "::1"};
    const bool isPlace = value.starts_with("0000:");
    return common.contains(value) || isPlace || value.starts_with("st");
}

std::string ToLower(std::string text) {
    std::ranges::transform(text, text.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

TEST_P(TMachineCaptureTest, RedactionLeavesNoIdentity) {
    TCollected original;
    const TMachine machine = ReadMachine();
    TCapture capture = CaptureMachine(machine, original);
    Redact(key, capture.tree, capture.answers);
    std::string everything = FormatCaptureAnswers(capture.answers);
    for (const auto& [path, node] : capture.tree.GetNodes()) {
        everything += path + "\n" + node.bytes + "\n";
    }
    everything = ToLower(everything);
    // A host name may also be an ordinary word.
    EXPECT_NE(capture.answers.nodeName, machine.calls.nodeName);
    for (const std::string& identity : FindIdentities(original)) {
        if (!IsNoIdentity(identity)) {
            EXPECT_THAT(everything, Not(HasSubstr(ToLower(identity)))) << identity;
        }
    }
}

TEST_P(TMachineCaptureTest, RedactionPassesTheSearchForIdentities) {
    TCollected original;
    const TMachine machine = ReadMachine();
    TCapture capture = CaptureMachine(machine, original);
    const TCaptureTree before = capture.tree;
    const TRedactedMachine redacted = Redact(key, capture.tree, capture.answers);
    capture.tree.AddFile(captureAnswersPath, FormatCaptureAnswers(capture.answers));
    const auto left = FindIdentityLeft(redacted, capture.tree);
    EXPECT_EQ(left ? left->path : "nothing", "nothing");
    // The search finds identities in the tree before its redaction.
    const bool isDistinct = std::ranges::count(redacted.identities.GetIdentities(), EIdentityReach::anywhere,
                                               &TIdentity::reach) != 0;
    EXPECT_TRUE(FindIdentityLeft(redacted, before) || !isDistinct);
}

TEST_P(TMachineCaptureTest, RedactionKeepsKeysUnique) {
    TCollected original;
    TCollected redacted;
    const TMachine machine = ReadMachine();
    TCapture capture = CaptureMachine(machine, original);
    Redact(key, capture.tree, capture.answers);
    CollectFrom(capture, redacted);
    for (const auto& cimClass : redacted.target.GetClasses()) {
        std::set<std::string> keys;
        for (const std::string& deviceId : redacted.GetAll(cimClass->GetName(), "DeviceID")) {
            EXPECT_TRUE(deviceId == "absent" || keys.insert(deviceId).second)
                << cimClass->GetName() << " " << deviceId;
        }
    }
}

}  // namespace
}  // namespace NVORHOST
