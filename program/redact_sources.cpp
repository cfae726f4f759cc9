#include "program/redact_sources.h"

#include "documents/document_error.h"
#include "inventory/read/document_input.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
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

// Returns nullopt for a file that is not an inventory. Errors: throws TDocumentError.
std::optional<ERedactKind> FindKind(const std::string& path) {
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
        groups_[path.parent_path().string()].files.push_back(
            {path.string(), relative.string(), kind, StartsWithGzipMark(path.string())});
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
