#include "lint/run/finding_collector.h"

#include "lint/firmware/machine_checks.h"
#include "machine/collect/frame/collection.h"

#include <array>
#include <string>

namespace NLINT {
namespace {

using NVORHOST::TCollection;
using NVORHOST::TSourcePattern;

struct TFindingRecord {
    std::optional<std::string> check, subject, firstValue, firstSource, secondValue, secondSource;
};

constexpr NVORHOST::TPropertyRow<TFindingRecord> rows[] = {
    {"Check", &TFindingRecord::check},
    {"Subject", &TFindingRecord::subject},
    {"FirstValue", &TFindingRecord::firstValue},
    {"FirstSource", &TFindingRecord::firstSource},
    {"SecondValue", &TFindingRecord::secondValue},
    {"SecondSource", &TFindingRecord::secondSource},
};

constexpr NVORHOST::TCimClass<TFindingRecord> findingClass{"NOX_Finding", rows};
constexpr const NVORHOST::IClassDeclaration* classes[] = {&findingClass};

constexpr auto sourcePatterns = NVORHOST::Join(
    NVORHOST::smbiosSources, std::array<TSourcePattern, 33>{
                                 "/proc/cpuinfo",
                                 "/sys/block",
                                 "/sys/block/*",
                                 "/sys/block/*/*/partition",
                                 "/sys/block/*/*/size",
                                 "/sys/block/*/*/start",
                                 "/sys/block/*/alignment_offset",
                                 "/sys/block/*/device",
                                 "/sys/block/*/queue/physical_block_size",
                                 "/sys/block/*/ro",
                                 "/sys/block/*/size",
                                 "/sys/bus/pci/devices",
                                 "/sys/bus/pci/devices/*/class",
                                 "/sys/bus/pci/devices/*/current_link_width",
                                 "/sys/bus/pci/devices/*/max_link_width",
                                 "/sys/bus/usb/devices",
                                 "/sys/bus/usb/devices/*/bDeviceClass",
                                 "/sys/bus/usb/devices/*/bos_descriptors",
                                 "/sys/bus/usb/devices/*/product",
                                 "/sys/bus/usb/devices/*/speed",
                                 "/sys/class/dmi/id/product_uuid",
                                 "/sys/class/iommu",
                                 "/sys/devices/system/clocksource/clocksource0/current_clocksource",
                                 "/sys/devices/system/cpu",
                                 "/sys/devices/system/cpu/cpu*/online",
                                 "/sys/devices/system/cpu/cpu*/topology/physical_package_id",
                                 "/sys/devices/system/cpu/cpu*/topology/thread_siblings_list",
                                 "/sys/firmware/acpi/tables/DMAR",
                                 "/sys/firmware/acpi/tables/IVRS",
                                 "/sys/firmware/memmap",
                                 "/sys/firmware/memmap/*/end",
                                 "/sys/firmware/memmap/*/start",
                                 "/sys/firmware/memmap/*/type",
                             });

void CollectFindings(TCollection& collection) {
    const TMachineEvidence machine(collection.GetFiles());
    for (TFinding& finding : RunChecks(GetMachineChecks(), machine)) {
        collection.Commit(findingClass, {std::move(finding.check), std::move(finding.subject),
                                         std::move(finding.first.value), std::move(finding.first.source),
                                         std::move(finding.second.value), std::move(finding.second.source)});
    }
}

std::string TextOf(const NVORHOST::TMemoryInstance& instance, std::string_view property) {
    constexpr unsigned char decimal = 10;
    const auto* const value = instance.Find(property);
    return value == nullptr || value->IsNull() ? std::string() : value->ToString(decimal);
}

}  // namespace

extern constinit const NVORHOST::TCollector findingCollector{
    .name = "lint",
    .description = "Contradictions in the firmware's tables and the kernel's files",
    .fills = classes,
    .reads = sourcePatterns,
    .collect = CollectFindings,
    .isForDocuments = false,
};

std::vector<TFinding> GetFindings(const NVORHOST::TMemoryNamespace& collected) {
    std::vector<TFinding> findings;
    const auto filled = collected.FindClass(findingClass.GetName());
    if (filled == nullptr) {
        return findings;
    }
    for (const auto& instance : filled->GetInstances()) {
        findings.push_back({TextOf(*instance, "Check"),
                            TextOf(*instance, "Subject"),
                            {TextOf(*instance, "FirstValue"), TextOf(*instance, "FirstSource")},
                            {TextOf(*instance, "SecondValue"), TextOf(*instance, "SecondSource")}});
    }
    return findings;
}

}  // namespace NLINT
