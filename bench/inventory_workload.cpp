#include "bench/inventory_workload.h"

#include "writer/catalogue/resource_catalogue.h"
#include "writer/nox_xml_writer.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <random>
#include <span>
#include <sstream>
#include <string>
#include <string_view>

namespace {

using NVORHOST::TCIMDateTime;
using NVORHOST::TCIMValue;
using NVORHOST::TMemoryClass;
using NVORHOST::TMemoryInstance;
using NVORHOST::TMemoryNamespace;
using NVORHOST::TPropertyDeclaration;
using TType = TCIMValue::TCIMType;

struct TShare {
    std::string_view className;
    std::size_t instancesPerUnit;
};

// Unlisted classes have no instance.
constexpr TShare shares[] = {
    {"KELSG_SystemSlot", 6},
    {"KELSG_SPDData", 8},
    {"KELSG_Card", 2},
    {"KELSG_Processor", 16},
    {"KELSG_DiskDrive", 4},
    {"CIM_DiskDrive", 4},
    {"KELSG_CDROMDrive", 1},
    {"KELSG_DVDDrive", 1},
    {"CIM_DiskPartition", 12},
    {"KELSG_ACPI", 1},
    {"KELSG_MAS", 1},
    {"KELSG_LogicalDisk", 4},
    {"KELSG_LSILogicalDisk", 2},
    {"KELSG_USBPort", 10},
    {"KELSG_IDEProtocolController", 2},
    {"KELSG_VideoController", 1},
    {"KELSG_PCIDevice", 40},
    {"KELSG_PCIBridge", 20},
    {"KELSG_USBController", 4},
};

struct TTypeOf {
    std::string_view property;
    TType::ECIMType type;
    bool isArray;
};

// Unlisted properties are strings.
constexpr TTypeOf types[] = {
    {"OperationalStatus", TType::eUint16, true},
    {"AddressWidth", TType::eUint16, false},
    {"CurrentClockSpeed", TType::eUint32, false},
    {"DataWidth", TType::eUint16, false},
    {"Family", TType::eUint16, false},
    {"MaxClockSpeed", TType::eUint32, false},
    {"DefaultBlockSize", TType::eUint64, false},
    {"MaxMediaSize", TType::eUint64, false},
    {"MediaIsLocked", TType::eBoolean, false},
    {"TimeOfLastMount", TType::eDateTime, false},
    {"ConsumableBlocks", TType::eUint64, false},
    {"NumberOfBlocks", TType::eUint64, false},
    {"Bootable", TType::eBoolean, false},
    {"Size", TType::eUint64, false},
    {"PrimaryPartition", TType::eBoolean, false},
    {"BlockSize", TType::eUint64, false},
    {"StartingAddress", TType::eUint64, false},
    {"EndingAddress", TType::eUint64, false},
    {"Volatile", TType::eBoolean, false},
    {"MaxSpeed", TType::eUint64, false},
    {"TimeOfLastReset", TType::eDateTime, false},
    {"ProtocolSupported", TType::eUint16, false},
    {"BaseAddress", TType::eUint32, true},
    {"SubsystemID", TType::eUint16, false},
    {"SubsystemVendorID", TType::eUint16, false},
    {"SelfTestEnabled", TType::eBoolean, false},
    {"InterruptPin", TType::eUint16, false},
    {"LatencyTimer", TType::eUint8, false},
    {"PrimaryBusNumber", TType::eUint8, false},
    {"SecondaryBusNumber", TType::eUint8, false},
    {"ManufactureDate", TType::eDateTime, false},
    {"MaxDataWidth", TType::eUint16, false},
    {"SupportsHotPlug", TType::eBoolean, false},
    {"Capacity", TType::eUint64, false},
    {"Speed", TType::eUint32, false},
    {"FormFactor", TType::eUint16, false},
};

struct TTextOf {
    std::string_view property;
    std::string_view pattern;
};

// Texts of the length and variety that such properties have on real machines.
constexpr TTextOf texts[] = {
    {"ElementName", R"(Intel(R) C62# series chipset function ## [%%%%])"},
    {"Description", "Kessel Technologies <%%%%> controller & bridge, revision %%"},
    {"DeviceID", R"(PCI\VEN_%%%%&DEV_%%%%&SUBSYS_%%%%%%%%&REV_%%\3&%%%%%%%&0&%%)"},
    {"UniqueID", "%%%%%%%%-%%%%-%%%%-%%%%-%%%%%%%%%%%%"},
    {"SerialNumber", "S#%%######%%"},
    {"PartNumber", "M3##A4K40DB#-C%%"},
    {"Model", "KT-#%##"},
    {"Manufacturer", "Kessel Technologies, Inc."},
    {"Tag", "Slot ### (%%:%%.#)"},
    {"ClassCode", "0x%%%%%%"},
    {"ExpansionROMBaseAddress", "0x%%%%%%%%"},
    {"USBVersion", "#.#"},
    {"BankLabel", "P#_Node#_Channel#_Dimm#"},
};

using TRandom = std::mt19937;  // generates the same sequence on every platform

TTypeOf TypeOf(std::string_view property) {
    const auto* const row = std::ranges::find(types, property, &TTypeOf::property);
    return row == std::end(types) ? TTypeOf{property, TType::eString, false} : *row;
}

TCIMValue Number(TType::ECIMType type, TRandom& random) {
    const auto number = static_cast<std::uint32_t>(random());
    switch (type) {
        case TType::eUint8:
            return TCIMValue(static_cast<std::uint8_t>(number));
        case TType::eUint16:
            return TCIMValue(static_cast<std::uint16_t>(number));
        case TType::eUint32:
            return TCIMValue(number);
        default:
            return TCIMValue(std::uint64_t{number} * 512);
    }
}

/// Replaces each '#' by a random decimal digit and each '%' by a random hexadecimal digit.
std::string FillIn(std::string_view pattern, TRandom& random) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    constexpr unsigned int decimal = 10;
    std::string text(pattern);
    for (char& c : text) {
        if (c == '#' || c == '%') {
            c = digits[random() % (c == '#' ? decimal : digits.size())];
        }
    }
    return text;
}

TCIMValue Scalar(const TTypeOf& type, TRandom& random) {
    if (type.type == TType::eBoolean) {
        return TCIMValue(random() % 2 == 0);
    }
    if (type.type == TType::eDateTime) {
        return TCIMValue(*TCIMDateTime::FromText(FillIn("2026111#1#4#5#.######+060", random)));
    }
    if (type.type != TType::eString) {
        return Number(type.type, random);
    }
    const auto* const row = std::ranges::find(texts, type.property, &TTextOf::property);
    return TCIMValue(FillIn(row == std::end(texts) ? "Not specified" : row->pattern, random));
}

TCIMValue Value(const TTypeOf& type, TRandom& random) {
    if (!type.isArray) {
        return Scalar(type, random);
    }
    return TCIMValue::Array(type.type, {Scalar(type, random), Scalar(type, random)});
}

std::vector<TTypeOf> SourcesOf(const TResourceClass& resourceClass) {
    std::vector<TTypeOf> sources;
    const auto add = [&](std::string_view name) {
        const bool isKnown = std::ranges::find(sources, name, &TTypeOf::property) != sources.end();
        if (!name.empty() && !isKnown) {
            sources.push_back(TypeOf(name));
        }
    };
    add(resourceClass.keyProperty);
    for (const TPropertyRow& row : resourceClass.head) {
        add(row.sourceName);
    }
    for (const TPropertyRow& row : resourceClass.properties) {
        add(row.sourceName);
    }
    return sources;
}

void AddInstances(TMemoryNamespace& inventory, const TShare& share, std::size_t units) {
    const TResourceClass& resourceClass = *FindResourceClass(share.className);
    const std::vector<TTypeOf> sources = SourcesOf(resourceClass);
    std::vector<TPropertyDeclaration> declarations;
    for (const TTypeOf& source : sources) {
        declarations.push_back({std::string(source.property), source.type, source.isArray});
    }
    const auto added = inventory.AddClass(std::string(share.className), declarations);

    TRandom random(1);
    for (std::size_t serial = 0; serial < units * share.instancesPerUnit; ++serial) {
        const auto instance = added->NewInstance();
        for (const TTypeOf& source : sources) {
            const bool isAlwaysSet =
                source.property == resourceClass.keyProperty || source.property == "ElementName";
            if (isAlwaysSet || random() % 4 != 0) {
                instance->Set(source.property, Value(source, random));
            }
        }
        instance->CommitInstance({});
    }
}

}  // namespace

boost::shared_ptr<TMemoryNamespace> MakeInventory(std::size_t units) {
    auto inventory = boost::make_shared<TMemoryNamespace>();
    for (const TShare& share : shares) {
        AddInstances(*inventory, share, units);
    }
    return inventory;
}

std::size_t UnitsForDocument(std::size_t documentBytes) {
    constexpr std::size_t sampleUnits = 20;
    std::ostringstream text;
    TNOXXMLWriterImpl(text).WriteNamespace(MakeInventory(sampleUnits));
    return documentBytes * sampleUnits / text.str().size() + 1;
}
