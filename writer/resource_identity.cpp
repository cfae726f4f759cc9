#include "writer/resource_identity.h"

#include "host/vor_exception.h"
#include "writer/catalogue/md5.h"
#include "writer/core_log.h"

#include <cxxabi.h>

#include <iterator>
#include <stdexcept>

using NKELVOR20::ICIMInstance;
using NKELVOR20::ICIMProperty;
using NKELVOR20::TVORException;

namespace {

using TPropertyPtr = boost::shared_ptr<ICIMProperty>;

/// The handles are null for properties that were not found.
struct TKeyProperties {
    TPropertyPtr first;
    TPropertyPtr second;
};

TKeyProperties FindKeyProperties(const boost::shared_ptr<ICIMInstance>& instance, const std::string& first,
                                 const std::string& second) {
    TKeyProperties found;
    try {
        found.first = instance->GetProperty(first, {});
        if (!second.empty()) {
            found.second = instance->GetProperty(second, {});
        }
    } catch (const TVORException&) {
        LogWarning("noxinfo-GetResourceID: didn't find Name property");
    } catch (const abi::__forced_unwind&) {
        throw;       // A cancelled thread must unwind completely.
    } catch (...) {  // NOLINT(bugprone-empty-catch)
        // MakeResourceId logs the missing value.
    }
    return found;
}

std::string ReadValue(const TPropertyPtr& property) {
    // Checked here because the host's assertion handler may end the process.
    if (!property) {
        throw std::invalid_argument("key property was not found");
    }
    return property->GetValue({}).ToString(10);
}

}  // namespace

std::string MakeResourceId(const std::string& resourceType, const boost::shared_ptr<ICIMInstance>& instance,
                           const std::string& keyProperty1, const std::string& keyProperty2) {
    const TKeyProperties properties = FindKeyProperties(instance, keyProperty1, keyProperty2);
    std::string key = "kel-cdm:///CDM-" + resourceType;
    try {
        const std::string value1 = ReadValue(properties.first);
        key.append("/").append(keyProperty1).append("=").append(value1);
        if (!keyProperty2.empty()) {
            const std::string value2 = ReadValue(properties.second);
            key.append("+").append(keyProperty2).append("=").append(value2);
        }
    } catch (const abi::__forced_unwind&) {
        throw;
    } catch (...) {
        // The identifier is made from the part of the key that was built.
        LogWarning("noxinfo-GetResourceID- class:" + resourceType + " valProperty1=" + keyProperty1 +
                   "didn't find Name value");
    }
    return DigestKey(key);
}

std::string DigestKey(const std::string& key) {
    unsigned char digest[digestTextLength];
    WriteDigestText(key.c_str(), static_cast<unsigned int>(key.size() + 1), digest);
    return {std::begin(digest), std::end(digest)};
}
