#include "inventory/compare/inventory.h"

#include "inventory/model/resource_type.h"

#include <algorithm>

namespace NINVENTORY {
namespace {

constexpr std::string_view noList = "-";
constexpr std::string_view systemInformationType = "NOXSystemInfo";

bool IsInHardwareDocuments(std::string_view type) {
    const auto rows = GetResourceTypes();
    return std::ranges::any_of(
        rows, [type](const TResourceType& row) { return row.type == type && row.list != noList; });
}

}  // namespace

bool TInventory::Covers(std::string_view type) const {
    const auto covers = [type](const TDocumentHead& document) {
        switch (document.kind) {
            case EDocument::hardware:
                return IsInHardwareDocuments(type);
            case EDocument::systemInformation:
                return type == systemInformationType;
            case EDocument::collection:
                break;
        }
        return false;
    };
    return std::ranges::any_of(documents, covers) || std::ranges::find(types, type) != types.end();
}

const NVORHOST::TValueSource* TInventory::FindUnknown(std::string_view type) const {
    const auto found = std::ranges::find(unknownTypes, type, &TPropertySource::property);
    return found == unknownTypes.end() ? nullptr : &found->source;
}

std::string_view TInventory::GetTimestamp() const {
    const auto document =
        std::ranges::find_if(documents, [](const TDocumentHead& head) { return !head.timestamp.empty(); });
    return document == documents.end() ? std::string_view() : std::string_view(document->timestamp);
}

}  // namespace NINVENTORY
