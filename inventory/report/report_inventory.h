// One inventory as a page needs it: its resources by type, and what depends on what.
#pragma once

#include "inventory/model/resource.h"

#include <deque>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace NINVENTORY {

using TResources = std::vector<const TResource*>;

/// Resources stay where they are until the object ends.
class TReportInventory {
  public:
    explicit TReportInventory(std::string source) : source_(std::move(source)) {}

    /// Remembers the time of the first document that has one, and whether a namespace was read.
    void AddDocument(const TDocumentHead& head);
    void AddResource(TResource&& resource) { resources_.push_back(std::move(resource)); }
    /// Finds the resources that associations refer to. Call once, after the last resource.
    void Link();

    const std::string& GetSource() const { return source_; }
    const std::string& GetTimestamp() const { return timestamp_; }
    /// True for a namespace, which has classes that documents do not have.
    bool IsNamespace() const { return isNamespace_; }
    const std::deque<TResource>& GetResources() const { return resources_; }
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

    std::string source_;
    std::string timestamp_;
    bool isNamespace_ = false;
    std::deque<TResource> resources_;
    std::multimap<const TResource*, TRelation> dependents_, antecedents_;
};

/// Returns a property as people read it; "" if the resource does not have it.
std::string Show(const TResource& resource, std::string_view property);

/// Returns the name by which people know a resource, such as the slot of a module; its type if it has none.
std::string GetShownName(const TResource& resource);

}  // namespace NINVENTORY
