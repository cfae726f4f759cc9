// Instances of one class as elements, property by property as the catalogue says.
#include "host/add_to_vector_callback.h"
#include "host/vor_exception.h"
#include "writer/nox_xml_writer.h"
#include "writer/resource_catalogue.h"

#include <algorithm>
#include <optional>

using NKELVOR20::ICIMClass;
using NKELVOR20::ICIMInstance;
using NKELVOR20::ICIMNamespace;
using NKELVOR20::TAddToVectorCallback;
using NKELVOR20::TInstanceCallback;
using NKELVOR20::TVORException;
using NKELVOR20::TVORStatusCode;

namespace {

/// The class as the host hands it out; nullopt when the namespace does not have it.
std::optional<boost::shared_ptr<ICIMClass>> FindClass(ICIMNamespace& collected,
                                                      const std::string& className) {
    try {
        return collected.GetClass(className, {});
    } catch (const TVORException& error) {
        const int code = error.GetStatusCode().GetCode();
        if (code == TVORStatusCode::classNotFound) {
            return std::nullopt;
        }
        // Raised anew: whatever the host derives from it, callers see the plain exception with its code.
        throw TVORException(code);
    }
}

}  // namespace

void TNOXXMLWriterImpl::WriteResourceInstance(std::string className, std::string resourceType,
                                              TNamespacePtr collected, bool /*flag*/) {
    const auto cimClass = FindClass(*collected, className);
    if (!cimClass) {
        return;
    }
    const std::vector<TInstancePtr> instances = ListInstances(**cimClass);
    const TResourceClass* const resourceClass = FindResourceClass(className);
    if (resourceClass == nullptr) {
        return;
    }
    const TBoundClass boundClass = BindClass(*resourceClass);
    for (const TInstancePtr& instance : instances) {
        WriteInstance(boundClass, resourceType, instance);
    }
}

TNOXXMLWriterImpl::TBoundClass TNOXXMLWriterImpl::BindClass(const TResourceClass& resourceClass) {
    TBoundClass bound{std::string(resourceClass.keyProperty), {}};
    const auto bind = [&](const TPropertyRow& row) {
        bound.properties.push_back({BindProperty(row.outputName, std::string(row.sourceName)), row.origin});
    };
    std::ranges::for_each(resourceClass.head, bind);
    std::ranges::for_each(resourceClass.properties, bind);
    return bound;
}

void TNOXXMLWriterImpl::WriteInstance(const TBoundClass& boundClass, const std::string& resourceType,
                                      const TInstancePtr& instance) {
    // On the stream before the identifier is computed: what is thrown there leaves it standing.
    WritePiece(R"(<ResourceInstance resourceId=")");
    const std::string resourceId = MakeResourceID(resourceType, instance, boundClass.keyProperty, {});
    WriteLine(resourceId, R"(" resourceType=")", resourceType, R"(">)");
    for (const auto& [property, origin] : boundClass.properties) {
        const std::string& sourceName = origin == EValueOrigin::resourceType ? resourceType
                                        : origin == EValueOrigin::resourceId ? resourceId
                                                                             : property.sourceName;
        WriteProperty(property, sourceName, instance);
    }
    WriteLine("</ResourceInstance>");
}

std::vector<TNOXXMLWriterImpl::TInstancePtr> TNOXXMLWriterImpl::ListInstances(ICIMClass& cimClass) {
    std::vector<TInstancePtr> instances;
    cimClass.EnumerateInstances(TInstanceCallback(TAddToVectorCallback<ICIMInstance>(&instances)),
                                /*flag=*/true, {});
    return instances;
}
