#include "lint/resources/resource_checks.h"

namespace NLINT {
namespace {

constexpr char bestSlots[] = "Fill the slots as the manual of the machine recommends";
constexpr char sameModules[] = "Use modules of one kind in all slots";
constexpr char sameProcessors[] = "Use processors of one stepping, and update the firmware";

// Row order is the order of findings.
constexpr TResourceCheck checks[] = {
    {{"memory-total", ESeverity::error, "The memory of the kernel with the sum of the memory modules",
      "Update the firmware, whose table of memory modules is wrong"},
     &CheckMemoryTotal},
    {{"firmware-date", ESeverity::error,
      "The release date of the system firmware with the time of the collection",
      "Set the clock, or update the firmware"},
     &CheckFirmwareDate},
    {{"memory-speed", ESeverity::warning, "The speed at which a memory module runs with its rated speed",
      "Choose the rated speed in the setup of the firmware, and fill the slots as the manual recommends"},
     &CheckMemorySpeed},
    {{"memory-mixed-sizes", ESeverity::warning, "The sizes of the memory modules", sameModules},
     &CheckMemorySizes},
    {{"memory-mixed-ranks", ESeverity::note, "The ranks of the memory modules", sameModules},
     &CheckMemoryRanks},
    {{"memory-mixed-parts", ESeverity::note, "The part numbers of the memory modules", sameModules},
     &CheckMemoryParts},
    {{"memory-channels", ESeverity::warning, "The memory of each channel with that of the fullest channel",
      bestSlots},
     &CheckMemoryChannels},
    {{"memory-error-correction", ESeverity::warning,
      "The width of the memory modules with the error correction of their array",
      "Switch error correction on in the setup of the firmware"},
     &CheckErrorCorrection},
    {{"processor-steppings", ESeverity::warning, "The steppings of the processors", sameProcessors},
     &CheckSteppings},
    {{"processor-microcode", ESeverity::warning, "The microcode of the processors", sameProcessors},
     &CheckMicrocode},
    {{"pcie-width", ESeverity::warning,
      "The width of a PCI Express link with the width that both of its ends allow",
      "Put the card into a slot with more lanes, or clean its contacts and put it in again"},
     &CheckLinkWidths},
    {{"pcie-speed", ESeverity::note,
      "The speed of a PCI Express link with the speed that both of its ends allow",
      "Look again while the device works: links slow down while they are idle"},
     &CheckLinkSpeeds},
    {{"member-state", ESeverity::warning,
      "The state of a member of an array, or of a path to a disk, with that of one that can be used",
      "Replace the disk, or look at the cable and the adapter of the path"},
     &CheckMemberStates},
    {{"state", ESeverity::warning, "The state of a part with OK",
      "Look at the part: it is degraded, or it has failed or is about to"},
     &CheckStates},
};

}  // namespace

std::span<const TResourceCheck> GetResourceChecks() {
    return checks;
}

}  // namespace NLINT
