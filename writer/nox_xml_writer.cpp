#include "writer/nox_xml_writer.h"

#include "writer/catalogue/product_name.h"
#include "writer/catalogue/xml_schema_type.h"
#include "writer/dates.h"
#include "writer/document_frame.h"
#include "writer/escape.h"
#include "writer/hardware_document.h"
#include "writer/instance_writer.h"
#include "writer/os_type.h"
#include "writer/property_writer.h"
#include "writer/resource_identity.h"
#include "writer/system_info_document.h"

#include <utility>

TNOXXMLWriterImpl::TNOXXMLWriterImpl(std::ostream& out) : output_(out) {
    InitMap();
}

TNOXXMLWriterImpl::~TNOXXMLWriterImpl() {
    DeInitMap();
}

void TNOXXMLWriterImpl::InitMap() {}

void TNOXXMLWriterImpl::DeInitMap() {}

bool TNOXXMLWriterImpl::WriteNamespace(TNamespacePtr collected) {
    WriteHardwareDocument(output_, collected);
    return true;
}

bool TNOXXMLWriterImpl::WriteResourceCollectionCriteria(std::string criteriaName, std::string criteriaId,
                                                        TNamespacePtr /*collected*/) {
    WriteCriteria(output_, criteriaName, criteriaId);
    return true;
}

bool TNOXXMLWriterImpl::WriteResourceCollectionContext(std::string contextName, TNamespacePtr collected) {
    WriteContext(output_, contextName, collected);
    return true;
}

bool TNOXXMLWriterImpl::WriteResourceCollectionStatus(TNamespacePtr /*collected*/) {
    return true;
}

bool TNOXXMLWriterImpl::WriteResourceList(std::string resourceType, TNamespacePtr collected) {
    WriteHardwareList(output_, resourceType, collected);
    return true;
}

bool TNOXXMLWriterImpl::WriteSysInfoNamespace(TNamespacePtr collected) {
    WriteSystemInfoDocument(output_, collected);
    return true;
}

bool TNOXXMLWriterImpl::WriteResourceListForSysInfo(std::string resourceType, TNamespacePtr collected) {
    WriteSystemInfoList(output_, resourceType, collected);
    return true;
}

bool TNOXXMLWriterImpl::WriteSysInfoProperty(std::string name, std::string value, std::string type) {
    WriteSystemInfoProperty(output_, name, value, type);
    return true;
}

std::string TNOXXMLWriterImpl::GetUSMIManufacturer(TNamespacePtr collected) {
    return GetManufacturer(collected);
}

std::string TNOXXMLWriterImpl::ConvertOSType(unsigned short code) {
    return std::string(GetOsType(code).platform);
}

std::string TNOXXMLWriterImpl::ConvertOSName(unsigned short code) {
    return std::string(GetOsType(code).name);
}

void TNOXXMLWriterImpl::WriteResourceInstance(std::string className, std::string resourceType,
                                              TNamespacePtr collected, bool /*flag*/) {
    WriteInstances(output_, className, resourceType, collected);
}

bool TNOXXMLWriterImpl::WriteResourceProperty(std::string outputName, std::string sourceName,
                                              TInstancePtr instance) {
    const TPropertyBinding binding = BindProperty(outputName, std::move(sourceName));
    return WriteProperty(output_, binding, binding.sourceName, instance);
}

void TNOXXMLWriterImpl::WriteValue(const NKELVOR20::TCIMValue& value) {
    WriteValueLines(output_, value);
}

std::string TNOXXMLWriterImpl::QuoteString(std::string text) {
    return Escape(text);
}

std::string TNOXXMLWriterImpl::ConvertTypeFromCIM(std::string cimType) {
    return std::string(GetXmlSchemaType(cimType));
}

std::string TNOXXMLWriterImpl::GetMachineTypeFromCIM(std::string productName) {
    return CutMachineType(productName);
}

std::string TNOXXMLWriterImpl::GetModelNumber(std::string productName) {
    return CutModelNumber(productName);
}

std::string TNOXXMLWriterImpl::GetResourceID(std::string resourceType, TInstancePtr instance,
                                             std::string keyProperty1, std::string keyProperty2,
                                             std::string /*reserved*/) {
    return MakeResourceId(resourceType, instance, keyProperty1, keyProperty2);
}

void TNOXXMLWriterImpl::MD5(const char* data, unsigned int length, unsigned char* out) {
    WriteDigestText(data, length, out);
}

void TNOXXMLWriterImpl::transform(const unsigned char* block, std::uint32_t& a, std::uint32_t& b,
                                  std::uint32_t& c, std::uint32_t& d) {
    CompressBlock(block, a, b, c, d);
}

void TNOXXMLWriterImpl::toString(const std::uint32_t* digestWords, unsigned char* out) {
    WriteChainingWords(digestWords, out);
}

std::string TNOXXMLWriterImpl::ConvertCIMDateToUSMI(NKELVOR20::TCIMDateTime dateTime) {
    return FormatDateTime(dateTime);
}

std::string TNOXXMLWriterImpl::GetRCFTime() {
    return GetTimestamp();
}
