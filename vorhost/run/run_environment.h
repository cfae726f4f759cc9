// The settings of one run for the services that the host offers to plug-ins. These services are static
// operations of two libraries, so the settings are process-wide; this class sets and restores them together.
#pragma once

#include "vorhost/services/host_settings.h"

#include <boost/shared_ptr.hpp>

#include <optional>
#include <string>

namespace NVORHOST {

struct TRunSettings {
    /// Answered instead of the clock.
    std::optional<NKELVOR20::TCIMDateTime> localTime = std::nullopt;
    /// Customer identity; absent: the environment variable ZETKELID at the start of the run.
    std::optional<std::string> identity = std::nullopt;
    /// Absent: `network` with an identity. Without one no credential is requested, so the answer is `yes` and
    ///         no connection is attempted.
    std::optional<EReachability> reachability = std::nullopt;
    /// URL of the service that issues credentials; absent: they are derived locally.
    std::optional<std::string> entityService = std::nullopt;
};

/// Applies the settings on construction and restores the previous ones on destruction. One at a time.
class TRunEnvironment {
  public:
    explicit TRunEnvironment(const TRunSettings& settings);
    ~TRunEnvironment();
    TRunEnvironment(const TRunEnvironment&) = delete;
    TRunEnvironment& operator=(const TRunEnvironment&) = delete;

    /// Lets the services answer for the collected machine instead of the running one.
    void SetCollected(boost::shared_ptr<NKELVOR20::ICIMNamespace> collected);

    bool HasIdentity() const { return !identity_.empty(); }

  private:
    THostSettings previousSettings_;
    std::optional<std::string> previousService_;
    std::string identity_;
};

}  // namespace NVORHOST
