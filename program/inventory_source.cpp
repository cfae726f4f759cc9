#include "program/inventory_source.h"

#include "documents/document_error.h"
#include "inventory/read/document_reader.h"
#include "inventory/saved/namespace_resources.h"
#include "inventory/saved/result_names.h"
#include "inventory/saved/saved_result.h"
#include "machine/supervision/machine_door.h"
#include "program/namespace_source.h"
#include "vorhost/cimxml/load.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <utility>
#include <vector>

namespace NVORHOST {
namespace {

namespace fs = std::filesystem;

using NINVENTORY::EContent;
using NINVENTORY::IDocumentEvents;
using NINVENTORY::TDocumentInput;

[[noreturn]] void Fail(const std::string& path, const std::string& cause) {
    ThrowAt({path, {}, {}, {}}, cause);
}

TMemoryNamespace Load(const std::string& path, TDocumentInput& input) {
    TMemoryNamespace loaded;
    if (path == "-") {
        LoadNamespace(input.GetName(), input.ReadAll(TDocumentFile::maxBytes), loaded);
    } else {
        LoadNamespace(path, loaded);
    }
    return loaded;
}

// The files of a folder, by what they hold.
struct TFolder {
    bool IsEmpty() const {
        return namespaces.empty() && results.empty() && hardware.empty() && systemInformation.empty();
    }

    std::vector<std::string> namespaces, results, hardware, systemInformation;
};

void Add(const std::string& path, TFolder& folder) {
    try {
        TDocumentInput input(path);
        if (input.GetContent() == EContent::hardware) {
            folder.hardware.push_back(path);
        } else if (input.GetContent() == EContent::systemInformation) {
            folder.systemInformation.push_back(path);
        } else if (input.GetContent() == EContent::cimXml) {
            const TMemoryNamespace loaded = Load(path, input);
            const auto results = loaded.FindClass(resultClassName);
            const bool isResult = results != nullptr && !results->GetInstances().empty();
            (isResult ? folder.results : folder.namespaces).push_back(path);
        }
    } catch (const TDocumentError&) {
        // A folder may hold other files; one that is named is read, and its error is reported then.
    }
}

TFolder ListFolder(const std::string& path) {
    std::error_code error;
    std::vector<std::string> paths;
    for (const auto& entry : fs::directory_iterator(path, error)) {
        if (entry.is_regular_file(error)) {
            paths.push_back(entry.path().string());
        }
    }
    if (error) {
        Fail(path, "cannot be read: " + error.message());
    }
    std::ranges::sort(paths);
    TFolder folder;
    for (const std::string& each : paths) {
        Add(each, folder);
    }
    return folder;
}

// Returns the only path; nullopt if there is none. Several are several inventories.
std::optional<std::string> TakeOnly(const std::string& folder, const std::vector<std::string>& paths) {
    if (paths.size() > 1) {
        Fail(folder, "holds several inventories, such as " + fs::path(paths[0]).filename().string() +
                         " and " + fs::path(paths[1]).filename().string() + "; name one of them");
    }
    return paths.empty() ? std::nullopt : std::optional(paths.front());
}

void PassFile(const std::string& path, IDocumentEvents& events) {
    TDocumentInput input(path);
    if (input.GetContent() != EContent::cimXml) {
        return NINVENTORY::ReadDocument(input, events);
    }
    const TMemoryNamespace loaded = Load(path, input);
    if (const auto bytes = FindResult(input.GetName(), loaded)) {
        TDocumentInput document(input.GetName(), *bytes);
        return NINVENTORY::ReadDocument(document, events);
    }
    PassResources(loaded, FindTimestamp(loaded), events);
}

void PassNamed(const std::string& path, const TBeginSource& begin, IDocumentEvents& events) {
    begin(path == "-" ? "standard input" : path);
    PassFile(path, events);
}

void PassFolder(const std::string& path, const TBeginSource& begin, IDocumentEvents& events) {
    const TFolder folder = ListFolder(path);
    if (const auto saved = TakeOnly(path, folder.namespaces)) {
        return PassNamed(*saved, begin, events);
    }
    const auto hardware = TakeOnly(path, folder.hardware);
    const auto systemInformation = TakeOnly(path, folder.systemInformation);
    if (hardware) {
        PassNamed(*hardware, begin, events);
    }
    if (systemInformation) {
        PassNamed(*systemInformation, begin, events);
    }
    if (hardware || systemInformation) {
        return;
    }
    const auto result = TakeOnly(path, folder.results);
    if (!result) {
        Fail(path, "holds no inventory");
    }
    PassNamed(*result, begin, events);
}

}  // namespace

void PassInventory(const std::string& path, const TBeginSource& begin, IDocumentEvents& events) {
    std::error_code error;
    if (path != "-" && fs::is_directory(path, error)) {
        PassFolder(path, begin, events);
    } else {
        PassNamed(path, begin, events);
    }
}

bool IsMachineTree(const std::string& path) {
    return path != "-" && IsMachineRoot(path) && ListFolder(path).IsEmpty();
}

TCollectOutcome PassSource(const std::string& path, const TSourceOptions& options, const TBeginSource& begin,
                           IDocumentEvents& events) {
    if (IsMachineTree(path)) {
        TSourceOptions tree = options;
        tree.machine.sysroot = path;
        return PassMachine(tree, begin, events);
    }
    PassInventory(path, begin, events);
    return {};
}

TCollectOutcome PassMachine(const TSourceOptions& options, const TBeginSource& begin,
                            IDocumentEvents& events) {
    RequireProcFileSystem();
    const TNamespaceSource source = ObtainNamespace(options);
    begin(source.origin);
    PassResources(*source.collected, source.localTime ? FormatDate(TCIMValue(*source.localTime)) : "",
                  events);
    return source.outcome;
}

}  // namespace NVORHOST
