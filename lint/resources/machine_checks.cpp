// Checks on firmware, processors and states.
#include "lint/resources/resource_checks.h"
#include "text/lines.h"

#include <algorithm>
#include <array>
#include <string>

namespace NLINT {
namespace {

using NINVENTORY::TResource;

// Compares a property of every processor with that of the first.
void ReportDifferent(const TResourceIndex& resources, const TReport& report, std::string_view property) {
    const TResource* first = nullptr;
    for (const TResource* const processor : resources.GetAll("Processor")) {
        const std::string_view value = processor->GetText(property);
        if (value.empty()) {
            continue;
        }
        if (first == nullptr) {
            first = processor;
        } else if (value != first->GetText(property)) {
            report.Add(DescribeResource(*processor), {std::string(value), NameSource(*processor, property)},
                       {std::string(first->GetText(property)), NameSource(*first, property)});
        }
    }
}

struct TBadState {
    std::string_view code;
    std::string_view word;
};

// Values of OperationalStatus.
constexpr TBadState badStates[] = {
    {"3", "Degraded"},
    {"5", "Predictive failure"},
    {"6", "Error"},
    {"7", "Non-recoverable error"},
    {"16", "Supporting entity in error"},
};

// Words of the kernel for members of md arrays and for paths that cannot be used.
// Source: Documentation/admin-guide/md.rst; scsi_device_state and scsi_access_state in
// drivers/scsi/scsi_sysfs.c.
constexpr std::string_view badMemberStates[] = {
    "faulty", "blocked", "write_error", "want_replacement", "offline", "transport-offline", "unavailable"};

}  // namespace

// Texts of dates sort as the dates do: "2024-03-01" before "2024-03-01T12:00:00+01:00".
void CheckFirmwareDate(const TResourceIndex& resources, const TReport& report) {
    constexpr std::size_t dayLength = 10;
    const TResource* const firmware = resources.FindFirst("BIOSElement");
    const TResource* const system = resources.FindFirst("OperatingSystem");
    if (firmware == nullptr || system == nullptr) {
        return;
    }
    const std::string_view released = firmware->GetText("ReleaseDate").substr(0, dayLength);
    const std::string_view collected = system->GetText("LocalDateTime").substr(0, dayLength);
    if (!released.empty() && !collected.empty() && released > collected) {
        report.Add(DescribeResource(*firmware), {std::string(released), NameSource(*firmware, "ReleaseDate")},
                   {std::string(collected), NameSource(*system, "LocalDateTime")});
    }
}

void CheckSteppings(const TResourceIndex& resources, const TReport& report) {
    ReportDifferent(resources, report, "Stepping");
}

void CheckMicrocode(const TResourceIndex& resources, const TReport& report) {
    ReportDifferent(resources, report, "FirmwareVersion");
}

void CheckMemberStates(const TResourceIndex& resources, const TReport& report) {
    for (const TResource* const layer : resources.GetAll("BasedOn")) {
        const bool isPath = layer->GetText("Role") == "path";
        std::string_view states = layer->GetText("State");
        while (!states.empty()) {
            const std::string_view state = NVORHOST::TakeUntil(states, ',');
            if (std::ranges::find(badMemberStates, state) != std::end(badMemberStates)) {
                report.Add(std::string(layer->GetText("Antecedent")) + " below " +
                               std::string(layer->GetText("Dependent")),
                           {std::string(state), "BasedOn, property State"},
                           {isPath ? "running" : "in_sync", "state of one that can be used"});
            }
        }
    }
}

void CheckStates(const TResourceIndex& resources, const TReport& report) {
    for (const TResource& resource : resources.GetAll()) {
        const NINVENTORY::TProperty* const states = resource.Find("OperationalStatus");
        if (states == nullptr) {
            continue;
        }
        for (const std::string& state : states->values) {
            const auto* const row = std::ranges::find(badStates, state, &TBadState::code);
            if (row != std::end(badStates)) {
                report.Add(DescribeResource(resource),
                           {std::string(row->word), NameSource(resource, "OperationalStatus")},
                           {"OK", "CIM_ManagedSystemElement.OperationalStatus"});
            }
        }
    }
}

}  // namespace NLINT
