#include "fleet/program/load_command.h"

#include "fleet/load/load.h"
#include "text/shown_text.h"
#include "vorhost/run/exit_status.h"

#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <iostream>
#include <string>
#include <string_view>

namespace NFLEET {
namespace {

using TClock = std::chrono::steady_clock;
using NVORHOST::ToShownText;

std::string Count(std::uint64_t number, std::string_view singular, std::string_view plural) {
    return std::to_string(number) + " " + std::string(number == 1 ? singular : plural);
}

std::string DescribeSpan(std::uint64_t seconds) {
    if (seconds < 60) {
        return std::to_string(seconds) + " s";
    }
    const std::uint64_t minutes = (seconds + 59) / 60;
    return minutes < 60 ? std::to_string(minutes) + " min"
                        : std::to_string(minutes / 60) + " h " + std::to_string(minutes % 60) + " min";
}

// Prints progress: on a terminal a line that is written again, elsewhere one line a minute.
class TLoadProgress final : public ILoadEvents {
  public:
    TLoadProgress() : isTerminal_(::isatty(STDERR_FILENO) != 0) {}

    void Progress(const TLoadCount& count) override {
        const auto now = TClock::now();
        if (now - printed_ < (isTerminal_ ? std::chrono::milliseconds(200) : std::chrono::minutes(1))) {
            return;
        }
        printed_ = now;
        const std::string line = Describe(count, std::chrono::duration<double>(now - start_).count());
        if (isTerminal_) {
            std::cerr << '\r' << line << "\x1b[K" << std::flush;
            isLineOpen_ = true;
        } else {
            std::cerr << line << '\n';
        }
    }
    void SetAside(std::string_view /*path*/, std::string_view reason) override {
        EndLine();
        std::cerr << "noxinfo fleet: set aside: " << ToShownText(reason) << '\n';
    }
    void Warn(std::string_view message) override {
        EndLine();
        std::cerr << "noxinfo fleet: " << ToShownText(message) << '\n';
    }
    void EndLine() {
        if (isLineOpen_) {
            std::cerr << "\r\x1b[K" << std::flush;
            isLineOpen_ = false;
        }
    }

  private:
    static std::string Describe(const TLoadCount& count, double seconds) {
        const double rate = seconds > 0 ? static_cast<double>(count.files) / seconds : 0;
        std::string line = "loading: " + Count(count.files, "file", "files") + " of " +
                           std::to_string(count.allFiles) + (count.isComplete ? "" : " found so far") + ", " +
                           std::to_string(static_cast<std::uint64_t>(rate)) + " a second";
        if (count.isComplete && rate > 0) {
            const auto left = static_cast<double>(count.allFiles - count.files) / rate;
            line += ", " + DescribeSpan(static_cast<std::uint64_t>(left)) + " left";
        }
        return line;
    }

    bool isTerminal_;
    bool isLineOpen_ = false;
    TClock::time_point start_ = TClock::now();
    TClock::time_point printed_ = start_;
};

}  // namespace

int RunLoad(const TFleetOptions& options, IFleetStore& store, std::ostream& out) {
    TLoadProgress progress;
    TLoadOptions load;
    load.threads = options.threads;
    load.now = options.now;
    load.readsAgain = options.readsAgain;
    load.watches = options.watches;
    const TLoadCount count = LoadInventories(options.paths, load, store, progress);
    progress.EndLine();
    out << "loaded " << Count(count.inventories, "inventory", "inventories") << " from "
        << Count(count.files, "file", "files");
    if (count.unchanged > 0) {
        out << ", " << count.unchanged << " of them unchanged";
    }
    out << "; " << count.known << " known already, " << count.setAside << " set aside\n";
    return count.setAside + count.emptyPaths == 0 ? NVORHOST::eExitDone : NVORHOST::eExitGaps;
}

}  // namespace NFLEET
