#include "inventory/check/identifier_origin.h"

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
    {"CacheMemory",        EKeyOrigin::label},
    {"Card",               EKeyOrigin::label},
    {"Chassis",            EKeyOrigin::label},
    {"IPProtocolEndpoint", EKeyOrigin::name},
    {"LocalFileSystem",    EKeyOrigin::name},
    {"Memory",             EKeyOrigin::position},
    {"NetworkPort",        EKeyOrigin::name},
    {"OperatingSystem",    EKeyOrigin::name},
    {"PhysicalConnector",  EKeyOrigin::label},
    {"PhysicalMemory",     EKeyOrigin::label},
    {"Processor",          EKeyOrigin::label},
    {"Server",             EKeyOrigin::systemUuid},
    {"Slot",               EKeyOrigin::label},
    {"SoftwareElement",    EKeyOrigin::name},
};
// clang-format on

bool Matches(const std::string& text, const char* pattern) {
    return std::regex_match(text, std::regex(pattern, std::regex::icase));
}

EKeyOrigin FindOrigin(const TResource& resource, const std::string& value) {
    if (value.empty()) {
        return EKeyOrigin::none;
    }
    const std::string identity = value.substr(0, value.find('@'));
    if (!resource.GetText("SerialNumber").empty() && identity == resource.GetText("SerialNumber")) {
        return EKeyOrigin::serialNumber;
    }
    const auto* const row = std::ranges::find_if(
        typeOrigins, [&](const auto& candidate) { return candidate.type == resource.type; });
    if (row != std::end(typeOrigins)) {
        return row->origin;
    }
    if (Matches(identity, "[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}")) {
        return EKeyOrigin::uuid;
    }
    if (Matches(identity, "(naa|eui|uuid|nguid)\\..+")) {
        return EKeyOrigin::worldWideName;
    }
    if (Matches(identity, "[0-9a-f]{4,}:[0-9a-f]{2}:[0-9a-f]{2}\\.[0-7].*")) {
        return EKeyOrigin::position;
    }
    return identity == resource.GetText("PermanentAddress") ? EKeyOrigin::address : EKeyOrigin::identity;
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
    origin.origin = FindOrigin(resource, origin.keyValue);
    origin.isCollisionResolved = origin.keyValue.find('@') != std::string::npos;
    origin.isNumbered = Matches(origin.keyValue, ".+#[0-9]+");
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
