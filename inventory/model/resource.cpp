#include "inventory/model/resource.h"

#include <algorithm>

namespace NINVENTORY {

const TProperty* TResource::Find(std::string_view propertyName) const {
    const auto found = std::ranges::find(properties, propertyName, &TProperty::name);
    return found == properties.end() ? nullptr : &*found;
}

std::string_view TResource::GetText(std::string_view propertyName) const {
    const TProperty* const property = Find(propertyName);
    return property == nullptr || property->shape != EShape::scalar ? std::string_view()
                                                                    : property->values.front();
}

const NVORHOST::TValueSource* TResource::FindSource(std::string_view propertyName) const {
    const auto found = std::ranges::find(sources, propertyName, &TPropertySource::property);
    return found == sources.end() ? nullptr : &found->source;
}

}  // namespace NINVENTORY
