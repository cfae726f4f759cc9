// Answers as text for people, JSON (RFC 8259) and comma-separated values (RFC 4180). docs/fleet.md describes
// the formats.
#pragma once

#include "fleet/ask/answer.h"
#include "inventory/write/text_table.h"

#include <ostream>
#include <string>
#include <string_view>

namespace NFLEET {

/// Writes a table, or the answer's text for no rows, and its notes.
void WriteAnswerText(const TAnswer& answer, const NINVENTORY::TTextLayout& layout, std::ostream& out);

/// Writes the only row of an answer with a line for each cell that is known.
void WriteFactsText(const TAnswer& answer, const NINVENTORY::TTextLayout& layout, std::ostream& out);

/// Writes an object with the question and an array of objects, one for each row.
void WriteAnswerJson(const TAnswer& answer, std::ostream& out);

/// Returns the only row of an answer as one JSON object.
std::string MakeFactsJson(const TAnswer& answer);

/// Writes a row of names and one for each row. Every field is quoted but numbers and those without a value.
void WriteAnswerCsv(const TAnswer& answer, std::ostream& out);

}  // namespace NFLEET
