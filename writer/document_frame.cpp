#include "writer/document_frame.h"

#include "host/plugin_callbacks.h"
#include "writer/dates.h"
#include "writer/instance_writer.h"

using NKELVOR20::ICIMNamespace;
using NKELVOR20::noxSystemInfo;

namespace {

constexpr std::string_view namespaceUri = NOXINFO_NAMESPACE_URI;

void WriteSystemInfoContext(TLineOutput& out) {
    out.WriteLine(R"(<ResourceInstance resourceName="NOXSystemInfo_ContextName")"
                  R"( resourceId="NOXSystemInfo_Context_ID_1" resourceType="NOXSystemInfo_Type">)");
    out.WriteLine(R"(<Property name="NOXSystemInfo_Name" type="string">)");
    out.WriteLine("<Value>SystemInfo</Value>");
    out.WriteLine("</Property>");
    out.WriteLine("</ResourceInstance>");
}

}  // namespace

void WriteDocumentStart(TLineOutput& out, std::string_view timestampAttribute) {
    const std::string timestamp = GetTimestamp();
    out.WriteLine(R"(<?xml version="1.0" encoding="UTF-8"?>)");
    out.WriteLine(R"(<ResourceCollection xmlns=")", namespaceUri, R"(")", timestampAttribute, timestamp,
                  R"(">)");
}

void WriteDocumentEnd(TLineOutput& out) {
    out.WriteLine("</ResourceCollection>");
}

void WriteCriteria(TLineOutput& out, std::string_view criteriaName, std::string_view criteriaId) {
    if (criteriaName != noxSystemInfo) {
        return;
    }
    out.WriteLine(R"(<ResourceCollectionCriteria criteriaName=")", criteriaName, R"(" criteriaId=")",
                  criteriaId, R"(">)");
    out.WriteLine(R"(<ResourceListCriteria resourceType="NOXSystemInfo" />)");
    out.WriteLine("</ResourceCollectionCriteria>");
}

void WriteContext(TLineOutput& out, std::string_view contextName,
                  const boost::shared_ptr<ICIMNamespace>& collected) {
    out.WriteLine("<ResourceCollectionContext>");
    if (contextName == "HardwareInventory") {
        WriteInstances(out, "KELSG_ComputerSystem", "Server", collected);
        WriteInstances(out, "KELSG_OperatingSystem", "OperatingSystem", collected);
    } else if (contextName == "SystemInfo") {
        WriteSystemInfoContext(out);
    }
    out.WriteLine("</ResourceCollectionContext>");
}
