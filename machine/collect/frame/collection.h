// One run of the collectors: access to the machine, the namespace being filled, and sources shared between
// collectors. It depends on no kind of device.
#pragma once

#include "machine/collect/frame/cim_class.h"
#include "machine/collect/frame/collect_context.h"
#include "machine/collect/frame/device_key.h"
#include "machine/collect/frame/instance_place.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <variant>
#include <vector>

namespace NVORHOST {

/// An instance that a collector committed, for the search for its sources.
struct TCommittedInstance {
    const IClassDeclaration* declaration;
    boost::shared_ptr<TMemoryInstance> instance;
    TInstancePlace place;
};

class TCollection {
  public:
    /// `files` is used in place of `context.files`, so that a run can record its accesses.
    TCollection(const TCollectContext& context, const ISystemFiles& files)
        : context_(context), files_(files) {}
    TCollection(const TCollection&) = delete;
    TCollection& operator=(const TCollection&) = delete;
    ~TCollection() = default;

    const ISystemFiles& GetFiles() const { return files_; }
    const ISystemCalls& GetCalls() const { return context_.calls; }
    const std::optional<TCIMDateTime>& GetLocalTime() const { return context_.localTime; }
    /// True if files may be read that wake a device.
    bool MayWake() const { return context_.wakes; }
    bool KeepsSources() const { return context_.keepsSources; }
    /// Null if the run has no database of device names.
    const IDeviceNames* GetDeviceNames() const { return context_.deviceNames; }

    /// Converts seconds since 1970-01-01 UTC to local time; to UTC if the zone is unknown.
    TCIMDateTime ToDateTime(std::int64_t secondsSinceEpoch) const;

    /// Returns the result of `read(*this)`, which is called only once per collection: the way for several
    /// collectors to share a source. The result lives as long as the collection.
    template <typename TSource>
    const TSource& ReadOnce(TSource (*read)(TCollection& collection));

    /// Commits one instance with every property of `record` that has a value. Texts are cleaned by
    /// ToPrintableText; a text that is empty afterwards counts as absent, and in an array as null. Runs of
    /// blanks are squeezed in ElementName and Description, which are for people, but not in keys and numbers.
    /// The key in a reference is cleaned like the key that it names. A member `place` of the record names the
    /// place of the instance in the sources.
    template <typename TRecord>
    void Commit(const TCimClass<TRecord>& cimClass, const TRecord& record);

    /// Calls MakeUniqueKeys and logs its notes.
    std::vector<std::string> MakeKeys(const std::vector<TKeySource>& sources, std::string_view deviceWord);

    /// Adds a line to the log.
    void Note(std::string line) { notes_.push_back(std::move(line)); }
    /// Adds a line to the log and to the summary: a source is malformed and devices may be missing.
    void Warn(std::string line) { warnings_.push_back(std::move(line)); }

    /// Returns the instances since the last call if the run wants sources; otherwise none.
    std::vector<TCommittedInstance> TakeCommitted() { return std::exchange(committed_, {}); }
    std::vector<std::string> TakeNotes() { return std::exchange(notes_, {}); }
    std::vector<std::string> TakeWarnings() { return std::exchange(warnings_, {}); }
    std::size_t TakeReplacedBytes() { return std::exchange(replacedBytes_, 0); }

  private:
    // Any function pointer converts to this type and back without loss.
    using TReader = void (*)();

    std::optional<TCIMValue> ToCimValue(std::string_view property, const std::string& text);
    std::optional<TCIMValue> ToCimValue(std::string_view property, const std::vector<std::string>& texts);
    std::optional<TCIMValue> ToCimValue(std::string_view property, const TCimReference& reference);

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
    std::vector<TCommittedInstance> committed_;
    std::unordered_map<TReader, std::shared_ptr<const void>> sources_;  // results of ReadOnce
    std::vector<std::string> notes_;
    std::vector<std::string> warnings_;
    std::size_t replacedBytes_ = 0;
};

template <typename TSource>
const TSource& TCollection::ReadOnce(TSource (*read)(TCollection& collection)) {
    const auto key = reinterpret_cast<TReader>(read);
    auto found = sources_.find(key);
    if (found == sources_.end()) {
        // Constructed in place, for sources that cannot be moved, and before the insertion: `read` may itself
        // call ReadOnce.
        std::shared_ptr<const void> source(new TSource(read(*this)));
        found = sources_.emplace(key, std::move(source)).first;
    }
    return *static_cast<const TSource*>(found->second.get());
}

template <typename TRecord>
void TCollection::Commit(const TCimClass<TRecord>& cimClass, const TRecord& record) {
    const auto instance = context_.target.FindClass(cimClass.GetName())->NewInstance();
    const auto set = [&](std::string_view name, const auto& member) {
        if (!member) {
            return;
        }
        if (auto value = ToCimValue(name, *member)) {
            instance->Set(name, std::move(*value));
        }
    };
    for (const TPropertyRow<TRecord>& row : cimClass.GetRows()) {
        std::visit(
            [&](const auto& member) {
                if constexpr (!std::is_same_v<std::decay_t<decltype(member)>, TUnavailable>) {
                    set(row.name, record.*member);
                }
            },
            row.member);
    }
    instance->CommitInstance({});
    if (context_.withSources) {
        TCommittedInstance& committed = committed_.emplace_back();
        committed.declaration = &cimClass;
        committed.instance = instance;
        if constexpr (requires { record.place; }) {
            committed.place = record.place;
        }
    }
}

}  // namespace NVORHOST
