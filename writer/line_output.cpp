#include "writer/line_output.h"

#include <cxxabi.h>

#include <ios>
#include <streambuf>

namespace {

bool WriteAndSync(std::streambuf& buffer, std::string_view line) {
    const auto size = static_cast<std::streamsize>(line.size());
    return buffer.sputn(line.data(), size) == size && buffer.pubsync() != -1;
}

}  // namespace

// Same effect as `out_.write` and `out_.flush` with one sentry instead of two. Runs once per tag.
void TLineOutput::FinishLine(char* end) {
    *end++ = '\n';
    const std::ostream::sentry isReady(out_);
    if (!isReady) {
        return;
    }
    bool isWritten = false;
    try {
        isWritten = WriteAndSync(*out_.rdbuf(), {line_.data(), end});
    } catch (const abi::__forced_unwind&) {
        MarkBad();
        throw;  // A cancelled thread must unwind completely.
    } catch (...) {
        MarkBadOrRethrow();
        return;
    }
    if (!isWritten) {
        out_.setstate(std::ios_base::badbit);
    }
}

void TLineOutput::MarkBad() {
    try {
        out_.setstate(std::ios_base::badbit);
    } catch (const std::ios_base::failure&) {  // NOLINT(bugprone-empty-catch)
        // The exception that is being handled carries more information.
    }
}

/// Called from a handler: rethrows the exception being handled if the stream throws on `badbit`.
void TLineOutput::MarkBadOrRethrow() {
    MarkBad();
    if ((out_.exceptions() & std::ios_base::badbit) != 0) {
        throw;
    }
}

void TLineOutput::WritePiece(std::string_view text) {
    out_.write(text.data(), static_cast<std::streamsize>(text.size()));
}
