// The description of a made-up fleet: its models, their faults, and what changes over the days.
//
//   [fleet]                          exactly one
//   seed = 1
//   machines = 200
//   first-day = 2026-03-01
//   days = 7                         each machine has one inventory a day
//
//   [model RackStar 2200]            at least one; the name is the product name
//   share = 3                        weight among the models
//   vendor = Example Servers
//   ...
//
//   [fault older-firmware]           what a machine has from the first day on
//   rate = 2 %                       of the machines
//   model = RackStar 2200            optional
//
//   [change moved-disk]              what happens to a machine on a day
//   rate = 0.1 %                     of the machines, on each day but the first; or one event:
//   day = 3                          1-based; the change is in the inventory of that day
//   machine = 0                      0-based
//   to = 1                           the machine that receives the part
//
// fleet_description.cpp lists every key.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NSYNTHESIS {

struct TModel {
    std::string name;
    std::string vendor = "Example Servers";
    std::uint64_t share = 1;
    std::string firmware = "2.4.1";
    std::string firmwareDate = "05/12/2025";  ///< MM/DD/YYYY, as firmware has it
    std::string oldFirmware = "2.1.0";
    std::string oldFirmwareDate = "02/03/2023";
    std::string processor = "Example CPU 4310 @ 2.10GHz";
    std::uint64_t sockets = 2;
    std::uint64_t slots = 16;   ///< places for memory modules
    std::uint64_t modules = 8;  ///< slots with a module
    std::uint64_t moduleMiB = 16384;
    std::uint64_t moduleSpeed = 2400;  ///< MT/s
    std::string modulePart = "EX16G2400";
    std::uint64_t disks = 4;
    std::uint64_t diskGB = 600;
    std::string diskModel = "SM600MP0005";
    std::string diskFirmware = "0005";
    std::string oldDiskFirmware = "0003";
    std::uint64_t ports = 2;     ///< network ports
    std::uint64_t adapters = 4;  ///< PCI Express adapters, besides those of disks and network ports
};

enum class EFault { olderFirmware, missingModule, slowerModule, narrowerLink, olderDiskFirmware };

struct TFault {
    EFault kind = EFault::olderFirmware;
    std::uint64_t ratePerMillion = 0;
    std::optional<std::string> model;  ///< absent: every model
};

enum class EChangeKind {
    replacedDisk,
    replacedModule,
    movedDisk,    ///< to the same bay of another machine, whose disk there disappears
    movedModule,  ///< to the same slot of another machine of the model, whose module there disappears
    stolenModule,
    updatedFirmware,
    replacedBoard,  ///< another serial number and UUID of the system
};

struct TChange {
    EChangeKind kind = EChangeKind::replacedDisk;
    std::uint64_t ratePerMillion = 0;      ///< 0 for one event
    std::optional<std::uint64_t> day;      ///< of one event, 1-based
    std::optional<std::uint64_t> machine;  ///< of one event
    std::optional<std::uint64_t> to;       ///< absent: a machine that follows from the seed
};

struct TFleetDescription {
    std::uint64_t seed = 1;
    std::uint64_t machines = 0;
    std::uint64_t days = 1;
    std::chrono::sys_days firstDay = std::chrono::sys_days(std::chrono::year(2026) / 3 / 1);
    std::vector<TModel> models;
    std::vector<TFault> faults;
    std::vector<TChange> changes;
};

/// Errors: throws std::invalid_argument with the number of a malformed line and the cause.
TFleetDescription ParseFleetDescription(std::string_view text);

}  // namespace NSYNTHESIS
