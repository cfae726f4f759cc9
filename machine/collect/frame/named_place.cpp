#include "machine/collect/frame/named_place.h"

#include <cstddef>
#include <map>
#include <utility>

namespace NVORHOST {

std::vector<TKeySource> MakePlaceKeySources(const std::vector<TNamedPlace>& places, std::string_view word) {
    std::map<std::pair<std::optional<std::string>, std::string>, std::size_t> uses;
    for (const TNamedPlace& place : places) {
        if (place.partOf) {
            ++uses[{place.name, *place.partOf}];
        }
    }
    std::vector<TKeySource> sources;
    for (const TNamedPlace& place : places) {
        const bool isUnique = place.partOf && uses[{place.name, *place.partOf}] == 1;
        sources.push_back({place.name, isUnique
                                           ? *place.partOf
                                           : std::string(word) + " " + std::to_string(sources.size() + 1)});
    }
    return sources;
}

}  // namespace NVORHOST
