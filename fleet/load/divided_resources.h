// The resources of any source as an inventory.
#pragma once

#include "fleet/load/read_inventory.h"
#include "fleet/load/version_cache.h"
#include "inventory/read/document_events.h"

#include <string_view>

namespace NFLEET {

/// Divides the resources that a reader passes on.
class TDividedResources final : public NINVENTORY::IDocumentEvents {
  public:
    /// `cache` must outlive this object.
    explicit TDividedResources(TVersionCache& cache) : builder_(cache) {}

    void BeginDocument(const NINVENTORY::TDocumentHead& head) override { head_ = head; }
    void BeginList(std::string_view /*listType*/, int /*line*/) override {}
    void AddResource(NINVENTORY::TResource&& resource) override;

    /// Returns the inventory. Call once, after the document was read. Errors: throws TDocumentCause for a
    /// time that is malformed or missing.
    TReadInventory Take();

  private:
    TInventoryBuilder builder_;
    NINVENTORY::TDocumentHead head_;
};

}  // namespace NFLEET
