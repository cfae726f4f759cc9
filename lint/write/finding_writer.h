// Findings as text for people, or as JSON.
#pragma once

#include "lint/frame/finding.h"

#include <ostream>
#include <string>
#include <vector>

namespace NLINT {

/// Writes three lines for each finding, a line on how to mend it, and a last line with their numbers.
void WriteFindingText(const std::string& source, const std::vector<TFinding>& findings, std::ostream& out);

/// Writes one JSON text, which docs/inventory.schema.json describes.
void WriteFindingJson(const std::string& source, const std::vector<TFinding>& findings, std::ostream& out);

}  // namespace NLINT
