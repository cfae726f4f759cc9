#include "machine/parse/cpuinfo.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

constexpr std::string_view twoProcessors =
    "processor\t: 0\n"
    "vendor_id\t: GenuineIntel\n"
    "cpu family\t: 6\n"
    "model\t\t: 26\n"
    "model name\t: Intel(R) Xeon(R) CPU           E5540  @ 2.53GHz\n"
    "stepping\t: 3\n"
    "microcode\t: 0x1d\n"
    "cpu cores\t: 4\n"
    "cpu MHz\t\t: 2299.992\n"
    "physical id\t: 0\n"
    "flags\t\t: fpu de lm constant_tsc\n"
    "\n"
    "processor\t: 1\n"
    "physical id\t: 1\n"
    "flags\t\t: fpu almost nolm\n";

TEST(ParseCpuInfo, ReadsEachProcessorsBlock) {
    const auto processors = ParseCpuInfo(twoProcessors);
    ASSERT_EQ(processors.size(), 2U);
    EXPECT_EQ(processors[0].number, 0U);
    EXPECT_EQ(processors[0].packageId, 0U);
    EXPECT_EQ(processors[0].clockMHz, 2300U);
    EXPECT_EQ(processors[0].vendor, "GenuineIntel");
    EXPECT_EQ(processors[0].model, "Intel(R) Xeon(R) CPU           E5540  @ 2.53GHz");
    EXPECT_EQ(processors[0].family, "6");
    EXPECT_EQ(processors[0].modelNumber, "26");
    EXPECT_EQ(processors[0].stepping, "3");
    EXPECT_EQ(processors[0].microcode, "0x1d");
    EXPECT_EQ(processors[0].coreCount, 4);
    EXPECT_EQ(processors[1].number, 1U);
    EXPECT_EQ(processors[1].packageId, 1U);
    EXPECT_EQ(processors[1].clockMHz, std::nullopt);
    EXPECT_EQ(processors[1].model, std::nullopt);
    EXPECT_EQ(processors[1].microcode, std::nullopt);
    EXPECT_EQ(processors[1].coreCount, std::nullopt);
}

TEST(ParseCpuInfo, ReadsTheLongModeFlagAsAWholeWord) {
    const auto processors = ParseCpuInfo(twoProcessors);
    EXPECT_EQ(processors[0].isLongModeCapable, true);
    EXPECT_EQ(processors[1].isLongModeCapable, false);
    EXPECT_EQ(ParseCpuInfo("processor: 0\n")[0].isLongModeCapable, std::nullopt);
    EXPECT_EQ(ParseCpuInfo("processor: 0\nflags: fpu lm")[0].isLongModeCapable, true);
}

TEST(ParseCpuInfo, TreatsAnEmptyValueAsAbsent) {
    EXPECT_EQ(ParseCpuInfo("processor : 0\nmodel name : \n")[0].model, std::nullopt);
    EXPECT_EQ(ParseCpuInfo("processor : 0\nvendor_id :\n")[0].vendor, std::nullopt);
}

TEST(ParseCpuInfo, ReadsTheVirtualizationFlagsAsWholeWords) {
    const auto processors = ParseCpuInfo(
        "processor: 0\nflags: fpu vmx\nprocessor: 1\nflags: svm lm\nprocessor: 2\nflags: vmxx svm_lock\n"
        "vmx flags: vnmi\n");
    ASSERT_EQ(processors.size(), 3U);
    EXPECT_TRUE(processors[0].hasVmx);
    EXPECT_FALSE(processors[0].hasSvm);
    EXPECT_FALSE(processors[1].hasVmx);
    EXPECT_TRUE(processors[1].hasSvm);
    EXPECT_FALSE(processors[2].hasVmx);
    EXPECT_FALSE(processors[2].hasSvm);
}

TEST(ParseCpuInfo, SkipsLinesBeforeTheFirstProcessor) {
    EXPECT_TRUE(ParseCpuInfo("").empty());
    EXPECT_TRUE(ParseCpuInfo("model name : A\n").empty());
    const auto processors = ParseCpuInfo("Processor\t: ARMv7 Processor rev 4 (v7l)\nprocessor\t: 0\n");
    ASSERT_EQ(processors.size(), 1U);
    EXPECT_EQ(processors[0].number, 0U);
}

TEST(ParseCpuInfo, ReadsTheHypervisorFlag) {
    const auto processors = ParseCpuInfo(
        "processor : 0\nflags : fpu lm hypervisor lahf_lm\n\n"
        "processor : 1\nflags : fpu lm no_hypervisor\n\nprocessor : 2\n");
    ASSERT_EQ(processors.size(), 3U);
    EXPECT_TRUE(processors[0].isUnderHypervisor);
    EXPECT_FALSE(processors[1].isUnderHypervisor);
    EXPECT_FALSE(processors[2].isUnderHypervisor);
}

}  // namespace
}  // namespace NVORHOST
