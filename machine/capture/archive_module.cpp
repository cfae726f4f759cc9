// The archive writer and reader as a module, which brings the archive library into the process.
#include "host/export.h"
#include "machine/capture/archive_module_entry.h"

#include <archive.h>
#include <archive_entry.h>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace NVORHOST {
namespace {

struct TFreeArchive {
    void operator()(archive* writer) const {
        (void)archive_write_free(writer);
    }  // already closed, unless an error ends the writing
};
using TArchive = std::unique_ptr<archive, TFreeArchive>;

struct TFreeEntry {
    void operator()(archive_entry* entry) const { archive_entry_free(entry); }
};
using TEntry = std::unique_ptr<archive_entry, TFreeEntry>;

void Check(archive* writer, int result) {
    if (result != ARCHIVE_OK) {
        const char* const cause = archive_error_string(writer);
        throw std::runtime_error(std::string("cannot write the archive: ") +
                                 (cause != nullptr ? cause : "unknown cause"));
    }
}

la_ssize_t WriteToStream(archive*, void* stream, const void* bytes, std::size_t size) {
    auto& out = *static_cast<std::ostream*>(stream);
    out.write(static_cast<const char*>(bytes), static_cast<std::streamsize>(size));
    return static_cast<la_ssize_t>(size);  // the owner of the stream checks for failure
}

struct TEntryKind {
    TCaptureTree::EKind kind;
    unsigned int type;
    mode_t permissions;
};

constexpr TEntryKind entryKinds[] = {
    {TCaptureTree::EKind::name, AE_IFREG, 0644},
    {TCaptureTree::EKind::file, AE_IFREG, 0644},
    {TCaptureTree::EKind::folder, AE_IFDIR, 0755},
    {TCaptureTree::EKind::link, AE_IFLNK, 0777},
};

void Describe(const std::string& path, const TCaptureTree::TNode& node, archive_entry* entry) {
    archive_entry_set_pathname(entry, path.c_str() + 1);  // relative, without the leading slash
    for (const TEntryKind& row : entryKinds) {
        if (row.kind == node.kind) {
            archive_entry_set_filetype(entry, row.type);
            archive_entry_set_perm(entry, row.permissions);
        }
    }
    if (node.kind == TCaptureTree::EKind::link) {
        archive_entry_set_symlink(entry, node.bytes.c_str());
    } else {
        archive_entry_set_size(entry, static_cast<la_int64_t>(node.bytes.size()));
    }
    archive_entry_set_mtime(entry, 0, 0);
}

void WriteNode(archive* writer, const std::string& path, const TCaptureTree::TNode& node) {
    const TEntry entry(archive_entry_new());
    if (!entry) {
        throw std::bad_alloc();
    }
    Describe(path, node, entry.get());
    Check(writer, archive_write_header(writer, entry.get()));
    if (node.kind == TCaptureTree::EKind::file && !node.bytes.empty() &&
        archive_write_data(writer, node.bytes.data(), node.bytes.size()) !=
            static_cast<la_ssize_t>(node.bytes.size())) {
        Check(writer, ARCHIVE_FATAL);
    }
}

void WriteTarXz(const TCaptureTree& tree, std::ostream& out) {
    const TArchive writer(archive_write_new());
    if (!writer) {
        throw std::bad_alloc();
    }
    // The GNU format keeps the bytes of names. The pax format converts names to UTF-8 from the charset of the
    // locale, which fails for some and changes others.
    Check(writer.get(), archive_write_set_format_gnutar(writer.get()));
    Check(writer.get(), archive_write_add_filter_xz(writer.get()));
    constexpr int noPadding = 1;  // the default pads to the block size of tapes
    Check(writer.get(), archive_write_set_bytes_in_last_block(writer.get(), noPadding));
    Check(writer.get(), archive_write_open(writer.get(), &out, nullptr, WriteToStream, nullptr));
    for (const auto& [path, node] : tree.GetNodes()) {
        WriteNode(writer.get(), path, node);
    }
    Check(writer.get(), archive_write_close(writer.get()));
}

struct TFreeReader {
    void operator()(archive* reader) const { (void)archive_read_free(reader); }
};
using TReader = std::unique_ptr<archive, TFreeReader>;

constexpr std::size_t maxFileBytes = std::size_t{64} << 20;
constexpr std::size_t maxTreeBytes = std::size_t{1} << 30;
constexpr std::size_t maxEntries = 1'000'000;

[[noreturn]] void Refuse(const std::string& cause) {
    throw std::runtime_error("cannot read the archive: " + cause);
}

[[noreturn]] void RefuseFor(archive* reader) {
    const char* const cause = archive_error_string(reader);
    Refuse(cause != nullptr ? cause : "unknown cause");
}

// Returns the absolute path of an entry in the tree; empty for the root.
std::string PathOf(archive_entry* entry) {
    const char* const name = archive_entry_pathname(entry);
    if (name == nullptr) {
        Refuse("an entry has no name");
    }
    std::string path;
    std::string_view rest = name;
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find('/'), rest.size());
        const std::string_view part = rest.substr(0, end);
        if (part == "..") {
            Refuse("the path of an entry leads out of the tree");
        }
        if (!part.empty() && part != ".") {
            path.append("/").append(part);
        }
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return path;
}

std::string ReadContent(archive* reader) {
    constexpr std::size_t blockBytes = 65536;
    std::string content;
    while (true) {
        const std::size_t before = content.size();
        content.resize(before + blockBytes);
        const la_ssize_t size = archive_read_data(reader, content.data() + before, blockBytes);
        if (size < 0) {
            RefuseFor(reader);
        }
        content.resize(before + static_cast<std::size_t>(size));
        if (size == 0) {
            return content;
        }
        if (content.size() > maxFileBytes) {
            Refuse("a file is larger than 64 MiB");
        }
    }
}

// Returns the number of bytes that were added.
std::size_t AddEntry(archive* reader, archive_entry* entry, TCaptureTree& tree) {
    const std::string path = PathOf(entry);
    switch (archive_entry_filetype(entry)) {
        case AE_IFDIR:
            tree.AddFolder(path);
            return 0;
        case AE_IFLNK: {
            const char* const target = archive_entry_symlink(entry);
            tree.AddLink(path, target != nullptr ? target : "");
            return 0;
        }
        case AE_IFREG: {
            std::string content = ReadContent(reader);
            const std::size_t size = content.size();
            if (size == 0) {
                tree.AddName(path);
            } else {
                tree.AddFile(path, std::move(content));
            }
            return size;
        }
        default:
            return 0;
    }
}

void ReadTar(const std::string& path, TCaptureTree& tree) {
    const TReader reader(archive_read_new());
    if (!reader) {
        throw std::bad_alloc();
    }
    (void)archive_read_support_filter_gzip(reader.get());
    (void)archive_read_support_filter_bzip2(reader.get());
    (void)archive_read_support_filter_xz(reader.get());
    (void)archive_read_support_filter_zstd(reader.get());
    (void)archive_read_support_format_tar(reader.get());
    constexpr std::size_t blockBytes = 65536;
    if (archive_read_open_filename(reader.get(), path.c_str(), blockBytes) != ARCHIVE_OK) {
        RefuseFor(reader.get());
    }
    std::size_t bytes = 0;
    archive_entry* entry = nullptr;
    int result = ARCHIVE_OK;
    for (std::size_t count = 0; (result = archive_read_next_header(reader.get(), &entry)) == ARCHIVE_OK;
         ++count) {
        bytes += AddEntry(reader.get(), entry, tree);
        if (bytes > maxTreeBytes || count >= maxEntries) {
            Refuse("it is larger than any capture");
        }
    }
    if (result != ARCHIVE_EOF) {
        RefuseFor(reader.get());
    }
}

}  // namespace
}  // namespace NVORHOST

extern "C" NKELVOR20_API void NVORHOST_WriteTarXz(const NVORHOST::TCaptureTree& tree, std::ostream& out) {
    NVORHOST::WriteTarXz(tree, out);
}

extern "C" NKELVOR20_API void NVORHOST_ReadTar(const std::string& path, NVORHOST::TCaptureTree& tree) {
    NVORHOST::ReadTar(path, tree);
}

static_assert(std::is_same_v<decltype(&NVORHOST_ReadTar), NVORHOST::TUnpackEntry>);
static_assert(std::is_same_v<decltype(&NVORHOST_WriteTarXz), NVORHOST::TArchiveEntry>);
