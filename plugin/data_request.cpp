// The one request that the host makes: two documents into files, and the hardware document back to the host.
#include "gzstream/gzstreams.h"
#include "host/os_specific.h"
#include "host/root_object.h"
#include "host/schema_helper.h"
#include "host/vor_exception.h"
#include "plugin/base64_length.h"
#include "plugin/noxinfo_plugin_callbacks.h"
#include "writer/nox_xml_writer.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <fstream>
#include <memory>
#include <new>
#include <optional>
#include <sstream>
#include <string_view>
#include <utility>

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

// In the working directory, and left there: the host may want the files as well as the instance.
constexpr char systemFileName[] = "systeminformation.xml.gz";
constexpr char hardwareFileName[] = "hardwareinventory.xml.gz";

// Room for the documents of some tens of thousands of resources. It is address space until text fills it;
// text that has to grow is copied, and its memory touched anew, at every doubling.
constexpr std::size_t documentRoom = std::size_t{64} << 20;

constexpr char identityVariable[] = "ZETKELID";
constexpr char resultClassName[] = "KELSG_CADAT";

constexpr int hardFailureLevel = 0;
constexpr int warningLevel = 3;

using TWriteDocument = bool (TNOXXMLWriterImpl::*)(boost::shared_ptr<ICIMNamespace>);

/// What every result instance of one request carries.
struct TResult {
    const std::string& hardwareBytes;  ///< the hardware file as it lies on disk, gzip and all
    const std::string& kelId;
    const std::string& machineType;
};

std::optional<std::string> ReadMachineType(const boost::shared_ptr<ICIMNamespace>& collected) {
    try {
        return TCIMSchemaHelper::GetMachineType(collected);
    } catch (...) {
        // Documents that name no machine are of no use to anybody, so the request ends here.
        TRootObject::GetCoreLogger()->Log(hardFailureLevel,
                                          "NOXINFO: Can not get machine type from CIM result");
        return std::nullopt;
    }
}

std::optional<std::string> ReadIdentityVariable() {
    try {
        return TOSSpecific::GetEnvironment(identityVariable);
    } catch (...) {
        return std::nullopt;
    }
}

std::string ReadIdentity(TNoxinfoPluginCallbacks& plugin) {
    const std::optional<std::string> kelId = ReadIdentityVariable();
    if (!kelId) {
        // The hardware document needs no identity: go on as for a machine that has none.
        plugin.DebugOut("When get ZETKELID, a problem happened.");
        return "";
    }
    plugin.DebugOut("Got kelid is:" + *kelId);
    return *kelId;
}

// A page fault for each 4 KiB of text takes longer than rendering into it: the kernel may use larger pages.
// An advice: where it is not taken, nothing is lost.
void AdviseLargePages(std::string& room) {
    const auto pageSize = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    void* begin = room.data();
    std::size_t size = room.capacity();
    if (std::align(pageSize, pageSize, begin, size) != nullptr) {
        (void)madvise(begin, size / pageSize * pageSize, MADV_HUGEPAGE);
    }
}

std::stringstream MakeBuffer() {
    std::string room;
    try {
        room.reserve(documentRoom);
        AdviseLargePages(room);
    } catch (const std::bad_alloc&) {
        // Documents of most machines need a hundredth of it: start small and grow.
    }
    std::stringstream buffer(std::move(room), std::ios_base::in | std::ios_base::out);
    // Where there is no memory for the text, it has to show: a stream would swallow the rest, and half a
    // document would go out as a whole one.
    buffer.exceptions(std::ios_base::badbit);
    return buffer;
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

// Appends to `buffer`. The stream buffer takes the bytes, not the stream: its lack of memory is to be seen.
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
    } catch (...) {
        // An instance with part of the file still tells who and which machine it is about.
        plugin.DebugOut("When read hwInventoryFile, a problem happened.");
    }
    std::string bytes = buffer.str();
    Empty(buffer);
    return bytes;
}

// Writes the files and returns the bytes of the hardware file. The one buffer is used in turn, and gone
// before the result instances need memory of their own.
std::string ProduceFiles(TNoxinfoPluginCallbacks& plugin, const boost::shared_ptr<ICIMNamespace>& collected,
                         bool withSystemFile) {
    std::stringstream buffer = MakeBuffer();
    if (withSystemFile) {
        plugin.DebugOut("Ready for system inventory!");
        WriteDocument(&TNOXXMLWriterImpl::WriteSysInfoNamespace, collected, systemFileName, buffer);
    }
    plugin.DebugOut("Ready for hwinventory");
    WriteDocument(&TNOXXMLWriterImpl::WriteNamespace, collected, hardwareFileName, buffer);
    return ReadHardwareBytes(plugin, buffer);
}

// NUL-terminated; null when there is no memory for it.
std::unique_ptr<char[]> EncodeBytes(TNoxinfoPluginCallbacks& plugin, const std::string& bytes) {
    std::unique_ptr<char[]> text;
    try {
        const auto byteCount = static_cast<unsigned int>(bytes.size());
        const std::size_t length = GetBase64Length(byteCount);
        text.reset(new char[length + 1]);
        text[0] = '\0';  // holds when the encoder refuses a text whose length it cannot be told
        (void)plugin.Base64Encode(reinterpret_cast<const unsigned char*>(bytes.data()), byteCount,
                                  reinterpret_cast<unsigned char*>(text.get()),
                                  static_cast<unsigned int>(length));
    } catch (...) {
        // The instance is made all the same, its inventory null.
        TRootObject::GetCoreLogger()->Log(warningLevel, "noxinfo-base64 error!");
    }
    return text;
}

void AddResultInstance(TNoxinfoPluginCallbacks& plugin, ICIMClass& resultClass, const TResult& result) {
    const TOptionsMap noOptions;
    const std::unique_ptr<char[]> encoded = EncodeBytes(plugin, result.hardwareBytes);
    const boost::shared_ptr<ICIMInstance> instance = resultClass.CreateInstance(noOptions);
    // The host keeps properties in the order in which they are set.
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
