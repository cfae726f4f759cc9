#include "inventory/write/csv_field.h"

#include "inventory/write/well_formed_text.h"

#include <csv.h>

namespace NINVENTORY {

std::string QuoteCsv(std::string_view text) {
    const std::string plain = ReplaceNul(MakeWellFormed(text));
    std::string quoted(2 * plain.size() + 2, '\0');
    quoted.resize(csv_write(quoted.data(), quoted.size(), plain.data(), plain.size()));
    return quoted;
}

}  // namespace NINVENTORY
