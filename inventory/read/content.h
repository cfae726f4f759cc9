// The kinds of files that hold inventories, recognised by their content.
#pragma once

#include <string_view>

namespace NINVENTORY {

/// The kinds of content.
enum class EContent {
    hardware,           ///< the hardware document
    systemInformation,  ///< the system-information document
    cimXml,             ///< a saved namespace or a saved result
    unknown,
};

/// The number of bytes at the start of a document that suffices for RecognizeContent.
inline constexpr std::size_t contentBytes = 4096;

/// Recognises decompressed bytes, the start of a document, by its root element.
EContent RecognizeContent(std::string_view start);

}  // namespace NINVENTORY
