#include "program/collectors_command.h"

#include "machine/collect/run/collectors.h"

#include <string_view>

namespace NVORHOST {
namespace {

template <typename TRows, typename TText>
void WriteRows(std::ostream& out, std::string_view label, const TRows& rows, TText&& textOf) {
    for (const auto& row : rows) {
        out << "  " << label << ' ' << textOf(row) << '\n';
        label = "     ";  // aligns further rows with the first
    }
}

void ListCollector(const TCollector& collector, std::ostream& out) {
    out << collector.name << ": " << collector.description;
    out << (collector.isOptIn ? "; only with --with-processes\n" : "\n");
    WriteRows(out, "fills", collector.fills,
              [](const IClassDeclaration* declaration) { return declaration->GetName(); });
    WriteRows(out, "reads", collector.reads, [](TSourcePattern pattern) { return pattern; });
}

}  // namespace

void ListCollectors(std::ostream& out) {
    std::string_view separator;
    for (const TCollector& collector : GetCollectors()) {
        out << separator;
        ListCollector(collector, out);
        separator = "\n";
    }
}

}  // namespace NVORHOST
