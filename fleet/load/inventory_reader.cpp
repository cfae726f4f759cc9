#include "fleet/load/inventory_reader.h"

#include "documents/document_error.h"
#include "fleet/load/divided_resources.h"
#include "fleet/load/document_scanner.h"
#include "fleet/model/machine_traits.h"
#include "inventory/read/document_reader.h"
#include "inventory/saved/namespace_resources.h"
#include "inventory/saved/saved_result.h"
#include "vorhost/cimxml/load.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <utility>

namespace NFLEET {
namespace {

using NINVENTORY::EContent;
using NINVENTORY::TDocumentInput;

// Larger documents are read piece by piece.
constexpr std::size_t maxScannedDocumentBytes = std::size_t{32} << 20;

TReadInventory ReadSlowly(TDocumentInput& input, TVersionCache& cache) {
    TDividedResources resources(cache);
    NINVENTORY::ReadDocument(input, resources);
    return resources.Take();
}

TReadInventory ReadSaved(const TSourceFile& file, TDocumentInput& input, TVersionCache& cache) {
    NVORHOST::TMemoryNamespace loaded;
    NVORHOST::LoadNamespace(file.name, input.ReadAll(NVORHOST::TDocumentFile::maxBytes), loaded);
    if (const auto bytes = NVORHOST::FindResult(file.name, loaded)) {
        TDocumentInput document(file.name, *bytes);
        return ReadSlowly(document, cache);
    }
    TDividedResources resources(cache);
    NVORHOST::PassResources(loaded, NVORHOST::FindTimestamp(loaded), resources);
    return resources.Take();
}

bool Agree(std::string_view left, std::string_view right) {
    return left.empty() || right.empty() || left == right;
}

// True if the inventories can be those of one machine at one time.
bool IsMoment(const std::vector<TReadInventory>& inventories) {
    std::set<EScope> scopes;
    const TMachineFacts& first = inventories.front().traits.facts;
    return std::ranges::all_of(inventories, [&](const TReadInventory& read) {
        const TMachineFacts& facts = read.traits.facts;
        return scopes.insert(read.inventory.place.scope).second && Agree(facts.serial, first.serial) &&
               Agree(facts.uuid, first.uuid);
    });
}

bool IsRepeated(const TReadInventory& left, const TReadInventory& right) {
    return left.inventory.place.scope == right.inventory.place.scope &&
           left.inventory.time == right.inventory.time && left.content == right.content &&
           left.traits.facts == right.traits.facts;
}

// Removes inventories that another file has as well, such as a result with its document.
void RemoveRepeated(std::vector<TReadInventory>& inventories) {
    std::vector<TReadInventory> kept;
    for (TReadInventory& read : inventories) {
        if (std::ranges::none_of(kept,
                                 [&](const TReadInventory& other) { return IsRepeated(read, other); })) {
            kept.push_back(std::move(read));
        }
    }
    inventories = std::move(kept);
}

void AddMoment(std::vector<TReadInventory> moment, std::vector<TReadInventory>& selected) {
    TMachineTraits all;
    const auto isSnapshot = [](const TReadInventory& read) {
        return read.inventory.place.scope == EScope::snapshot;
    };
    for (const TReadInventory& read : moment) {
        AddTraits(read.traits, all);
    }
    const bool hasSnapshot = std::ranges::any_of(moment, isSnapshot);
    for (TReadInventory& read : moment) {
        AddTraits(all, read.traits);
        if (!hasSnapshot || isSnapshot(read)) {
            selected.push_back(std::move(read));
        }
    }
}

}  // namespace

TReadInventory TInventoryReader::Read(const TSourceFile& file) {
    try {
        TReadInventory read = ReadText(file);
        read.inventory.digest = MakeDigest(file.bytes);
        read.inventory.source = file.name;
        read.traits.pathPart = file.folder;
        return read;
    } catch (const NVORHOST::TDocumentCause& cause) {
        NVORHOST::ThrowAt({file.name, {}, {}, {}}, cause.what());
    }
}

TReadInventory TInventoryReader::ReadText(const TSourceFile& file) {
    TDocumentInput input(file.name, file.bytes);
    if (input.GetContent() == EContent::cimXml) {
        return ReadSaved(file, input, cache_);
    }
    if (input.GetContent() != EContent::hardware) {
        return ReadSlowly(input, cache_);
    }
    text_.clear();
    for (auto bytes = input.Read(); !bytes.empty() && text_.size() <= maxScannedDocumentBytes;
         bytes = input.Read()) {
        text_ += bytes;
    }
    if (text_.size() <= maxScannedDocumentBytes) {
        if (auto scanned = ScanDocument(text_, cache_)) {
            return std::move(*scanned);
        }
    }
    text_.shrink_to_fit();
    TDocumentInput again(file.name, file.bytes);
    return ReadSlowly(again, cache_);
}

std::vector<TReadInventory> SelectMoments(std::vector<TReadInventory> inventories) {
    RemoveRepeated(inventories);
    std::vector<TReadInventory> selected;
    if (!inventories.empty() && IsMoment(inventories)) {
        AddMoment(std::move(inventories), selected);
        return selected;
    }
    std::map<TSeconds, std::vector<TReadInventory>> moments;
    for (TReadInventory& read : inventories) {
        moments[read.inventory.time].push_back(std::move(read));
    }
    for (auto& [time, moment] : moments) {
        if (IsMoment(moment)) {
            AddMoment(std::move(moment), selected);
        } else {
            std::ranges::move(moment, std::back_inserter(selected));
        }
    }
    return selected;
}

}  // namespace NFLEET
