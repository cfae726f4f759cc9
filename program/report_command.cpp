#include "program/report_command.h"

#include "program/show_command.h"

namespace NVORHOST {

EExitStatus RunReport(const TReportOptions& options, std::ostream& out) {
    TShowOptions show;
    show.machine = options.machine;
    show.sources = options.sources;
    show.format = "html";
    show.comparesSources = true;
    if (options.outputFile != "-") {
        show.outputFile = options.outputFile;
    }
    return RunShow(show, out);
}

}  // namespace NVORHOST
