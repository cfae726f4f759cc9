// The comparison of any two inventories is symmetric and complete, and both outputs can be written. The input
// determines the inventories.
#include "fuzz.h"
#include "inventory/write/diff_json_writer.h"
#include "inventory/write/diff_text_writer.h"
#include "tests/inventory/compare/comparison_properties.h"
#include "tests/inventory/compare/random_inventory.h"

#include <sstream>

namespace {

using namespace NINVENTORY;

void WriteAll(const TComparison& comparison, const TInventory& before, const TInventory& after,
              const TTextLayout& layout) {
    std::ostringstream out;
    WriteDiffText(comparison, before, after, layout, out);
    WriteDiffJson(comparison, before, after, out);
    WriteDiffNdjson(comparison, before, after, out);
    Require(out.good(), "every comparison can be written");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::size_t used = 0;
    const TTakeByte take = [&] { return used < size ? data[used++] : std::uint8_t{0}; };
    const TTextLayout layout{.width = take(), .hasColour = take() % 2 == 0, .isUtf8 = take() % 2 == 0};
    const TInventory before = MakeRandomInventory(take);
    const TInventory after = MakeRandomInventory(take);
    for (const bool comparesAll : {false, true}) {
        const TComparisonSettings settings{.comparesAll = comparesAll, .ignored = {{"DiskDrive", "Name"}}};
        Require(IsSymmetric(before, after, settings), "exchanging the inventories mirrors the differences");
        Require(Compare(before, before, settings).IsSame(), "an inventory is the same as itself");
        WriteAll(Compare(before, after, settings), before, after, layout);
    }
    Require(IsComplete(before, after), "applying the differences to the old inventory gives the new one");
    return 0;
}
