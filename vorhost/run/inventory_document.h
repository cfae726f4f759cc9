// Reads a finished inventory document back, so that the summary describes the file and not the intention.
#pragma once

#include "os/file_descriptor.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace NVORHOST {

/// The first place of a document that is not well-formed XML.
struct TDocumentFault {
    std::size_t line = 0;  ///< 1-based
    std::string text;      ///< up to 20 bytes before and after the fault
};

/// The content of one compressed document.
struct TInventoryDocument {
    std::string fileName;
    std::uintmax_t sizeBytes = 0;                    ///< size of the compressed file
    std::map<std::string, std::uint64_t> resources;  ///< number of instances by resource type
    bool isComplete = false;                         ///< neither damaged nor truncated
    std::optional<TDocumentFault> fault;             ///< absent if the document is well-formed
};

/// Reads a document to its end; `file` stays open.
/// Errors: throws TRunFailure if the file cannot be read. If `file` is not open, errno must be the cause.
TInventoryDocument ReadInventoryDocument(const TFileDescriptor& file, const std::string& fileName);

/// Reads all compressed bytes of a document. Errors: see ReadInventoryDocument.
std::string ReadCompressedDocument(const TFileDescriptor& file, const std::string& fileName);

}  // namespace NVORHOST
