#include "inventory/read/resource_filter.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace NINVENTORY {
namespace {

bool IsListed(const std::vector<std::string>& list, const std::string& text) {
    return list.empty() || std::ranges::find(list, text) != list.end();
}

bool Holds(const TCondition& condition, const TResource& resource) {
    const TProperty* const property = resource.Find(condition.property);
    return property != nullptr && std::ranges::any_of(property->values, [&](const std::string& value) {
               return Meets(value, condition);
           });
}

}  // namespace

bool Meets(const std::string& value, const TCondition& condition) {
    return condition.expression ? std::regex_search(value, *condition.expression) : value == condition.value;
}

TCondition ParseCondition(const std::string& text) {
    const std::size_t sign = text.find_first_of("=~");
    if (sign == std::string::npos || sign == 0) {
        throw std::invalid_argument("'" + text + "' is not PROPERTY=VALUE or PROPERTY~EXPRESSION");
    }
    TCondition condition{text.substr(0, sign), text.substr(sign + 1), std::nullopt};
    if (text[sign] == '~') {
        try {
            condition.expression.emplace(condition.value);
        } catch (const std::regex_error&) {
            throw std::invalid_argument("'" + condition.value + "' is not a regular expression");
        }
    }
    return condition;
}

void TResourceFilter::AddResource(TResource&& resource) {
    if (!IsWanted(resource)) {
        return;
    }
    if (!settings_.properties.empty()) {
        std::erase_if(resource.properties, [&](const TProperty& property) {
            return !IsListed(settings_.properties, property.name);
        });
        std::erase_if(resource.sources, [&](const TPropertySource& source) {
            return !IsListed(settings_.properties, source.property);
        });
    }
    if (!settings_.keepsSources) {
        resource.sources.clear();
    }
    events_.AddResource(std::move(resource));
}

void TResourceFilter::NoteUnknownType(std::string_view type, const NVORHOST::TValueSource& source) {
    if (settings_.keepsSources && settings_.conditions.empty() &&
        IsListed(settings_.types, std::string(type))) {
        events_.NoteUnknownType(type, source);
    }
}

bool TResourceFilter::IsWanted(const TResource& resource) const {
    return IsListed(settings_.types, resource.type) &&
           std::ranges::all_of(settings_.conditions,
                               [&](const TCondition& condition) { return Holds(condition, resource); });
}

}  // namespace NINVENTORY
