// Collects the ports of network devices as CIM_EthernetPort, CIM_WiFiPort or CIM_IBPort, and all others, such
// as bridges, bonds, VLANs, tunnels and modems, as CIM_NetworkPort, sorted by interface name. The loopback
// interface is not collected. CIM_DeviceSAPImplementation: one instance per pair of a port (Antecedent) and
// an address that it carries (Dependent).
#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/frame/device_position.h"
#include "machine/collect/frame/operational_status.h"
#include "machine/collect/network/interface_address.h"
#include "machine/parse/uevent.h"
#include "machine/parse/vlan_config.h"
#include "text/ascii.h"
#include "text/hex.h"

#include <algorithm>
#include <array>
#include <functional>
#include <iterator>
#include <map>
#include <utility>

namespace NVORHOST {
namespace {

struct TNetworkPort {
    std::optional<std::string> elementName, description, deviceId, name, permanentAddress;
    std::optional<TOperationalStatus> operationalStatus;
    std::optional<std::uint16_t> enabledState, linkTechnology, vlanId;
    std::optional<std::vector<std::string>> otherIdentifyingInfo, identifyingDescriptions, networkAddresses;
    std::optional<std::uint64_t> speedBitsPerSecond, mtuBytes;
    std::optional<bool> isFullDuplex;
    TInstancePlace place{};
};

constexpr TPropertyRow<TNetworkPort> networkPortRows[] = {
    {"ElementName", &TNetworkPort::elementName, "@"},
    {"Description", &TNetworkPort::description,
     "@/uevent DEVTYPE; @/phy80211; @/type; @/bridge; @/bonding; @/tun_flags"},
    {"DeviceID", &TNetworkPort::deviceId, "property PermanentAddress; @/device; @/dev_port; @"},
    {"Name", &TNetworkPort::name, "@"},
    {"OperationalStatus", &TNetworkPort::operationalStatus, "@/operstate"},
    {"EnabledState", &TNetworkPort::enabledState, "@/flags; @/operstate"},
    {"OtherIdentifyingInfo", &TNetworkPort::otherIdentifyingInfo,
     "[PCI function] @; [Driver] @/device/driver; [Bond] @/master; [Bridge] @/master; [Upper port] @/master; "
     "[Lower port] @ lower_*"},
    {"IdentifyingDescriptions", &TNetworkPort::identifyingDescriptions, "property OtherIdentifyingInfo"},
    {"PermanentAddress", &TNetworkPort::permanentAddress,
     "@/bonding_slave/perm_hwaddr; @/address; @/addr_assign_type"},
    {"NetworkAddresses", &TNetworkPort::networkAddresses, "@/address"},
    {"LinkTechnology", &TNetworkPort::linkTechnology, "@/type"},
    {"Speed", &TNetworkPort::speedBitsPerSecond, "number @/speed"},
    {"FullDuplex", &TNetworkPort::isFullDuplex, "@/duplex"},
    {"ActiveMaximumTransmissionUnit", &TNetworkPort::mtuBytes, "number @/mtu"},
};

// VLANs are among the other ports.
constexpr TPropertyRow<TNetworkPort> otherPortRows[] = {
    {"VLANID", &TNetworkPort::vlanId, "/proc/net/vlan/config if DEVTYPE=vlan"},
};

struct TDeviceAddress {
    std::optional<TCimReference> antecedent, dependent;
};

constexpr TPropertyRow<TDeviceAddress> deviceAddressRows[] = {
    {"Antecedent", &TDeviceAddress::antecedent, "call getifaddrs; /proc/net/route"},
    {"Dependent", &TDeviceAddress::dependent, "call getifaddrs; /proc/net/fib_trie; /proc/net/if_inet6"},
};

constexpr auto allOtherPortRows = JoinRows(networkPortRows, otherPortRows);
constexpr TCimClass<TNetworkPort> ethernetPortClass{"CIM_EthernetPort", networkPortRows};
constexpr TCimClass<TNetworkPort> wifiPortClass{"CIM_WiFiPort", networkPortRows};
constexpr TCimClass<TNetworkPort> infiniBandPortClass{"CIM_IBPort", networkPortRows};
constexpr TCimClass<TNetworkPort> otherPortClass{"CIM_NetworkPort", allOtherPortRows};
constexpr TCimClass<TDeviceAddress> deviceAddressClass{"CIM_DeviceSAPImplementation", deviceAddressRows};
constexpr const IClassDeclaration* classes[] = {&ethernetPortClass, &wifiPortClass, &infiniBandPortClass,
                                                &otherPortClass, &deviceAddressClass};

constexpr std::array<TSourcePattern, 26> portSources{
    "/proc/net/vlan/config",
    "/sys/class/net",
    "/sys/class/net/*",
    "/sys/class/net/*/addr_assign_type",
    "/sys/class/net/*/address",
    "/sys/class/net/*/bonding",
    "/sys/class/net/*/bonding_slave",
    "/sys/class/net/*/bonding_slave/perm_hwaddr",
    "/sys/class/net/*/bridge",
    "/sys/class/net/*/brport",
    "/sys/class/net/*/dev_port",
    "/sys/class/net/*/device",
    "/sys/class/net/*/device/driver",
    "/sys/class/net/*/device/power/runtime_status",
    "/sys/class/net/*/device/power_state",
    "/sys/class/net/*/duplex",
    "/sys/class/net/*/flags",
    "/sys/class/net/*/master",
    "/sys/class/net/*/mtu",
    "/sys/class/net/*/operstate",
    "/sys/class/net/*/phy80211",
    "/sys/class/net/*/speed",
    "/sys/class/net/*/tun_flags",
    "/sys/class/net/*/type",
    "/sys/class/net/*/uevent",
    "/sys/devices/**/usb*/version",
};
constexpr auto sourcePatterns = Join(portSources, addressSources);

// Hardware types (ARPHRD_...) that the kernel writes to `type`.
constexpr std::uint32_t ethernetType = 1;
constexpr std::uint32_t infiniBandType = 32;
constexpr std::uint32_t loopbackType = 772;

struct TPort {
    const ISystemFiles& files;
    std::string name;
    std::string folder;                     // "/sys/class/net/eth0/"
    std::optional<std::string> devicePath;  // absent for a port without a device and in trees without links
    std::uint32_t hardwareType = 0;
    bool hasDevice = false;
    std::string uevent;

    std::optional<std::string> Read(std::string_view attribute) const {
        return ReadAttribute(files, folder + std::string(attribute));
    }
    bool Has(std::string_view attribute) const { return files.Exists(folder + std::string(attribute)); }
    std::string_view GetDeviceType() const { return FindUeventValue(uevent, "DEVTYPE").value_or(""); }
};

bool IsWifi(const TPort& port) {
    return port.hasDevice && (port.GetDeviceType() == "wlan" || port.Has("phy80211"));
}

bool IsInfiniBand(const TPort& port) {
    return port.hasDevice && port.hardwareType == infiniBandType;
}

bool IsMobile(const TPort& port) {
    return port.GetDeviceType() == "wwan";
}

bool IsEthernet(const TPort& port) {
    return port.hasDevice && port.hardwareType == ethernetType;
}

bool IsBridge(const TPort& port) {
    return port.Has("bridge");
}

bool IsBond(const TPort& port) {
    return port.Has("bonding");
}

bool IsTunnelOfAProgram(const TPort& port) {
    return port.Has("tun_flags");
}

bool IsVlan(const TPort& port) {
    return port.GetDeviceType() == "vlan";
}

bool IsVxlan(const TPort& port) {
    return port.GetDeviceType() == "vxlan";
}

bool IsOther(const TPort&) {
    return true;
}

enum class ELinkRate {
    own,      // the speed and duplex mode of the port's link
    derived,  // taken from the ports below it
    none,     // a constant of the driver
};

struct TPortKind {
    bool (*matches)(const TPort& port);
    const TCimClass<TNetworkPort>& cimClass;
    std::string_view description;
    ELinkRate rate;
};

// The first row that matches counts.
// clang-format off
constexpr TPortKind portKinds[] = {
    {IsMobile,           otherPortClass,      "Mobile broadband port", ELinkRate::none},
    {IsWifi,             wifiPortClass,       "Wireless network port", ELinkRate::own},
    {IsInfiniBand,       infiniBandPortClass, "InfiniBand port",       ELinkRate::own},
    {IsEthernet,         ethernetPortClass,   "Ethernet port",         ELinkRate::own},
    {IsBridge,           otherPortClass,      "Bridge",                ELinkRate::none},
    {IsBond,             otherPortClass,      "Bond",                  ELinkRate::derived},
    {IsVlan,             otherPortClass,      "VLAN",                  ELinkRate::derived},
    {IsVxlan,            otherPortClass,      "VXLAN tunnel",          ELinkRate::none},
    {IsTunnelOfAProgram, otherPortClass,      "Tunnel of a program",   ELinkRate::none},
    {IsOther,            otherPortClass,      "Network port",          ELinkRate::none},
};
// clang-format on

const TPortKind& GetKind(const TPort& port) {
    return *std::ranges::find_if(portKinds, [&](const TPortKind& kind) { return kind.matches(port); });
}

struct TTechnology {
    std::uint32_t hardwareType;
    std::uint16_t technology;
};

// CIM_NetworkPort.LinkTechnology: 2 Ethernet, 3 InfiniBand, 5 FDDI, 7 Token Ring, 11 wireless LAN.
constexpr TTechnology technologies[] = {
    {ethernetType, 2}, {infiniBandType, 3}, {774, 5}, {800, 7}, {801, 11}, {802, 11}, {803, 11},
};

std::optional<std::uint16_t> FindTechnology(const TPort& port) {
    constexpr std::uint16_t wirelessLan = 11;
    if (IsWifi(port)) {
        return wirelessLan;
    }
    for (const TTechnology& row : technologies) {
        if (row.hardwareType == port.hardwareType) {
            return row.technology;
        }
    }
    return std::nullopt;
}

// Converts "52:54:00:b2:00:01" to "525400B20001", the form of CIM addresses; nullopt for all zeros and for a
// malformed address.
std::optional<std::string> ToCimAddress(std::string_view text) {
    std::string digits;
    std::ranges::copy_if(text, std::back_inserter(digits), [](char c) { return c != ':'; });
    if (!IsHex(digits) || digits.find_first_not_of('0') == std::string::npos) {
        return std::nullopt;
    }
    std::ranges::transform(digits, digits.begin(), ToUpper);
    return digits;
}

// A port of a bond shows the address of the bond, and keeps its own in another file.
std::optional<std::string> ReadPermanentAddress(const TPort& port) {
    constexpr std::string_view permanent = "0";  // value of addr_assign_type
    constexpr std::size_t guidDigits = 16;       // the rest of an InfiniBand address changes
    if (!port.hasDevice) {
        return std::nullopt;
    }
    auto text = port.Read("bonding_slave/perm_hwaddr");
    if (!text && port.Read("addr_assign_type") == permanent) {
        text = port.Read("address");
    }
    auto address = ToCimAddress(text.value_or(""));
    if (address && port.hardwareType == infiniBandType && address->size() > guidDigits) {
        address->erase(0, address->size() - guidDigits);
    }
    return address;
}

std::optional<std::vector<std::string>> ReadNetworkAddresses(const TPort& port) {
    auto address = ToCimAddress(port.Read("address").value_or(""));
    return address ? std::optional(std::vector<std::string>{std::move(*address)}) : std::nullopt;
}

bool IsUp(const std::string& operState) {
    return operState == "up" || operState == "unknown";
}

// CIM_EnabledLogicalElement.EnabledState from IFF_UP and the operational state.
std::optional<std::uint16_t> FindEnabledState(const TPort& port, const std::string& operState) {
    constexpr std::uint32_t upFlag = 0x1;
    constexpr std::uint16_t enabled = 2;
    constexpr std::uint16_t disabled = 3;
    constexpr std::uint16_t enabledButOffline = 6;
    constexpr std::uint16_t inTest = 7;
    const auto flags = ReadHexNumber<std::uint32_t>(port.files, port.folder + "flags");
    if (!flags) {
        return std::nullopt;
    }
    if ((*flags & upFlag) == 0) {
        return disabled;
    }
    if (operState == "testing") {
        return inTest;
    }
    return IsUp(operState) ? enabled : enabledButOffline;
}

// The kernel refuses to read `speed` and `duplex` of a port that is down, and writes -1 (as an unsigned
// number in older versions) for an unknown speed.
void SetLinkRate(const TPort& port, const std::string& operState, TNetworkPort& record) {
    constexpr std::uint64_t bitsPerMegabit = 1'000'000;
    constexpr std::uint64_t unknownSpeed = 0xFFFFFFFF;
    if (!IsUp(operState)) {
        return;
    }
    const auto speed = ReadNumber<std::uint64_t>(port.files, port.folder + "speed");
    if (speed && *speed != 0 && *speed < unknownSpeed) {
        record.speedBitsPerSecond = *speed * bitsPerMegabit;
    }
    const auto duplex = port.Read("duplex");
    if (duplex == "full" || duplex == "half") {
        record.isFullDuplex = duplex == "full";
    }
}

std::string_view DescribeMaster(const TPort& port) {
    return port.Has("bonding_slave") ? "Bond" : port.Has("brport") ? "Bridge" : "Upper port";
}

std::vector<std::string> ListLowerPorts(const TPort& port) {
    constexpr std::string_view prefix = "lower_";
    std::vector<std::string> lower;
    for (const std::string& name : port.files.List(port.folder.substr(0, port.folder.size() - 1)).value) {
        if (name.starts_with(prefix)) {
            lower.push_back(name.substr(prefix.size()));
        }
    }
    return lower;
}

void SetIdentifyingInfo(const TPort& port, TNetworkPort& record) {
    std::vector<std::string> values;
    std::vector<std::string> descriptions;
    const auto add = [&](std::string_view description, std::optional<std::string> value) {
        if (value) {
            descriptions.emplace_back(description);
            values.push_back(std::move(*value));
        }
    };
    add("PCI function", port.devicePath ? FindPciFunction(*port.devicePath) : std::nullopt);
    add("Driver", ReadLinkedName(port.files, port.folder + "device/driver"));
    add(DescribeMaster(port), ReadLinkedName(port.files, port.folder + "master"));
    for (std::string& lower : ListLowerPorts(port)) {
        add("Lower port", std::move(lower));
    }
    if (!values.empty()) {
        record.otherIdentifyingInfo = std::move(values);
        record.identifyingDescriptions = std::move(descriptions);
    }
}

// Ports of one device are numbered by `dev_port`, from 0.
std::string MakePosition(const TPort& port) {
    const auto position = port.devicePath ? ReadDevicePosition(port.files, *port.devicePath) : std::nullopt;
    if (!position) {
        return port.name;
    }
    const auto number = port.Read("dev_port");
    return number && *number != "0" ? *position + "/port-" + *number : *position;
}

TNetworkPort MakeRecord(const TPort& port, const TPortKind& kind) {
    const std::string operState = port.Read("operstate").value_or("");
    TNetworkPort record;
    record.place.folder = port.folder.substr(0, port.folder.size() - 1);
    record.elementName = port.name;
    record.description = kind.description;
    record.name = port.name;
    record.operationalStatus = FindInterfaceStatus(operState);
    record.enabledState = FindEnabledState(port, operState);
    record.permanentAddress = ReadPermanentAddress(port);
    record.networkAddresses = ReadNetworkAddresses(port);
    record.linkTechnology = FindTechnology(port);
    record.mtuBytes = ReadNumber<std::uint64_t>(port.files, port.folder + "mtu");
    if (kind.rate != ELinkRate::none) {
        SetLinkRate(port, operState, record);
    }
    SetIdentifyingInfo(port, record);
    if (IsVlan(port)) {
        record.vlanId = FindVlanId(port.files.ReadText("/proc/net/vlan/config").value, port.name);
    }
    return record;
}

// Returns nullopt for the loopback interface and for files in the folder of the interfaces.
std::optional<TPort> FindPort(const ISystemFiles& files, const std::string& name) {
    const std::string entry = "/sys/class/net/" + name;
    const auto type = ReadNumber<std::uint32_t>(files, entry + "/type");
    if (!type || *type == loopbackType) {
        return std::nullopt;
    }
    TPort port{files, name, entry + "/", FindEntryDevice(files, entry), *type, false, {}};
    port.hasDevice = port.Has("device");
    port.uevent = files.ReadText(entry + "/uevent").value;
    return port;
}

void CommitAddresses(TCollection& collection,
                     const std::map<std::string, TCimReference, std::less<>>& references) {
    for (const TAddressPlace& place : GetAddressPlaces(collection)) {
        const auto port = place.interface ? references.find(*place.interface) : references.end();
        if (port != references.end()) {
            collection.Commit(deviceAddressClass,
                              {port->second, TCimReference{ipEndpointClassName, "ElementName", place.name}});
        }
    }
}

void CollectNetworkPorts(TCollection& collection) {
    std::vector<TNetworkPort> records;
    std::vector<const TPortKind*> kinds;
    std::vector<TKeySource> keySources;
    for (const std::string& name : collection.GetFiles().List("/sys/class/net").value) {
        if (const auto port = FindPort(collection.GetFiles(), name)) {
            kinds.push_back(&GetKind(*port));
            records.push_back(MakeRecord(*port, *kinds.back()));
            keySources.push_back({records.back().permanentAddress, MakePosition(*port)});
        }
    }
    auto keys = collection.MakeKeys(keySources, "network port");
    std::map<std::string, TCimReference, std::less<>> references;
    for (std::size_t i = 0; i < records.size(); ++i) {
        references.emplace(*records[i].name,
                           TCimReference{kinds[i]->cimClass.GetName(), "DeviceID", keys[i]});
        records[i].deviceId = std::move(keys[i]);
        collection.Commit(kinds[i]->cimClass, records[i]);
    }
    CommitAddresses(collection, references);
}

}  // namespace

extern constinit const TCollector networkPortCollector{
    .name = "network-port",
    .description = "Network ports, physical and virtual",
    .fills = classes,
    .reads = sourcePatterns,
    .collect = CollectNetworkPorts,
    .isForDocuments = false,
};

}  // namespace NVORHOST
