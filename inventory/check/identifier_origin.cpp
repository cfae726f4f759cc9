#include "inventory/check/identifier_origin.h"

#include "inventory/compare/part.h"
#include "inventory/model/resource_id.h"
#include "inventory/model/resource_type.h"

#include <algorithm>
#include <iterator>
#include <regex>

namespace NINVENTORY {
namespace {

constexpr std::string_view kept = "keeps its identifier";
constexpr std::string_view lost = "gets another identifier";

// clang-format off
constexpr TOriginText originTexts[] = {
    {EKeyOrigin::systemUuid,    "the system UUID, which firmware keeps on the board", kept, lost, kept},
    {EKeyOrigin::uuid,          "its UUID",                                         kept, kept, kept},
    {EKeyOrigin::worldWideName, "its world-wide name",                              kept, kept, kept},
    {EKeyOrigin::serialNumber,  "its serial number",                                kept, kept, kept},
    {EKeyOrigin::address,       "its permanent address",                            kept, kept, kept},
    {EKeyOrigin::position,      "its position: the PCI address and the ports from there", lost, lost, kept},
    {EKeyOrigin::label,         "the name that the firmware gives its place",       lost, lost, kept},
    {EKeyOrigin::number,        "its kind and number, because the firmware does not name its place", lost, lost, kept},
    {EKeyOrigin::mountPoint,    "the directory that it is mounted on",              kept, kept, lost},
    {EKeyOrigin::table,         "the identity of its partition table and its number", kept, kept, kept},
    {EKeyOrigin::name,          "its name",                                         kept, kept, lost},
    {EKeyOrigin::identity,      "an identity that it reports",                      kept, kept, kept},
    {EKeyOrigin::none,          "its type alone, because the key property has no value", kept, kept, kept},
};

// Types whose key is not what it looks like.
constexpr struct {
    std::string_view type;
    EKeyOrigin origin;
} typeOrigins[] = {
    {"BIOSElement",        EKeyOrigin::name},
    {"Battery",            EKeyOrigin::label},
    {"CacheMemory",        EKeyOrigin::label},
    {"Card",               EKeyOrigin::label},
    {"Chassis",            EKeyOrigin::label},
    {"ComputerSystem",     EKeyOrigin::name},
    {"DataSource",         EKeyOrigin::name},
    {"IPProtocolEndpoint", EKeyOrigin::name},
    {"Memory",             EKeyOrigin::position},
    {"MemoryCapacity",     EKeyOrigin::label},
    {"NetworkPort",        EKeyOrigin::name},
    {"OperatingSystem",    EKeyOrigin::name},
    {"PhysicalConnector",  EKeyOrigin::label},
    {"PhysicalMemory",     EKeyOrigin::label},
    {"Processor",          EKeyOrigin::label},
    {"SecuritySetting",    EKeyOrigin::name},
    {"Server",             EKeyOrigin::systemUuid},
    {"Slot",               EKeyOrigin::label},
    {"SoftwareElement",    EKeyOrigin::name},
};
// clang-format on

// The forms of keys. To compile one takes longer than to match it.
std::regex MakeForm(const char* pattern) {
    return std::regex(pattern, std::regex::icase);
}

// An identity that resources of some types have. The first one that a resource has is its key.
struct TIdentityRow {
    std::string_view type;
    std::string_view fact;  // a property, or an entry of OtherIdentifyingInfo
    std::string_view words;
    EKeyOrigin origin;
};

// clang-format off
constexpr TIdentityRow identityRows[] = {
    {"DiskDrive",       "World-wide name",  "world-wide name",   EKeyOrigin::worldWideName},
    {"DiskDrive",       "Serial number",    "serial number",     EKeyOrigin::serialNumber},
    {"OpticalDrive",    "World-wide name",  "world-wide name",   EKeyOrigin::worldWideName},
    {"OpticalDrive",    "Serial number",    "serial number",     EKeyOrigin::serialNumber},
    {"DisketteDrive",   "World-wide name",  "world-wide name",   EKeyOrigin::worldWideName},
    {"DisketteDrive",   "Serial number",    "serial number",     EKeyOrigin::serialNumber},
    {"TapeDrive",       "World-wide name",  "world-wide name",   EKeyOrigin::worldWideName},
    {"TapeDrive",       "Serial number",    "serial number",     EKeyOrigin::serialNumber},
    {"EthernetPort",    "PermanentAddress", "permanent address", EKeyOrigin::address},
    {"WiFiPort",        "PermanentAddress", "permanent address", EKeyOrigin::address},
    {"IBPort",          "PermanentAddress", "permanent address", EKeyOrigin::address},
    {"NetworkPort",     "PermanentAddress", "permanent address", EKeyOrigin::address},
    {"Battery",         "Serial number",    "serial number",     EKeyOrigin::serialNumber},
    {"PowerSupply",     "Serial number",    "serial number",     EKeyOrigin::serialNumber},
    {"PowerSupply",     "Location",         "location",          EKeyOrigin::label},
    {"LocalFileSystem", "UUID",             "UUID",              EKeyOrigin::uuid},
};
// clang-format on

// True if a key is an identity, or an identity with the number of a unit: "20120926571200-1".
bool IsMadeOf(std::string_view identity, std::string_view fact) {
    return !fact.empty() && identity.starts_with(fact) &&
           (identity.size() == fact.size() || identity[fact.size()] == '-');
}

// Finds the identity that the key was made of; null if it is none of those of the type.
const TIdentityRow* FindIdentity(const TResource& resource, std::string_view identity,
                                 std::vector<std::string_view>& passedOver) {
    for (const TIdentityRow& row : identityRows) {
        if (row.type != resource.type) {
            continue;
        }
        const std::string fact = GetFact(resource, row.fact);
        if (IsMadeOf(identity, fact)) {
            return &row;
        }
        if (fact.empty()) {
            passedOver.push_back(row.words);
        }
    }
    return nullptr;
}

// Recognises an origin by the form of the key.
EKeyOrigin FindForm(const std::string& identity) {
    static const struct {
        std::regex form;
        EKeyOrigin origin;
    } forms[] = {
        {MakeForm("[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}"), EKeyOrigin::uuid},
        {MakeForm("(naa|eui|uuid|nguid)\\..+"), EKeyOrigin::worldWideName},
        {MakeForm("[0-9a-f]{4,}:[0-9a-f]{2}:[0-9a-f]{2}\\.[0-7].*"), EKeyOrigin::position},
    };
    const auto* const form =
        std::ranges::find_if(forms, [&](const auto& row) { return std::regex_match(identity, row.form); });
    return form == std::end(forms) ? EKeyOrigin::identity : form->origin;
}

const EKeyOrigin* FindTypeOrigin(std::string_view type) {
    const auto* const row =
        std::ranges::find_if(typeOrigins, [&](const auto& candidate) { return candidate.type == type; });
    return row == std::end(typeOrigins) ? nullptr : &row->origin;
}

// A partition's key is its own, or that of its partition table or disk with its number.
void ExplainPartition(const std::string& identity, TIdentifierOrigin& origin) {
    static const std::regex entryOfTable = MakeForm("[0-9a-f]{8}-[0-9a-f]{2,}");
    const std::size_t part = identity.rfind("-part");
    origin.borrowed = part == std::string::npos ? "" : "the key of its disk and its number";
    origin.origin =
        std::regex_match(identity, entryOfTable) ? EKeyOrigin::table : FindForm(identity.substr(0, part));
}

void FindOrigin(const TResource& resource, TIdentifierOrigin& origin) {
    static const std::regex numbered = MakeForm("package [0-9]+|L[0-9] .*[0-9]+");
    const std::string identity = origin.keyValue.substr(0, origin.keyValue.find('@'));
    if (identity.empty()) {
        return;
    }
    if (identity == resource.GetText("SerialNumber")) {
        origin.origin = EKeyOrigin::serialNumber;
    } else if (const TIdentityRow* const row = FindIdentity(resource, identity, origin.passedOver)) {
        origin.origin = row->origin;
        origin.hasUnit = identity.size() > GetFact(resource, row->fact).size();
    } else if (identity == resource.GetText("Root")) {
        origin.origin = EKeyOrigin::mountPoint;
    } else if (std::regex_match(identity, numbered)) {
        origin.origin = EKeyOrigin::number;
    } else if (const EKeyOrigin* const ofType = FindTypeOrigin(resource.type)) {
        origin.origin = *ofType;
    } else if (resource.type == "DiskPartition") {
        ExplainPartition(identity, origin);
    } else {
        origin.borrowed = resource.type == "LocalFileSystem"
                              ? "the key of the disk, partition or volume that holds it"
                              : "";
        origin.origin = FindForm(identity);
    }
}

// The length after which MD5's padding needs another block, which these digests leave out.
bool HasShortPadding(const std::string& key) {
    constexpr std::size_t blockBytes = 64;
    constexpr std::size_t shortLength = 56;
    return (key.size() + 1) % blockBytes == shortLength;
}

TIdentifierOrigin ExplainSystemInformation(const TResource& resource) {
    TIdentifierOrigin origin;
    origin.keyProperty = "MachineType and SerialNumber";
    origin.keyValue = resource.GetText("SerialNumber");
    origin.key = MakeSystemKey(resource.GetText("MachineType"), resource.GetText("SerialNumber"));
    origin.origin = origin.keyValue.empty() ? EKeyOrigin::none : EKeyOrigin::serialNumber;
    return origin;
}

TIdentifierOrigin ExplainKey(const TResource& resource) {
    constexpr std::size_t maxKeyLength = 64;
    static const std::regex withNumber = MakeForm(".+#[0-9]+");
    TIdentifierOrigin origin;
    const TResourceType* const type = FindResourceType(resource.type);
    if (type == nullptr) {
        origin.key = MakeBareKey(resource.type);
        return origin;
    }
    origin.className = type->className;
    origin.keyProperty = GetKeyName(type->className);
    origin.keyValue = resource.GetText(type->keyProperty);
    // A key property that is declared but has no value leaves an empty one in the key.
    origin.key = MakeKey(resource.type, origin.keyProperty, origin.keyValue);
    if (origin.keyValue.empty() && DigestOf(origin.key) != resource.id) {
        origin.key = MakeBareKey(resource.type);
    }
    FindOrigin(resource, origin);
    origin.isCollisionResolved = origin.keyValue.find('@') != std::string::npos;
    origin.isNumbered = std::regex_match(origin.keyValue, withNumber);
    origin.isCut = origin.keyValue.size() == maxKeyLength && type->keyProperty == "DeviceID";
    return origin;
}

}  // namespace

TIdentifierOrigin ExplainIdentifier(const TResource& resource) {
    TIdentifierOrigin origin =
        resource.type == "NOXSystemInfo" ? ExplainSystemInformation(resource) : ExplainKey(resource);
    origin.hasShortPadding = HasShortPadding(origin.key);
    origin.isConfirmed = DigestOf(origin.key) == resource.id;
    return origin;
}

const TOriginText& GetOriginText(EKeyOrigin origin) {
    return *std::ranges::find(originTexts, origin, &TOriginText::origin);
}

}  // namespace NINVENTORY
