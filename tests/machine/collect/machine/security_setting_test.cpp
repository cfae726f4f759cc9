#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* setting = "KELSG_SecuritySetting";
constexpr const char* secureBoot =
    "/sys/firmware/efi/efivars/SecureBoot-8be4df61-93ca-11d2-aa0d-00e098032b8c bytes:\n| 06 00 00 00 ";

TEST(SecuritySettings, HaveTheStateOfSecureBoot) {
    TCollected collected;
    Collect(std::string(secureBoot) + "01\n", collected);
    EXPECT_THAT(collected.GetAll(setting, "InstanceID"), ElementsAre("Secure Boot"));
    EXPECT_THAT(collected.GetAll(setting, "ElementName"), ElementsAre("Secure Boot"));
    EXPECT_THAT(collected.GetAll(setting, "Description"),
                ElementsAre("The firmware starts signed programs only"));
    EXPECT_THAT(collected.GetAll(setting, "CurrentValue"), ElementsAre("enabled"));
    TCollected disabled;
    Collect(std::string(secureBoot) + "00\n", disabled);
    EXPECT_THAT(disabled.GetAll(setting, "CurrentValue"), ElementsAre("disabled"));
}

TEST(SecuritySettings, HaveTheLevelOfLockdown) {
    TCollected collected;
    Collect("/sys/kernel/security/lockdown = none [integrity] confidentiality\n", collected);
    EXPECT_THAT(collected.GetAll(setting, "InstanceID"), ElementsAre("Kernel lockdown"));
    EXPECT_THAT(collected.GetAll(setting, "CurrentValue"), ElementsAre("integrity"));
}

TEST(SecuritySettings, HaveTheVersionAndVendorOfTheTpm) {
    TCollected collected;
    Collect(
        "/sys/firmware/dmi/tables/DMI smbios:\n| 43: 49 46 58 00 02 00 00 00 00 00 00 00 00 00 00\n"
        "/sys/class/tpm/tpm0/tpm_version_major = 2\n"
        "/sys/class/tpm/tpm1/tpm_version_major = 1\n"
        "/sys/class/tpm/tpm2/dev = 10:224\n",
        collected);
    EXPECT_THAT(collected.GetAll(setting, "InstanceID"), ElementsAre("TPM", "TPM 2", "TPM 3"));
    EXPECT_THAT(collected.GetAll(setting, "CurrentValue"), ElementsAre("2.0", "1.2", "absent"));
    EXPECT_THAT(collected.GetAll(setting, "Description"),
                ElementsAre("Trusted platform module, vendor IFX", "Trusted platform module",
                            "Trusted platform module"));
}

TEST(SecuritySettings, HaveAnIommuThatIsDisabledIfTheKernelUsesNone) {
    TCollected used;
    Collect("/sys/class/iommu/dmar0 -> ../../devices/virtual/iommu/dmar0\n", used);
    EXPECT_THAT(used.GetAll(setting, "InstanceID"), ElementsAre("IOMMU"));
    EXPECT_THAT(used.GetAll(setting, "CurrentValue"), ElementsAre("enabled"));
    TCollected unused;
    Collect("/sys/class/iommu/\n", unused);
    EXPECT_THAT(unused.GetAll(setting, "CurrentValue"), ElementsAre("disabled"));
}

TEST(SecuritySettings, HaveTheVirtualizationOfTheProcessor) {
    TCollected intel;
    Collect("/proc/cpuinfo:\n| processor : 0\n| flags : fpu vmx lm\n", intel);
    EXPECT_THAT(intel.GetAll(setting, "InstanceID"), ElementsAre("Hardware virtualization"));
    EXPECT_THAT(intel.GetAll(setting, "Description"), ElementsAre("VT-x"));
    EXPECT_THAT(intel.GetAll(setting, "CurrentValue"), ElementsAre("enabled"));
    TCollected amd;
    Collect("/proc/cpuinfo:\n| processor : 0\n| flags : fpu svm lm\n", amd);
    EXPECT_THAT(amd.GetAll(setting, "Description"), ElementsAre("AMD-V"));
    TCollected unknown;
    Collect("/proc/cpuinfo:\n| processor : 0\n| flags : fpu lm svm_lock\n", unknown);
    EXPECT_THAT(unknown.GetAll(setting, "InstanceID"), IsEmpty());
}

TEST(SecuritySettings, HaveTheVulnerabilitiesInTheKernelsWords) {
    TCollected collected;
    Collect(
        "/sys/devices/system/cpu/vulnerabilities/meltdown = Mitigation: PTI\n"
        "/sys/devices/system/cpu/vulnerabilities/l1tf = Not affected\n",
        collected);
    EXPECT_THAT(collected.GetAll(setting, "InstanceID"),
                ElementsAre("CPU vulnerability l1tf", "CPU vulnerability meltdown"));
    EXPECT_THAT(collected.GetAll(setting, "CurrentValue"), ElementsAre("Not affected", "Mitigation: PTI"));
}

TEST(SecuritySettings, HaveNoInstanceForMalformedSources) {
    TCollected collected;
    Collect(std::string(secureBoot) + "02\n/sys/kernel/security/lockdown = none integrity\n", collected);
    EXPECT_EQ(collected.CountInstances(setting), 0U);
}

}  // namespace
}  // namespace NVORHOST
