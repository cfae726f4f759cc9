// Keeps loaders out of each other's way: ClickHouse has neither transactions nor locks.
//
// A loader claims the store by a row, and holds it if there is no other claim. Two loaders at the same moment
// each find the other's row, at least the one that looks last, and withdraw; each tries again after a random
// time. Claims of loaders that have ended without withdrawing expire.
//
// Failure language: TStoreError.
#pragma once

#include "fleet/clickhouse/client.h"
#include "fleet/clickhouse/row_formats.h"

#include <chrono>

namespace NFLEET {

/// How long a claim holds, and how long a loader waits for those of others.
struct TClaimTimes {
    std::chrono::seconds expiry{15};
    std::chrono::seconds patience{120};
};

/// The claim of one loader on a store. Times are those of the server.
class TLoaderClaim {
  public:
    /// `client` must outlive this object.
    TLoaderClaim(TClickHouseClient& client, TClaimTimes times);

    /// Claims the store; waits while another loader holds it.
    /// Errors: throws TStoreError if that takes too long.
    void Acquire();
    /// Makes a held claim last longer; without effect while it is new.
    /// Errors: throws TStoreError if it has expired and another loader has claimed the store since.
    void Renew();
    /// Withdraws the claim. Does nothing if it is not held.
    void Release();

    bool IsHeld() const { return isHeld_; }
    /// Returns the number of a held claim, which is greater than that of every claim before it.
    TChangeNumber GetNumber() const { return lastNumber_; }

  private:
    struct TOthers {
        TChangeNumber highest = 0;  ///< number of a claim, held or withdrawn
        bool areActive = false;     ///< one holds the store, or tries to
    };

    TOthers ReadOthers();
    bool TryAcquire();
    void Write(TChangeNumber number);

    TClickHouseClient& client_;
    TClaimTimes times_;
    TDigest loader_;                ///< random
    TChangeNumber lastNumber_ = 0;  ///< of this loader
    bool isHeld_ = false;
    std::chrono::steady_clock::time_point written_;  ///< not after the server's time of the last row
};

}  // namespace NFLEET
