#include "inventory/write/diff_text_writer.h"

#include "inventory/compare/part.h"
#include "inventory/model/shown_value.h"
#include "inventory/write/part_words.h"
#include "text/ascii.h"
#include "text/lines.h"
#include "text/shown_text.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace NINVENTORY {
namespace {

using NVORHOST::MakeVisible;

constexpr std::size_t labelWidth = 13;
constexpr std::size_t indentation = 4;
constexpr std::size_t usualWidth = 80;

struct TSign {
    EChange change;
    std::string_view text;
    std::string_view ascii;
};

constexpr TSign signs[] = {
    {EChange::replaced, "±", "*"}, {EChange::moved, "»", ">"},   {EChange::removed, "-", "-"},
    {EChange::added, "+", "+"},    {EChange::updated, "^", "^"}, {EChange::changed, "~", "~"},
};

// "1 disk", "2 disks".
std::string CountType(std::string_view type, std::size_t count) {
    return std::to_string(count) + " " + NameType(type, count);
}

std::string Capitalize(std::string text) {
    if (!text.empty()) {
        text.front() = NVORHOST::ToUpper(text.front());
    }
    return text;
}

std::string Join(const std::vector<std::string>& texts) {
    std::string joined;
    for (const std::string& text : texts) {
        joined += (joined.empty() ? "" : ", ") + text;
    }
    return joined;
}

std::string Show(std::string_view type, const TProperty* property) {
    if (property == nullptr || property->shape == EShape::null) {
        return "unknown";
    }
    const std::string text = MakeVisible(ShowValue(type, *property));
    return text.empty() ? "empty" : text;
}

// A difference of a property in words.
struct TLine {
    std::string label, before, after;

    bool operator==(const TLine&) const = default;
};

class TDiffTextWriter {
  public:
    TDiffTextWriter(const TComparison& comparison, const TTextLayout& layout, std::ostream& out)
        : comparison_(comparison), layout_(layout), out_(out), arrow_(layout.isUtf8 ? " → " : " -> ") {}

    void Write(const TInventory& before, const TInventory& after) {
        WriteSource("old", before);
        WriteSource("new", after);
        WriteMachine(before, after);
        out_ << '\n';
        WriteCounts();
        if (!comparison_.IsSame()) {
            WriteRule();
            WriteDifferences();
            WriteRule();
        }
        WriteUnchanged();
        WriteNotKnown();
        WriteLeftOut();
    }

  private:
    // Writes words, folded at the width of the terminal; continuation lines are indented.
    void WriteFolded(std::size_t column, std::string_view text, std::size_t indent) {
        bool isFirst = true;
        while (!text.empty()) {
            const std::string word(NVORHOST::TakeUntil(text, ' '));
            const std::size_t width = CountColumns(word);
            if (!isFirst && layout_.width != 0 && column + 1 + width > layout_.width) {
                out_ << '\n' << std::string(indent, ' ');
                column = indent;
                isFirst = true;
            }
            out_ << (isFirst ? "" : " ") << word;
            column += width + (isFirst ? 0 : 1);
            isFirst = false;
        }
        out_ << '\n';
    }

    void WriteRow(std::string_view label, const std::string& text) {
        if (!text.empty()) {
            out_ << label << std::string(labelWidth - label.size(), ' ');
            WriteFolded(labelWidth, text, labelWidth);
        }
    }

    void WriteSource(std::string_view label, const TInventory& inventory) {
        std::string text = MakeVisible(inventory.source);
        const std::string timestamp = MakeVisible(std::string(inventory.GetTimestamp()));
        text += timestamp.empty() ? "" : ", " + timestamp;
        WriteRow(label, text);
    }

    void WriteMachine(const TInventory& before, const TInventory& after) {
        const std::string old = DescribeMachine(before);
        const std::string current = DescribeMachine(after);
        if (old == current) {
            return WriteRow("machine", old.empty() ? "" : old + ", the same in both");
        }
        WriteRow("machine",
                 (old.empty() ? "unknown" : old) + arrow_ + (current.empty() ? "unknown" : current));
    }

    static std::string DescribeMachine(const TInventory& inventory) {
        for (const std::string_view type : {"Server", "NOXSystemInfo"}) {
            const auto machine = std::ranges::find(inventory.resources, type, &TResource::type);
            if (machine == inventory.resources.end()) {
                continue;
            }
            std::string text;
            for (const char* property : {"Manufacturer", "MachineType", "Model"}) {
                const std::string value = MakeVisible(std::string(machine->GetText(property)));
                if (!value.empty() && text.find(value) == std::string::npos) {
                    text += (text.empty() ? "" : " ") + value;
                }
            }
            const std::string serial = MakeVisible(std::string(machine->GetText("SerialNumber")));
            return text + (serial.empty() ? "" : (text.empty() ? "" : ", ") + ("serial number " + serial));
        }
        return {};
    }

    void WriteCounts() {
        const std::size_t count = comparison_.differences.size();
        if (count == 0) {
            out_ << "no changes\n";
            return;
        }
        std::vector<std::string> counts;
        for (const TSign& sign : signs) {
            if (const std::size_t number = comparison_.Count(sign.change); number > 0) {
                counts.push_back(std::to_string(number) + " " + std::string(GetWord(sign.change)));
            }
        }
        WriteFolded(0, std::to_string(count) + (count == 1 ? " change: " : " changes: ") + Join(counts),
                    indentation);
    }

    void WriteRule() {
        const std::size_t width = layout_.width == 0 ? usualWidth : std::min(layout_.width, usualWidth);
        for (std::size_t i = 0; i < width - std::min<std::size_t>(width, 2); ++i) {
            out_ << (layout_.isUtf8 ? "─" : "-");
        }
        out_ << '\n';
    }

    // A difference in words: the part, its most important fact, and the rest.
    struct TEntry {
        explicit TEntry(const TDifference& source) : difference(&source), parts{GetOlder(source)} {}

        const TDifference* difference;
        std::vector<const TResource*> parts;  // with the same difference
        std::string fact;
        std::vector<TLine> lines;
    };

    // Many parts often change in the same way, such as the processors of a virtual machine that was migrated.
    void WriteDifferences() {
        const auto& differences = comparison_.differences;
        for (std::size_t i = 0; i < differences.size();) {
            TEntry entry = MakeEntry(differences[i]);
            for (++i; i < differences.size() && IsAlike(entry, differences[i]); ++i) {
                entry.parts.push_back(GetOlder(differences[i]));
            }
            WriteEntry(entry);
        }
    }

    TEntry MakeEntry(const TDifference& difference) const {
        TEntry entry(difference);
        entry.lines = MakeLines(difference);
        entry.fact = TakeFact(difference, entry.lines);
        return entry;
    }

    bool IsAlike(const TEntry& entry, const TDifference& next) const {
        const TDifference& first = *entry.difference;
        if (next.change != EChange::changed || first.change != EChange::changed || next.properties.empty() ||
            next.before->type != first.before->type ||
            DescribePartWithoutPlace(*next.before) != DescribePartWithoutPlace(*first.before)) {
            return false;
        }
        const TEntry other = MakeEntry(next);
        return other.fact == entry.fact && other.lines == entry.lines;
    }

    void WriteEntry(const TEntry& entry) {
        const EChange change = entry.difference->change;
        const auto* const sign = std::ranges::find(signs, change, &TSign::change);
        const std::string parts = change == EChange::moved ? DescribePartWithoutPlace(*entry.parts.front())
                                                           : DescribeParts(entry.parts);
        out_ << (layout_.hasColour ? "\x1B[1m" : "") << (layout_.isUtf8 ? sign->text : sign->ascii) << ' ';
        WriteFolded(2, Capitalize(parts) + ": " + std::string(GetWord(change)) + entry.fact, indentation);
        out_ << (layout_.hasColour ? "\x1B[0m" : "");
        WriteLines(entry.lines);
    }

    // People look for a part where it was.
    static const TResource* GetOlder(const TDifference& difference) {
        return difference.before != nullptr ? difference.before : difference.after;
    }

    std::vector<TLine> MakeLines(const TDifference& difference) const {
        const std::string& type = difference.GetResource().type;
        std::vector<TLine> lines;
        bool hasEntries = false;
        for (const TPropertyDifference& property : difference.properties) {
            const std::string& name = property.GetName();
            if (name == "OtherIdentifyingInfo" || name == "IdentifyingDescriptions") {
                hasEntries = hasEntries || AddEntries(difference, lines);
                if (hasEntries) {
                    continue;
                }
            }
            TLine line{LabelProperty(type, name), Show(type, property.before), Show(type, property.after)};
            if (property.before != nullptr && property.after != nullptr && line.before == line.after) {
                // Rounded values look alike.
                line.before = MakeVisible(ToExactText(*property.before));
                line.after = MakeVisible(ToExactText(*property.after));
            }
            lines.push_back(std::move(line));
        }
        return lines;
    }

    // Adds a line for each entry of OtherIdentifyingInfo that differs. Returns false if there is none.
    static bool AddEntries(const TDifference& difference, std::vector<TLine>& lines) {
        std::set<std::string_view> names;
        for (const TResource* resource : {difference.before, difference.after}) {
            const auto entries = ListEntries(*resource);
            names.insert(entries.begin(), entries.end());
        }
        const std::size_t count = lines.size();
        for (const std::string_view name : names) {
            const std::string before = GetFact(*difference.before, name);
            const std::string after = GetFact(*difference.after, name);
            if (before != after) {
                lines.push_back({LabelEntry(name), before.empty() ? "unknown" : MakeVisible(before),
                                 after.empty() ? "unknown" : MakeVisible(after)});
            }
        }
        return lines.size() > count;
    }

    static std::string ToExactText(const TProperty& property) {
        std::string text = Join(property.values);
        return text + (property.type.empty() ? "" : " (" + property.type + ")");
    }

    // Returns the fact that matters most, and removes it from the lines.
    std::string TakeFact(const TDifference& difference, std::vector<TLine>& lines) const {
        if (difference.before == nullptr || difference.after == nullptr) {
            return GetSerial(difference.GetResource());
        }
        if (difference.change == EChange::moved) {
            return TakePlaces(difference, lines) + GetSerial(*difference.after);
        }
        auto fact = lines.end();
        for (const std::string_view label : {"serial number", "unique ID", "address", "version"}) {
            if (fact == lines.end()) {
                fact = std::ranges::find(lines, label, &TLine::label);
            }
        }
        if (fact == lines.end() && lines.size() == 1) {
            fact = lines.begin();
        }
        if (lines.empty()) {
            return ", identifier " + MakeVisible(difference.before->id) + arrow_ +
                   MakeVisible(difference.after->id);
        }
        if (fact == lines.end()) {
            return {};
        }
        std::string text = ", " + fact->label + " " + fact->before + arrow_ + fact->after;
        lines.erase(fact);
        return text;
    }

    // Returns both places of a part that has moved, and removes what they consist of from the lines.
    static std::string TakePlaces(const TDifference& difference, std::vector<TLine>& lines) {
        const std::string& type = difference.after->type;
        std::string before;
        std::string after;
        for (const std::string_view name : GetPartType(type).places) {
            const bool isProperty = difference.after->Find(name) != nullptr;
            const std::string label = isProperty ? LabelProperty(type, name) : LabelEntry(name);
            const auto line = std::ranges::find(lines, label, &TLine::label);
            if (line != lines.end()) {
                const std::string prefix = isProperty ? "" : label + " ";
                before += (before.empty() ? "" : ", ") + prefix + line->before;
                after += (after.empty() ? "" : ", ") + prefix + line->after;
                // A part may have its place as its name, too.
                std::erase_if(lines, [taken = *line](const TLine& other) {
                    return other.before == taken.before && other.after == taken.after;
                });
            }
        }
        return " from " + before + " to " + after;
    }

    static std::string GetSerial(const TResource& resource) {
        for (const std::string_view name : {"SerialNumber", "Serial number"}) {
            if (const std::string serial = GetFact(resource, name); !serial.empty()) {
                return ", serial number " + MakeVisible(serial);
            }
        }
        return {};
    }

    void WriteLines(const std::vector<TLine>& lines) {
        std::size_t width = 0;
        for (const TLine& line : lines) {
            width = std::max(width, CountColumns(line.label));
        }
        for (const TLine& line : lines) {
            out_ << std::string(indentation, ' ') << line.label
                 << std::string(width - CountColumns(line.label) + 2, ' ');
            WriteFolded(indentation + width + 2, line.before + arrow_ + line.after, indentation + width + 2);
        }
    }

    void WriteUnchanged() {
        std::vector<std::string> counts;
        for (const TUnchanged& unchanged : comparison_.unchanged) {
            counts.push_back(CountType(unchanged.type, unchanged.count));
        }
        WriteRow("unchanged", Join(counts));
    }

    // "not known in NEW (needs root)  serial number of board X".
    void WriteNotKnown() {
        std::map<std::string, std::vector<std::string>> values;  // by the reason
        for (const TNotKnown& notKnown : comparison_.notKnown) {
            const std::string reason = std::string("not known in ") + (notKnown.isInNew ? "NEW" : "OLD") +
                                       " (" + DescribeReason(notKnown.source->status) + ")";
            values[reason].push_back(DescribeNotKnown(notKnown));
        }
        for (const auto& [reason, names] : values) {
            const std::string start = reason + ": ";
            out_ << start;
            WriteFolded(start.size(), Join(names), indentation);
        }
    }

    static std::string DescribeNotKnown(const TNotKnown& notKnown) {
        const TResource& resource = *notKnown.resource;
        const std::string part = DescribePart(resource);
        if (notKnown.property == nullptr) {
            return part;
        }
        return LabelProperty(resource.type, notKnown.property->name) + " " +
               Show(resource.type, notKnown.property) + " of " + part;
    }

    static std::string DescribeReason(NVORHOST::EValueStatus status) {
        const std::string_view remedy = NVORHOST::GetValueRemedy(status);
        return std::string(status == NVORHOST::EValueStatus::denied && !remedy.empty()
                               ? remedy
                               : NVORHOST::NameValueStatus(status));
    }

    void WriteLeftOut() {
        std::vector<std::string> reasons;
        for (const bool isInNew : {false, true}) {
            if (const std::string names = ListOneSided(isInNew); !names.empty()) {
                reasons.push_back("what only " + std::string(isInNew ? "new" : "old") + " can have (" +
                                  names + ")");
            }
        }
        if (comparison_.volatileDifferences > 0) {
            reasons.push_back(std::to_string(comparison_.volatileDifferences) +
                              (comparison_.volatileDifferences == 1 ? " value that changes by itself"
                                                                    : " values that change by themselves"));
        }
        if (comparison_.hasAuxiliary) {
            reasons.emplace_back("links and processes");
        }
        if (!reasons.empty()) {
            WriteRow("left out", Join(reasons) + "; --all compares them, too");
        }
    }

    std::string ListOneSided(bool isInNew) const {
        std::vector<std::string> types;
        std::map<std::string_view, std::vector<std::string>> properties;
        for (const TOneSided& oneSided : comparison_.oneSided) {
            if (oneSided.isInNew != isInNew) {
                continue;
            }
            if (oneSided.property.empty()) {
                types.push_back(NameType(oneSided.type, 2));
            } else {
                properties[oneSided.type].push_back(LabelProperty(oneSided.type, oneSided.property));
            }
        }
        std::string names = Join(types);
        for (const auto& [type, labels] : properties) {
            names += (names.empty() ? "" : "; ") + ("of " + NameType(type, 2) + ": " + Join(labels));
        }
        return names;
    }

    const TComparison& comparison_;
    TTextLayout layout_;
    std::ostream& out_;
    std::string arrow_;
};

}  // namespace

void WriteDiffText(const TComparison& comparison, const TInventory& before, const TInventory& after,
                   const TTextLayout& layout, std::ostream& out) {
    TDiffTextWriter(comparison, layout, out).Write(before, after);
}

}  // namespace NINVENTORY
