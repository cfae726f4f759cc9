// The summary of a run, for people.
#pragma once

#include "machine/supervision/source_gaps.h"
#include "vorhost/run/inventory_document.h"

#include <chrono>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace NVORHOST {

/// One step of a run and how long it took.
struct TStepTime {
    std::string step;
    std::chrono::nanoseconds duration{};
};

struct TRunSummary {
    std::string origin;
    std::string machine;
    std::string directory;                      ///< where the documents are now
    std::vector<TInventoryDocument> documents;  ///< the hardware inventory first
    std::vector<std::string> completedFiles;    ///< of a killed run, moved into place by this one
    std::vector<std::string> earlierFiles;      ///< documents beside this run's that an earlier run wrote
    std::string credential;                     ///< what became of it, for people
    TSourceGaps gaps;
    std::size_t replacedBytes = 0;
    std::vector<TStepTime> times;
};

void PrintSummary(const TRunSummary& summary, std::ostream& out);

/// A row for each kind of gap, and one for replaced bytes; nothing when there are none.
void PrintTroubles(const TSourceGaps& gaps, std::size_t replacedBytes, std::ostream& out);

/// What a capture packed.
struct TCaptureSummary {
    std::string origin;
    std::string file;  ///< the archive
    std::size_t files = 0;
    std::size_t links = 0;
    std::optional<std::string> redacted;  ///< what was replaced, for people; absent without redaction
    TSourceGaps gaps;
    std::size_t replacedBytes = 0;
};

void PrintCaptureSummary(const TCaptureSummary& summary, std::ostream& out);

}  // namespace NVORHOST
