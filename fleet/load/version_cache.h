// The versions of resources that a load has seen, so that the same bytes are not read again.
#pragma once

#include "fleet/model/digest.h"
#include "fleet/model/rows.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

namespace NFLEET {

/// A version, and its body until it is stored. Threads that read documents look at `isStored` only; the
/// thread that writes takes the body.
struct TCachedVersion {
    TDigest digest;
    std::string type;
    std::atomic<bool> isStored = false;
    std::unique_ptr<const TVersion> body;
};

/// Finds versions by the digest of bytes from which they were made. Several threads may use one cache.
class TVersionCache {
  public:
    /// Returns null for an unknown digest.
    std::shared_ptr<TCachedVersion> Find(const TDigest& key);
    /// Adds a version, unless another thread was faster; returns the one that stays.
    std::shared_ptr<TCachedVersion> Add(const TDigest& key, std::shared_ptr<TCachedVersion> version);

  private:
    static constexpr std::size_t shardCount = 64;
    static constexpr std::size_t maxEntries = 300000;

    struct TShard {
        std::mutex mutex;
        std::unordered_map<TDigest, std::shared_ptr<TCachedVersion>, TDigestHash> versions;
    };

    TShard& GetShard(const TDigest& key) { return shards_[key.bytes.back() % shardCount]; }

    std::array<TShard, shardCount> shards_;
};

/// Returns the entry for a version, whose key is its own digest.
std::shared_ptr<TCachedVersion> AddVersion(TVersion version, TVersionCache& cache);

}  // namespace NFLEET
