#include "machine/collect/run/source_outcomes.h"

#include "machine/system/path_pattern.h"

#include <algorithm>
#include <utility>

namespace NVORHOST {
namespace {

EValueStatus ToValueStatus(EReadStatus status) {
    switch (status) {
        case EReadStatus::ok:
            return EValueStatus::present;
        case EReadStatus::notFound:
            return EValueStatus::absent;
        case EReadStatus::denied:
            return EValueStatus::denied;
        case EReadStatus::failed:
            return EValueStatus::unread;
        case EReadStatus::timedOut:
            return EValueStatus::timedOut;
        case EReadStatus::asleep:
            return EValueStatus::asleep;
    }
    return EValueStatus::unread;
}

// A path may be accessed in several ways, such as a folder that is not a link. A refusal outweighs what was
// read, and this outweighs other failures.
int RankOf(EValueStatus status) {
    switch (status) {
        case EValueStatus::absent:
            return 0;
        case EValueStatus::unread:
            return 1;
        case EValueStatus::present:
            return 2;
        default:
            return 3;
    }
}

// Trees have the folder of firmware texts with or without the link to it.
std::string_view TakeDmiFolder(std::string_view path) {
    constexpr std::string_view folder = "/sys/devices/virtual/dmi/id/";
    return path.starts_with(folder) ? path.substr(folder.size()) : std::string_view();
}

std::string MakeKey(std::string_view path) {
    const std::string_view name = TakeDmiFolder(path);
    return name.empty() ? std::string(path) : "/sys/class/dmi/id/" + std::string(name);
}

}  // namespace

void TSourceOutcomes::Add(const std::vector<TAccessLog::TAccess>& accesses) {
    for (const TAccessLog::TAccess& access : accesses) {
        const EValueStatus status = ToValueStatus(access.status);
        const auto [found, isNew] = outcomes_.try_emplace(MakeKey(access.path));
        TSourceOutcome& outcome = found->second;
        if (isNew || RankOf(status) > RankOf(outcome.status)) {
            outcome.status = status;
        }
        if (!access.text.empty()) {
            outcome.text = access.text;
        }
    }
}

void TSourceOutcomes::AddTimedOut(const std::string& path) {
    outcomes_[MakeKey(path)].status = EValueStatus::timedOut;
}

std::optional<TSourceOutcome> TSourceOutcomes::Find(std::string_view pattern) const {
    const std::string_view start = pattern.substr(0, pattern.find('*'));
    if (start.size() == pattern.size()) {
        const auto found = outcomes_.find(pattern);
        return found == outcomes_.end() ? std::nullopt : std::optional(found->second);
    }
    std::optional<TSourceOutcome> best;
    for (auto each = outcomes_.lower_bound(start);
         each != outcomes_.end() && std::string_view(each->first).starts_with(start); ++each) {
        const bool isBetter = !best || RankOf(each->second.status) > RankOf(best->status);
        if (isBetter && MatchesPathPattern(pattern, each->first)) {
            best = each->second;
        }
    }
    return best;
}

}  // namespace NVORHOST
