// Files and members of archives that may hold inventories.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace NFLEET {

/// The largest file in bytes, as it is stored.
inline constexpr std::size_t maxFileBytes = std::size_t{256} << 20;

/// A file that was read into memory.
struct TSourceFile {
    std::string name;    ///< path, and the name of a member: "fleet.tar.xz/db-1/2024-03-01/hardware.xml.gz"
    std::string folder;  ///< the name of the folder that names the machine; see FindMachineFolder
    std::string bytes;
};

/// Returns the name in a path that names a machine: that of the innermost folder whose name is not a date, as
/// in
/// "/srv/inventories/db-1/2024-03-01/hardwareinventory.xml.gz". Empty for a path without such a folder.
std::string FindMachineFolder(std::string_view path);

/// Reads a file. Errors: throws TDocumentError.
TSourceFile ReadSourceFile(const std::string& path);

/// True for the start of a file that ReadArchive reads: a tar archive, which may be compressed.
bool IsArchive(const std::string& path);

/// Reads an archive and passes its regular files on, those of one folder that follow one another together.
/// Errors: throws TDocumentError for an archive that is damaged; its files up to there were passed on.
void ReadArchive(const std::string& path, std::size_t maxGroup,
                 const std::function<void(std::vector<TSourceFile>&& files)>& action);

}  // namespace NFLEET
