// A site in memory, and what holds for all of its pages.
#pragma once

#include "fleet/report/site_files.h"

#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace NFLEET {

class TMemorySite final : public ISiteFiles {
  public:
    void Write(const std::string& path, std::string_view bytes) override;

    const std::map<std::string, std::string>& GetFiles() const { return files_; }
    /// Returns a file; "" if there is none.
    std::string Get(const std::string& path) const;
    /// Returns the paths in the order in which they were written.
    const std::vector<std::string>& GetOrder() const { return order_; }

  private:
    std::mutex mutex_;
    std::map<std::string, std::string> files_;
    std::vector<std::string> order_;
};

/// Returns what is wrong with a site, one line for each problem: pages that are not well-formed XML, links
/// that lead nowhere, attributes that load or run something.
std::vector<std::string> FindProblems(const TMemorySite& site);

}  // namespace NFLEET
