#include "gzstream/gzstreams.h"
#include "host/log_levels.h"
#include "host/os_specific.h"
#include "host/root_object.h"
#include "host/schema_helper.h"
#include "host/vor_exception.h"
#include "plugin/document_buffer.h"
#include "plugin/encoded_bytes.h"
#include "plugin/noxinfo_plugin_callbacks.h"
#include "writer/nox_xml_writer.h"

#include <cxxabi.h>

#include <fstream>
#include <memory>
#include <optional>
#include <sstream>
#include <string_view>

using NKELVOR20::ICIMClass;
using NKELVOR20::ICIMInstance;
using NKELVOR20::ICIMNamespace;
using NKELVOR20::TCIMSchemaHelper;
using NKELVOR20::TCIMValue;
using NKELVOR20::TOptionsMap;
using NKELVOR20::TOSSpecific;
using NKELVOR20::TRootObject;
using NKELVOR20::TVORException;
using NKELVOR20::TVORStatusCode;

namespace {

// The files remain in the working directory, because the host may use them besides the instance.
constexpr char systemFileName[] = "systeminformation.xml.gz";
constexpr char hardwareFileName[] = "hardwareinventory.xml.gz";

constexpr char identityVariable[] = "ZETKELID";
constexpr char resultClassName[] = "KELSG_CADAT";

using TWriteDocument = bool (TNOXXMLWriterImpl::*)(boost::shared_ptr<ICIMNamespace>);

/// The values of every result instance of one request.
struct TResult {
    const std::string& hardwareBytes;  ///< the compressed file as it is on disk
    const std::string& kelId;
    const std::string& machineType;
};

std::optional<std::string> ReadMachineType(const boost::shared_ptr<ICIMNamespace>& collected) {
    try {
        return TCIMSchemaHelper::GetMachineType(collected);
    } catch (const abi::__forced_unwind&) {
        throw;  // A cancelled thread must unwind completely.
    } catch (...) {
        // Documents without a machine type are useless, so the request ends here.
        TRootObject::GetCoreLogger()->Log(NKELVOR20::hardFailureLevel,
                                          "NOXINFO: Can not get machine type from CIM result");
        return std::nullopt;
    }
}

std::optional<std::string> ReadIdentityVariable() {
    try {
        return TOSSpecific::GetEnvironment(identityVariable);
    } catch (const abi::__forced_unwind&) {
        throw;
    } catch (...) {
        return std::nullopt;
    }
}

std::string ReadIdentity(TNoxinfoPluginCallbacks& plugin) {
    const std::optional<std::string> kelId = ReadIdentityVariable();
    if (!kelId) {
        // The hardware document needs no identity: continue as for a machine without one.
        plugin.DebugOut("When get ZETKELID, a problem happened.");
        return "";
    }
    plugin.DebugOut("Got kelid is:" + *kelId);
    return *kelId;
}

void Empty(std::stringstream& buffer) {
    buffer.clear();
    buffer.str("");
}

// `buffer` is empty before and after.
void WriteDocument(TWriteDocument write, const boost::shared_ptr<ICIMNamespace>& collected,
                   const char* fileName, std::stringstream& buffer) {
    auto writer = std::make_unique<TNOXXMLWriterImpl>(buffer);
    (writer.get()->*write)(collected);
    gzofstream file(fileName, std::ios_base::binary);
    if (file.fail()) {
        throw TVORException(TVORStatusCode::cannotCreateFile);
    }
    const std::string_view document = buffer.view();
    file.write(document.data(), static_cast<std::streamsize>(document.size()));
    file.close();
    writer.reset();
    Empty(buffer);
}

// Appends to the stream buffer instead of the stream, so that std::bad_alloc reaches the caller.
void ReadFile(const char* fileName, std::stringbuf& buffer) {
    std::ifstream file(fileName, std::ios_base::in | std::ios_base::binary);
    for (char byte = '\0'; file.get(byte);) {
        buffer.sputc(byte);
    }
    file.close();
}

// Leaves `buffer` empty.
std::string ReadHardwareBytes(TNoxinfoPluginCallbacks& plugin, std::stringstream& buffer) {
    try {
        ReadFile(hardwareFileName, *buffer.rdbuf());
    } catch (const abi::__forced_unwind&) {
        throw;
    } catch (...) {
        // An instance with part of the file still identifies the customer and the machine.
        plugin.DebugOut("When read hwInventoryFile, a problem happened.");
    }
    std::string bytes = buffer.str();
    Empty(buffer);
    return bytes;
}

// Writes the files and returns the bytes of the hardware file. One buffer serves all steps in turn and is
// freed before the result instances are created.
std::string ProduceFiles(TNoxinfoPluginCallbacks& plugin, const boost::shared_ptr<ICIMNamespace>& collected,
                         bool withSystemFile) {
    std::stringstream buffer = MakeDocumentBuffer();
    if (withSystemFile) {
        plugin.DebugOut("Ready for system inventory!");
        WriteDocument(&TNOXXMLWriterImpl::WriteSysInfoNamespace, collected, systemFileName, buffer);
    }
    plugin.DebugOut("Ready for hwinventory");
    WriteDocument(&TNOXXMLWriterImpl::WriteNamespace, collected, hardwareFileName, buffer);
    return ReadHardwareBytes(plugin, buffer);
}

void AddResultInstance(TNoxinfoPluginCallbacks& plugin, ICIMClass& resultClass, const TResult& result) {
    const TOptionsMap noOptions;
    // The instance is declared before the text, so that the text is freed first.
    boost::shared_ptr<ICIMInstance> instance;
    const std::unique_ptr<char[]> encoded = EncodeBytes(plugin, result.hardwareBytes);
    instance = resultClass.CreateInstance(noOptions);
    // Hosts keep properties in the order in which they are set.
    instance->SetProperty("InventoryRCF", TCIMValue(encoded.get()), noOptions);
    instance->SetProperty("KELID", TCIMValue(result.kelId), noOptions);
    instance->SetProperty("MachineType", TCIMValue(result.machineType), noOptions);
    instance->SetProperty("Credential", TCIMValue(plugin.GetCredential(result.kelId)), noOptions);
    instance->CommitInstance(noOptions);
}

}  // namespace

void TNoxinfoPluginCallbacks::GetData(boost::shared_ptr<ICIMNamespace> collected,
                                      std::vector<boost::shared_ptr<ICIMClass>>& resultClasses) {
    const std::optional<std::string> machineType = ReadMachineType(collected);
    if (!machineType) {
        return;
    }
    const std::string kelId = ReadIdentity(*this);
    const std::string bytes = ProduceFiles(*this, collected, /*withSystemFile=*/!kelId.empty());
    const TResult result = {bytes, kelId, *machineType};
    for (const boost::shared_ptr<ICIMClass>& resultClass : resultClasses) {
        if (resultClass->GetClassName(TOptionsMap()) == resultClassName) {
            AddResultInstance(*this, *resultClass, result);
        }
    }
}
