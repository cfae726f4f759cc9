// The frame that both documents share, and the hardware-inventory document.
#include "writer/nox_xml_writer.h"

#include "host/plugin_callbacks.h"
#include "writer/resource_lists.h"

#include <cxxabi.h>

using NKELVOR20::logicalDevice;
using NKELVOR20::noxSystemInfo;
using NKELVOR20::physicalElement;

namespace {

constexpr std::string_view namespaceUri = NOXINFO_NAMESPACE_URI;

}  // namespace

TNOXXMLWriterImpl::TNOXXMLWriterImpl(std::ostream& out) : out_(out) {
    InitMap();
}

TNOXXMLWriterImpl::~TNOXXMLWriterImpl() {
    DeInitMap();
}

void TNOXXMLWriterImpl::InitMap() {}

void TNOXXMLWriterImpl::DeInitMap() {}

bool TNOXXMLWriterImpl::WriteNamespace(TNamespacePtr collected) {
    // The blank in the attribute is part of the format, here and not in the other document.
    WriteDocumentStart(" timestamp= \"");
    WriteResourceCollectionCriteria("test", "test", collected);
    WriteResourceCollectionContext("HardwareInventory", collected);
    WriteResourceCollectionStatus(collected);
    WriteResourceList(physicalElement, collected);
    WriteResourceList(logicalDevice, collected);
    WriteLine("</ResourceCollection>");
    return true;
}

bool TNOXXMLWriterImpl::WriteResourceCollectionCriteria(std::string criteriaName, std::string criteriaId,
                                                        TNamespacePtr /*collected*/) {
    if (criteriaName != noxSystemInfo) {
        return true;
    }
    WriteLine(R"(<ResourceCollectionCriteria criteriaName=")", criteriaName, R"(" criteriaId=")", criteriaId,
              R"(">)");
    WriteLine(R"(<ResourceListCriteria resourceType="NOXSystemInfo" />)");
    WriteLine("</ResourceCollectionCriteria>");
    return true;
}

bool TNOXXMLWriterImpl::WriteResourceCollectionContext(std::string contextName, TNamespacePtr collected) {
    WriteLine("<ResourceCollectionContext>");
    if (contextName == "HardwareInventory") {
        WriteResourceInstance("KELSG_ComputerSystem", "Server", collected, /*flag=*/false);
        WriteResourceInstance("KELSG_OperatingSystem", "OperatingSystem", collected, /*flag=*/false);
    } else if (contextName == "SystemInfo") {
        WriteLine(R"(<ResourceInstance resourceName="NOXSystemInfo_ContextName")"
                  R"( resourceId="NOXSystemInfo_Context_ID_1" resourceType="NOXSystemInfo_Type">)");
        WriteTextProperty(R"(<Property name="NOXSystemInfo_Name" type=")", [] { return "SystemInfo"; });
        WriteLine("</ResourceInstance>");
    }
    WriteLine("</ResourceCollectionContext>");
    return true;
}

bool TNOXXMLWriterImpl::WriteResourceCollectionStatus(TNamespacePtr /*collected*/) {
    return true;
}

bool TNOXXMLWriterImpl::WriteResourceList(std::string resourceType, TNamespacePtr collected) {
    WriteLine(R"(<ResourceList resourceType=")", resourceType, R"(">)");
    for (const TListRow& row : GetResourceLists()) {
        if (*row.list == resourceType) {
            WriteResourceInstance(std::string(row.source.name), std::string(row.type.name), collected,
                                  row.flag);
        }
    }
    WriteLine("</ResourceList>");
    return true;
}

void TNOXXMLWriterImpl::WriteDocumentStart(std::string_view timestampAttribute) {
    const std::string timestamp = GetRCFTime();
    WriteLine(R"(<?xml version="1.0" encoding="UTF-8"?>)");
    WriteLine(R"(<ResourceCollection xmlns=")", namespaceUri, R"(")", timestampAttribute, timestamp, R"(">)");
}

// What `out_.write` and `out_.flush` do, with one sentry for both: there is a line for every tag.
void TNOXXMLWriterImpl::FinishLine(const char* end) {
    const std::ostream::sentry isFit(out_);
    if (!isFit) {
        return;
    }
    const std::streamsize size = end - line_.data();
    std::streambuf& buffer = *out_.rdbuf();
    bool isWritten = false;
    try {
        isWritten = buffer.sputn(line_.data(), size) == size && buffer.pubsync() != -1;
    } catch (const abi::__forced_unwind&) {
        MarkBad();
        throw;  // A cancelled thread has to unwind to its end.
    } catch (...) {
        MarkBad();
        if ((out_.exceptions() & std::ios_base::badbit) != 0) {
            throw;
        }
        return;
    }
    if (!isWritten) {
        out_.setstate(std::ios_base::badbit);
    }
}

void TNOXXMLWriterImpl::MarkBad() {
    try {
        out_.setstate(std::ios_base::badbit);
    } catch (const std::ios_base::failure&) {  // NOLINT(bugprone-empty-catch)
        // Says less than the exception that is on its way.
    }
}

void TNOXXMLWriterImpl::WritePiece(std::string_view text) {
    out_.write(text.data(), static_cast<std::streamsize>(text.size()));
}
