// Looks into a finished inventory document, so that the summary tells what was really written.
#pragma once

#include "os/file_descriptor.h"

#include <cstddef>
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
    std::size_t faultyLine = 0;  ///< 1-based, of the first line that is not well-formed XML; 0 when all are
    std::string faultyText;      ///< what it has around the fault
};

/// Reads a document through to its end; `file` stays open. Errors: throws TRunFailure for a file that cannot
/// be read, or is not open, which errno then explains.
TInventoryDocument ReadInventoryDocument(const TFileDescriptor& file, const std::string& fileName);

/// Reads the compressed bytes of a document from its start. Errors as above.
std::string ReadCompressedDocument(const TFileDescriptor& file, const std::string& fileName);

}  // namespace NVORHOST
