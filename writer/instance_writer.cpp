#include "writer/instance_writer.h"

#include "host/vor_exception.h"
#include "writer/catalogue/resource_catalogue.h"
#include "writer/class_instances.h"
#include "writer/property_writer.h"
#include "writer/resource_identity.h"

#include <algorithm>
#include <optional>
#include <vector>

using NKELVOR20::ICIMClass;
using NKELVOR20::ICIMInstance;
using NKELVOR20::ICIMNamespace;
using NKELVOR20::TVORException;
using NKELVOR20::TVORStatusCode;

namespace {

struct TBoundRow {
    TPropertyBinding property;
    EValueOrigin origin;  // origin of the source name
};

/// A class of the catalogue, prepared once for all its instances.
struct TBoundClass {
    std::string keyProperty;
    std::vector<TBoundRow> rows;
};

TBoundClass BindClass(const TResourceClass& resourceClass) {
    TBoundClass bound{std::string(resourceClass.keyProperty), {}};
    const auto bind = [&](const TPropertyRow& row) {
        bound.rows.push_back({BindProperty(row.outputName, std::string(row.sourceName)), row.origin});
    };
    std::ranges::for_each(resourceClass.head, bind);
    std::ranges::for_each(resourceClass.properties, bind);
    return bound;
}

/// Returns the class; nullopt if the namespace does not have it. The handle may be null, as the host gave it.
std::optional<boost::shared_ptr<ICIMClass>> FindClass(ICIMNamespace& collected,
                                                      const std::string& className) {
    try {
        return collected.GetClass(className, {});
    } catch (const TVORException& error) {
        const int code = error.GetStatusCode().GetCode();
        if (code == TVORStatusCode::classNotFound) {
            return std::nullopt;
        }
        // Callers get a plain TVORException even if the host threw a class derived from it.
        throw TVORException(code);
    }
}

void WriteInstance(TLineOutput& out, const TBoundClass& boundClass, const std::string& resourceType,
                   const boost::shared_ptr<ICIMInstance>& instance) {
    // Written before the identifier is computed, so it remains on the stream if that throws.
    out.WritePiece(R"(<ResourceInstance resourceId=")");
    const std::string resourceId = MakeResourceId(resourceType, instance, boundClass.keyProperty, {});
    out.WriteLine(resourceId, R"(" resourceType=")", resourceType, R"(">)");
    for (const auto& [property, origin] : boundClass.rows) {
        const std::string& sourceName = origin == EValueOrigin::resourceType ? resourceType
                                        : origin == EValueOrigin::resourceId ? resourceId
                                                                             : property.sourceName;
        WriteProperty(out, property, sourceName, instance);
    }
    out.WriteLine("</ResourceInstance>");
}

}  // namespace

void WriteInstances(TLineOutput& out, const std::string& className, const std::string& resourceType,
                    const boost::shared_ptr<ICIMNamespace>& collected) {
    const auto cimClass = FindClass(*collected, className);
    if (!cimClass) {
        return;
    }
    const std::vector<boost::shared_ptr<ICIMInstance>> instances = ListInstances(**cimClass);
    const TResourceClass* const resourceClass = FindResourceClass(className);
    if (resourceClass == nullptr) {
        return;
    }
    const TBoundClass boundClass = BindClass(*resourceClass);
    for (const boost::shared_ptr<ICIMInstance>& instance : instances) {
        WriteInstance(out, boundClass, resourceType, instance);
    }
}
