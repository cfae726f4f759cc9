// The machine's SMBIOS table, read once for all collectors.
#pragma once

#include "machine/parse/smbios_table.h"
#include "machine/system/system_files.h"

#include <optional>
#include <string>
#include <vector>

namespace NVORHOST {

class TSmbiosSource {
  public:
    /// Reads /sys/firmware/dmi/tables; without it, or when it is denied, there are no structures.
    explicit TSmbiosSource(const ISystemFiles& files);
    // The structures are views into the bytes.
    TSmbiosSource(const TSmbiosSource&) = delete;
    TSmbiosSource& operator=(const TSmbiosSource&) = delete;
    ~TSmbiosSource() = default;

    /// Absent when the entry point cannot be read or is malformed.
    std::optional<TSmbiosVersion> GetVersion() const { return version_; }
    /// Those with the minimum length of their type.
    const std::vector<TSmbiosStructure>& GetStructures() const { return structures_; }
    /// Where and why the table is malformed, one line; absent for a well-formed table.
    const std::optional<std::string>& GetFlaw() const { return flaw_; }
    /// The first structure of a type, or null.
    const TSmbiosStructure* FindFirst(std::uint8_t type) const;

  private:
    std::string bytes_;
    std::optional<TSmbiosVersion> version_;
    std::vector<TSmbiosStructure> structures_;
    std::optional<std::string> flaw_;
};

}  // namespace NVORHOST
