#include "vorhost/collect/collector.h"

#include "host/vor_exception.h"
#include "vorhost/collect/card.h"
#include "vorhost/collect/collection.h"
#include "vorhost/collect/computer_system.h"
#include "vorhost/collect/controller.h"
#include "vorhost/collect/data_source.h"
#include "vorhost/collect/disk_drive.h"
#include "vorhost/collect/disk_partition.h"
#include "vorhost/collect/diskette_drive.h"
#include "vorhost/collect/ip_endpoint.h"
#include "vorhost/collect/logical_disk.h"
#include "vorhost/collect/memory_array_address.h"
#include "vorhost/collect/memory_map.h"
#include "vorhost/collect/memory_module.h"
#include "vorhost/collect/operating_system.h"
#include "vorhost/collect/optical_drive.h"
#include "vorhost/collect/pci_function.h"
#include "vorhost/collect/process.h"
#include "vorhost/collect/processor.h"
#include "vorhost/collect/result_class.h"
#include "vorhost/collect/system_slot.h"
#include "vorhost/collect/tape_drive.h"
#include "vorhost/collect/usb_port.h"
#include "vorhost/system/recording_files.h"

#include <algorithm>
#include <exception>
#include <unordered_set>

namespace NVORHOST {

namespace {

void DeclareClasses(TMemoryNamespace& target, std::span<const TCollector> collectors) {
    for (const TCollector& collector : collectors) {
        for (const TClassShape& shape : collector.fills) {
            if (!target.FindClass(shape.name)) {
                target.AddClass(std::string(shape.name), shape.declare());
            }
        }
    }
}

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

}  // namespace

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

std::vector<TCollectReport> CollectAll(const TCollectContext& context,
                                       std::span<const TCollector> collectors) {
    TRecordingFiles files(context.files);
    TCollection collection(context, files);
    DeclareClasses(context.target, collectors);
    std::vector<TCollectReport> reports;
    for (const TCollector& collector : collectors) {
        const auto start = std::chrono::steady_clock::now();
        const std::size_t instancesBefore = CountInstances(context.target, collector);
        TCollectReport& report = reports.emplace_back();
        report.collector = collector.name;
        report.failure = RunCollector(collector, collection);
        const auto accesses = files.TakeAccesses();
        report.deniedSources = PathsThatEnded(accesses, EReadStatus::denied);
        report.failedSources = PathsThatEnded(accesses, EReadStatus::failed);
        report.notes = collection.TakeNotes();
        report.warnings = collection.TakeWarnings();
        report.instances = CountInstances(context.target, collector) - instancesBefore;
        report.replacedBytes = collection.TakeReplacedBytes();
        report.duration = std::chrono::steady_clock::now() - start;
    }
    return reports;
}

}  // namespace NVORHOST
