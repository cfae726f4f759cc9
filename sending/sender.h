// Sends what waits in a spool.
#pragma once

#include "sending/spool.h"
#include "sending/transfer.h"
#include "sending/url_template.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace NVORHOST {

/// Time and chance, so that tests do not wait.
class IPace {
  public:
    virtual ~IPace() = default;
    IPace(const IPace&) = delete;
    IPace& operator=(const IPace&) = delete;

    virtual std::chrono::steady_clock::time_point Now() = 0;
    virtual void Wait(std::chrono::milliseconds duration) = 0;
    /// A number from 0 to 1 by chance.
    virtual double Draw() = 0;

  protected:
    IPace() = default;
};

struct TSendingReport {
    std::size_t sentFiles = 0;
    std::uintmax_t sentBytes = 0;
    std::size_t sentRuns = 0;           ///< runs of which at least one file was sent
    std::vector<std::string> problems;  ///< why files were not sent, a line for each cause
};

/// Sends the documents of a spool, the oldest run first, until `end`. A document is removed from the spool
/// after the server has accepted it, together with older documents for the same URL, which must not replace
/// it later. A failure that may pass is followed by a delay, which grows and is at least as long as the
/// server requests, and by another attempt; if the delay would exceed `end`, the rest stays in the spool. A
/// refused document stays in the spool, and the next one is sent. The caller holds the lock of the spool.
/// Errors: throws TRunFailure if the spool cannot be read or written.
TSendingReport SendWaiting(TSpool& spool, const TUrlTemplate& url, ITransfer& transfer, IPace& pace,
                           std::chrono::steady_clock::time_point end);

}  // namespace NVORHOST
