#include "redaction/inventory/property_identity.h"

#include "inventory/model/resource_type.h"
#include "redaction/identities/mount_point.h"
#include "redaction/inventory/device_key.h"
#include "text/wildcard.h"
#include "vorhost/cimxml/object_path.h"
#include "writer/catalogue/resource_catalogue.h"

#include <algorithm>
#include <iterator>

namespace NVORHOST {
namespace {

struct TNameRow {
    std::string_view name;  // "*" matches any part
    EIdentity identity;
};

// Names of properties in the CIM schema and in other programs' classes. The first matching row counts.
constexpr TNameRow propertyNames[] = {
    {"*SerialNumber*", EIdentity::serialNumber},
    {"*IdentifyingNumber*", EIdentity::serialNumber},
    {"*AssetTag*", EIdentity::assetTag},
    {"*UUID*", EIdentity::uuid},
    {"*GUID*", EIdentity::uuid},
    {"*WWN*", EIdentity::worldWideName},
    {"*WorldWideName*", EIdentity::worldWideName},
    {"*MACAddress*", EIdentity::hardwareAddress},
    {"*PermanentAddress*", EIdentity::hardwareAddress},
    {"*NetworkAddresses*", EIdentity::hardwareAddress},
    {"*IPAddress*", EIdentity::internetAddress},
    {"*IPv4Address*", EIdentity::internetAddress},
    {"*IPv6Address*", EIdentity::internetAddress},
    {"*HostName*", EIdentity::hostName},
    {"*Hostname*", EIdentity::hostName},
    {"CSName", EIdentity::hostName},
    {"SystemName", EIdentity::hostName},
    {"*Owner*", EIdentity::person},
    {"*UserName*", EIdentity::person},
};

// Entries of OtherIdentifyingInfo. An entry without a row, or without a name, is an identity.
constexpr TNameRow entryNames[] = {
    {"Serial number", EIdentity::serialNumber},
    {"Instance ID", EIdentity::serialNumber},
    {"Asset tag", EIdentity::assetTag},
    {"World-wide name", EIdentity::worldWideName},
    {"SAS address", EIdentity::worldWideName},
    {"Enclosure", EIdentity::worldWideName},
    {"SAS enclosure", EIdentity::worldWideName},
    {"Bond", EIdentity::name},
    {"Bridge", EIdentity::name},
    {"Lower port", EIdentity::name},
    {"ATA port", EIdentity::none},
    {"Cloud", EIdentity::none},
    {"Container", EIdentity::none},
    {"Driver", EIdentity::none},
    {"Enclosure slot", EIdentity::none},
    {"Enclosure slot number", EIdentity::none},
    {"Firmware revision", EIdentity::none},
    {"Hypervisor", EIdentity::none},
    {"IOMMU group", EIdentity::none},
    {"Instance type", EIdentity::none},
    {"Location", EIdentity::none},
    {"Manufacturer", EIdentity::none},
    {"Model", EIdentity::none},
    {"NVMe namespace", EIdentity::none},
    {"PCI function", EIdentity::none},
    {"Part number", EIdentity::none},
    {"Product code", EIdentity::none},
    {"Revision", EIdentity::none},
    {"SAS bay", EIdentity::none},
    {"SAS phy", EIdentity::none},
    {"Slot", EIdentity::none},
    {"USB port path", EIdentity::none},
};

EIdentity FindByName(std::string_view property) {
    const auto* const row = std::ranges::find_if(
        propertyNames, [&](const TNameRow& each) { return MatchesWildcards(each.name, property); });
    return row == std::end(propertyNames) ? EIdentity::none : row->identity;
}

EIdentity GetEntryIdentity(const TPropertyTexts& place, std::size_t index) {
    if (place.descriptions == nullptr || index >= place.descriptions->size()) {
        return EIdentity::serialNumber;
    }
    const auto* const row = std::ranges::find(entryNames, (*place.descriptions)[index], &TNameRow::name);
    return row == std::end(entryNames) ? EIdentity::serialNumber : row->identity;
}

EIdentity GetIdentityOf(const TPropertyTexts& place, std::size_t index) {
    const EIdentity identity = GetIdentity(place.type, place.property);
    return identity == EIdentity::entries ? GetEntryIdentity(place, index) : identity;
}

struct TKindRow {
    EIdentity identity;
    EIdentityKind kind;
};

// The values that are one identity as a whole.
constexpr TKindRow kinds[] = {
    {EIdentity::serialNumber, EIdentityKind::serialNumber},
    {EIdentity::assetTag, EIdentityKind::assetTag},
    {EIdentity::uuid, EIdentityKind::uuid},
    {EIdentity::hardwareAddress, EIdentityKind::macAddress},
    {EIdentity::person, EIdentityKind::userName},
    {EIdentity::credential, EIdentityKind::credential},
};

const TKindRow* FindKind(EIdentity identity) {
    const auto* const row = std::ranges::find(kinds, identity, &TKindRow::identity);
    return row == std::end(kinds) ? nullptr : row;
}

// Texts of these meanings are names of devices and hosts, or contain them.
ETextContext ContextOf(EIdentity identity) {
    return identity == EIdentity::none ? ETextContext::anything : ETextContext::identities;
}

void LearnDeviceKey(std::string_view type, std::string_view text, TIdentityTexts& identities) {
    const TCutKey cut = ParseCutKey(text);
    identities.Learn(cut.digest);
    const TDeviceKey key = ParseDeviceKey(type, cut.start);
    identities.Learn(key.identity,
                     key.isWorldWide ? EIdentityKind::worldWideName : EIdentityKind::serialNumber);
    if (key.identity.empty()) {
        identities.LearnForms(text, ETextContext::identities);
        LearnMountPoint(text, identities);
    }
}

std::string ReplaceDeviceKey(std::string_view type, std::string_view text, const TIdentityTexts& identities) {
    const TCutKey cut = ParseCutKey(text);
    const TDeviceKey key = ParseDeviceKey(type, cut.start);
    const bool isMountPoint = type == "LocalFileSystem" && cut.start.starts_with('/');
    const std::string rest = isMountPoint ? ReplaceMountPoint(key.rest, identities)
                                          : identities.Replace(key.rest, ETextContext::identities);
    return std::string(key.mark) + identities.ReplaceValue(key.identity) + rest +
           identities.ReplaceValue(cut.digest);
}

// The name that the collectors give a machine without a host name.
constexpr std::string_view unnamedMachine = "computer";

// Calls `visit` with the place and text of each key, and gives the key the text that it returns.
template <typename TVisit>
void VisitKeys(TObjectPath& path, const TVisit& visit) {
    const std::string type = NINVENTORY::GetTypeOfClass(path.className);
    for (TPathKey& key : path.keys) {
        if (key.type == TPathKey::EType::reference) {
            key.value = visit({"", "Antecedent"}, key.value);
        } else if (key.type == TPathKey::EType::text) {
            const std::string_view name = key.name ? GetDocumentName(path.className, *key.name) : "";
            key.value = visit({type, name}, key.value);
        }
    }
    if (path.host) {
        path.host = visit({"", "HostName"}, *path.host);
    }
}

void LearnReference(std::string_view text, TIdentityTexts& identities) {
    auto path = ParseObjectPath(text);
    if (!path) {
        return identities.LearnForms(text, ETextContext::identities);
    }
    VisitKeys(*path, [&](const TPropertyTexts& place, const std::string& value) {
        LearnText(place, 0, value, identities);
        return value;
    });
}

std::string ReplaceReference(std::string_view text, const TIdentityTexts& identities) {
    auto path = ParseObjectPath(text);
    if (!path) {
        return identities.Replace(text, ETextContext::identities);
    }
    VisitKeys(*path, [&](const TPropertyTexts& place, const std::string& value) {
        return ReplaceText(place, 0, value, identities);
    });
    return ToText(*path);
}

}  // namespace

EIdentity GetIdentity(std::string_view type, std::string_view property) {
    const NINVENTORY::TMeaning* const meaning = NINVENTORY::FindMeaning(type, property);
    return meaning != nullptr ? meaning->identity : FindByName(property);
}

void LearnText(const TPropertyTexts& place, std::size_t index, std::string_view text,
               TIdentityTexts& identities) {
    const EIdentity identity = GetIdentityOf(place, index);
    if (const TKindRow* const row = FindKind(identity)) {
        return identities.Learn(text, row->kind);
    }
    switch (identity) {
        case EIdentity::worldWideName:
        case EIdentity::deviceKey:
            return LearnDeviceKey(identity == EIdentity::deviceKey ? place.type : "DiskDrive", text,
                                  identities);
        case EIdentity::internetAddress:
            return identities.Learn(text, EIdentityKind::ipAddress);
        case EIdentity::hostName:
            return text == unnamedMachine ? void() : identities.LearnHostName(text);
        case EIdentity::reference:
            return LearnReference(text, identities);
        case EIdentity::mountPoint:
            LearnMountPoint(text, identities);
            break;
        default:
            break;
    }
    identities.LearnForms(text, ContextOf(identity));
}

std::string ReplaceText(const TPropertyTexts& place, std::size_t index, std::string_view text,
                        const TIdentityTexts& identities) {
    const EIdentity identity = GetIdentityOf(place, index);
    if (FindKind(identity) != nullptr) {
        return identities.ReplaceValue(text);
    }
    switch (identity) {
        case EIdentity::worldWideName:
        case EIdentity::deviceKey:
            return ReplaceDeviceKey(identity == EIdentity::deviceKey ? place.type : "DiskDrive", text,
                                    identities);
        case EIdentity::internetAddress:
            return identities.ReplaceIpAddress(text);
        case EIdentity::hostName:
            return text == unnamedMachine ? std::string(text) : identities.ReplaceHostName(text);
        case EIdentity::reference:
            return ReplaceReference(text, identities);
        case EIdentity::mountPoint:
            return text.starts_with('/') ? ReplaceMountPoint(text, identities)
                                         : identities.Replace(text, ETextContext::identities);
        default:
            return identities.Replace(text, ContextOf(identity));
    }
}

std::optional<EIdentityKind> FindInText(const TPropertyTexts& place, std::size_t index, std::string_view text,
                                        const TIdentitySearch& search) {
    return search.Find(text, ContextOf(GetIdentityOf(place, index)));
}

std::optional<EIdentityKind> FindBesidesBytes(const TPropertyTexts& place, std::size_t index,
                                              std::string_view text, const TIdentitySearch& search) {
    const bool isEscaped = text.find_first_of("&<>\"\r\n\t") != std::string_view::npos;
    return isEscaped ? FindInText(place, index, text, search)
                     : search.FindWord(text, ContextOf(GetIdentityOf(place, index)));
}

std::string_view GetDocumentName(std::string_view className, std::string_view property) {
    const TResourceClass* const listed = FindResourceClass(className);
    if (listed == nullptr) {
        return property;
    }
    const auto isSource = [&](const ::TPropertyRow& row) { return row.sourceName == property; };
    if (const auto row = std::ranges::find_if(listed->head, isSource); row != listed->head.end()) {
        return row->outputName;
    }
    const auto row = std::ranges::find_if(listed->properties, isSource);
    return row == listed->properties.end() ? property : row->outputName;
}

}  // namespace NVORHOST
