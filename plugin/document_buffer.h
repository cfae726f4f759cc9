// The stream that the documents of a request are built in.
#pragma once

#include <sstream>

/// An empty stream for reading and writing, with room for large documents made ahead.
/// Errors: a lack of memory for the text comes out of the stream as an exception (`badbit` throws).
std::stringstream MakeDocumentBuffer();
