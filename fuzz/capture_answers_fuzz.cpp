// System-call results of a captured tree: those that can be parsed can be written, and parse the same again.
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
