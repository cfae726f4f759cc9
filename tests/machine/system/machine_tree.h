// A machine as text that people can review: its files and the answers of its system calls.
//
//   # comment
//   @NodeName = server-1                     answer of a system call
//   @FileSystemSpace = /home 4096 9000 800   mount point, block size, size and available, in bytes
//   /proc/sys/kernel/osrelease = 6.1.0       file of one line
//   /proc/meminfo:                           file of several lines, each after "| "
//   | MemTotal:       1024 kB
//   /sys/block/sda -> ../devices/.../sda     link
//   /sys/bus/pci/devices/                    empty folder
//   /sys/class/dmi/id/product_uuid !denied   file without permission (also !failed)
//   /path bytes:                             file of bytes: lines of hexadecimal digits and "texts"
//   | 00 80 "SERIAL  "
//   /path registers 64:                      file of that many bytes, zero except "offset: digits"
//   | 0e: 01
//   /path smbios:                            structure table: "type: digits after the header", then texts
//   | 1: 01 02 00 00 "Maker" "Product"
#pragma once

#include "tests/machine/system/fake_system_calls.h"
#include "tests/machine/system/memory_files.h"

#include <string>
#include <string_view>

namespace NVORHOST {

struct TMachine {
    TMemoryFiles files;
    TFakeSystemCalls calls;
};

/// Throws std::invalid_argument with the number and text of a line that is none of the above.
TMachine ParseMachineTree(std::string_view text);

/// The bytes of one line of the "bytes" form.
std::string ParseByteLine(std::string_view line);

/// The bytes of one structure of the "smbios" form.
std::string MakeSmbiosStructure(std::string_view line, std::uint16_t handle);

}  // namespace NVORHOST
