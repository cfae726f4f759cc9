// Reads the bytes of a file as an inventory, and the files of one folder as the inventories of moments.
#pragma once

#include "fleet/load/read_inventory.h"
#include "fleet/load/source_files.h"
#include "fleet/load/version_cache.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace NFLEET {

/// One for each thread; keeps its buffers.
class TInventoryReader {
  public:
    /// `cache` must outlive this object.
    explicit TInventoryReader(TVersionCache& cache) : cache_(cache) {}

    /// Reads a document, snapshot or result. Errors: throws TDocumentError.
    TReadInventory Read(const TSourceFile& file);

  private:
    TReadInventory ReadText(const TSourceFile& file);

    TVersionCache& cache_;
    std::string text_;
};

/// The number of files in a folder up to which they are read together.
inline constexpr std::size_t maxMomentFiles = 16;

/// Returns the inventories of one folder's files to store. Those of one machine and time are a moment, as are
/// all of the folder if they can be: the snapshot of a moment replaces its documents, and all of a moment
/// know the machine's traits.
std::vector<TReadInventory> SelectMoments(std::vector<TReadInventory> inventories);

}  // namespace NFLEET
