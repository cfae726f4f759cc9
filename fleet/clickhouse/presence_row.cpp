#include "fleet/clickhouse/presence_row.h"

#include "fleet/model/stored_values.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <tuple>
#include <utility>

namespace NFLEET {
namespace {

constexpr char ownIdentifier = '\x01';  // JSON text has no control characters

std::string QuoteIdentifier(const TDigest& resource) {
    return '"' + ToText(resource) + '"';
}

}  // namespace

std::size_t CountOpen(std::span<const TPresence> presences) {
    const auto closed =
        std::ranges::find_if(presences, [](const TPresence& presence) { return presence.until != open; });
    return static_cast<std::size_t>(closed - presences.begin());
}

TComposition MakeComposition(std::span<const TPresence> presences) {
    TComposition composition;
    std::string text;
    for (const TPresence& presence : presences.first(CountOpen(presences))) {
        composition.elements.push_back({presence.type, presence.version});
        text.append(presence.type).push_back('\0');
        text.append(presence.version.GetView());
    }
    if (!text.empty()) {
        composition.digest = MakeDigest(text);
    }
    return composition;
}

bool Complete(const TComposition& composition, std::vector<TPresence>& presences) {
    if (composition.elements.size() != CountOpen(presences)) {
        return false;
    }
    for (std::size_t i = 0; i < composition.elements.size(); ++i) {
        presences[i].type = composition.elements[i].type;
        presences[i].version = composition.elements[i].version;
    }
    return true;
}

void ApplyChanges(std::span<const TPresence> written, std::span<const TPresenceKey> removed,
                  std::vector<TPresence>& presences) {
    std::map<TPresenceKey, TPresence> rows;
    for (TPresence& presence : presences) {
        TPresenceKey key = presence.GetKey();
        rows.insert_or_assign(std::move(key), std::move(presence));
    }
    for (const TPresence& presence : written) {
        rows.insert_or_assign(presence.GetKey(), presence);
    }
    for (const TPresenceKey& key : removed) {
        rows.erase(key);
    }
    presences.clear();
    for (auto& [key, presence] : rows) {
        presences.push_back(std::move(presence));
    }
}

void SortForRow(std::vector<TPresence>& presences) {
    const auto getOrder = [](const TPresence& presence) {
        return std::tuple(presence.until != open, std::string_view(presence.type), presence.version,
                          presence.resource, presence.since);
    };
    std::ranges::sort(presences, {}, getOrder);
}

TSeconds GetNewestChange(std::span<const TPresence> presences) {
    TSeconds newest = always;
    for (const TPresence& presence : presences) {
        newest = std::max({newest, presence.since, presence.until == open ? always : presence.until});
    }
    return newest;
}

std::string FormatIdentity(const TIdentity& identity, const TDigest& resource) {
    if (identity.empty()) {
        return {};
    }
    std::string text = FormatValues(identity);
    const std::string identifier = QuoteIdentifier(resource);
    if (const auto place = text.find(identifier); place != std::string::npos) {
        text.replace(place, identifier.size(), 1, ownIdentifier);
    }
    return text;
}

std::optional<TIdentity> ParseIdentity(std::string_view text, const TDigest& resource) {
    if (text.empty()) {
        return TIdentity();
    }
    const auto place = text.find(ownIdentifier);
    if (place == std::string_view::npos) {
        return ParseValues(text);
    }
    return ParseValues(std::string(text.substr(0, place)) + QuoteIdentifier(resource) +
                       std::string(text.substr(place + 1)));
}

std::string FormatSearchedValue(std::string_view value) {
    const std::string list = FormatValues({{std::string(value)}});
    return list.substr(1, list.size() - 2);
}

TVolatileLayout MakeLayout(const std::vector<TVolatileValue>& values) {
    TVolatileLayout layout{{}, {}, values};
    std::string text;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const bool isNext = i > 0 && values[i].resource == values[i - 1].resource;
        if (!isNext) {
            layout.numbers.push_back(0);
        }
        ++layout.numbers.back();
        const auto& property = values[i].property;
        text += FormatValues({{isNext ? "next" : "", std::to_string(values[i].position), property.name,
                               property.type, std::to_string(static_cast<int>(property.shape))}});
    }
    layout.digest = values.empty() ? TDigest() : MakeDigest(text);
    return layout;
}

bool Complete(const TVolatileLayout& layout, const std::vector<TDigest>& resources,
              std::vector<TVolatileValue>& values) {
    if (values.size() != layout.values.size() || resources.size() != layout.numbers.size()) {
        return false;
    }
    std::size_t i = 0;
    for (std::size_t resource = 0; resource < resources.size(); ++resource) {
        for (std::uint32_t n = 0; n < layout.numbers[resource] && i < values.size(); ++n, ++i) {
            auto texts = std::move(values[i].property.values);
            values[i] = layout.values[i];
            values[i].resource = resources[resource];
            values[i].property.values = std::move(texts);
        }
    }
    return true;
}

}  // namespace NFLEET
