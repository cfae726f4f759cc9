#include "fleet/load/version_cache.h"

#include <utility>

namespace NFLEET {

std::shared_ptr<TCachedVersion> TVersionCache::Find(const TDigest& key) {
    TShard& shard = GetShard(key);
    const std::lock_guard lock(shard.mutex);
    const auto found = shard.versions.find(key);
    return found == shard.versions.end() ? nullptr : found->second;
}

// Entries that are in use outlive the cache's own references, so clearing a shard only costs time.
std::shared_ptr<TCachedVersion> TVersionCache::Add(const TDigest& key,
                                                   std::shared_ptr<TCachedVersion> version) {
    TShard& shard = GetShard(key);
    const std::lock_guard lock(shard.mutex);
    if (shard.versions.size() >= maxEntries / shardCount) {
        shard.versions.clear();
    }
    return shard.versions.try_emplace(key, std::move(version)).first->second;
}

std::shared_ptr<TCachedVersion> AddVersion(TVersion version, TVersionCache& cache) {
    if (auto known = cache.Find(version.digest)) {
        return known;
    }
    auto entry = std::make_shared<TCachedVersion>();
    entry->digest = version.digest;
    entry->type = version.type;
    const TDigest key = version.digest;
    entry->body = std::make_unique<const TVersion>(std::move(version));
    return cache.Add(key, std::move(entry));
}

}  // namespace NFLEET
