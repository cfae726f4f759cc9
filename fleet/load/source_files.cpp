#include "fleet/load/source_files.h"

#include "documents/document_error.h"
#include "os/file_descriptor.h"
#include "text/ascii.h"

#include <archive.h>
#include <archive_entry.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <system_error>
#include <utility>

namespace NFLEET {
namespace {

using NVORHOST::ThrowAt;

// The files of a group are in memory at the same time.
constexpr std::size_t maxGroupBytes = std::size_t{32} << 20;

[[noreturn]] void Fail(const std::string& path, const std::string& cause) {
    ThrowAt({path, {}, {}, {}}, cause);
}

[[noreturn]] void FailTooLarge(const std::string& path) {
    Fail(path, "is larger than " + std::to_string(maxFileBytes) + " bytes");
}

bool IsDate(std::string_view name) {
    const auto isDigit = [](char c) { return NVORHOST::IsDigit(c); };
    return std::ranges::any_of(name, isDigit) && std::ranges::all_of(name, [&](char c) {
               return isDigit(c) || std::string_view("-:TZ+_.").find(c) != std::string_view::npos;
           });
}

struct TFreeArchive {
    void operator()(archive* reader) const { (void)archive_read_free(reader); }
};
using TArchive = std::unique_ptr<archive, TFreeArchive>;

TArchive MakeReader() {
    TArchive reader(archive_read_new());
    if (reader == nullptr) {
        throw std::bad_alloc();
    }
    archive_read_support_filter_gzip(reader.get());
    archive_read_support_filter_xz(reader.get());
    archive_read_support_format_tar(reader.get());
    return reader;
}

[[noreturn]] void FailArchive(const std::string& path, archive* reader) {
    const char* const cause = archive_error_string(reader);
    Fail(path, cause == nullptr ? "is a damaged archive" : cause);
}

std::string ReadMember(const std::string& name, archive* reader) {
    std::array<char, 65536> buffer;
    std::string bytes;
    for (;;) {
        const la_ssize_t count = archive_read_data(reader, buffer.data(), buffer.size());
        if (count == 0) {
            return bytes;
        }
        if (count < 0) {
            FailArchive(name, reader);
        }
        bytes.append(buffer.data(), static_cast<std::size_t>(count));
        if (bytes.size() > maxFileBytes) {
            FailTooLarge(name);
        }
    }
}

std::string_view GetFolder(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    return path.substr(0, slash == std::string_view::npos ? 0 : slash);
}

}  // namespace

std::string FindMachineFolder(std::string_view path) {
    for (std::string_view folder = GetFolder(path); !folder.empty(); folder = GetFolder(folder)) {
        const std::string_view name = folder.substr(folder.rfind('/') + 1);
        if (!name.empty() && name != "." && name != ".." && !IsDate(name)) {
            return std::string(name);
        }
    }
    return {};
}

TSourceFile ReadSourceFile(const std::string& path) {
    const NVORHOST::TFileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat status {};
    if (!file.IsOpen() || ::fstat(file.Get(), &status) != 0) {
        Fail(path, "cannot be read: " + std::system_category().message(errno));
    }
    TSourceFile source{path, FindMachineFolder(path), {}};
    std::size_t size = 0;
    for (;;) {
        constexpr std::size_t step = 65536;
        source.bytes.resize(
            std::max(size + step, size == 0 ? static_cast<std::size_t>(status.st_size) + 1 : 0));
        const ssize_t count = ::read(file.Get(), source.bytes.data() + size, source.bytes.size() - size);
        if (count < 0 && errno != EINTR) {
            Fail(path, "cannot be read: " + std::system_category().message(errno));
        }
        if (count == 0) {
            break;
        }
        size += count > 0 ? static_cast<std::size_t>(count) : 0;
        if (size > maxFileBytes) {
            FailTooLarge(path);
        }
    }
    source.bytes.resize(size);
    return source;
}

bool IsArchive(const std::string& path) {
    const auto hasEnd = [&](std::string_view end) { return path.ends_with(end); };
    return hasEnd(".tar") || hasEnd(".tar.gz") || hasEnd(".tgz") || hasEnd(".tar.xz") || hasEnd(".txz");
}

void ReadArchive(const std::string& path, std::size_t maxGroup,
                 const std::function<void(std::vector<TSourceFile>&& files)>& action) {
    const TArchive reader = MakeReader();
    constexpr std::size_t blockBytes = 65536;
    if (archive_read_open_filename(reader.get(), path.c_str(), blockBytes) != ARCHIVE_OK) {
        FailArchive(path, reader.get());
    }
    std::vector<TSourceFile> group;
    std::size_t groupBytes = 0;
    std::string folder;
    const auto flush = [&] {
        if (!group.empty()) {
            action(std::exchange(group, {}));
        }
        groupBytes = 0;
    };
    archive_entry* entry = nullptr;
    int result = ARCHIVE_OK;
    while ((result = archive_read_next_header(reader.get(), &entry)) == ARCHIVE_OK ||
           result == ARCHIVE_WARN) {
        const char* const member = archive_entry_pathname(entry);
        if (archive_entry_filetype(entry) != AE_IFREG || member == nullptr) {
            continue;
        }
        const std::string name = path + "/" + member;
        if (GetFolder(name) != folder || group.size() >= maxGroup || groupBytes > maxGroupBytes) {
            flush();
            folder = GetFolder(name);
        }
        group.push_back({name, FindMachineFolder(member), ReadMember(name, reader.get())});
        groupBytes += group.back().bytes.size();
    }
    flush();
    if (result != ARCHIVE_EOF) {
        FailArchive(path, reader.get());
    }
}

}  // namespace NFLEET
