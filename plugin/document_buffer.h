// The stream in which the documents of a request are built.
#pragma once

#include <sstream>

/// Returns an empty stream for reading and writing, with memory reserved for large documents.
/// Errors: the stream throws on `badbit`, so that a lack of memory for the text is an exception.
std::stringstream MakeDocumentBuffer();
