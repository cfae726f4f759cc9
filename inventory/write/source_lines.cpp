#include "inventory/write/source_lines.h"

#include "inventory/write/text_table.h"
#include "text/shown_text.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace NINVENTORY {
namespace {

using NVORHOST::EValueStatus;
using NVORHOST::MakeVisible;
using NVORHOST::TValueSource;

struct TLine {
    std::string name, value, sources;
    std::vector<std::string> gaps;
};

std::string JoinSources(const TValueSource& source) {
    std::string joined;
    for (const std::string& each : source.sources) {
        joined += (joined.empty() ? "" : "; ") + MakeVisible(each);
    }
    return joined;
}

TLine MakeLine(const std::string& name, std::string value, const TValueSource* source) {
    TLine line{MakeVisible(name), std::move(value), {}, {}};
    if (source != nullptr) {
        line.sources = JoinSources(*source);
        line.gaps = source->gaps;
    }
    return line;
}

std::vector<TLine> MakeLines(const TResource& resource, const TSourceLines& settings) {
    std::vector<TLine> lines;
    for (const TProperty& property : resource.properties) {
        lines.push_back(MakeLine(property.name, MakeVisible(settings.show(resource, property)),
                                 resource.FindSource(property.name)));
    }
    for (const auto& [name, source] : resource.sources) {
        const bool isWanted = settings.hasAbsent || source.status != EValueStatus::absent;
        if (isWanted && resource.Find(name) == nullptr && source.status != EValueStatus::present) {
            lines.push_back(MakeLine(name, DescribeMissing(source), &source));
        }
    }
    return lines;
}

// A longer text pushes only the sources of its own line to the right.
constexpr std::size_t widestColumn = 40;

std::size_t FindWidth(const std::vector<TLine>& lines, std::string TLine::*cell) {
    std::size_t width = 0;
    for (const TLine& line : lines) {
        width = std::max(width, std::min(widestColumn, CountColumns(line.*cell)));
    }
    return width;
}

std::string Pad(const std::string& text, std::size_t width) {
    const std::size_t columns = CountColumns(text);
    return text + std::string(columns < width ? width - columns : 0, ' ');
}

}  // namespace

std::string DescribeMissing(const TValueSource& source) {
    std::string text(NVORHOST::NameValueStatus(source.status));
    if (!source.passedOver.empty()) {
        text += " \"" + MakeVisible(source.passedOver) + "\"";
    }
    const std::string_view remedy = NVORHOST::GetValueRemedy(source.status);
    return remedy.empty() ? text : text + " (" + std::string(remedy) + ")";
}

void WriteSourceLines(const TResource& resource, const TSourceLines& settings, std::ostream& out) {
    const std::vector<TLine> lines = MakeLines(resource, settings);
    const std::size_t nameWidth = FindWidth(lines, &TLine::name);
    const std::size_t valueWidth = FindWidth(lines, &TLine::value);
    for (const TLine& line : lines) {
        out << "  " << Pad(line.name, nameWidth) << "  ";
        out << (line.sources.empty() ? line.value : Pad(line.value, valueWidth) + "  " + line.sources)
            << '\n';
        for (const std::string& gap : line.gaps) {
            out << "  " << std::string(nameWidth + 2, ' ') << "without " << MakeVisible(gap) << '\n';
        }
    }
}

}  // namespace NINVENTORY
