// A resource whose values are the input: its redacted form is the same for the same key and keeps the lengths
// of its values. The first byte selects type and property.
#include "fuzz.h"
#include "redaction/inventory/resource_redaction.h"

#include <iterator>
#include <string>
#include <string_view>

namespace {

using namespace NVORHOST;
using NINVENTORY::EShape;
using NINVENTORY::TResource;

struct TSubject {
    const char* type;
    const char* property;
};

// Append new ones, so that the corpus remains valid.
constexpr TSubject subjects[] = {
    {"Card", "SerialNumber"},
    {"DiskDrive", "DeviceID"},
    {"DiskPartition", "DeviceID"},
    {"LogicalVolume", "DeviceID"},
    {"LocalFileSystem", "Name"},
    {"LocalFileSystem", "Root"},
    {"LocalFileSystem", "Label"},
    {"ComputerSystem", "Name"},
    {"IPProtocolEndpoint", "IPv4Address"},
    {"IPProtocolEndpoint", "IPv6Address"},
    {"EthernetPort", "PermanentAddress"},
    {"BasedOn", "Antecedent"},
    {"DiskDrive", "OtherIdentifyingInfo"},
    {"Card", "Description"},
};

// Half of the input is the value of the property, the other half a free text.
TResource MakeResource(const TSubject& subject, std::string_view text) {
    const std::string first(text.substr(0, text.size() / 2));
    const std::string second(text.substr(text.size() / 2));
    return {"0123456789ABCDEF0123456789ABCDEF",
            subject.type,
            "",
            "",
            {{subject.property, "string", EShape::scalar, {first}},
             {"Caption", "string", EShape::scalar, {second}}}};
}

TResource Redact(TResource resource) {
    constexpr TDigestKey key{1, 2, 3, 4};
    TIdentityTexts identities(key);
    TResourceLearning(identities).Learn(resource);
    TResourceRedaction(identities, key).Replace(resource);
    (void)FindInResource(resource, TIdentitySearch(identities));  // must accept any text
    return resource;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const TResource resource =
        MakeResource(subjects[data[0] % std::size(subjects)], AsText(data + 1, size - 1));
    try {
        const TResource redacted = Redact(resource);
        Require(Redact(resource).properties == redacted.properties, "pseudonyms follow from the key");
        Require(redacted.id != resource.id, "an identifier of unknown origin is replaced");
        for (std::size_t i = 0; i < resource.properties.size(); ++i) {
            const bool isAddress = resource.properties[i].name.starts_with("IPv");
            Require(isAddress || redacted.properties[i].values.front().size() ==
                                     resource.properties[i].values.front().size(),
                    "a value stays as long as it was");
        }
    } catch (const std::runtime_error&) {
        // Two names with bytes outside ASCII may meet in one pseudonym.
    }
    return 0;
}
