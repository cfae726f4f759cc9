// Prints the summary of a run for people.
#pragma once

#include "machine/supervision/collect_outcome.h"
#include "program/sending_run.h"
#include "redaction/identities/identities.h"
#include "vorhost/run/inventory_document.h"

#include <chrono>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace NVORHOST {

/// One step of a run and its duration.
struct TStepTime {
    std::string step;
    std::chrono::nanoseconds duration{};
};

struct TRunSummary {
    std::string origin;
    std::string machine;
    std::string directory;                      ///< target directory of the documents
    std::vector<TInventoryDocument> documents;  ///< the hardware inventory first; empty for plug-ins without
    std::vector<std::string> completedFiles;    ///< files of a killed run that this run moved into place
    std::vector<std::string> earlierFiles;      ///< documents of earlier runs in the target directory
    std::string credential;                     ///< "obtained", or why there is none
    TCollectOutcome outcome;
    std::optional<TSendingSummary> sending;  ///< absent: nothing was to be sent
    std::vector<TStepTime> times;
};

void PrintSummary(const TRunSummary& summary, std::ostream& out);

/// Prints a row for each kind of gap, each warning, and replaced bytes; nothing if there are none.
void PrintOutcome(const TCollectOutcome& outcome, std::ostream& out);

/// Prints rows for what was sent, what waits, and what was dropped.
void PrintSending(const TSendingSummary& sending, std::ostream& out);

struct TCaptureSummary {
    std::string origin;
    std::string file;  ///< path of the archive
    std::size_t files = 0;
    std::size_t links = 0;
    std::optional<std::string> redacted;  ///< counts of replaced identities; absent without redaction
    TCollectOutcome outcome;
};

void PrintCaptureSummary(const TCaptureSummary& summary, std::ostream& out);

struct TRedactSummary {
    std::size_t files = 0;
    TIdentityCounts identities;
    std::string directory;
    std::optional<std::string> keyFile;
    bool isKeyNew = false;
    std::vector<std::string> skipped;  ///< paths of files that are not inventories
};

void PrintRedactSummary(const TRedactSummary& summary, std::ostream& out);

}  // namespace NVORHOST
