#include "machine/collect/frame/identifying_info.h"

#include <utility>

namespace NVORHOST {

void TIdentifyingInfo::Add(std::string description, const std::optional<std::string>& value) {
    if (!value) {
        return;
    }
    if (!values) {
        values.emplace();
        descriptions.emplace();
    }
    values->push_back(*value);
    descriptions->push_back(std::move(description));
}

}  // namespace NVORHOST
