#include "writer/system_info_document.h"

#include "host/os_specific.h"
#include "host/plugin_callbacks.h"
#include "host/schema_helper.h"
#include "host/vor_exception.h"
#include "writer/class_instances.h"
#include "writer/core_log.h"
#include "writer/document_frame.h"
#include "writer/os_type.h"
#include "writer/resource_identity.h"

#include <cxxabi.h>

#include <type_traits>
#include <vector>

using NKELVOR20::ICIMClass;
using NKELVOR20::ICIMInstance;
using NKELVOR20::ICIMNamespace;
using NKELVOR20::noxSystemInfo;
using NKELVOR20::TCIMSchemaHelper;
using NKELVOR20::TOSSpecific;
using NKELVOR20::TVORException;
using NKELVOR20::TVORStatusCode;

namespace {

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

/// Returns what `read` returns, or `fallback` if it throws: one failed source must not affect the others.
template <typename TRead, typename TValue = std::invoke_result_t<TRead>>
TValue ReadOr(TValue fallback, TRead read) {
    try {
        return read();
    } catch (const abi::__forced_unwind&) {
        throw;  // A cancelled thread must unwind completely.
    } catch (...) {
        return fallback;
    }
}

/// Reads every source, in the order in which hosts expect the calls.
TSystemInfo GatherSystemInfo(const boost::shared_ptr<ICIMNamespace>& collected) {
    TSystemInfo info;
    info.manufacturer = ReadOr({}, [&] { return GetManufacturer(collected); });
    info.machineType = ReadOr({}, [&] { return TCIMSchemaHelper::GetMachineType(collected); });
    info.model = ReadOr({}, [&] { return TCIMSchemaHelper::GetModelNumber(collected); });
    info.serialNumber = ReadOr({}, [&] { return TCIMSchemaHelper::GetSerialNumber(collected, {}); });
    const TOsType& osType =
        GetOsType(ReadOr(unknownOsCode, [&] { return TCIMSchemaHelper::GetOperatingSystemType(collected); }));
    info.osType = osType.platform;
    info.osName = osType.name;
    info.osVersion = ReadOr({}, [&] { return TCIMSchemaHelper::GetOperatingSystemVersion(collected); });
    info.systemName = ReadOr({}, [] { return TOSSpecific::GetMachineName(); });
    info.hostName = info.systemName;
    info.noxVersion = ReadOr({}, [&] { return TCIMSchemaHelper::GetDataSourceVersion(collected, {}); });
    info.productName = "KEL Vorcheck";
    return info;
}

std::string MakeSystemId(std::string_view resourceType, std::string_view machineType,
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

}  // namespace

void WriteSystemInfoDocument(TLineOutput& out, const boost::shared_ptr<ICIMNamespace>& collected) {
    WriteDocumentStart(out, " timestamp=\"");
    WriteCriteria(out, noxSystemInfo, "default.NOXSystemInfo");
    WriteContext(out, "SystemInfo", collected);
    WriteSystemInfoList(out, noxSystemInfo, collected);
    WriteDocumentEnd(out);
}

void WriteSystemInfoList(TLineOutput& out, std::string_view resourceType,
                         const boost::shared_ptr<ICIMNamespace>& collected) {
    out.WriteLine(R"(<ResourceList resourceType=")", resourceType, R"(">)");
    const TSystemInfo info = GatherSystemInfo(collected);
    out.WritePiece(R"(<ResourceInstance resourceId=")");
    const std::string resourceId = MakeSystemId(resourceType, info.machineType, info.serialNumber);
    const std::string resourceName =
        info.manufacturer + "," + info.machineType + "-" + info.model + "-" + info.serialNumber;
    out.WriteLine(resourceId, R"(" resourceName=")", resourceName, R"(" resourceType=")", resourceType,
                  R"(">)");
    for (const TSystemInfoRow& row : systemInfoRows) {
        WriteSystemInfoProperty(out, row.name, info.*row.value, "string");
    }
    out.WriteLine("</ResourceInstance>");
    out.WriteLine("</ResourceList>");
}

void WriteSystemInfoProperty(TLineOutput& out, std::string_view name, std::string_view value,
                             std::string_view type) {
    out.WriteLine(R"(<Property name=")", name, R"(" type=")", type, R"(">)");
    if (!value.empty()) {
        out.WriteLine("<Value>", value, "</Value>");
    }
    out.WriteLine("</Property>");
}

std::string GetManufacturer(const boost::shared_ptr<ICIMNamespace>& collected) {
    const boost::shared_ptr<ICIMClass> cimClass = collected->GetClass("KELSG_ComputerSystem", {});
    const std::vector<boost::shared_ptr<ICIMInstance>> instances = ListInstances(*cimClass);
    if (instances.size() != 1) {
        throw TVORException(TVORStatusCode::classNotFound);
    }
    return instances.front()->GetProperty("Manufacturer", {})->GetValue({});
}
