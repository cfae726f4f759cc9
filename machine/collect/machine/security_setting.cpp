// KELSG_SecuritySetting: one instance per protection whose state is known: Secure Boot, lockdown, TPMs,
// IOMMU, virtualization by the processor, and each vulnerability of the processors that the kernel lists.
#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/frame/logical_processors.h"
#include "machine/collect/frame/smbios_source.h"
#include "machine/parse/placeholders.h"
#include "machine/parse/security_state.h"
#include "machine/parse/smbios_tpm.h"

namespace NVORHOST {
namespace {

struct TSetting {
    std::optional<std::string> elementName, description, instanceId, value;
    TInstancePlace place{};
};

constexpr TPropertyRow<TSetting> settingRows[] = {
    {"ElementName", &TSetting::elementName, "constant"},
    {"Description", &TSetting::description, "constant; type 43, 04h of a TPM"},
    {"InstanceID", &TSetting::instanceId, "constant"},
    {"CurrentValue", &TSetting::value, "@ content"},
};

constexpr TCimClass<TSetting> settingClass{"KELSG_SecuritySetting", settingRows};
constexpr const IClassDeclaration* classes[] = {&settingClass};

constexpr std::string_view secureBootVariable =
    "/sys/firmware/efi/efivars/SecureBoot-8be4df61-93ca-11d2-aa0d-00e098032b8c";
constexpr std::string_view lockdownFile = "/sys/kernel/security/lockdown";
constexpr std::string_view tpmFolder = "/sys/class/tpm";
constexpr std::string_view iommuFolder = "/sys/class/iommu";
constexpr std::string_view vulnerabilitiesFolder = "/sys/devices/system/cpu/vulnerabilities";

constexpr auto sourcePatterns = Join(smbiosSources, std::array<TSourcePattern, 8>{
                                                        "/proc/cpuinfo",
                                                        secureBootVariable,
                                                        lockdownFile,
                                                        tpmFolder,
                                                        "/sys/class/tpm/*/tpm_version_major",
                                                        iommuFolder,
                                                        vulnerabilitiesFolder,
                                                        "/sys/devices/system/cpu/vulnerabilities/*",
                                                    });

// `source` is the file or folder that has the state.
void Commit(TCollection& collection, std::string_view source, const std::string& name,
            std::string description, std::string value) {
    collection.Commit(settingClass, {name, std::move(description), name, std::move(value),
                                     TInstancePlace{.folder = std::string(source)}});
}

std::string ToWord(bool isEnabled) {
    return isEnabled ? "enabled" : "disabled";
}

void CommitSecureBoot(TCollection& collection) {
    constexpr std::size_t moreThanItsSize = 16;
    const auto bytes = collection.GetFiles().ReadBytes(secureBootVariable, moreThanItsSize);
    if (const auto isEnabled = ParseSecureBoot(bytes.value)) {
        Commit(collection, secureBootVariable, "Secure Boot", "The firmware starts signed programs only",
               ToWord(*isEnabled));
    }
}

void CommitLockdown(TCollection& collection) {
    const auto text = ReadAttribute(collection.GetFiles(), lockdownFile);
    if (const auto level = ParseChosenWord(text.value_or(""))) {
        Commit(collection, lockdownFile, "Kernel lockdown", "Access to the kernel that even root is denied",
               *level);
    }
}

// "Trusted platform module, vendor IFX". The kernel's first TPM is the one of the firmware's table, which has
// one at most.
std::string DescribeTpm(TCollection& collection) {
    constexpr std::uint8_t tpmType = 43;
    const TSmbiosStructure* const structure = GetSmbios(collection).FindFirst(tpmType);
    const auto vendor = structure != nullptr ? ParseSmbiosTpm(*structure).vendor : std::nullopt;
    return "Trusted platform module" + (vendor ? ", vendor " + *vendor : "");
}

// TPM 1.2 has no revision of its own in the attribute.
std::optional<std::string> FindTpmVersion(const ISystemFiles& files, const std::string& name) {
    const auto major = ReadAttribute(files, std::string(tpmFolder) + "/" + name + "/tpm_version_major");
    if (major == "2") {
        return "2.0";
    }
    return major == "1" ? std::optional<std::string>("1.2") : std::nullopt;
}

void CommitTpms(TCollection& collection) {
    const ISystemFiles& files = collection.GetFiles();
    std::size_t number = 0;
    for (const std::string& name : files.List(tpmFolder).value) {
        if (!name.starts_with("tpm")) {
            continue;
        }
        ++number;
        const std::string id = number == 1 ? "TPM" : "TPM " + std::to_string(number);
        const std::string description = number == 1 ? DescribeTpm(collection) : "Trusted platform module";
        collection.Commit(settingClass, {id, description, id, FindTpmVersion(files, name),
                                         TInstancePlace{.folder = std::string(tpmFolder) + "/" + name +
                                                                  "/tpm_version_major"}});
    }
}

// An empty folder means that the kernel supports IOMMUs and uses none.
void CommitIommu(TCollection& collection) {
    const auto units = collection.GetFiles().List(iommuFolder);
    if (units.IsOk()) {
        Commit(collection, iommuFolder, "IOMMU", "Protection of memory from devices",
               ToWord(!units.value.empty()));
    }
}

// The kernel hides the flags if the firmware has switched the feature off; without a flag it is not known
// which of both is the case.
void CommitVirtualization(TCollection& collection) {
    const auto& processors = GetLogicalProcessors(collection);
    if (processors.empty()) {
        return;
    }
    const TLogicalProcessor& first = processors.front();
    if (first.hasVmx || first.hasSvm) {
        Commit(collection, "/proc/cpuinfo", "Hardware virtualization", first.hasVmx ? "VT-x" : "AMD-V",
               ToWord(true));
    }
}

void CommitVulnerabilities(TCollection& collection) {
    const ISystemFiles& files = collection.GetFiles();
    const std::string folder(vulnerabilitiesFolder);
    for (const std::string& name : files.List(folder).value) {
        if (auto state = ReadAttribute(files, folder + "/" + name)) {
            Commit(collection, folder + "/" + name, "CPU vulnerability " + name,
                   "State of a processor vulnerability", std::move(*state));
        }
    }
}

void CollectSecuritySettings(TCollection& collection) {
    CommitSecureBoot(collection);
    CommitLockdown(collection);
    CommitTpms(collection);
    CommitIommu(collection);
    CommitVirtualization(collection);
    CommitVulnerabilities(collection);
}

}  // namespace

extern constinit const TCollector securitySettingCollector{
    .name = "security",
    .description = "Secure Boot, lockdown, TPM, IOMMU, virtualization, processor vulnerabilities",
    .fills = classes,
    .reads = sourcePatterns,
    .collect = CollectSecuritySettings,
    .isForDocuments = false,
};

}  // namespace NVORHOST
