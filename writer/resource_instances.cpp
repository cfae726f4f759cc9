// Instances of one class as elements, property by property as the catalogue says.
#include "host/add_to_vector_callback.h"
#include "host/vor_exception.h"
#include "writer/nox_xml_writer.h"
#include "writer/resource_catalogue.h"

using NKELVOR20::ICIMClass;
using NKELVOR20::ICIMInstance;
using NKELVOR20::ICIMNamespace;
using NKELVOR20::TAddToVectorCallback;
using NKELVOR20::TInstanceCallback;
using NKELVOR20::TVORException;
using NKELVOR20::TVORStatusCode;

namespace {

/// The class, or an empty handle when the namespace does not have it.
boost::shared_ptr<ICIMClass> FindClass(ICIMNamespace& collected, const std::string& className) {
    try {
        return collected.GetClass(className, {});
    } catch (const TVORException& error) {
        const int code = error.GetStatusCode().GetCode();
        if (code == TVORStatusCode::classNotFound) {
            return {};
        }
        // Raised anew: whatever the host derives from it, callers see the plain exception with its code.
        throw TVORException(code);
    }
}

}  // namespace

void TNOXXMLWriterImpl::WriteResourceInstance(std::string className, std::string resourceType,
                                              TNamespacePtr collected, bool /*flag*/) {
    const boost::shared_ptr<ICIMClass> cimClass = FindClass(*collected, className);
    if (!cimClass) {
        return;
    }
    const std::vector<TInstancePtr> instances = ListInstances(*cimClass);
    const TResourceClass* const resourceClass = FindResourceClass(className);
    if (resourceClass == nullptr) {
        return;
    }
    for (const TInstancePtr& instance : instances) {
        WriteInstance(*resourceClass, resourceType, instance);
    }
}

void TNOXXMLWriterImpl::WriteInstance(const TResourceClass& resourceClass, const std::string& resourceType,
                                      const TInstancePtr& instance) {
    // On the stream before the identifier is computed: what is thrown there leaves it standing.
    WritePiece(R"(<ResourceInstance resourceId=")");
    sourceName_ = resourceClass.keyProperty;
    const std::string resourceId = MakeResourceID(resourceType, instance, sourceName_, {});
    WriteLine(resourceId, R"(" resourceType=")", resourceType, R"(">)");

    const auto sourceOf = [&](const TPropertyRow& row) -> const std::string& {
        switch (row.origin) {
            case EValueOrigin::resourceType:
                return resourceType;
            case EValueOrigin::resourceId:
                return resourceId;
            case EValueOrigin::instance:
                break;
        }
        return sourceName_ = row.sourceName;
    };
    for (const TPropertyRow& row : resourceClass.head) {
        WriteProperty(row.outputName, sourceOf(row), instance);
    }
    for (const TPropertyRow& row : resourceClass.properties) {
        WriteProperty(row.outputName, sourceOf(row), instance);
    }
    WriteLine("</ResourceInstance>");
}

std::vector<TNOXXMLWriterImpl::TInstancePtr> TNOXXMLWriterImpl::ListInstances(ICIMClass& cimClass) {
    std::vector<TInstancePtr> instances;
    cimClass.EnumerateInstances(TInstanceCallback(TAddToVectorCallback<ICIMInstance>(&instances)),
                                /*flag=*/true, {});
    return instances;
}
