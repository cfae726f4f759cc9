// One run of the collectors, as they see it: the machine, the namespace they fill, and what several of them
// need and one of them reads.
#pragma once

#include "machine/collect/bus/pci_source.h"
#include "machine/collect/frame/class_shape.h"
#include "machine/collect/frame/device_key.h"
#include "machine/collect/frame/smbios_source.h"
#include "machine/collect/run/collector.h"
#include "machine/collect/storage/block_device.h"
#include "machine/collect/storage/software_volume.h"
#include "machine/parse/cpuinfo.h"
#include "text/numbers.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

class TCollection {
  public:
    /// `files` is read instead of the context's, so that a run can be recorded.
    TCollection(const TCollectContext& context, const ISystemFiles& files)
        : context_(context), files_(files) {}
    TCollection(const TCollection&) = delete;
    TCollection& operator=(const TCollection&) = delete;
    ~TCollection() = default;

    const ISystemFiles& GetFiles() const { return files_; }
    const ISystemCalls& GetCalls() const { return context_.calls; }
    const std::optional<TCIMDateTime>& GetLocalTime() const { return context_.localTime; }
    /// Null when the run has no database of names.
    const IDeviceNames* GetDeviceNames() const { return context_.deviceNames; }

    /// The moment, given in seconds since 1970-01-01 UTC, in local time where its zone is known, else in UTC.
    TCIMDateTime ToDateTime(std::int64_t secondsSinceEpoch) const;

    /// Sources that several collectors share; each is read once, when it is first asked for.
    const TSmbiosSource& GetSmbios();
    const std::vector<TLogicalProcessor>& GetLogicalProcessors();
    const std::vector<TDisk>& GetDisks();
    const std::vector<TPciSource>& GetPciSources();
    const std::vector<TSoftwareVolume>& GetSoftwareVolumes();

    /// Commits one instance with every property of `record` that is not absent. Texts pass the gate of
    /// printable_text.h; one that is empty after it counts as absent. Texts for people, ElementName and
    /// Description, keep no runs of blanks; keys and numbers keep them.
    template <typename TRecord>
    void Commit(const TClassShape& shape, std::span<const TPropertyRow<TRecord>> rows, const TRecord& record);

    /// As MakeUniqueKeys; what it notes goes to the log.
    std::vector<std::string> MakeKeys(const std::vector<TKeySource>& sources, std::string_view deviceWord);

    /// A line for the log.
    void Note(std::string line) { notes_.push_back(std::move(line)); }
    /// A line for the log and for the summary of the run: a source is malformed and devices may be missing.
    void Warn(std::string line) { warnings_.push_back(std::move(line)); }

    std::vector<std::string> TakeNotes() { return std::exchange(notes_, {}); }
    std::vector<std::string> TakeWarnings() { return std::exchange(warnings_, {}); }
    std::size_t TakeReplacedBytes() { return std::exchange(replacedBytes_, 0); }

  private:
    std::optional<TCIMValue> ToCimValue(std::string_view property, const std::string& text);

    template <typename TValue>
    std::optional<TCIMValue> ToCimValue(std::string_view /*property*/, const TValue& value) {
        return TCIMValue(value);
    }

    template <typename TElement>
    std::optional<TCIMValue> ToCimValue(std::string_view /*property*/,
                                        const std::vector<TElement>& elements) {
        TCIMValue::TElements values;
        values.reserve(elements.size());
        for (const TElement element : elements) {
            values.emplace_back(element);
        }
        return TCIMValue::Array(cimTypeOf<TElement>, std::move(values));
    }

    const TCollectContext& context_;
    const ISystemFiles& files_;
    std::optional<TSmbiosSource> smbios_;
    std::optional<std::vector<TLogicalProcessor>> logicalProcessors_;
    std::optional<std::vector<TDisk>> disks_;
    std::optional<std::vector<TPciSource>> pciSources_;
    std::optional<std::vector<TSoftwareVolume>> softwareVolumes_;
    std::vector<std::string> notes_;
    std::vector<std::string> warnings_;
    std::size_t replacedBytes_ = 0;
};

template <typename TRecord>
void TCollection::Commit(const TClassShape& shape, std::span<const TPropertyRow<TRecord>> rows,
                         const TRecord& record) {
    const auto instance = context_.target.FindClass(shape.name)->NewInstance();
    const auto set = [&](std::string_view name, const auto& member) {
        if (!member) {
            return;
        }
        if (auto value = ToCimValue(name, *member)) {
            instance->Set(name, std::move(*value));
        }
    };
    for (const TPropertyRow<TRecord>& row : rows) {
        std::visit(
            [&](const auto& member) {
                if constexpr (!std::is_same_v<std::decay_t<decltype(member)>, TNeverKnown>) {
                    set(row.name, record.*member);
                }
            },
            row.member);
    }
    instance->CommitInstance({});
}

}  // namespace NVORHOST
