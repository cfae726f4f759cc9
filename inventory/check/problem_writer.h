// Problems of documents as lines of text or as JSON.
#pragma once

#include "inventory/check/validator.h"

#include <memory>
#include <ostream>
#include <string>

namespace NINVENTORY {

class IProblemWriter {
  public:
    virtual ~IProblemWriter() = default;

    virtual void Add(const std::string& source, const TProblem& problem) = 0;
    /// Ends the output. Call once.
    virtual void Finish() = 0;
};

/// Returns a writer of one line for each problem, "FILE:LINE: problem". `out` must outlive it.
std::unique_ptr<IProblemWriter> MakeProblemLines(std::ostream& out);

/// Returns a writer of one JSON text, {"problems":[...]}, with the members source, line, resourceId and
/// problem. `out` must outlive it.
std::unique_ptr<IProblemWriter> MakeProblemJson(std::ostream& out);

}  // namespace NINVENTORY
