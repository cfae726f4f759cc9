#include "fleet/model/rows.h"

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

}  // namespace NFLEET
