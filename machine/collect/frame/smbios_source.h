// The machine's SMBIOS table, shared between collectors.
#pragma once

#include "machine/parse/smbios_table.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace NVORHOST {

class TCollection;

class TSmbiosSource {
  public:
    /// Reads /sys/firmware/dmi/tables. There are no structures if it is missing or permission is denied; a
    /// malformed table gives a warning.
    explicit TSmbiosSource(TCollection& collection);
    // The structures are views into the bytes.
    TSmbiosSource(const TSmbiosSource&) = delete;
    TSmbiosSource& operator=(const TSmbiosSource&) = delete;
    ~TSmbiosSource() = default;

    /// Absent if the entry point cannot be read or is malformed.
    std::optional<TSmbiosVersion> GetVersion() const { return version_; }
    /// All structures that have the minimum length of their type, in the order of the table.
    const std::vector<TSmbiosStructure>& GetStructures() const { return structures_; }
    /// The first structure of a type; null if there is none.
    const TSmbiosStructure* FindFirst(std::uint8_t type) const;
    /// The structure of a type with a 0-based number among those of the type; null if there is none.
    const TSmbiosStructure* FindNumbered(std::uint8_t type, std::size_t number) const;

  private:
    std::string bytes_;
    std::optional<TSmbiosVersion> version_;
    std::vector<TSmbiosStructure> structures_;
};

/// The table of the collection's machine, read at the first call.
const TSmbiosSource& GetSmbios(TCollection& collection);

}  // namespace NVORHOST
