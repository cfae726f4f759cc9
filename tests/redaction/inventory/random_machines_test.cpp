// Machines with random secrets in every property that identifies: none is left in any writing.
#include "inventory/model/resource_id.h"
#include "inventory/model/resource_type.h"
#include "redaction/inventory/property_identity.h"
#include "redaction/inventory/resource_redaction.h"
#include "text/ascii.h"
#include "text/hex.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace NVORHOST {
namespace {

using NINVENTORY::EShape;
using NINVENTORY::TProperty;
using NINVENTORY::TResource;

class TRandomMachine {
  public:
    explicit TRandomMachine(unsigned int seed) : random_(seed) {
        for (const NINVENTORY::TResourceType& type : NINVENTORY::GetResourceTypes()) {
            AddResource(std::string(type.type), type.keyProperty);
        }
    }

    std::vector<TResource>& GetResources() { return resources_; }
    const std::vector<std::string>& GetSecrets() const { return secrets_; }

  private:
    std::string TakeText(std::size_t length, std::string_view characters) {
        std::uniform_int_distribution<std::size_t> places(0, characters.size() - 1);
        std::string text;
        while (text.size() < length) {
            text += characters[places(random_)];
        }
        return text;
    }

    std::string Keep(std::string secret) {
        secrets_.push_back(secret);
        return secret;
    }

    std::string MakeSerial() {
        return Keep("S" + TakeText(10, "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789") + "7Q");
    }
    std::string MakeName() { return Keep("5" + TakeText(15, "0123456789abcdef")); }

    // Returns a value of the form that the property has; secrets are kept.
    std::string MakeValue(EIdentity identity) {
        switch (identity) {
            case EIdentity::uuid:
                return Keep(TakeText(8, "0123456789ABCDEF") + "-A1B2-4C3D-8E4F-" +
                            TakeText(12, "0123456789ABCDEF"));
            case EIdentity::worldWideName:
            case EIdentity::deviceKey:
                return "naa." + MakeName();
            case EIdentity::hardwareAddress:
                return Keep("02" + TakeText(10, "0123456789ABCDEF"));
            case EIdentity::internetAddress:
                return "10.77." + std::to_string(random_() % 250 + 1) + "." +
                       std::to_string(random_() % 250 + 1);
            case EIdentity::hostName:
                return Keep("host" + TakeText(8, "abcdefghijklmnopqrstuvwxyz") + "7");
            case EIdentity::person:
                return Keep("anna" + TakeText(8, "abcdefghijklmnopqrstuvwxyz") + "7");
            case EIdentity::mountPoint:
                return "/home/" + Keep("user" + TakeText(8, "abcdefghijklmnopqrstuvwxyz") + "7") + "/data";
            case EIdentity::reference:
                return "KELSG_DiskDrive.DeviceID=\"" + MakeSerial() + "\"";
            case EIdentity::none:
            case EIdentity::name:
                return MakeFreeText();
            default:
                return MakeSerial();
        }
    }

    // Returns a text with an earlier secret in some writing.
    std::string MakeFreeText() {
        if (secrets_.empty()) {
            return "plain";
        }
        std::string text = secrets_[random_() % secrets_.size()];
        std::ranges::transform(text, text.begin(), random_() % 2 != 0 ? ToUpper : ToLower);
        return "some [" + text + "] text";
    }

    void AddResource(const std::string& type, std::string_view keyProperty) {
        TResource resource{"", type, "", "", {}};
        for (const NINVENTORY::TMeaning& row : NINVENTORY::GetMeanings()) {
            const bool isOfType =
                row.type == type || (row.type.empty() && row.property != "IdentifyingDescriptions");
            if (isOfType && resource.Find(row.property) == nullptr) {
                const std::string value = MakeValue(GetIdentity(type, row.property));
                resource.properties.push_back({std::string(row.property), "string", EShape::scalar, {value}});
            }
        }
        resource.id =
            NINVENTORY::DigestOf(NINVENTORY::MakeKey(type, keyProperty, resource.GetText(keyProperty)));
        resources_.push_back(std::move(resource));
    }

    std::mt19937 random_;
    std::vector<TResource> resources_;
    std::vector<std::string> secrets_;
};

std::string Squeeze(std::string_view text) {
    std::string squeezed;
    for (const char c : text) {
        if (IsAlphanumeric(c)) {
            squeezed += ToLower(c);
        }
    }
    return squeezed;
}

class TRandomMachines : public testing::TestWithParam<unsigned int> {};

TEST_P(TRandomMachines, KeepNoSecretInAnyWriting) {
    TRandomMachine machine(GetParam());
    const TDigestKey key{GetParam(), 1, 2, 3};
    TIdentityTexts identities(key);
    for (const TResource& resource : machine.GetResources()) {
        TResourceLearning(identities).Learn(resource);
    }
    TResourceRedaction redaction(identities, key);
    const TIdentitySearch search(identities);
    std::string all;
    for (TResource& resource : machine.GetResources()) {
        redaction.Replace(resource);
        EXPECT_EQ(FindInResource(resource, search), std::nullopt) << resource.type;
        for (const TProperty& property : resource.properties) {
            all += property.values.front() + "\n";
        }
    }
    const std::string squeezed = Squeeze(all);
    for (const std::string& secret : machine.GetSecrets()) {
        EXPECT_EQ(squeezed.find(Squeeze(secret)), std::string::npos) << secret;
        EXPECT_EQ(squeezed.find(ToHex(secret)), std::string::npos) << secret;
    }
    EXPECT_EQ(search.Find(all, ETextContext::anything), std::nullopt);
    EXPECT_GT(machine.GetSecrets().size(), 100U);
}

INSTANTIATE_TEST_SUITE_P(Seeds, TRandomMachines, testing::Range(0U, 8U));

}  // namespace
}  // namespace NVORHOST
