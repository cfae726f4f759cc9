// Looks into a finished inventory document, so that the summary tells what was really written.
#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace NVORHOST {

/// What one compressed document holds.
struct TInventoryDocument {
    std::string fileName;
    std::uintmax_t sizeBytes = 0;                    ///< of the compressed file
    std::map<std::string, std::uint64_t> resources;  ///< resource type to number of instances
    bool isWhole = false;                            ///< neither damaged nor cut short
};

/// Reads a document through to its end. Errors: throws TRunFailure for a file that cannot be read.
TInventoryDocument ReadInventoryDocument(const std::string& directory, const std::string& fileName);

}  // namespace NVORHOST
