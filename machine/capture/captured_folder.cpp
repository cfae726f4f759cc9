#include "machine/capture/captured_folder.h"

#include "machine/system/rooted_files.h"

#include <stdexcept>
#include <utility>

namespace NVORHOST {
namespace {

void AddFolder(const ISystemFiles& files, const std::string& folder, TCaptureTree& tree);

void AddEntry(const ISystemFiles& files, const std::string& path, TCaptureTree& tree) {
    if (auto target = files.ReadLink(path); target.IsOk()) {
        return tree.AddLink(path, std::move(target.value));
    }
    auto content = files.ReadText(path);
    if (!content.IsOk()) {
        return AddFolder(files, path, tree);
    }
    if (content.value.empty()) {
        tree.AddName(path);
    } else {
        tree.AddFile(path, std::move(content.value));
    }
}

void AddFolder(const ISystemFiles& files, const std::string& folder, TCaptureTree& tree) {
    const auto names = files.List(folder.empty() ? "/" : folder);
    if (!names.IsOk()) {
        throw std::runtime_error("cannot read " + names.error);
    }
    tree.AddFolder(folder);
    for (const std::string& name : names.value) {
        AddEntry(files, folder + "/" + name, tree);
    }
}

}  // namespace

TCaptureTree ReadCapturedFolder(const std::string& folder) {
    const TRootedFiles files(folder);
    TCaptureTree tree;
    AddFolder(files, "", tree);
    return tree;
}

}  // namespace NVORHOST
