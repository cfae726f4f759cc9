#include "program/outgoing_files.h"

#include "host/os_specific.h"
#include "program/snapshot_file.h"
#include "text/non_empty.h"
#include "vorhost/cimxml/save.h"

#include <optional>
#include <sstream>

namespace NVORHOST {
namespace {

// Returns the Name of the first computer system.
std::optional<std::string> FindMachineIdentity(const TMemoryNamespace& collected) {
    const auto systems = collected.FindClass("KELSG_ComputerSystem");
    if (systems == nullptr || systems->GetInstances().empty()) {
        return std::nullopt;
    }
    const TCIMValue* const name = systems->GetInstances().front()->Find("Name");
    return name == nullptr ? std::nullopt : NonEmpty(name->ToString(10));
}

}  // namespace

std::string MakeSnapshotBytes(const TMemoryNamespace& collected) {
    std::ostringstream bytes;
    WriteSnapshot(collected, sentSnapshotName, bytes);
    return std::move(bytes).str();
}

std::string MakeResultBytes(const std::string& className,
                            const std::vector<boost::shared_ptr<TMemoryInstance>>& results) {
    std::ostringstream bytes;
    SaveInstances(className, results, bytes);
    return std::move(bytes).str();
}

TRunRecord MakeRunRecord(const std::string& url, const TMemoryNamespace& collected) {
    const std::string time = NKELVOR20::TOSSpecific::GetLocalTime().ToString();  // yyyymmddhhmmss...
    TRunRecord record;
    record.url = url;
    record.values.host = NKELVOR20::TOSSpecific::GetMachineName();
    record.values.machine = FindMachineIdentity(collected).value_or(record.values.host);
    record.values.date = time.substr(0, 4) + "-" + time.substr(4, 2) + "-" + time.substr(6, 2);
    record.values.time = time.substr(8, 6);
    return record;
}

}  // namespace NVORHOST
