// Allocations that end right in front of a page nobody may touch, and that nobody may touch once they are
// freed. Replaces the global allocation functions of its program.
#pragma once

#include <cstddef>

/// Fences every allocation by operator new that is made as long as it lives, wherever it is freed.
class TFencedMemory {
  public:
    TFencedMemory();
    ~TFencedMemory();
    TFencedMemory(const TFencedMemory&) = delete;
    TFencedMemory& operator=(const TFencedMemory&) = delete;

    /// The allocations fenced so far.
    std::size_t Count() const;
};
