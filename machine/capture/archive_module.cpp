// The archive writer as a module, which brings the archive library into the process.
#include "host/export.h"
#include "machine/capture/archive_module_entry.h"

#include <archive.h>
#include <archive_entry.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>

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

}  // namespace
}  // namespace NVORHOST

extern "C" NKELVOR20_API void NVORHOST_WriteTarXz(const NVORHOST::TCaptureTree& tree, std::ostream& out) {
    NVORHOST::WriteTarXz(tree, out);
}

static_assert(std::is_same_v<decltype(&NVORHOST_WriteTarXz), NVORHOST::TArchiveEntry>);
