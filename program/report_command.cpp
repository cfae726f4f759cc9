#include "program/report_command.h"

#include "program/show_command.h"

namespace NVORHOST {

EExitStatus RunReport(const TReportOptions& options, std::ostream& out) {
    const bool writesStandardOutput = options.outputFile == "-";
    return RunShow({.machine = options.machine,
                    .sources = options.sources,
                    .format = "html",
                    .filter = {},
                    .comparesSources = true,
                    .outputFile = writesStandardOutput ? std::nullopt : std::optional(options.outputFile)},
                   out);
}

}  // namespace NVORHOST
