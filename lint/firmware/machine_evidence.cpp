#include "lint/firmware/machine_evidence.h"

#include "text/hex.h"

namespace NLINT {

using NVORHOST::TSmbiosStructure;

TMachineEvidence::TMachineEvidence(const NVORHOST::ISystemFiles& files)
    : files_(files),
      table_(files.ReadText(smbiosTablePath).value),
      entryPoint_(table_.empty() ? std::string() : files.ReadText(smbiosEntryPath).value),
      structures_(NVORHOST::ParseSmbiosTable(table_)) {}

std::vector<const TSmbiosStructure*> TMachineEvidence::FindAll(std::uint8_t type) const {
    std::vector<const TSmbiosStructure*> found;
    for (const TSmbiosStructure& structure : structures_) {
        if (structure.GetType() == type && structure.HasMinimumLength()) {
            found.push_back(&structure);
        }
    }
    return found;
}

const TSmbiosStructure* TMachineEvidence::FindHandle(std::uint16_t handle) const {
    for (const TSmbiosStructure& structure : structures_) {
        if (structure.GetHandle() == handle) {
            return &structure;
        }
    }
    return nullptr;
}

std::string FormatHandle(std::uint16_t handle) {
    constexpr int digits = 4;
    return NVORHOST::ToHexDigits(handle, digits, NVORHOST::EHexCase::upper) + "h";
}

std::string NameStructure(const TSmbiosStructure& structure) {
    return "SMBIOS type " + std::to_string(structure.GetType()) + ", handle " +
           FormatHandle(structure.GetHandle());
}

std::string NameField(const TSmbiosStructure& structure, std::size_t offset) {
    constexpr int digits = 2;
    return NameStructure(structure) + ", " +
           NVORHOST::ToHexDigits(offset, digits, NVORHOST::EHexCase::upper) + "h";
}

}  // namespace NLINT
