#include "inventory/report/board_section.h"

#include "inventory/model/shown_value.h"
#include "inventory/report/memory_board.h"
#include "inventory/report/report_tables.h"

#include <algorithm>
#include <string>

namespace NINVENTORY {
namespace {

// All lengths are in units of the picture, which is as wide as the smallest screen.
constexpr int pictureWidth = 320;
constexpr int chipSize = 64;
constexpr int slotWidth = 16;
constexpr int slotPitch = 20;
constexpr int slotHeight = 88;
constexpr int markHeight = 14;  // above a slot
constexpr int rowHeight = markHeight + slotHeight + 18;
constexpr int slotsBesideChip = 12;
constexpr int slotsPerRow = pictureWidth / slotPitch;
constexpr int chipsPerRow = 4;

// The places of a group. One chip is between its slots; several are above them.
class TBoardLayout {
  public:
    TBoardLayout(std::size_t chips, std::size_t slots)
        : chips_(static_cast<int>(chips)), slots_(static_cast<int>(slots)) {}

    int GetHeight() const {
        return GetSlotsTop() + std::max(GetSlotRows() * rowHeight, IsBeside() ? rowHeight : 0);
    }
    int GetChipX(int chip) const {
        const int inRow = std::min(chips_ - chip / chipsPerRow * chipsPerRow, chipsPerRow);
        const int left = (pictureWidth - inRow * pictureWidth / chipsPerRow) / 2;
        return left + chip % chipsPerRow * (pictureWidth / chipsPerRow) +
               (pictureWidth / chipsPerRow - chipSize) / 2;
    }
    int GetChipY(int chip) const {
        return IsBeside() ? markHeight + (slotHeight - chipSize) / 2
                          : chip / chipsPerRow * (chipSize + 8) + 1;
    }
    int GetSlotX(int slot) const {
        constexpr int margin = (slotPitch - slotWidth) / 2;
        if (!IsBeside()) {
            return slot % slotsPerRow * slotPitch + margin;
        }
        // Half of a row is on each side, next to the chip.
        const int column = slot % slotsBesideChip;
        const int inRow = std::min(slots_ - (slot - column), slotsBesideChip);
        const int left = (inRow + 1) / 2;
        const int place =
            column < left ? slotsBesideChip / 2 - left + column : slotsBesideChip / 2 + column - left;
        const int gap = column < left ? 0 : pictureWidth - slotsBesideChip * slotPitch;
        return place * slotPitch + gap + margin;
    }
    int GetSlotY(int slot) const {
        return GetSlotsTop() + slot / (IsBeside() ? slotsBesideChip : slotsPerRow) * rowHeight + markHeight;
    }

  private:
    bool IsBeside() const { return chips_ == 1; }
    int GetSlotsTop() const {
        return IsBeside() ? 0 : (chips_ + chipsPerRow - 1) / chipsPerRow * (chipSize + 8);
    }
    int GetSlotRows() const {
        const int perRow = IsBeside() ? slotsBesideChip : slotsPerRow;
        return (slots_ + perRow - 1) / perRow;
    }

    int chips_, slots_;
};

std::string ShowCapacity(const TResource& module) {
    const auto capacity = GetCapacity(module);
    return capacity ? ShowBinary(*capacity) : "unknown";
}

std::string_view GetState(const TBoardSlot& slot) {
    return slot.module != nullptr ? "filled" : slot.isEmpty ? "empty" : "unknown";
}

void WriteTextAt(THtmlWriter& html, int x, int y, std::string_view kind, std::string_view text) {
    html.Leaf("text", {{"x", x}, {"y", y}, {"text-anchor", "middle"}, {"class", kind}}, text);
}

// A text of at most seven characters along the slot.
void WriteTextAlong(THtmlWriter& html, int x, int y, std::string_view kind, std::string_view text) {
    const std::string turn = "rotate(-90 " + std::to_string(x) + " " + std::to_string(y) + ")";
    html.Leaf("text",
              {{"x", x},
               {"y", y},
               {"dy", "0.35em"},
               {"text-anchor", "middle"},
               {"transform", turn},
               {"class", kind}},
              text);
}

void DrawModule(THtmlWriter& html, const TMemoryBoard& board, const TBoardSlot& slot, int x, int y) {
    const std::uint64_t capacity = GetCapacity(*slot.module).value_or(0);
    const double share = board.largestModule == 0
                             ? 0
                             : static_cast<double>(capacity) / static_cast<double>(board.largestModule);
    const int height = static_cast<int>(share * slotHeight);
    html.Void("rect", {{"class", "size"},
                       {"x", x},
                       {"y", y + slotHeight - height},
                       {"width", slotWidth},
                       {"height", height}});
    const bool differs = !slot.difference.empty();
    html.Void("rect", {{"class", differs ? "case differs" : "case"},
                       {"x", x},
                       {"y", y},
                       {"width", slotWidth},
                       {"height", slotHeight}});
    WriteTextAlong(html, x + slotWidth / 2, y + slotHeight / 2, "inside", ShowCapacity(*slot.module));
    if (differs) {
        WriteTextAt(html, x + slotWidth / 2, y - 4, "mark", "!");
    }
}

void DrawSlot(THtmlWriter& html, const TMemoryBoard& board, const TBoardSlot& slot, int number, int x,
              int y) {
    if (slot.module != nullptr) {
        DrawModule(html, board, slot, x, y);
    } else {
        html.Void("rect",
                  {{"class", "hole"}, {"x", x}, {"y", y}, {"width", slotWidth}, {"height", slotHeight}});
        WriteTextAlong(html, x + slotWidth / 2, y + slotHeight / 2, "soft", GetState(slot));
    }
    WriteTextAt(html, x + slotWidth / 2, y + slotHeight + 11, "soft", std::to_string(number));
}

// Longer names are in the list below the picture only.
std::string GetChipName(const TResource& processor, int number) {
    constexpr std::size_t longest = 9;
    const std::string name = Show(processor, "DeviceID");
    return name.empty() || name.size() > longest ? std::to_string(number) : name;
}

void DrawChip(THtmlWriter& html, const TResource& processor, int number, int x, int y) {
    html.Void("rect", {{"class", "chip"}, {"x", x}, {"y", y}, {"width", chipSize}, {"height", chipSize}});
    WriteTextAt(html, x + chipSize / 2, y + chipSize / 2 + 4, "name", GetChipName(processor, number));
}

std::string Summarize(const TBoardGroup& group) {
    std::string text;
    for (const std::string_view state : {"filled", "empty", "unknown"}) {
        const auto count = std::ranges::count(group.slots, state, &GetState);
        text += (text.empty() ? "" : ", ") + std::to_string(count) + " " + std::string(state);
    }
    return text;
}

void DrawGroup(THtmlWriter& html, const TMemoryBoard& board, const TBoardGroup& group) {
    const TBoardLayout layout(group.processors.size(), group.slots.size());
    const auto svg = html.Element(
        "svg", {{"xmlns", "http://www.w3.org/2000/svg"},
                {"viewBox", "0 0 " + std::to_string(pictureWidth) + " " + std::to_string(layout.GetHeight())},
                {"role", "img"}});
    html.Leaf("title", "Processors and memory slots: " + Summarize(group));
    html.Leaf("desc",
              "Each slot is a bar that is filled as far as its module is large, compared with the largest. "
              "The numbers are those of the list after the picture.");
    for (int chip = 0; const auto& processor : group.processors) {
        DrawChip(html, *processor, chip + 1, layout.GetChipX(chip), layout.GetChipY(chip));
        ++chip;
    }
    for (int place = 0; const auto& slot : group.slots) {
        DrawSlot(html, board, slot, place + 1, layout.GetSlotX(place), layout.GetSlotY(place));
        ++place;
    }
}

std::string DescribeModule(const TResource& module) {
    std::string text = ShowCapacity(module);
    for (const std::string_view property : {"MemoryType", "FormFactor"}) {
        const std::string value = Show(module, property);
        text += (value.empty() ? "" : " ") + value;
    }
    const std::string speed = Show(module, "Speed");
    text += ", " + (speed.empty() ? "unknown speed" : speed);
    const std::string current = Show(module, "ConfiguredMemoryClockSpeed");
    return current.empty() || current == speed ? text : text + ", runs at " + current;
}

void WriteSlotFacts(THtmlWriter& html, const TBoardSlot& slot) {
    const auto item = html.Element("li");
    {
        const auto name = html.Element("b");
        html.Value(slot.name);
    }
    html.Text(" ");
    if (slot.module == nullptr) {
        html.Leaf("span", {{"class", "quiet"}}, slot.isEmpty ? "empty" : "content unknown");
        return;
    }
    html.Value(DescribeModule(*slot.module));
    if (!slot.difference.empty()) {
        html.Text(" ");
        const auto difference = html.Element("span", {{"class", "other"}});
        html.Text("differs: ");
        html.Value(slot.difference);
    }
}

void WriteProcessorFacts(THtmlWriter& html, const TResource& processor) {
    const auto paragraph = html.Element("p");
    {
        const auto name = html.Element("b");
        WriteKnown(html, Show(processor, "DeviceID"));
    }
    html.Text(" ");
    WriteKnown(html, Show(processor, "Name"));
    if (const std::string cores = Show(processor, "NumberOfEnabledCores"); !cores.empty()) {
        html.Text(", " + cores + (cores == "1" ? " core" : " cores"));
    }
    if (const std::string clock = Show(processor, "MaxClockSpeed"); !clock.empty()) {
        html.Text(", up to " + clock);
    }
}

void WriteGroup(THtmlWriter& html, const TMemoryBoard& board, const TBoardGroup& group) {
    const auto figure = html.Element("figure");
    DrawGroup(html, board, group);
    const auto caption = html.Element("figcaption");
    for (const TResource* const processor : group.processors) {
        WriteProcessorFacts(html, *processor);
    }
    const auto list = html.Element("ol", {{"class", "slots"}});
    for (const TBoardSlot& slot : group.slots) {
        WriteSlotFacts(html, slot);
    }
}

std::string_view Introduce(const TMemoryBoard& board) {
    if (board.hasSlots) {
        return "A bar is a memory slot, filled as far as its module is large.";
    }
    const bool hasModules =
        std::ranges::any_of(board.groups, [](const TBoardGroup& group) { return !group.slots.empty(); });
    return hasModules ? "The source records modules but no slots, so empty slots are unknown."
                      : "The source records neither memory modules nor slots.";
}

}  // namespace

bool HasBoard(const TReportInventory& inventory) {
    return std::ranges::any_of(inventory.GetResources(), [](const TResource& each) {
        return each.type == "Processor" || each.type == "PhysicalMemory" || each.type == "PhysicalConnector";
    });
}

void WriteBoard(THtmlWriter& html, const TReportInventory& inventory) {
    const TMemoryBoard board = MakeMemoryBoard(inventory);
    html.Leaf("p", {{"class", "quiet"}}, Introduce(board));
    const auto groups = html.Element("div", {{"class", "board"}});
    for (const TBoardGroup& group : board.groups) {
        WriteGroup(html, board, group);
    }
}

}  // namespace NINVENTORY
