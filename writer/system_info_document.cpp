// The system-information document: one instance that describes the machine as a whole, from sources of which
// any may fail without spoiling it.
#include "host/os_specific.h"
#include "host/plugin_callbacks.h"
#include "host/schema_helper.h"
#include "host/vor_exception.h"
#include "writer/core_log.h"
#include "writer/nox_xml_writer.h"

#include <cxxabi.h>

#include <algorithm>
#include <iterator>
#include <type_traits>

using NKELVOR20::ICIMClass;
using NKELVOR20::noxSystemInfo;
using NKELVOR20::TCIMSchemaHelper;
using NKELVOR20::TOSSpecific;
using NKELVOR20::TVORException;
using NKELVOR20::TVORStatusCode;

namespace {

struct TSystemTypeRow {
    unsigned short code;
    std::string_view type;
    std::string_view name;
};

// CIM OSType codes. ESX is no platform of its own to the readers.
// clang-format off
constexpr TSystemTypeRow systemTypeRows[] = {
    {15, "win32", "Windows"},
    {16, "win32", "Windows"},
    {17, "win32", "Windows"},
    {18, "win32", "Windows"},
    {19, "win32", "Windows"},
    {36, "linux", "Linux"},
    {58, "win32", "Windows 2000"},
    {63, "win32", "Windows"},
    {67, "win32", "Windows XP"},
    {69, "win32", "Windows server 2003"},
    {70, "win64", "Windows server 2003"},
    {71, "win64", "Windows XP"},
    {72, "win32", "Windows server 2003"},
    {73, "win64", "Windows server 2003"},
    {74, "win32", "Windows Vista"},
    {75, "win64", "Windows Vista"},
    {76, "win32", "Windows server 2008"},
    {77, "win64", "Windows server 2008"},
    {78, "other", "Vmware ESX Server"},
};
// clang-format on

constexpr unsigned short unknownSystemCode = 99;
constexpr TSystemTypeRow unlistedSystemType = {unknownSystemCode, "other", "Other"};

const TSystemTypeRow& SystemType(unsigned short code) {
    const auto* const row = std::ranges::find(systemTypeRows, code, &TSystemTypeRow::code);
    return row == std::end(systemTypeRows) ? unlistedSystemType : *row;
}

struct TSystemInfo {
    std::string manufacturer;
    std::string machineType;
    std::string model;
    std::string serialNumber;
    std::string osType;
    std::string osName;
    std::string osVersion;
    std::string systemName;
    std::string hostName;
    std::string noxVersion;
    std::string productName;
};

struct TSystemInfoRow {
    const char* name;
    std::string TSystemInfo::*value;
};

// Row order is document order.
constexpr TSystemInfoRow systemInfoRows[] = {
    {"Manufacturer", &TSystemInfo::manufacturer},
    {"MachineType", &TSystemInfo::machineType},
    {"Model", &TSystemInfo::model},
    {"SerialNumber", &TSystemInfo::serialNumber},
    {"OSType", &TSystemInfo::osType},
    {"OSName", &TSystemInfo::osName},
    {"OSVersion", &TSystemInfo::osVersion},
    {"SystemName", &TSystemInfo::systemName},
    {"HostName", &TSystemInfo::hostName},
    {"NoxVersion", &TSystemInfo::noxVersion},
    {"ProductName", &TSystemInfo::productName},
};

/// What `ask` answers, or `fallback` when it throws anything: a source that fails must not cost the others.
template <typename TAsk, typename TAnswer = std::invoke_result_t<TAsk>>
TAnswer AnswerOr(TAnswer fallback, TAsk ask) {
    try {
        return ask();
    } catch (const abi::__forced_unwind&) {
        throw;  // A cancelled thread has to unwind to its end.
    } catch (...) {
        return fallback;
    }
}

/// Asks every source, in the order in which hosts expect the questions.
TSystemInfo GatherSystemInfo(const TNOXXMLWriterImpl::TNamespacePtr& collected) {
    TSystemInfo info;
    info.manufacturer = AnswerOr({}, [&] { return TNOXXMLWriterImpl::GetUSMIManufacturer(collected); });
    info.machineType = AnswerOr({}, [&] { return TCIMSchemaHelper::GetMachineType(collected); });
    info.model = AnswerOr({}, [&] { return TCIMSchemaHelper::GetModelNumber(collected); });
    info.serialNumber = AnswerOr({}, [&] { return TCIMSchemaHelper::GetSerialNumber(collected, {}); });
    const unsigned short systemCode =
        AnswerOr(unknownSystemCode, [&] { return TCIMSchemaHelper::GetOperatingSystemType(collected); });
    info.osType = SystemType(systemCode).type;
    info.osName = SystemType(systemCode).name;
    info.osVersion = AnswerOr({}, [&] { return TCIMSchemaHelper::GetOperatingSystemVersion(collected); });
    info.systemName = AnswerOr({}, [] { return TOSSpecific::GetMachineName(); });
    info.hostName = info.systemName;
    info.noxVersion = AnswerOr({}, [&] { return TCIMSchemaHelper::GetDataSourceVersion(collected, {}); });
    info.productName = "KEL Vorcheck";
    return info;
}

}  // namespace

bool TNOXXMLWriterImpl::WriteSysInfoNamespace(TNamespacePtr collected) {
    WriteDocumentStart(" timestamp=\"");
    WriteResourceCollectionCriteria(noxSystemInfo, "default.NOXSystemInfo", collected);
    WriteResourceCollectionContext("SystemInfo", collected);
    WriteResourceListForSysInfo(noxSystemInfo, collected);
    WriteLine("</ResourceCollection>");
    return true;
}

bool TNOXXMLWriterImpl::WriteResourceListForSysInfo(std::string resourceType, TNamespacePtr collected) {
    WriteLine(R"(<ResourceList resourceType=")", resourceType, R"(">)");
    const TSystemInfo info = GatherSystemInfo(collected);
    WritePiece(R"(<ResourceInstance resourceId=")");
    const std::string resourceId = MakeSysInfoResourceID(resourceType, info.machineType, info.serialNumber);
    const std::string resourceName =
        info.manufacturer + "," + info.machineType + "-" + info.model + "-" + info.serialNumber;
    WriteLine(resourceId, R"(" resourceName=")", resourceName, R"(" resourceType=")", resourceType, R"(">)");
    for (const TSystemInfoRow& row : systemInfoRows) {
        WriteSysInfoProperty(row.name, info.*row.value, "string");
    }
    WriteLine("</ResourceInstance>");
    WriteLine("</ResourceList>");
    return true;
}

bool TNOXXMLWriterImpl::WriteSysInfoProperty(std::string name, std::string value, std::string type) {
    WriteLine(R"(<Property name=")", name, R"(" type=")", type, R"(">)");
    if (!value.empty()) {
        WriteLine("<Value>", value, "</Value>");
    }
    WriteLine("</Property>");
    return true;
}

std::string TNOXXMLWriterImpl::MakeSysInfoResourceID(std::string_view resourceType,
                                                     std::string_view machineType,
                                                     std::string_view serialNumber) {
    try {
        std::string key = "kel-cdm:///CDM-";
        key.append(resourceType).append("/MachineType=").append(machineType);
        key.append("/SerialNumber=").append(serialNumber);
        return DigestKey(key);
    } catch (...) {
        LogWarning("TNOXXML-WriteResourceListForSysInfo-when get resource id error!");
        return {};
    }
}

std::string TNOXXMLWriterImpl::GetUSMIManufacturer(TNamespacePtr collected) {
    const boost::shared_ptr<ICIMClass> cimClass = collected->GetClass("KELSG_ComputerSystem", {});
    const std::vector<TInstancePtr> instances = ListInstances(*cimClass);
    if (instances.size() != 1) {
        throw TVORException(TVORStatusCode::classNotFound);
    }
    return instances.front()->GetProperty("Manufacturer", {})->GetValue({});
}

std::string TNOXXMLWriterImpl::ConvertOSType(unsigned short code) {
    return std::string(SystemType(code).type);
}

std::string TNOXXMLWriterImpl::ConvertOSName(unsigned short code) {
    return std::string(SystemType(code).name);
}
