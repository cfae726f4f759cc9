// The files that a redaction reads, in groups.
#pragma once

#include <string>
#include <vector>

namespace NVORHOST {

/// The kinds of files that can be redacted.
enum class ERedactKind {
    document,  ///< hardware inventory or system information
    cimXml,    ///< saved namespace or result
    archive,   ///< packed capture
    tree,      ///< unpacked capture; `path` is its folder
};

struct TRedactFile {
    std::string path;
    std::string relative;  ///< the path that it has below the output directory, before its names are redacted
    ERedactKind kind = ERedactKind::document;
    bool isCompressed = false;
};

/// The files of one directory, which are taken for those of one machine: identities that one of them has are
/// replaced in all of them.
struct TRedactGroup {
    std::vector<TRedactFile> files;
};

struct TRedactSources {
    std::vector<TRedactGroup> groups;
    std::vector<std::string> skipped;  ///< files in directories that are not inventories
};

/// Lists the files to redact. The copy of a capture is packed, under its name with the ending ".tar.xz". A
/// directory means all inventories in it and below it, which keep their paths, beginning with its own name.
/// Errors: throws TDocumentError for a named file that cannot be read or is not an inventory, and for a
///         directory without any.
TRedactSources ListRedactSources(const std::vector<std::string>& sources);

}  // namespace NVORHOST
