#include "machine/collect/run/collectors.h"

#include <algorithm>

namespace NVORHOST {

// Each is defined in the source file of its collector.
extern const TCollector computerSystemCollector, operatingSystemCollector, systemKindCollector,
    securitySettingCollector, processorCollector, cacheCollector, memoryModuleCollector, memorySlotCollector,
    memoryArrayAddressCollector, memoryMapCollector, cardCollector, chassisCollector, systemFirmwareCollector,
    systemSlotCollector, batteryCollector, powerSupplyCollector, diskDriveCollector, disketteDriveCollector,
    tapeDriveCollector, opticalDriveCollector, logicalDiskCollector, diskPartitionCollector, basedOnCollector,
    fileSystemCollector, pciFunctionCollector, pciPortCollector, controllerCollector, monitorCollector,
    videoOutputCollector, usbPortCollector, networkPortCollector, ipEndpointCollector, processCollector,
    dataSourceCollector, resultCollector;

std::span<const TCollector> GetCollectors() {
    // Row order is the order of running, of the classes in the namespace and of listings.
    // clang-format off
    static const TCollector collectors[] = {
        computerSystemCollector,
        operatingSystemCollector,
        systemKindCollector,
        securitySettingCollector,
        processorCollector,
        cacheCollector,
        memoryModuleCollector,
        memorySlotCollector,
        memoryArrayAddressCollector,
        memoryMapCollector,
        cardCollector,
        chassisCollector,
        systemFirmwareCollector,
        systemSlotCollector,
        batteryCollector,
        powerSupplyCollector,
        diskDriveCollector,
        disketteDriveCollector,
        tapeDriveCollector,
        opticalDriveCollector,
        logicalDiskCollector,
        diskPartitionCollector,
        basedOnCollector,
        fileSystemCollector,
        pciFunctionCollector,
        pciPortCollector,
        controllerCollector,
        monitorCollector,
        videoOutputCollector,
        usbPortCollector,
        networkPortCollector,
        ipEndpointCollector,
        processCollector,
        dataSourceCollector,
        resultCollector,
    };
    // clang-format on
    return collectors;
}

std::vector<TCollector> ChooseCollectors(const TCollectorChoice& choice) {
    const auto names = [](const std::vector<std::string>& list, const TCollector& collector) {
        return std::ranges::find(list, collector.name) != list.end();
    };
    std::vector<TCollector> chosen;
    for (const TCollector& collector : GetCollectors()) {
        const bool isDefault = !collector.isOptIn && (collector.isForDocuments || !choice.documentsOnly);
        const bool isWanted = choice.only.empty() ? isDefault : names(choice.only, collector);
        const bool isAskedFor = choice.withProcesses && collector.isOptIn;
        if ((isWanted || isAskedFor) && !names(choice.skip, collector)) {
            chosen.push_back(collector);
        }
    }
    chosen.insert(chosen.end(), choice.extra.begin(), choice.extra.end());
    return chosen;
}

}  // namespace NVORHOST
