// Identifiers by which the receiving side recognises a resource in successive inventories: the digest of a
// readable key. Every byte of the key is settled by the identifiers that exist already.
#include "host/vor_exception.h"
#include "writer/core_log.h"
#include "writer/nox_xml_writer.h"

#include <cxxabi.h>

#include <stdexcept>

using NKELVOR20::ICIMProperty;
using NKELVOR20::TVORException;

namespace {

using TPropertyPtr = boost::shared_ptr<ICIMProperty>;

struct TKeyProperties {
    TPropertyPtr first;
    TPropertyPtr second;
};

TKeyProperties FindKeyProperties(const TNOXXMLWriterImpl::TInstancePtr& instance, const std::string& first,
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
        throw;       // A cancelled thread has to unwind to its end.
    } catch (...) {  // NOLINT(bugprone-empty-catch)
        // The missing value is logged where it is missed.
    }
    return found;
}

std::string ReadValue(const TPropertyPtr& property) {
    // Checked here, as the host's assertion handler is free to end the process.
    if (!property) {
        throw std::invalid_argument("key property was not found");
    }
    return property->GetValue({}).ToString(10);
}

}  // namespace

std::string TNOXXMLWriterImpl::GetResourceID(std::string resourceType, TInstancePtr instance,
                                             std::string keyProperty1, std::string keyProperty2,
                                             std::string /*reserved*/) {
    return MakeResourceID(resourceType, instance, keyProperty1, keyProperty2);
}

std::string TNOXXMLWriterImpl::MakeResourceID(const std::string& resourceType, const TInstancePtr& instance,
                                              const std::string& keyProperty1,
                                              const std::string& keyProperty2) {
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
        // The key stays as far as it was built, so the resource still gets an identifier.
        LogWarning("noxinfo-GetResourceID- class:" + resourceType + " valProperty1=" + keyProperty1 +
                   "didn't find Name value");
    }
    return DigestKey(key);
}

std::string TNOXXMLWriterImpl::DigestKey(const std::string& key) {
    unsigned char digest[digestLength];
    // One byte more than the key: its terminating zero is part of every identifier.
    MD5(key.c_str(), static_cast<unsigned int>(key.size() + 1), digest);
    return {std::begin(digest), std::end(digest)};
}
