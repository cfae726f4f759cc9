#include "program/redact_sources.h"

#include "documents/document_error.h"
#include "inventory/read/document_input.h"
#include "machine/replay/capture_answers.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <string_view>
#include <system_error>

namespace NVORHOST {
namespace {

namespace fs = std::filesystem;

using NINVENTORY::EContent;
using NINVENTORY::TDocumentInput;

[[noreturn]] void Fail(const std::string& path, const std::string& cause) {
    ThrowAt({path, {}, {}, {}}, cause);
}

bool StartsWithGzipMark(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return file.get() == 0x1F && file.get() == 0x8B;
}

constexpr std::string_view archiveEnding = ".tar.xz";

bool IsArchiveName(std::string_view name) {
    constexpr std::string_view endings[] = {".tar", ".tar.gz", ".tgz", ".tar.bz2", ".tar.xz", ".tar.zst"};
    return std::ranges::any_of(endings, [&](std::string_view ending) { return name.ends_with(ending); });
}

// A capture has the answers of system calls; a tree that another program copied has at least both folders.
bool IsCaptureTree(const fs::path& folder) {
    std::error_code error;
    return fs::is_regular_file(folder / captureAnswersPath.substr(1), error) ||
           (fs::is_directory(folder / "proc", error) && fs::is_directory(folder / "sys", error));
}

// Returns the name of the packed copy.
fs::path PackedName(const fs::path& relative) {
    std::string name = relative.string();
    if (const auto place = name.rfind(".t"); place != std::string::npos && IsArchiveName(name)) {
        name.erase(place);
    }
    if (name.ends_with(".tar")) {
        name.erase(name.size() - 4);
    }
    return name.append(archiveEnding);
}

// Returns nullopt for a file that is not an inventory. Errors: throws TDocumentError.
std::optional<ERedactKind> FindKind(const std::string& path) {
    if (IsArchiveName(path) && fs::exists(path)) {
        return ERedactKind::archive;
    }
    const EContent content = TDocumentInput(path).GetContent();
    if (content == EContent::unknown) {
        return std::nullopt;
    }
    return content == EContent::cimXml ? ERedactKind::cimXml : ERedactKind::document;
}

class TLister {
  public:
    void AddNamed(const std::string& source) {
        std::error_code error;
        const fs::path path = fs::path(source).lexically_normal();
        if (fs::equivalent(path, "/", error)) {
            Fail(source, "is this machine; capture --redact packs it");
        }
        if (fs::is_directory(path, error)) {
            const std::size_t before = CountFiles();
            AddFolder(path, NameOf(path));
            if (CountFiles() == before) {
                Fail(source, "holds no inventory");
            }
            return;
        }
        const auto kind = FindKind(source);
        if (!kind) {
            Fail(source, "is not an inventory");
        }
        Add(path, path.filename(), *kind);
    }

    TRedactSources Take() {
        TRedactSources sources;
        for (auto& [folder, group] : groups_) {
            sources.groups.push_back(std::move(group));
        }
        sources.skipped = std::move(skipped_);
        return sources;
    }

  private:
    // Returns the last name of a path, that of the working directory for ".".
    static fs::path NameOf(const fs::path& path) {
        std::error_code error;
        const fs::path whole = fs::weakly_canonical(path, error);
        return whole.has_filename() ? whole.filename() : fs::path();
    }

    void AddFolder(const fs::path& folder, const fs::path& relative) {
        std::error_code error;
        if (IsCaptureTree(folder)) {
            return Add(folder, relative, ERedactKind::tree);
        }
        std::vector<fs::path> entries;
        for (const auto& entry : fs::directory_iterator(folder, error)) {
            entries.push_back(entry.path());
        }
        if (error) {
            Fail(folder.string(), "cannot be read: " + error.message());
        }
        std::ranges::sort(entries);
        for (const fs::path& entry : entries) {
            AddEntry(entry, relative / entry.filename());
        }
    }

    void AddEntry(const fs::path& entry, const fs::path& relative) {
        std::error_code error;
        const bool isHidden = entry.filename().string().starts_with('.');
        if (fs::is_symlink(fs::symlink_status(entry, error)) || isHidden) {
            skipped_.push_back(entry.string());
        } else if (fs::is_directory(entry, error)) {
            AddFolder(entry, relative);
        } else if (const auto kind = FindKindOfEntry(entry)) {
            Add(entry, relative, *kind);
        } else {
            skipped_.push_back(entry.string());
        }
    }

    static std::optional<ERedactKind> FindKindOfEntry(const fs::path& entry) {
        std::error_code error;
        try {
            return fs::is_regular_file(entry, error) ? FindKind(entry.string()) : std::nullopt;
        } catch (const TDocumentError&) {
            return std::nullopt;  // one that is named is read, and its error is reported then
        }
    }

    void Add(const fs::path& path, const fs::path& relative, ERedactKind kind) {
        const bool isCapture = kind == ERedactKind::archive || kind == ERedactKind::tree;
        groups_[path.parent_path().string()].files.push_back(
            {path.string(), (isCapture ? PackedName(relative) : relative).string(), kind,
             !isCapture && StartsWithGzipMark(path.string())});
    }

    std::size_t CountFiles() const {
        std::size_t count = 0;
        for (const auto& [folder, group] : groups_) {
            count += group.files.size();
        }
        return count;
    }

    std::map<std::string, TRedactGroup> groups_;  // by folder
    std::vector<std::string> skipped_;
};

}  // namespace

TRedactSources ListRedactSources(const std::vector<std::string>& sources) {
    TLister lister;
    for (const std::string& source : sources) {
        lister.AddNamed(source);
    }
    return lister.Take();
}

}  // namespace NVORHOST
