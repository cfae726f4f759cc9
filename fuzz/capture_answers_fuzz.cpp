// The answers that a captured tree keeps: what reads is written, and what was written reads the same.
#include "fuzz.h"
#include "machine/replay/capture_answers.h"

#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string once =
        NVORHOST::FormatCaptureAnswers(NVORHOST::ParseCaptureAnswers(AsText(data, size)));
    const std::string twice = NVORHOST::FormatCaptureAnswers(NVORHOST::ParseCaptureAnswers(once));
    Require(twice == once, "answers that were written read the same");
    return 0;
}
