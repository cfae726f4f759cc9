#include "machine/collect/frame/collection.h"

#include "machine/collect/frame/cim_time.h"
#include "text/printable_text.h"

namespace NVORHOST {

TCIMDateTime TCollection::ToDateTime(std::int64_t secondsSinceEpoch) const {
    // A captured tree does not know its zone's history; the zone of the collection's moment is next best.
    const int atCollection = context_.localTime ? context_.localTime->GetUTCOffset() : 0;
    const int offset = context_.calls.UtcOffsetMinutes(secondsSinceEpoch).value_or(atCollection);
    return MakeCimTime(secondsSinceEpoch, offset);
}

const TSmbiosSource& TCollection::GetSmbios() {
    if (!smbios_) {
        smbios_.emplace(files_);
        if (smbios_->GetFlaw()) {
            Warn("malformed SMBIOS table: " + *smbios_->GetFlaw());
        }
    }
    return *smbios_;
}

const std::vector<TLogicalProcessor>& TCollection::GetLogicalProcessors() {
    if (!logicalProcessors_) {
        logicalProcessors_ = ParseCpuInfo(files_.ReadText("/proc/cpuinfo").value);
    }
    return *logicalProcessors_;
}

const std::vector<TDisk>& TCollection::GetDisks() {
    if (!disks_) {
        disks_ = ReadDisks(*this);
    }
    return *disks_;
}

const std::vector<TPciSource>& TCollection::GetPciSources() {
    if (!pciSources_) {
        pciSources_ = ReadPciSources(files_);
    }
    return *pciSources_;
}

const std::vector<TSoftwareVolume>& TCollection::GetSoftwareVolumes() {
    if (!softwareVolumes_) {
        softwareVolumes_ = ReadSoftwareVolumes(*this);
    }
    return *softwareVolumes_;
}

std::vector<std::string> TCollection::MakeKeys(const std::vector<TKeySource>& sources,
                                               std::string_view deviceWord) {
    return MakeUniqueKeys(sources, deviceWord, notes_);
}

std::optional<TCIMValue> TCollection::ToCimValue(std::string_view property, const std::string& text) {
    auto printable = ToPrintableText(text);
    replacedBytes_ += printable.replacements;
    if (property == "ElementName" || property == "Description") {
        printable.text = SqueezeBlanks(printable.text);
    }
    if (printable.text.empty()) {
        return std::nullopt;
    }
    return TCIMValue(printable.text);
}

}  // namespace NVORHOST
