// KELSG_PCIDevice and KELSG_PCIBridge: one instance per PCI function in the order of their addresses:
// KELSG_PCIDevice for header type 0, KELSG_PCIBridge for types 1 and 2. The class code decides if the
// registers cannot be read.
#include "machine/collect/bus/pci_class_name.h"
#include "machine/collect/bus/pci_source.h"
#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"

#include <algorithm>

namespace NVORHOST {
namespace {

struct TFunction {
    std::optional<std::string> elementName, description, deviceId;
    std::optional<std::uint16_t> protocolSupported, deviceSelectTiming, interruptPin, subsystemId,
        subsystemVendorId, bridgeType, memoryBase, memoryLimit;
    std::optional<std::uint8_t> cacheLineSize, classCode, latencyTimer, maxLatency, minGrantTime, ioBase,
        ioLimit, primaryBus, secondaryBus, subordinateBus;
    std::optional<std::uint32_t> expansionRom;
    std::optional<bool> selfTestEnabled;
    std::optional<std::vector<std::uint32_t>> baseAddress;
    TInstancePlace place{};
};

// Common to devices and bridges.
constexpr TPropertyRow<TFunction> functionRows[] = {
    {"ElementName", &TFunction::elementName, "@/config 00h; @/config 02h; @/vendor; @/device"},
    {"Description", &TFunction::description, "@/config 09h; @/class"},
    {"DeviceID", &TFunction::deviceId, "@"},
    {"OperationalStatus", TUnavailable{ECimType::eUint16, /*isArray=*/true},
     "none: a bound driver does not show that a function works"},
    {"MaxNumberControlled", TUnavailable{ECimType::eUint32}, "none: not reported by the function"},
    {"ProtocolSupported", &TFunction::protocolSupported, "@/config 0Ah; @/class"},
    {"TimeOfLastReset", TUnavailable{ECimType::eDateTime}, "none: the kernel keeps no such time"},
    {"CacheLineSize", &TFunction::cacheLineSize, "@/config 0Ch"},
    {"ClassCode", &TFunction::classCode, "@/config 0Bh; @/class"},
    {"DeviceSelectTiming", &TFunction::deviceSelectTiming, "@/config 06h bits 10:9"},
    {"ExpansionROMBaseAddress", &TFunction::expansionRom, "@/config 30h"},
    {"InterruptPin", &TFunction::interruptPin, "@/config 3Dh"},
    {"LatencyTimer", &TFunction::latencyTimer, "@/config 0Dh"},
    {"SelfTestEnabled", &TFunction::selfTestEnabled, "@/config 0Fh bit 7"},
    {"BaseAddress", &TFunction::baseAddress, "@/config 10h"},
};

constexpr TPropertyRow<TFunction> deviceOwnRows[] = {
    {"MaxLatency", &TFunction::maxLatency, "@/config 3Fh"},
    {"MinGrantTime", &TFunction::minGrantTime, "@/config 3Eh"},
    {"SubsystemID", &TFunction::subsystemId, "@/config 2Eh; @/subsystem_device; @/modalias"},
    {"SubsystemVendorID", &TFunction::subsystemVendorId, "@/config 2Ch; @/subsystem_vendor; @/modalias"},
};
constexpr auto deviceRows = JoinRows(functionRows, deviceOwnRows);

constexpr TPropertyRow<TFunction> bridgeOwnRows[] = {
    {"BridgeType", &TFunction::bridgeType, "@/config 0Ah; @/class"},
    {"IOBase", &TFunction::ioBase, "@/config 1Ch"},
    {"IOLimit", &TFunction::ioLimit, "@/config 1Dh"},
    {"MemoryBase", &TFunction::memoryBase, "@/config 20h"},
    {"MemoryLimit", &TFunction::memoryLimit, "@/config 22h"},
    {"PrimaryBusNumber", &TFunction::primaryBus, "@/config 18h"},
    {"SecondaryBusNumber", &TFunction::secondaryBus, "@/config 19h"},
    {"SubordinateBusNumber", &TFunction::subordinateBus, "@/config 1Ah"},
};
constexpr auto bridgeRows = JoinRows(functionRows, bridgeOwnRows);

constexpr TCimClass<TFunction> pciDeviceClass{"KELSG_PCIDevice", deviceRows};
constexpr TCimClass<TFunction> pciBridgeClass{"KELSG_PCIBridge", bridgeRows};
constexpr const IClassDeclaration* classes[] = {&pciDeviceClass, &pciBridgeClass};

constexpr auto sourcePatterns = pciSources;

struct TClassValue {
    std::uint8_t baseClass;
    std::uint8_t subclass;
    std::uint16_t value;
};

// CIM_Controller.ProtocolSupported: the protocol on the side that the function controls.
constexpr TClassValue protocols[] = {
    {0x01, 0x01, 37},  // IDE
    {0x01, 0x05, 6},   // ATA
    {0x01, 0x06, 48},  // Serial ATA
    {0x01, 0x07, 1},   // SAS: other
    {0x01, 0x08, 1},   // NVMe: other
    {0x06, 0x01, 4},   // ISA
    {0x06, 0x02, 3},   // EISA
    {0x06, 0x03, 35},  // MCA
    {0x06, 0x04, 5},   // PCI
    {0x06, 0x05, 15},  // PCMCIA
    {0x06, 0x07, 15},  // CardBus
    {0x07, 0x00, 27},  // RS232
    {0x07, 0x01, 17},  // parallel
    {0x0C, 0x00, 12},  // SBP-2 over 1394
    {0x0C, 0x03, 16},  // USB
    {0x0C, 0x04, 10},  // Fibre Channel
};

// Class 0100h also covers other transports; these drivers serve parallel SCSI adapters only.
constexpr std::string_view parallelScsiDrivers[] = {
    "sym53c8xx", "aic7xxx", "aic79xx", "am53c974", "tmscsim", "dc395x",    "BusLogic", "mptspi",
    "qla1280",   "initio",  "atp870u", "advansys", "a100u2w", "ncr53c8xx", "nsp32",
};

// Maps the subclass of a bridge to CIM_PCIBridge.BridgeType; "other" for a subclass without a number there.
std::uint16_t FindBridgeType(std::uint8_t subclass, std::optional<std::uint8_t> expressPortType) {
    constexpr std::uint8_t pciSubclass = 0x04;
    constexpr std::uint8_t lastSameNumber = 0x08;
    constexpr std::uint16_t other = 128;
    constexpr std::uint16_t express = 10;
    constexpr std::uint16_t expressToPci = 11;
    constexpr std::uint8_t expressPortTypes[] = {4, 5, 6, 8};  // root, upstream, downstream, from PCI
    constexpr std::uint8_t toPciPortType = 7;
    if (subclass == pciSubclass && expressPortType) {
        if (*expressPortType == toPciPortType) {
            return expressToPci;
        }
        if (std::ranges::find(expressPortTypes, *expressPortType) != std::end(expressPortTypes)) {
            return express;
        }
    }
    return subclass <= lastSameNumber ? subclass : other;
}

// Maps status bits 10:9 to CIM_PCIController.DeviceSelectTiming.
std::uint16_t FindSelectTiming(std::uint16_t status) {
    constexpr std::uint16_t fast = 2;
    return static_cast<std::uint16_t>(fast + ((status >> 9) & 0x03));
}

std::optional<std::uint16_t> FindProtocol(const ISystemFiles& files, const TPciSource& source) {
    constexpr std::uint16_t parallelScsi = 9;
    for (const TClassValue& row : protocols) {
        if (row.baseClass == source.baseClass && row.subclass == source.subclass) {
            return row.value;
        }
    }
    if (source.baseClass != 0x01 || source.subclass != 0x00) {
        return std::nullopt;
    }
    const auto driver = ReadLinkedName(files, source.folder + "/driver");
    const bool isParallel =
        driver && std::ranges::find(parallelScsiDrivers, *driver) != std::end(parallelScsiDrivers);
    return isParallel ? std::optional(parallelScsi) : std::nullopt;
}

// PCI Express hard-wires the timing bits to zero.
bool LacksTiming(const TPciSource& source) {
    constexpr std::uint16_t timingBits = 0x0600;
    return source.isExpress && (source.config->status & timingBits) == 0;
}

std::optional<std::uint32_t> FindRomAddress(const TPciConfig& config) {
    constexpr std::uint32_t addressBits = 0xFFFFF800;  // bit 0 enables, the others are reserved
    const std::uint32_t address = config.expansionRom.value_or(0) & addressBits;
    return address == 0 ? std::nullopt : std::optional(address);
}

std::optional<std::vector<std::uint32_t>> FindBaseAddresses(const TPciConfig& config) {
    std::vector<std::uint32_t> addresses;
    std::copy_if(config.baseAddresses.begin(), config.baseAddresses.end(), std::back_inserter(addresses),
                 [](std::uint32_t address) { return address != 0; });
    return addresses.empty() ? std::nullopt : std::optional(std::move(addresses));
}

std::uint16_t FindInterruptPin(std::uint8_t pin) {
    constexpr std::uint8_t lastPin = 4;
    constexpr std::uint16_t unknown = 5;
    return pin <= lastPin ? pin : unknown;
}

void SetSubsystem(const TPciSource& source, TFunction& function) {
    if (source.subsystemVendorId != 0 && source.subsystemVendorId != 0xFFFF) {
        function.subsystemVendorId = source.subsystemVendorId;
        function.subsystemId = source.subsystemId;
    }
}

void SetFromConfig(const TPciSource& source, TFunction& function) {
    const TPciConfig& config = *source.config;
    function.cacheLineSize = config.cacheLineSize;
    function.latencyTimer = config.latencyTimer;
    if (!LacksTiming(source)) {
        function.deviceSelectTiming = FindSelectTiming(config.status);
    }
    function.expansionRom = FindRomAddress(config);
    function.interruptPin = FindInterruptPin(config.interruptPin);
    function.selfTestEnabled = (config.selfTest & 0x80) != 0;
    function.baseAddress = FindBaseAddresses(config);
    function.maxLatency = config.maxLatency;
    function.minGrantTime = config.minGrant;
    function.ioBase = config.ioBase;
    function.ioLimit = config.ioLimit;
    function.memoryBase = config.memoryBase;
    function.memoryLimit = config.memoryLimit;
    function.primaryBus = config.primaryBus;
    function.secondaryBus = config.secondaryBus;
    function.subordinateBus = config.subordinateBus;
}

TFunction MakeFunction(TCollection& collection, const TPciSource& source) {
    const ISystemFiles& files = collection.GetFiles();
    TFunction function;
    function.place.folder = source.folder;
    function.elementName = MakePciElementName(source, collection.GetDeviceNames());
    function.description = GetPciClassName(source.baseClass, source.subclass);
    function.deviceId = source.address;
    function.protocolSupported = FindProtocol(files, source);
    function.classCode = source.baseClass;
    SetSubsystem(source, function);
    if (source.config) {
        SetFromConfig(source, function);
    }
    if (IsBridge(source)) {
        const auto portType = source.config ? source.config->expressPortType : std::nullopt;
        function.bridgeType = FindBridgeType(source.subclass, portType);
    }
    return function;
}

void CollectPciFunctions(TCollection& collection) {
    for (const TPciSource& source : GetPciSources(collection)) {
        const TFunction function = MakeFunction(collection, source);
        if (IsBridge(source)) {
            collection.Commit(pciBridgeClass, function);
        } else {
            collection.Commit(pciDeviceClass, function);
        }
    }
}

}  // namespace

extern constinit const TCollector pciFunctionCollector{
    .name = "pci",
    .description = "Functions and bridges on the PCI buses",
    .fills = classes,
    .reads = sourcePatterns,
    .collect = CollectPciFunctions,
};

}  // namespace NVORHOST
