#include "tools/synthesize/fleet_history.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <initializer_list>
#include <utility>

namespace NSYNTHESIS {
namespace {

// What a number is drawn for.
enum class EDraw : std::uint64_t { model, fault, faultyPart, change, changedPart, receiver };

// Returns a number that depends on nothing but its arguments, evenly distributed over 64 bits (SplitMix64).
// The distributions of the standard library differ between implementations.
std::uint64_t Draw(std::uint64_t seed, EDraw purpose, std::initializer_list<std::uint64_t> words) {
    std::uint64_t state = seed;
    const auto mix = [&](std::uint64_t word) {
        state += word + 0x9E3779B97F4A7C15;
        state = (state ^ (state >> 30)) * 0xBF58476D1CE4E5B9;
        state = (state ^ (state >> 27)) * 0x94D049BB133111EB;
        state ^= state >> 31;
    };
    mix(static_cast<std::uint64_t>(purpose));
    std::ranges::for_each(words, mix);
    return state;
}

bool IsDrawn(std::uint64_t number, std::uint64_t ratePerMillion) {
    return number % 1'000'000 < ratePerMillion;
}

std::string FormatNumber(const char* prefix, std::uint64_t number) {
    std::array<char, 40> text{};
    const int length =
        std::snprintf(text.data(), text.size(), "%s%07llu", prefix, static_cast<unsigned long long>(number));
    return {text.data(), static_cast<std::size_t>(length)};
}

const TModel& ChooseModel(const TFleetDescription& description, std::uint64_t machine) {
    std::uint64_t sum = 0;
    for (const TModel& model : description.models) {
        sum += model.share;
    }
    std::uint64_t rest = Draw(description.seed, EDraw::model, {machine}) % sum;
    for (const TModel& model : description.models) {
        if (rest < model.share) {
            return model;
        }
        rest -= model.share;
    }
    return description.models.back();
}

// Returns the index of a filled slot; nullopt if all are empty.
std::optional<std::size_t> FindModule(const TMachineState& machine, std::uint64_t choice) {
    std::vector<std::size_t> filled;
    for (std::size_t i = 0; i < machine.slots.size(); ++i) {
        if (machine.slots[i]) {
            filled.push_back(i);
        }
    }
    return filled.empty() ? std::nullopt : std::optional(filled[choice % filled.size()]);
}

}  // namespace

std::string MakeSerialNumber(const TMachineState& machine) {
    const std::string serial = FormatNumber("EX", machine.number);
    return machine.board == 0 ? serial : serial + static_cast<char>('A' + machine.board % 26);
}

std::string MakeUuid(const TMachineState& machine) {
    std::array<char, 40> text{};
    const int length = std::snprintf(text.data(), text.size(), "00C0FFEE-%04X-4000-8000-%012llX",
                                     static_cast<unsigned>(machine.board & 0xFFFF),
                                     static_cast<unsigned long long>(machine.number));
    return {text.data(), static_cast<std::size_t>(length)};
}

std::string MakeSerialNumber(const TDisk& disk) {
    return FormatNumber("ZD", disk.number);
}

TFleetHistory::TFleetHistory(const TFleetDescription& description) : description_(description) {
    for (std::uint64_t number = 0; number < description.machines; ++number) {
        machines_.push_back(MakeMachine(number));
    }
}

TDisk TFleetHistory::MakeDisk() {
    return {.number = disks_++};
}

TModule TFleetHistory::MakeModule() {
    return {.serial = FormatNumber("MM", modules_++)};
}

TMachineState TFleetHistory::MakeMachine(std::uint64_t number) {
    TMachineState machine;
    machine.number = number;
    machine.model = &ChooseModel(description_, number);
    machine.slots.resize(machine.model->slots);
    for (std::uint64_t i = 0; i < machine.model->modules; ++i) {
        // The modules are spread over the slots, as over the channels of the processors.
        machine.slots[i * machine.model->slots / machine.model->modules] = MakeModule();
    }
    for (std::uint64_t bay = 0; bay < machine.model->disks; ++bay) {
        machine.disks.push_back(MakeDisk());
    }
    AddFaults(machine);
    return machine;
}

void TFleetHistory::AddFaults(TMachineState& machine) {
    for (std::uint64_t i = 0; i < description_.faults.size(); ++i) {
        const TFault& fault = description_.faults[i];
        const bool concerns = !fault.model || *fault.model == machine.model->name;
        if (!concerns ||
            !IsDrawn(Draw(description_.seed, EDraw::fault, {i, machine.number}), fault.ratePerMillion)) {
            continue;
        }
        const std::uint64_t choice = Draw(description_.seed, EDraw::faultyPart, {i, machine.number});
        const auto slot = FindModule(machine, choice);
        if (fault.kind == EFault::olderFirmware) {
            machine.hasOldFirmware = true;
        } else if (fault.kind == EFault::narrowerLink) {
            machine.hasNarrowLink = true;
        } else if (fault.kind == EFault::missingModule && slot) {
            machine.slots[*slot].reset();
        } else if (fault.kind == EFault::slowerModule && slot) {
            machine.slots[*slot]->isSlower = true;
        } else if (fault.kind == EFault::olderDiskFirmware && !machine.disks.empty()) {
            machine.disks[choice % machine.disks.size()].hasOldFirmware = true;
        }
    }
}

void TFleetHistory::GoToNextDay() {
    ++day_;
    for (std::uint64_t i = 0; i < description_.changes.size(); ++i) {
        const TChange& change = description_.changes[i];
        if (change.machine) {
            if (change.day == day_) {
                Apply(change, i, machines_[*change.machine]);
            }
            continue;
        }
        for (TMachineState& machine : machines_) {
            if (IsDrawn(Draw(description_.seed, EDraw::change, {i, day_, machine.number}),
                        change.ratePerMillion)) {
                Apply(change, i, machine);
            }
        }
    }
}

TMachineState& TFleetHistory::FindReceiver(const TChange& change, const TMachineState& machine,
                                           std::uint64_t choice) {
    if (change.to) {
        return machines_[*change.to];
    }
    for (std::uint64_t i = 0; i < machines_.size(); ++i) {
        TMachineState& other = machines_[(choice + i) % machines_.size()];
        if (&other != &machine && other.model == machine.model) {
            return other;
        }
    }
    return machines_[machine.number];
}

void TFleetHistory::MoveDisk(TMachineState& from, TMachineState& to, std::uint64_t choice) {
    const std::size_t bays = std::min(from.disks.size(), to.disks.size());
    if (bays > 0 && &from != &to) {
        to.disks[choice % bays] = std::exchange(from.disks[choice % bays], MakeDisk());
    }
}

void TFleetHistory::MoveModule(TMachineState& from, TMachineState& to, std::uint64_t choice) {
    const auto slot = FindModule(from, choice);
    if (slot && *slot < to.slots.size() && &from != &to) {
        to.slots[*slot] = std::exchange(from.slots[*slot], MakeModule());
    }
}

void TFleetHistory::Apply(const TChange& change, std::uint64_t ordinal, TMachineState& machine) {
    const auto draw = [&](EDraw purpose) {
        return Draw(description_.seed, purpose, {ordinal, day_, machine.number});
    };
    const std::uint64_t choice = draw(EDraw::changedPart);
    const auto slot = FindModule(machine, choice);
    switch (change.kind) {
        case EChangeKind::replacedDisk:
            if (!machine.disks.empty()) {
                machine.disks[choice % machine.disks.size()] = MakeDisk();
            }
            break;
        case EChangeKind::replacedModule:
            if (slot) {
                machine.slots[*slot] = MakeModule();
            }
            break;
        case EChangeKind::stolenModule:
            if (slot) {
                machine.slots[*slot].reset();
            }
            break;
        case EChangeKind::movedDisk:
            MoveDisk(machine, FindReceiver(change, machine, draw(EDraw::receiver)), choice);
            break;
        case EChangeKind::movedModule:
            MoveModule(machine, FindReceiver(change, machine, draw(EDraw::receiver)), choice);
            break;
        case EChangeKind::updatedFirmware:
            machine.hasOldFirmware = false;
            break;
        case EChangeKind::replacedBoard:
            ++machine.board;
            break;
    }
}

}  // namespace NSYNTHESIS
