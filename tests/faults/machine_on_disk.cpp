#include "machine_on_disk.h"

#include "machine/replay/capture_answers.h"

#include <filesystem>
#include <fstream>

namespace NTEST {
namespace {

using NVORHOST::ISystemFiles;

void WriteBytes(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

// `path` is the path on the machine, "" for its root.
void WriteEntry(const ISystemFiles& files, const std::string& path, const std::string& folder) {
    if (const auto link = files.ReadLink(path); link.IsOk()) {
        std::filesystem::create_symlink(link.value, folder + path);
    } else if (const auto list = files.List(path + "/"); list.IsOk()) {
        std::filesystem::create_directories(folder + path);
        for (const std::string& name : list.value) {
            WriteEntry(files, path + "/" + name, folder);
        }
    } else {
        WriteBytes(folder + path, files.ReadBytes(path, std::string::npos).value);
    }
}

}  // namespace

void WriteMachine(const NVORHOST::TMachine& machine, const std::string& folder) {
    WriteEntry(machine.files, "", folder);
    NVORHOST::TCaptureAnswers answers;
    answers.kernelRelease = machine.calls.kernelRelease;
    answers.nodeName = machine.calls.nodeName;
    answers.architecture = machine.calls.architecture;
    answers.hypervisorSignature = machine.calls.hypervisorSignature;
    answers.pageSizeBytes = machine.calls.pageSizeBytes;
    answers.clockTicksPerSecond = machine.calls.clockTicksPerSecond;
    answers.interfaceAddresses = machine.calls.interfaceAddresses;
    answers.fileSystemSpaces = machine.calls.fileSystemSpaces;
    WriteBytes(folder + std::string(NVORHOST::captureAnswersPath), NVORHOST::FormatCaptureAnswers(answers));
}

}  // namespace NTEST
