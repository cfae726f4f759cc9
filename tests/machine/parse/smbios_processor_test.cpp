#include "machine/parse/smbios_processor.h"

#include "tests/machine/parse/structure_bytes.h"

#include <gtest/gtest.h>

#include <string>

namespace NVORHOST {
namespace {

// A processor structure up to 28h, and the bytes `rest` from there.
TStructureBytes MakeProcessor(const std::string& family, const std::string& rest) {
    return TStructureBytes(
        "4: 01 03 " + family +
        " 02 00 00 00 00 00 00 00 00 03 00 00 00 a0 0f e5 09 41 01 00 00 00 00 00 00 04 00 00 02"
        " 02 04 04 00 " +
        rest + " \"CPU 1\" \"Intel\" \"Model\" \"SN-1\"");
}

TEST(ParseSmbiosProcessor, ReadsEveryFieldOfAPopulatedSocket) {
    const TStructureBytes structure = MakeProcessor("b3", "b3 00");
    const auto processor = ParseSmbiosProcessor(structure.Get());
    EXPECT_EQ(processor.socket, "CPU 1");
    EXPECT_TRUE(processor.IsCentral());
    EXPECT_EQ(processor.family, 0xB3);
    EXPECT_EQ(processor.manufacturer, "Intel");
    EXPECT_EQ(processor.version, "Model");
    EXPECT_EQ(processor.maxSpeedMHz, 4000);
    EXPECT_EQ(processor.currentSpeedMHz, 2533);
    EXPECT_TRUE(processor.IsPopulated());
    EXPECT_EQ(processor.serial, "SN-1");
    EXPECT_TRUE(processor.Is64BitCapable());
}

TEST(ParseSmbiosProcessor, ReadsTheFamilyFromTheSecondFieldIfTheFirstRefersToIt) {
    EXPECT_EQ(ParseSmbiosProcessor(MakeProcessor("fe", "01 01").Get()).family, 0x101);
    EXPECT_EQ(ParseSmbiosProcessor(MakeProcessor("fe", "").Get()).family, std::nullopt);
    EXPECT_EQ(ParseSmbiosProcessor(MakeProcessor("fe", "00 00").Get()).family, std::nullopt);
    EXPECT_EQ(ParseSmbiosProcessor(MakeProcessor("00", "b3 00").Get()).family, std::nullopt);
    EXPECT_EQ(ParseSmbiosProcessor(MakeProcessor("ff", "b3 00").Get()).family, std::nullopt);
}

TEST(ParseSmbiosProcessor, LeavesUnknownSpeedsAndMissingFieldsAbsent) {
    const TStructureBytes structure(
        "4: 01 03 b3 02 00 00 00 00 00 00 00 00 03 00 00 00 00 00 00 00 41 01 \"CPU 1\" \"Intel\" \"Model\"");
    const auto processor = ParseSmbiosProcessor(structure.Get());
    EXPECT_EQ(processor.maxSpeedMHz, std::nullopt);
    EXPECT_EQ(processor.currentSpeedMHz, std::nullopt);
    EXPECT_EQ(processor.serial, std::nullopt);
    EXPECT_EQ(processor.characteristics, std::nullopt);
    EXPECT_FALSE(processor.Is64BitCapable());
    EXPECT_FALSE(ParseSmbiosProcessor(TStructureBytes("4: 00").Get()).IsPopulated());
}

// Up to 23h, then 24h and `rest`.
TSmbiosProcessor ParseWithCores(const std::string& rest) {
    return ParseSmbiosProcessor(
        TStructureBytes("4: 01 03 b3 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
                        "41 2b 00 00 00 00 00 00 00 00 00 10 " +
                        rest)
            .Get());
}

TEST(ParseSmbiosProcessor, ReadsSocketKindAndEnabledCores) {
    EXPECT_EQ(ParseWithCores("08").upgrade, 0x2B);
    EXPECT_EQ(ParseWithCores("08").enabledCores, 8);
    EXPECT_EQ(ParseWithCores("ff 00 00 00 00 00 00 00 20 01").enabledCores, 288);
    EXPECT_EQ(ParseWithCores("ff").enabledCores, std::nullopt);
    EXPECT_EQ(ParseWithCores("00").enabledCores, std::nullopt);
    EXPECT_EQ(ParseWithCores("08").cores, 16);
    EXPECT_EQ(ParseWithCores("08").threads, std::nullopt);
    EXPECT_EQ(ParseWithCores("08 20").threads, 32);
    EXPECT_EQ(ParseWithCores("08 00").threads, std::nullopt);
    EXPECT_EQ(ParseWithCores("ff ff 00 00 00 00 20 01 20 01 40 02").threads, 576);
}

TEST(ParseSmbiosProcessor, ReadsCountsAbove254FromTheWords) {
    const TStructureBytes structure(
        "4: 01 03 b3 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 41 2b 00 00 00 00 00 00 00 00 00 "
        "ff ff ff 00 00 00 00 01 01 02 01 03 01 03 01 01 \"CPU 1\"");
    const auto processor = ParseSmbiosProcessor(structure.Get());
    EXPECT_EQ(processor.cores, 257);
    EXPECT_EQ(processor.enabledCores, 258);
    EXPECT_EQ(processor.threads, 259);
    EXPECT_EQ(processor.socketKind, "CPU 1");
    EXPECT_EQ(ParseWithCores("").enabledCores, std::nullopt);
}

}  // namespace
}  // namespace NVORHOST
