// The machines of a made-up fleet from day to day.
#pragma once

#include "tools/synthesize/fleet_description.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace NSYNTHESIS {

struct TModule {
    std::string serial;
    bool isSlower = false;
};

struct TDisk {
    std::uint64_t number = 0;  ///< unique in the fleet: serial number and name in the world follow from it
    bool hasOldFirmware = false;
};

/// One machine on one day.
struct TMachineState {
    std::uint64_t number = 0;       ///< 0-based
    std::uint64_t board = 0;        ///< 0 for the first board, 1 for its replacement, ...
    const TModel* model = nullptr;  ///< of the description
    bool hasOldFirmware = false;
    bool hasNarrowLink = false;
    std::vector<std::optional<TModule>> slots;
    std::vector<TDisk> disks;  ///< by bay
};

/// Returns the serial number of a machine: "EX0000012", or "EX0000012B" with its second board.
std::string MakeSerialNumber(const TMachineState& machine);

/// Returns the system UUID: "00C0FFEE-0000-4000-8000-00000000000C".
std::string MakeUuid(const TMachineState& machine);

/// Returns the serial number of a disk: "ZD0000012".
std::string MakeSerialNumber(const TDisk& disk);

/// All machines, moved forward one day at a time. Two objects of one description have the same states.
class TFleetHistory {
  public:
    /// Starts on the first day. `description` must outlive this object.
    explicit TFleetHistory(const TFleetDescription& description);

    const std::vector<TMachineState>& GetMachines() const { return machines_; }
    /// 1-based.
    std::uint64_t GetDay() const { return day_; }
    void GoToNextDay();

  private:
    TMachineState MakeMachine(std::uint64_t number);
    void AddFaults(TMachineState& machine);
    void Apply(const TChange& change, std::uint64_t ordinal, TMachineState& machine);
    void MoveDisk(TMachineState& from, TMachineState& to, std::uint64_t choice);
    void MoveModule(TMachineState& from, TMachineState& to, std::uint64_t choice);
    TMachineState& FindReceiver(const TChange& change, const TMachineState& machine, std::uint64_t choice);
    TDisk MakeDisk();
    TModule MakeModule();

    const TFleetDescription& description_;
    std::vector<TMachineState> machines_;
    std::uint64_t day_ = 1;
    std::uint64_t disks_ = 0;    // made so far
    std::uint64_t modules_ = 0;  // made so far
};

}  // namespace NSYNTHESIS
