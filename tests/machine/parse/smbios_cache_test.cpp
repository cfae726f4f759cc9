#include "machine/parse/smbios_cache.h"

#include "tests/machine/parse/structure_bytes.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

// 256 KiB of 512 KiB, level 2, enabled, write-back, single-bit ECC, unified, 8-way.
constexpr const char* wholeCache =
    "7: 01 81 01 00 02 00 01 00 00 00 00 00 05 05 07 00 02 00 00 00 01 00 00 \"L2 Cache\"";

TEST(ParseSmbiosCache, ReadsEveryField) {
    const TStructureBytes structure(wholeCache);
    const auto cache = ParseSmbiosCache(structure.Get());
    EXPECT_EQ(cache.designation, "L2 Cache");
    EXPECT_EQ(cache.level, 2);
    EXPECT_EQ(cache.isEnabled, true);
    EXPECT_EQ(cache.mode, 1);
    EXPECT_EQ(cache.maxSizeKiB, 512U);
    EXPECT_EQ(cache.installedKiB, 256U);
    EXPECT_EQ(cache.errorCorrection, 5);
    EXPECT_EQ(cache.kind, 5);
    EXPECT_EQ(cache.associativity, 7);
}

TEST(ParseSmbiosCache, HasEachFieldFromTheLengthThatHoldsIt) {
    constexpr TFieldEnd<TSmbiosCache> fields[] = {
        {"designation", 0x05, [](const TSmbiosCache& cache) { return cache.designation.has_value(); }},
        {"level", 0x07, [](const TSmbiosCache& cache) { return cache.level.has_value(); }},
        {"isEnabled", 0x07, [](const TSmbiosCache& cache) { return cache.isEnabled.has_value(); }},
        {"mode", 0x07, [](const TSmbiosCache& cache) { return cache.mode.has_value(); }},
        {"maxSizeKiB", 0x09, [](const TSmbiosCache& cache) { return cache.maxSizeKiB.has_value(); }},
        {"installedKiB", 0x0B, [](const TSmbiosCache& cache) { return cache.installedKiB.has_value(); }},
        {"errorCorrection", 0x11,
         [](const TSmbiosCache& cache) { return cache.errorCorrection.has_value(); }},
        {"kind", 0x12, [](const TSmbiosCache& cache) { return cache.kind.has_value(); }},
        {"associativity", 0x13, [](const TSmbiosCache& cache) { return cache.associativity.has_value(); }},
    };
    const TStructureBytes whole(wholeCache);
    for (std::size_t length = 4; length <= whole.GetLength(); ++length) {
        const auto shortened = whole.Shortened(length);
        const auto cache = ParseSmbiosCache(shortened.Get());
        for (const auto& field : fields) {
            EXPECT_EQ(field.isFound(cache), length >= field.end) << field.name << " at length " << length;
        }
    }
}

TEST(ParseSmbiosCache, ReadsSizesInUnitsOf64KiB) {
    const TStructureBytes structure("7: 00 82 01 10 80 08 80");
    const auto cache = ParseSmbiosCache(structure.Get());
    EXPECT_EQ(cache.level, 3);
    EXPECT_EQ(cache.maxSizeKiB, 1024U);
    EXPECT_EQ(cache.installedKiB, 512U);
}

TEST(ParseSmbiosCache, ReadsExtendedSizes) {
    const TStructureBytes structure(
        "7: 00 82 01 ff ff ff ff 00 00 00 00 00 05 05 07 00 00 01 80 00 c0 00 00");
    const auto cache = ParseSmbiosCache(structure.Get());
    EXPECT_EQ(cache.maxSizeKiB, 65536U * 64);
    EXPECT_EQ(cache.installedKiB, 49152U);
}

TEST(ParseSmbiosCache, HasNoSizeWithoutTheExtendedField) {
    const TStructureBytes structure("7: 00 82 01 ff ff ff ff 00 00 00 00 00 05 05 07");
    const auto cache = ParseSmbiosCache(structure.Get());
    EXPECT_EQ(cache.maxSizeKiB, std::nullopt);
    EXPECT_EQ(cache.installedKiB, std::nullopt);
}

TEST(ParseSmbiosCache, HasNoModeForUnknown) {
    const TStructureBytes structure("7: 00 00 03");
    const auto cache = ParseSmbiosCache(structure.Get());
    EXPECT_EQ(cache.mode, std::nullopt);
    EXPECT_EQ(cache.isEnabled, false);
    EXPECT_EQ(cache.level, 1);
}

}  // namespace
}  // namespace NVORHOST
