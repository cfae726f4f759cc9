// The command line of noxinfo fleet as plain data.
#pragma once

#include "fleet/load/load.h"
#include "fleet/model/rows.h"
#include "inventory/read/resource_filter.h"

#include <optional>
#include <string>
#include <vector>

namespace NFLEET {

/// What all commands and each of them may have; a command ignores what it has no option for.
struct TFleetOptions {
    std::string command;  ///< empty if the program must end with `earlyStatus`
    int earlyStatus = 0;
    std::optional<std::string> storeUrl;  ///< absent: a SQLite file in the user's state directory
    std::string format = "text";
    std::string exportFormat = "ndjson";
    TSeconds now = 0;

    std::vector<std::string> paths;  ///< load
    unsigned threads = 0;            ///< load, report: 0 for one per processor
    bool readsAgain = false;         ///< load: read unchanged files as well
    bool watches = false;            ///< load: follow the directories

    std::string machine;                             ///< show, history; merge: the old one
    std::string newMachine;                          ///< merge
    std::vector<NINVENTORY::TCondition> conditions;  ///< machines
    std::optional<TSeconds> at;                      ///< show
    TSeconds since = 0;                              ///< changes, stale
    std::string identity;                            ///< where
    std::optional<std::string> model;                ///< outliers
    std::string groupBy = "model";                   ///< outliers
    std::string query;                               ///< sql
    std::string siteDirectory;                       ///< report
    std::optional<TSeconds> reportNow;               ///< report: absent for the newest inventory
    TKeepOptions keep;                               ///< prune
    std::optional<std::string> cluster;              ///< schema
    std::string shell = "bash";                      ///< completion
    std::string helpTopic;                           ///< help
};

}  // namespace NFLEET
