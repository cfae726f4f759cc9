// One inventory as a page needs it: its resources by type, and what depends on what.
#pragma once

#include "inventory/compare/inventory.h"
#include "inventory/model/resource.h"

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace NINVENTORY {

using TResources = std::vector<const TResource*>;

/// Resources stay where they are once they are linked.
class TReportInventory {
  public:
    /// `idPrefix` begins the ids of the inventory's elements in the page.
    TReportInventory(std::string source, std::string idPrefix)
        : inventory_{std::move(source), {}, {}, {}}, idPrefix_(std::move(idPrefix)) {}

    void AddDocument(const TDocumentHead& head) { inventory_.documents.push_back(head); }
    void AddList(std::string_view type) { inventory_.types.emplace_back(type); }
    void AddResource(TResource&& resource) { inventory_.resources.push_back(std::move(resource)); }
    /// Finds the resources that associations refer to. Call once, after the last resource.
    void Link();

    const TInventory& GetInventory() const { return inventory_; }
    const std::string& GetSource() const { return inventory_.source; }
    const std::string& GetIdPrefix() const { return idPrefix_; }
    std::string_view GetTimestamp() const { return inventory_.GetTimestamp(); }
    /// True for a namespace, which has classes that documents do not have.
    bool IsNamespace() const;
    const std::vector<TResource>& GetResources() const { return inventory_.resources; }
    /// Returns the resources of a type in the order of the source.
    TResources GetAll(std::string_view type) const;
    /// Returns the first resource of a type; null if there is none.
    const TResource* FindFirst(std::string_view type) const;

    /// Returns the resources that depend on this one by associations of a type, such as "BasedOn".
    TResources GetDependents(const TResource& antecedent, std::string_view association) const;
    TResources GetAntecedents(const TResource& dependent, std::string_view association) const;

  private:
    using TKey = std::pair<std::string, std::string>;  // "TYPE.PROPERTY" and the value of that property
    struct TRelation {
        std::string_view association;
        const TResource* antecedent;
        const TResource* dependent;
    };

    const TResource* Resolve(std::string_view reference, const std::map<TKey, const TResource*>& keys) const;

    TInventory inventory_;
    std::string idPrefix_;
    std::multimap<const TResource*, TRelation> dependents_, antecedents_;
};

/// Returns a property as people read it; "" if the resource does not have it.
std::string Show(const TResource& resource, std::string_view property);

/// Returns the name by which people know a resource, such as the slot of a module; its type if it has none.
std::string GetShownName(const TResource& resource);

}  // namespace NINVENTORY
