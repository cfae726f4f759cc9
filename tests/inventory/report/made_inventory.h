// Inventories that tests make from literals.
#pragma once

#include "inventory/report/report_inventory.h"

#include <initializer_list>
#include <string>
#include <utility>

namespace NINVENTORY {

/// Collects resources; the members return the object, so that calls can follow one another.
class TMadeInventory {
  public:
    TMadeInventory& Add(const std::string& type,
                        std::initializer_list<std::pair<std::string, std::string>> properties) {
        TResource resource;
        resource.type = type;
        for (const auto& [name, value] : properties) {
            const bool isNumber =
                !value.empty() && value.find_first_not_of("0123456789") == std::string::npos;
            resource.properties.push_back(
                {name, isNumber ? "unsignedLong" : "string", EShape::scalar, {value}});
        }
        inventory_.AddResource(std::move(resource));
        return *this;
    }
    TMadeInventory& Relate(const std::string& association, const std::string& antecedent,
                           const std::string& dependent) {
        return Add(association, {{"Antecedent", antecedent}, {"Dependent", dependent}});
    }
    const TReportInventory& Get() {
        inventory_.Link();
        return inventory_;
    }

  private:
    TReportInventory inventory_{"test", ""};
};

}  // namespace NINVENTORY
