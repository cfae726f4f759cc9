#include "fleet/model/rows.h"

#include <algorithm>
#include <tuple>

namespace NFLEET {

std::string_view GetWord(EScope scope) {
    switch (scope) {
        case EScope::hardware:
            return "hardware";
        case EScope::systemInformation:
            return "system-information";
        case EScope::snapshot:
            return "snapshot";
    }
    return "";
}

std::string_view GetWord(EMachineRule rule) {
    switch (rule) {
        case EMachineRule::uuid:
            return "uuid";
        case EMachineRule::systemInformation:
            return "system information";
        case EMachineRule::path:
            return "path";
    }
    return "";
}

void SortByKey(std::vector<TPresence>& presences) {
    std::ranges::sort(presences, [](const TPresence& left, const TPresence& right) {
        return std::tie(left.place, left.type, left.resource, left.since) <
               std::tie(right.place, right.type, right.resource, right.since);
    });
}

}  // namespace NFLEET
