// The input of the checks on a machine's files: the tables of the firmware as bytes and structures, and
// the files of the kernel.
#pragma once

#include "machine/parse/smbios_table.h"
#include "machine/system/system_files.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NLINT {

inline constexpr char smbiosTablePath[] = "/sys/firmware/dmi/tables/DMI";
inline constexpr char smbiosEntryPath[] = "/sys/firmware/dmi/tables/smbios_entry_point";

class TMachineEvidence {
  public:
    /// Reads the tables. `files` must outlive this object.
    explicit TMachineEvidence(const NVORHOST::ISystemFiles& files);
    TMachineEvidence(const TMachineEvidence&) = delete;
    TMachineEvidence& operator=(const TMachineEvidence&) = delete;

    const NVORHOST::ISystemFiles& GetFiles() const { return files_; }
    /// Returns the bytes of the structure table; empty if it is missing or cannot be read.
    const std::string& GetTable() const { return table_; }
    /// Returns the bytes of the entry point; empty if it is missing or cannot be read.
    const std::string& GetEntryPoint() const { return entryPoint_; }
    /// Returns all structures, those below the minimum length of their type too.
    const std::vector<NVORHOST::TSmbiosStructure>& GetStructures() const { return structures_; }
    /// Returns the structures of one type that have its minimum length.
    std::vector<const NVORHOST::TSmbiosStructure*> FindAll(std::uint8_t type) const;
    /// Returns the first structure with a handle; null if there is none.
    const NVORHOST::TSmbiosStructure* FindHandle(std::uint16_t handle) const;

  private:
    const NVORHOST::ISystemFiles& files_;
    std::string table_, entryPoint_;
    std::vector<NVORHOST::TSmbiosStructure> structures_;  // views of table_
};

/// Returns "1100h".
std::string FormatHandle(std::uint16_t handle);

/// Returns a field of a structure as a source: "SMBIOS type 17, handle 1100h, 04h".
std::string NameField(const NVORHOST::TSmbiosStructure& structure, std::size_t offset);
/// Returns a structure as a source: "SMBIOS type 17, handle 1100h".
std::string NameStructure(const NVORHOST::TSmbiosStructure& structure);

}  // namespace NLINT
