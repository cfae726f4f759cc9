// Keeps sleeping devices asleep. The kernel resumes a device in order to read a register for a file of sysfs:
// for a graphics processor that is without power this takes a second, and it costs a laptop its battery.
#pragma once

#include "machine/system/system_files.h"

#include <string>
#include <string_view>

namespace NVORHOST {

/// Forwards every access except a read that would wake a sleeping device, which ends as `asleep`.
///
///   file                                   device                           the kernel reads
///   config, vpd, rom, serial_number,       the function                     registers
///   resource0..5, *_link_speed,
///   *_link_width, *_bus_number of
///   a PCI function
///   /sys/bus/pci/slots/*/latch             the port of the slot             registers of the port
///   /sys/class/net/*/speed, duplex         the device of the interface      registers, or the link's chip
///   over USB
///
/// A device sleeps if its `power_state` is "D3cold". Kernels before 5.11 have no such file, and neither have
/// devices that are not PCI functions; these sleep if `power/runtime_status` is "suspended".
class TSleepGuard final : public ISystemFiles {
  public:
    /// `files` must outlive this object.
    explicit TSleepGuard(const ISystemFiles& files) : files_(files) {}

    TReadResult<std::string> ReadText(std::string_view path) const override;
    TReadResult<std::string> ReadBytes(std::string_view path, std::size_t maxBytes) const override;
    TReadResult<std::vector<std::string>> List(std::string_view path) const override;
    TReadResult<std::string> ReadLink(std::string_view path) const override;
    bool Exists(std::string_view path) const override;

  private:
    const ISystemFiles& files_;
};

}  // namespace NVORHOST
