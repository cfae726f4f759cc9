// Inventories for tests of comparisons, in few words.
#pragma once

#include "inventory/compare/comparison.h"

#include <string>
#include <utility>
#include <vector>

namespace NINVENTORY {

inline TProperty MakeText(std::string name, std::string value) {
    return {std::move(name), "string", EShape::scalar, {std::move(value)}};
}

inline TProperty MakeNumber(std::string name, std::string value) {
    return {std::move(name), "unsignedLong", EShape::scalar, {std::move(value)}};
}

inline TProperty MakeList(std::string name, std::vector<std::string> values) {
    return {std::move(name), "string", EShape::array, std::move(values)};
}

inline TResource MakeResource(std::string type, std::string id, std::vector<TProperty> properties) {
    TResource resource;
    resource.type = std::move(type);
    resource.id = std::move(id);
    resource.properties = std::move(properties);
    return resource;
}

/// A hardware document.
inline TInventory MakeDocument(std::vector<TResource> resources) {
    return {"document", {{EDocument::hardware, "u", ""}}, {}, std::move(resources)};
}

/// A namespace with the types of its resources.
inline TInventory MakeNamespace(std::vector<TResource> resources) {
    TInventory inventory{"namespace", {{EDocument::collection, "", ""}}, {}, std::move(resources)};
    for (const TResource& resource : inventory.resources) {
        inventory.types.push_back(resource.type);
    }
    return inventory;
}

inline TResource MakeModule(const std::string& slot, const std::string& serial) {
    return MakeResource("PhysicalMemory", "ID-" + slot,
                        {MakeText("Name", slot), MakeNumber("Capacity", "17179869184"), MakeText("Tag", slot),
                         MakeText("SerialNumber", serial)});
}

inline TResource MakeDisk(const std::string& serial, const std::string& bay) {
    return MakeResource("DiskDrive", "ID-" + serial,
                        {MakeText("Name", "SAMPLE SM600"), MakeText("DeviceID", serial),
                         MakeNumber("MaxMediaSize", "600127266"),
                         MakeList("OtherIdentifyingInfo", {serial, "0000:01:00.0", bay}),
                         MakeList("IdentifyingDescriptions", {"Serial number", "PCI function", "SAS bay"})});
}

}  // namespace NINVENTORY
