#include "writer/hardware_document.h"

#include "host/plugin_callbacks.h"
#include "writer/document_frame.h"
#include "writer/instance_writer.h"
#include "writer/resource_lists.h"

using NKELVOR20::ICIMNamespace;
using NKELVOR20::logicalDevice;
using NKELVOR20::physicalElement;

// The document has no criteria block and no status block.
void WriteHardwareDocument(TLineOutput& out, const boost::shared_ptr<ICIMNamespace>& collected) {
    // The blank before the quote is part of the format; the other document does not have it.
    WriteDocumentStart(out, " timestamp= \"");
    WriteContext(out, "HardwareInventory", collected);
    WriteHardwareList(out, physicalElement, collected);
    WriteHardwareList(out, logicalDevice, collected);
    WriteDocumentEnd(out);
}

void WriteHardwareList(TLineOutput& out, std::string_view resourceType,
                       const boost::shared_ptr<ICIMNamespace>& collected) {
    out.WriteLine(R"(<ResourceList resourceType=")", resourceType, R"(">)");
    for (const TListRow& row : GetResourceLists()) {
        if (*row.list == resourceType) {
            WriteInstances(out, std::string(row.source.name), std::string(row.type.name), collected);
        }
    }
    out.WriteLine("</ResourceList>");
}
