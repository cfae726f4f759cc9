#include "machine/collect/run/collector.h"

#include "host/vor_exception.h"
#include "machine/collect/bus/controller.h"
#include "machine/collect/bus/pci_function.h"
#include "machine/collect/bus/usb_port.h"
#include "machine/collect/firmware/card.h"
#include "machine/collect/firmware/memory_array_address.h"
#include "machine/collect/firmware/memory_map.h"
#include "machine/collect/firmware/system_slot.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/machine/computer_system.h"
#include "machine/collect/machine/data_source.h"
#include "machine/collect/machine/ip_endpoint.h"
#include "machine/collect/machine/operating_system.h"
#include "machine/collect/machine/process.h"
#include "machine/collect/machine/result_class.h"
#include "machine/collect/memory/memory_module.h"
#include "machine/collect/processor/processor.h"
#include "machine/collect/run/essential_sources.h"
#include "machine/collect/storage/disk_drive.h"
#include "machine/collect/storage/disk_partition.h"
#include "machine/collect/storage/diskette_drive.h"
#include "machine/collect/storage/logical_disk.h"
#include "machine/collect/storage/optical_drive.h"
#include "machine/collect/storage/tape_drive.h"
#include "machine/system/recording_files.h"

#include <algorithm>
#include <exception>
#include <new>
#include <system_error>
#include <unordered_set>

namespace NVORHOST {

namespace {

std::size_t CountInstances(const TMemoryNamespace& target, const TCollector& collector) {
    std::size_t count = 0;
    for (const TClassShape& shape : collector.fills) {
        count += target.FindClass(shape.name)->GetInstances().size();
    }
    return count;
}

// One line from whatever a collector threw; empty when it threw nothing.
std::string RunCollector(const TCollector& collector, TCollection& collection) {
    try {
        collector.collect(collection);
        return {};
    } catch (const TResourcesExhausted&) {
        throw;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const NKELVOR20::TVORException& error) {
        return "host status " + std::to_string(error.GetStatusCode().GetCode()) + ": " + error.what();
    } catch (const std::exception& error) {
        return error.what();
    }
}

std::vector<std::string> PathsThatEnded(const std::vector<TRecordingFiles::TAccess>& accesses,
                                        EReadStatus status) {
    std::vector<std::string> paths;
    std::unordered_set<std::string_view> seen;
    for (const TRecordingFiles::TAccess& access : accesses) {
        if (access.status == status && seen.insert(access.path).second) {
            paths.push_back(access.path);
        }
    }
    return paths;
}

std::string FindEssentialFailure(const std::vector<TRecordingFiles::TAccess>& accesses) {
    for (const TRecordingFiles::TAccess& access : accesses) {
        if (IsInputError(access.cause) && IsEssentialSource(access.path)) {
            return access.path + ": " + std::generic_category().message(access.cause);
        }
    }
    return {};
}

}  // namespace

void DeclareClasses(TMemoryNamespace& target, std::span<const TCollector> collectors) {
    for (const TCollector& collector : collectors) {
        for (const TClassShape& shape : collector.fills) {
            if (!target.FindClass(shape.name)) {
                target.AddClass(std::string(shape.name), shape.declare());
            }
        }
    }
}

std::span<const TCollector> GetCollectors() {
    // Row order is the order of running, of the classes in the namespace and of listings.
    static const TCollector collectors[] = {
        {"computer-system", "The machine: maker, product, serial number, identity",
         GetComputerSystemClasses(), GetComputerSystemSources(), CollectComputerSystem},
        {"operating-system", "The running system: name, kernel, memory, times", GetOperatingSystemClasses(),
         GetOperatingSystemSources(), CollectOperatingSystem},
        {"processor", "Processors in their sockets", GetProcessorClasses(), GetProcessorSources(),
         CollectProcessors},
        {"memory", "Memory modules in their sockets", GetMemoryModuleClasses(), GetMemoryModuleSources(),
         CollectMemoryModules},
        {"memory-array", "Addresses of the memory arrays", GetMemoryArrayAddressClasses(),
         GetMemoryArrayAddressSources(), CollectMemoryArrayAddresses},
        {"memory-map", "The firmware's map of memory", GetMemoryMapClasses(), GetMemoryMapSources(),
         CollectMemoryMap},
        {"board", "Boards", GetCardClasses(), GetCardSources(), CollectCards},
        {"slot", "Expansion slots and what is in them", GetSystemSlotClasses(), GetSystemSlotSources(),
         CollectSystemSlots},
        {"disk", "Disks, physical and virtual", GetDiskDriveClasses(), GetDiskDriveSources(),
         CollectDiskDrives},
        {"diskette-drive", "Diskette drives", GetDisketteDriveClasses(), GetDisketteDriveSources(),
         CollectDisketteDrives},
        {"tape-drive", "Tape drives", GetTapeDriveClasses(), GetTapeDriveSources(), CollectTapeDrives},
        {"optical-drive", "CD and DVD drives", GetOpticalDriveClasses(), GetOpticalDriveSources(),
         CollectOpticalDrives},
        {"logical-disk", "Volumes of md, LVM, multipath, encryption and RAID adapters",
         GetLogicalDiskClasses(), GetLogicalDiskSources(), CollectLogicalDisks},
        {"partition", "Partitions of disks and md arrays", GetDiskPartitionClasses(),
         GetDiskPartitionSources(), CollectDiskPartitions},
        {"pci", "Functions and bridges on the PCI buses", GetPciFunctionClasses(), GetPciFunctionSources(),
         CollectPciFunctions},
        {"controller", "Display, USB and IDE controllers", GetControllerClasses(), GetControllerSources(),
         CollectControllers},
        {"usb-port", "Ports of the USB hubs", GetUsbPortClasses(), GetUsbPortSources(), CollectUsbPorts},
        {"ip-endpoint", "Addresses of the network interfaces", GetIpEndpointClasses(), GetIpEndpointSources(),
         CollectIpEndpoints},
        {"process", "What runs on the machine", GetProcessClasses(), GetProcessSources(), CollectProcesses,
         /*onlyWhenAskedFor=*/true},
        {"data-source", "This program and its version", GetDataSourceClasses(), GetDataSourceSources(),
         CollectDataSource},
        {"result", "The class that plug-ins put their results into", GetResultClasses(), GetResultSources(),
         CollectResultClass},
    };
    return collectors;
}

std::vector<TCollector> ChooseCollectors(const TCollectorChoice& choice) {
    const auto names = [](const std::vector<std::string>& list, const TCollector& collector) {
        return std::ranges::find(list, collector.name) != list.end();
    };
    std::vector<TCollector> chosen;
    for (const TCollector& collector : GetCollectors()) {
        const bool isWanted =
            choice.only.empty() ? !collector.onlyWhenAskedFor : names(choice.only, collector);
        const bool isAskedFor = choice.withProcesses && collector.onlyWhenAskedFor;
        if ((isWanted || isAskedFor) && !names(choice.skip, collector)) {
            chosen.push_back(collector);
        }
    }
    return chosen;
}

std::vector<TCollectReport> CollectAll(const TCollectContext& context) {
    return CollectAll(context, ChooseCollectors({}));
}

struct TCollectorRuns::TParts {
    explicit TParts(const TCollectContext& givenContext)
        : context(givenContext), files(context.files), collection(context, files) {}

    const TCollectContext& context;
    TRecordingFiles files;
    TCollection collection;
};

TCollectorRuns::TCollectorRuns(const TCollectContext& context, std::span<const TCollector> collectors)
    : parts_(std::make_unique<TParts>(context)) {
    DeclareClasses(context.target, collectors);
}

TCollectorRuns::~TCollectorRuns() = default;

TCollectReport TCollectorRuns::Run(const TCollector& collector) {
    const auto start = std::chrono::steady_clock::now();
    TMemoryNamespace& target = parts_->context.target;
    const std::size_t instancesBefore = CountInstances(target, collector);
    TCollectReport report;
    report.collector = collector.name;
    report.failure = RunCollector(collector, parts_->collection);
    const auto accesses = parts_->files.TakeAccesses();
    report.deniedSources = PathsThatEnded(accesses, EReadStatus::denied);
    report.failedSources = PathsThatEnded(accesses, EReadStatus::failed);
    report.timedOutSources = PathsThatEnded(accesses, EReadStatus::timedOut);
    report.essentialFailure = FindEssentialFailure(accesses);
    report.notes = parts_->collection.TakeNotes();
    report.warnings = parts_->collection.TakeWarnings();
    report.instances = CountInstances(target, collector) - instancesBefore;
    report.replacedBytes = parts_->collection.TakeReplacedBytes();
    report.duration = std::chrono::steady_clock::now() - start;
    return report;
}

std::vector<TCollectReport> CollectAll(const TCollectContext& context,
                                       std::span<const TCollector> collectors) {
    TCollectorRuns runs(context, collectors);
    std::vector<TCollectReport> reports;
    for (const TCollector& collector : collectors) {
        reports.push_back(runs.Run(collector));
    }
    return reports;
}

}  // namespace NVORHOST
