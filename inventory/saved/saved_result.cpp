#include "inventory/saved/saved_result.h"

#include "documents/document_error.h"
#include "inventory/saved/namespace_resources.h"
#include "inventory/saved/result_names.h"
#include "vorhost/cimxml/base64.h"

namespace NVORHOST {

std::optional<std::string> FindResult(const std::string& name, const TMemoryNamespace& loaded) {
    const auto results = loaded.FindClass(resultClassName);
    if (results == nullptr || results->GetInstances().empty()) {
        return std::nullopt;
    }
    const TCIMValue* const inventory = results->GetInstances().front()->Find(inventoryProperty);
    auto bytes =
        inventory == nullptr || inventory->IsNull() ? std::nullopt : DecodeBase64(inventory->ToString(10));
    if (!bytes) {
        ThrowAt({name, {}, {}, {}}, "the result has no inventory");
    }
    return bytes;
}

std::string FindTimestamp(const TMemoryNamespace& loaded) {
    const auto systems = loaded.FindClass("KELSG_OperatingSystem");
    if (systems == nullptr || systems->GetInstances().empty()) {
        return {};
    }
    const TCIMValue* const time = systems->GetInstances().front()->Find("LocalDateTime");
    return time == nullptr || time->IsNull() ? std::string() : FormatDate(*time);
}

}  // namespace NVORHOST
