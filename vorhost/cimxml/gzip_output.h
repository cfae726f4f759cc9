// Compresses text with gzip on its way to another stream.
#pragma once

#include <functional>
#include <ostream>

namespace NVORHOST {

/// Calls `write` with a stream whose text reaches `out` as one gzip member. The member has neither a file
/// name nor a time, so that equal texts give equal bytes.
/// Errors: a write failure is in the state of `out`. Throws std::bad_alloc, and everything that `write`
///         throws; `out` then holds a part of the member.
/// Source: RFC 1952.
void WriteCompressed(std::ostream& out, const std::function<void(std::ostream&)>& write);

}  // namespace NVORHOST
