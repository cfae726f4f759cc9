#include "machine_folder.h"

#include "machine/replay/capture_answers.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace NVORHOST {

namespace {

namespace fs = std::filesystem;

void WriteBytes(const fs::path& path, const std::string& bytes) {
    std::ofstream file(path, std::ios::binary);
    file << bytes;
    if (!file.flush()) {
        throw std::runtime_error("cannot write " + path.string());
    }
}

class TWriter {
  public:
    TWriter(const ISystemFiles& files, fs::path root, EEntryOrder order)
        : files_(files), root_(std::move(root)), order_(order) {}

    // `path` is "" for the root.
    void WriteFolder(const std::string& path) {
        fs::create_directories(root_ / path.substr(std::min<std::size_t>(path.size(), 1)));
        auto names = files_.List(path.empty() ? "/" : path).value;
        if (order_ == EEntryOrder::backwards) {
            std::ranges::reverse(names);
        }
        for (const std::string& name : names) {
            WriteEntry(path + "/" + name);
        }
    }

  private:
    void WriteEntry(const std::string& path) {
        const fs::path place = root_ / path.substr(1);
        if (const auto link = files_.ReadLink(path); link.IsOk()) {
            // Absolute links start at the root of the tree, as in a capture.
            fs::create_symlink(link.value, place);
        } else if (files_.List(path).IsOk()) {
            WriteFolder(path);
        } else {
            const auto text = files_.ReadText(path);
            WriteBytes(place, text.value);
            if (!text.IsOk()) {
                fs::permissions(place, fs::perms::none);
            }
        }
    }

    const ISystemFiles& files_;
    fs::path root_;
    EEntryOrder order_;
};

TCaptureAnswers MakeAnswers(const TFakeSystemCalls& calls) {
    TCaptureAnswers answers;
    answers.kernelRelease = calls.kernelRelease;
    answers.nodeName = calls.nodeName;
    answers.architecture = calls.architecture;
    answers.hypervisorSignature = calls.hypervisorSignature;
    answers.pageSizeBytes = calls.pageSizeBytes;
    answers.clockTicksPerSecond = calls.clockTicksPerSecond;
    answers.interfaceAddresses = calls.interfaceAddresses;
    answers.fileSystemSpaces = calls.fileSystemSpaces;
    return answers;
}

}  // namespace

std::vector<std::string> ListMachines() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(NOXINFO_MACHINES)) {
        if (fs::exists(entry.path() / "tree.txt")) {
            names.push_back(entry.path().filename().string());
        }
    }
    std::ranges::sort(names);
    return names;
}

TMachine ReadMachine(const std::string& name) {
    std::ifstream file(fs::path(NOXINFO_MACHINES) / name / "tree.txt", std::ios::binary);
    return ParseMachineTree(std::string(std::istreambuf_iterator<char>(file), {}));
}

void WriteMachine(const TMachine& machine, const fs::path& folder, EEntryOrder order) {
    TWriter(machine.files, folder, order).WriteFolder("");
    WriteBytes(folder / captureAnswersPath.substr(1), FormatCaptureAnswers(MakeAnswers(machine.calls)));
}

}  // namespace NVORHOST
