#include "fleet/model/resource_key.h"

#include "fleet/model/canonical_text.h"
#include "inventory/model/resource_type.h"

#include <algorithm>
#include <set>

namespace NFLEET {
namespace {

bool IsLink(std::string_view type) {
    static const std::set<std::string_view> links = [] {
        std::set<std::string_view> types;
        for (const NINVENTORY::TResourceType& row : NINVENTORY::GetResourceTypes()) {
            if (row.keyProperty.empty()) {
                types.insert(row.type);
            }
        }
        return types;
    }();
    return links.contains(type);
}

// Identifiers are written in upper case; others would not be written back as they were.
std::optional<TDigest> ParseIdentifier(std::string_view id) {
    const bool hasLower = std::ranges::any_of(id, [](char c) { return c >= 'a' && c <= 'f'; });
    return hasLower ? std::nullopt : ParseDigest(id);
}

TDigest MakeLinkKey(std::string_view id, std::string_view type, const TDigest& version,
                    const TIdentity& identity) {
    TCanonicalText text;
    text.Add(id);
    text.Add(type);
    text.Add(version);
    for (const auto& values : identity) {
        text.Add(values.size());
        for (const std::string& value : values) {
            text.Add(value);
        }
    }
    return text.GetDigest();
}

TDigest MakeNumberedKey(std::string_view id, std::string_view type, std::uint64_t number) {
    TCanonicalText text;
    text.Add(id);
    text.Add(type);
    text.Add(number);
    return text.GetDigest();
}

}  // namespace

TResourceKey TResourceKeys::Make(std::string_view id, std::string_view type, const TDigest& version,
                                 const TIdentity& identity) {
    const bool isLink = IsLink(type);
    const std::optional<TDigest> parsed = isLink ? std::nullopt : ParseIdentifier(id);
    const TDigest wanted = parsed   ? *parsed
                           : isLink ? MakeLinkKey(id, type, version, identity)
                                    : MakeNumberedKey(id, type, 0);
    const std::uint64_t number = counts_[wanted]++;
    if (number == 0) {
        return {wanted, parsed ? std::nullopt : std::optional(std::string(id))};
    }
    return {MakeNumberedKey(ToText(wanted), type, number), std::string(id)};
}

}  // namespace NFLEET
