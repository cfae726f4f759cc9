// Allocations that end at an inaccessible page and become inaccessible when they are freed. Replaces the
// global allocation functions of its program.
#pragma once

#include <cstddef>

/// Fences every allocation by operator new while it exists. They may be freed later.
class TFencedMemory {
  public:
    TFencedMemory();
    ~TFencedMemory();
    TFencedMemory(const TFencedMemory&) = delete;
    TFencedMemory& operator=(const TFencedMemory&) = delete;

    /// Returns the number of allocations fenced so far.
    std::size_t Count() const;
};
