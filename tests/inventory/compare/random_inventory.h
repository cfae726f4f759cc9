// Inventories that bytes determine, for property tests and fuzzing: few types, identifiers, names and values,
// so that parts move, are replaced and occur several times.
#pragma once

#include "inventory/compare/inventory.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace NINVENTORY {

using TTakeByte = std::function<std::uint8_t()>;

inline TProperty MakeRandomProperty(const TTakeByte& take) {
    static constexpr std::string_view names[] = {
        "Name",     "Tag",         "DeviceID",           "SerialNumber", "ClassCode",
        "UniqueID", "SubsystemID", "FreePhysicalMemory", "Antecedent",   "OtherIdentifyingInfo"};
    static constexpr std::string_view values[] = {"", "1", "2", "sda1", "sdb1", "\xFF<&", "17179869184"};
    static constexpr std::string_view entries[] = {"Serial number", "PCI function", "SAS bay"};
    TProperty property;
    property.name = names[take() % std::size(names)];
    property.type = take() % 4 == 0 ? "unsignedLong" : "string";
    property.shape = static_cast<EShape>(take() % 3);
    const std::size_t count =
        property.shape == EShape::array ? take() % 4U : property.shape == EShape::scalar;
    for (std::size_t i = 0; i < count; ++i) {
        property.values.emplace_back(values[take() % std::size(values)]);
    }
    if (take() % 8 == 0) {
        property = {"IdentifyingDescriptions", "string", EShape::array, {}};
        for (std::size_t i = 0; i < count; ++i) {
            property.values.emplace_back(entries[take() % std::size(entries)]);
        }
    }
    return property;
}

// A part with a place and a serial number of its type, each of which may be missing.
inline void AddRandomIdentity(const TTakeByte& take, TResource& resource) {
    static constexpr std::string_view places[] = {"Tag", "DeviceID", "Antecedent"};
    static constexpr std::string_view serials[] = {"SerialNumber", "UniqueID", "SubsystemID"};
    const auto add = [&](std::string_view name, unsigned count) {
        if (take() % 8 != 0) {
            resource.properties.push_back(
                {std::string(name), "string", EShape::scalar, {std::to_string(take() % count)}});
        }
    };
    for (const std::string_view name : places) {
        add(name, 6);
    }
    for (const std::string_view name : serials) {
        add(name, 12);
    }
}

inline TResource MakeRandomResource(const TTakeByte& take) {
    static constexpr std::string_view types[] = {
        "PhysicalMemory", "Processor",     "PCIDevice", "DiskDrive",       "BasedOn",
        "BIOSElement",    "DiskPartition", "Server",    "OperatingSystem", "Unheard"};
    TResource resource;
    // Most are of the first three types, so that there are several of them to pair.
    resource.type = types[take() % 2 == 0 ? take() % 3 : take() % std::size(types)];
    resource.id = std::string(1, static_cast<char>('A' + take() % 24));
    if (take() % 4 != 0) {
        AddRandomIdentity(take, resource);
    }
    for (std::size_t count = take() % 4U; count > 0; --count) {
        resource.properties.push_back(MakeRandomProperty(take));
    }
    return resource;
}

inline TInventory MakeRandomInventory(const TTakeByte& take) {
    TInventory inventory;
    inventory.documents.push_back({take() % 8 == 0 ? EDocument::hardware : EDocument::collection, "", ""});
    inventory.types = {"PhysicalMemory", "Processor",     "PCIDevice", "DiskDrive",      "BasedOn",
                       "BIOSElement",    "DiskPartition", "Server",    "OperatingSystem"};
    if (take() % 4 != 0) {
        inventory.types.emplace_back("Unheard");
    }
    for (std::size_t count = take() % 24U; count > 0; --count) {
        inventory.resources.push_back(MakeRandomResource(take));
    }
    return inventory;
}

}  // namespace NINVENTORY
