#include "machine/collect/frame/operational_status.h"

#include "text/find_row.h"

#include <span>

namespace NVORHOST {
namespace {

struct TStateWord {
    std::string_view word;
    std::uint16_t status;
};

// 2 OK, 4 stressed, 7 non-recoverable error, 8 starting, 9 stopping, 13 lost communication, 15 dormant.
constexpr TStateWord diskStates[] = {
    // SCSI
    {"running", statusOk},
    {"offline", 13},
    {"transport-offline", 13},
    {"created", 8},
    {"quiesce", 15},
    {"blocked", 4},
    {"created-blocked", 4},
    {"cancel", 9},
    {"deleted", 9},
    // NVMe
    {"live", statusOk},
    {"new", 8},
    {"resetting", 8},
    {"connecting", 8},
    {"deleting", 9},
    {"deleting (no IO)", 9},
    {"dead", 7},
};

// 0 unknown, 1 other, 10 stopped, 11 in service, 15 dormant, 16 supporting entity in error.
constexpr TStateWord interfaceStates[] = {
    {"up", statusOk}, {"down", 10},      {"lowerlayerdown", 16}, {"dormant", 15},
    {"testing", 11},  {"notpresent", 1}, {"unknown", 0},  // loopback reports "unknown" while it works
};

// 0 unknown, 3 degraded, 6 error.
constexpr TStateWord raidVolumeStates[] = {
    {"active", statusOk}, {"degraded", 3}, {"resyncing", 3}, {"offline", 6}, {"unknown", 0},
};

// 10 stopped.
constexpr TStateWord arrayStates[] = {
    {"clean", statusOk},    {"active", statusOk},    {"active-idle", statusOk}, {"write-pending", statusOk},
    {"readonly", statusOk}, {"read-auto", statusOk}, {"inactive", 10},          {"clear", 10},
};

struct TStateCode {
    std::uint8_t code;
    std::uint16_t status;
};

// DSP0134, 7.5: status of the processor, bits 2:0.
constexpr TStateCode processorStates[] = {
    {0, 0},         // unknown
    {1, statusOk},  // enabled
    {2, 10},        // disabled by the user: stopped
    {3, 6},         // disabled by firmware after an error
    {4, 15},        // idle: dormant
    {7, 1},         // other
};

// DSP0134, 7.4.2, from best to worst; "unknown" ranks lowest.
constexpr TStateCode chassisStates[] = {
    {2, 0},         // unknown
    {3, statusOk},  // safe
    {1, 1},         // other
    {4, 3},         // warning: degraded
    {5, 6},         // critical: error
    {6, 7},         // non-recoverable
};

std::optional<TOperationalStatus> MakeStatus(std::optional<std::uint16_t> status) {
    return status ? std::optional(TOperationalStatus{*status}) : std::nullopt;
}

std::optional<TOperationalStatus> FindWord(std::span<const TStateWord> states, std::string_view word) {
    return MakeStatus(FindCell(states, &TStateWord::word, word, &TStateWord::status));
}

}  // namespace

std::optional<TOperationalStatus> FindDiskStatus(std::string_view state) {
    return FindWord(diskStates, state);
}

std::optional<TOperationalStatus> FindInterfaceStatus(std::string_view state) {
    return FindWord(interfaceStates, state);
}

std::optional<TOperationalStatus> FindRaidVolumeStatus(std::string_view state) {
    return FindWord(raidVolumeStates, state);
}

std::optional<TOperationalStatus> FindArrayStatus(std::string_view arrayState, std::uint32_t degraded,
                                                  std::string_view syncAction) {
    constexpr std::uint16_t statusDegraded = 3;
    constexpr std::uint16_t statusInService = 11;
    auto status = FindWord(arrayStates, arrayState);
    if (status && status->front() == statusOk) {
        if (degraded > 0) {
            status->front() = statusDegraded;
        }
        if (syncAction == "resync" || syncAction == "recover") {
            status->push_back(statusInService);
        }
    }
    return status;
}

std::optional<TOperationalStatus> FindProcessorStatus(std::uint8_t status) {
    constexpr std::uint8_t statusBits = 0x07;
    const auto code = static_cast<std::uint8_t>(status & statusBits);
    return MakeStatus(FindCell(processorStates, &TStateCode::code, code, &TStateCode::status));
}

std::optional<TOperationalStatus> FindChassisStatus(const std::vector<std::optional<std::uint8_t>>& states) {
    const TStateCode* worst = nullptr;
    for (const auto& state : states) {
        for (const TStateCode& row : chassisStates) {
            if (state == row.code && (worst == nullptr || worst < &row)) {
                worst = &row;
            }
        }
    }
    return worst == nullptr ? std::nullopt : std::optional(TOperationalStatus{worst->status});
}

}  // namespace NVORHOST
