// Vital product data that SCSI disks (and ATA disks, translated by the kernel) give about themselves.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// The serial number of page 80h, blanks around it off; absent for another page, a torn one or an empty one.
/// Source: SPC-4, 7.8.15.
std::optional<std::string> ParseVpdSerial(std::string_view page);

/// The whole model name of an ATA disk, from the T10 designator that the kernel builds into page 83h: vendor
/// "ATA     ", then 40 characters of model and 20 of serial number. (The model attribute of sysfs holds its
/// first 16 characters only.) Absent for anything else.
/// Source: SPC-4, 7.8.6; SAT-3, 10.4.4.
std::optional<std::string> ParseVpdAtaModel(std::string_view page);

}  // namespace NVORHOST
