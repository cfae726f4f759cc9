#include "fleet/ask/version_index.h"

#include "fleet/model/assembly.h"

#include <algorithm>
#include <utility>

namespace NFLEET {

TVersionIndex::TVersionIndex(IFleetStore& store, const std::vector<TPresence>& rows) {
    std::vector<TDigest> digests;
    digests.reserve(rows.size());
    for (const TPresence& row : rows) {
        digests.push_back(row.version);
    }
    Read(store, std::move(digests));
}

TVersionIndex::TVersionIndex(IFleetStore& store, const std::vector<TPresence>& rows,
                             const TVersionIndex& known) {
    std::vector<TDigest> digests;
    for (const TPresence& row : rows) {
        const auto found = known.versions_.find(row.version);
        if (found == known.versions_.end()) {
            digests.push_back(row.version);
        } else {
            versions_.insert(*found);
        }
    }
    Read(store, std::move(digests));
}

TVersionIndex::TVersionIndex(IFleetStore& store, const std::vector<TVersionCount>& counts) {
    std::vector<TDigest> digests;
    digests.reserve(counts.size());
    for (const TVersionCount& count : counts) {
        digests.push_back(count.version);
    }
    Read(store, std::move(digests));
}

void TVersionIndex::Read(IFleetStore& store, std::vector<TDigest> digests) {
    std::ranges::sort(digests);
    digests.erase(std::unique(digests.begin(), digests.end()), digests.end());
    for (TVersion& version : store.ReadVersions(digests)) {
        const TDigest digest = version.digest;
        versions_.emplace(digest, std::make_shared<const TVersion>(std::move(version)));
    }
}

const TVersion* TVersionIndex::Find(const TDigest& digest) const {
    const auto found = versions_.find(digest);
    return found == versions_.end() ? nullptr : found->second.get();
}

NINVENTORY::TResource TVersionIndex::Assemble(const TPresence& row) const {
    const TVersion* const version = Find(row.version);
    if (version == nullptr) {
        NINVENTORY::TResource lost;
        lost.id = ToText(row.resource);
        lost.type = row.type;
        return lost;
    }
    return AssembleResource(row, *version);
}

}  // namespace NFLEET
