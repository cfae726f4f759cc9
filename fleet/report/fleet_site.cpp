#include "fleet/report/fleet_site.h"

#include "fleet/ask/machine_changes.h"
#include "fleet/ask/machine_inventory.h"
#include "fleet/ask/version_index.h"
#include "fleet/report/changes_pages.h"
#include "fleet/report/duplicates.h"
#include "fleet/report/machine_list_pages.h"
#include "fleet/report/machine_page.h"
#include "fleet/report/model_pages.h"
#include "fleet/report/notable_pages.h"
#include "fleet/report/overview_page.h"
#include "fleet/report/part_pages.h"
#include "fleet/report/search_page.h"
#include "inventory/write/part_words.h"

#include <algorithm>
#include <atomic>
#include <future>
#include <iterator>
#include <map>
#include <memory>
#include <set>
#include <span>
#include <string>
#include <tuple>
#include <unordered_map>
#include <utility>

namespace NFLEET {
namespace {

constexpr std::size_t machinesPerBatch = 64;
constexpr std::size_t maxKeptVersions = 200'000;

// The rows of some machines that follow each other in the site.
struct TStoredBatch {
    std::size_t first = 0;  // index of the first machine
    std::vector<std::vector<TPresence>> presences{};
    std::vector<std::vector<TInventory>> inventories{};
    TVersionIndex versions{};
};

// An identity of a part, with texts that are not shared yet.
struct TFoundPart {
    TPart part;
    std::string words, kind;
};

// What a machine contributes to the pages of the whole fleet.
struct TContribution {
    std::vector<TFoundPart> parts{};
    std::vector<TDayRow> dayRows{};
    std::vector<TDay> inventoryDays{};
};

using TMergedKeys = std::unordered_map<TMachineId, std::string, TDigestHash>;

class TBatchReader {
  public:
    TBatchReader(IFleetStore& store, const TSite& site) : store_(store), site_(site) {}

    // Returns the next machines; without any at the end.
    TStoredBatch Read() {
        TStoredBatch batch;
        batch.first = next_;
        const std::size_t end = std::min(next_ + machinesPerBatch, site_.machines.size());
        std::vector<TMachineScope> places;
        for (; next_ < end; ++next_) {
            const TMachine& machine = site_.machines[next_].machine;
            for (const EScope scope : scopes) {
                if (IsCurrentScope(machine.usesSnapshot, scope)) {
                    places.push_back({machine.id, scope});
                }
            }
        }
        batch.presences.resize(end - batch.first);
        batch.inventories.resize(end - batch.first);
        if (!places.empty()) {
            Take(store_.ReadStates(places), batch);
            ReadVersions(batch);
        }
        return batch;
    }

  private:
    void Take(std::vector<TScopeState> states, TStoredBatch& batch) const {
        for (TScopeState& state : states) {
            const std::size_t machine = site_.indices.at(state.place.machine) - batch.first;
            std::ranges::move(state.presences, std::back_inserter(batch.presences[machine]));
            std::ranges::move(state.inventories, std::back_inserter(batch.inventories[machine]));
        }
        for (std::vector<TInventory>& inventories : batch.inventories) {
            std::ranges::stable_sort(inventories, {}, &TInventory::time);
        }
    }

    void ReadVersions(TStoredBatch& batch) {
        std::vector<TPresence> used;
        for (const std::vector<TPresence>& presences : batch.presences) {
            for (const TPresence& presence : presences) {
                used.push_back({presence.place, {}, {}, 0, 0, presence.version});
            }
        }
        batch.versions = TVersionIndex(store_, used, known_);
        if (known_.GetSize() > maxKeptVersions) {
            known_ = TVersionIndex();
        }
        known_.Add(batch.versions);
    }

    IFleetStore& store_;
    const TSite& site_;
    TVersionIndex known_;
    std::size_t next_ = 0;
};

// Appends the identities of a resource over the time of a row. Rows between which only the version changed
// are joined.
void AppendParts(const TPresence& row, const NINVENTORY::TResource& resource, std::size_t machine,
                 std::vector<TFoundPart>& parts) {
    for (TPartIdentity& found : ListIdentities(resource)) {
        TFoundPart part{.part = {.identity = std::move(found.identity),
                                 .machine = static_cast<std::uint32_t>(machine),
                                 .since = row.since,
                                 .until = row.until,
                                 .isUnique = found.isUnique},
                        .words = DescribePart(resource),
                        .kind = DescribeKind(resource)};
        const auto joined = std::ranges::find_if(parts, [&](const TFoundPart& other) {
            return other.part.identity == part.part.identity && other.words == part.words &&
                   other.part.until == part.part.since;
        });
        if (joined == parts.end()) {
            parts.push_back(std::move(part));
        } else {
            joined->part.until = part.part.until;
        }
    }
}

class TMachineWriter {
  public:
    TMachineWriter(ISiteFiles& files, TSite& site, const TMergedKeys& merged)
        : files_(files), site_(site), merged_(merged) {
        for (std::size_t i = 0; i < site.outliers.size();) {
            const TMachineId& id = site.outliers[i].machine.id;
            const std::size_t begin = i;
            while (i < site.outliers.size() && site.outliers[i].machine.id == id) {
                ++i;
            }
            outliers_.emplace(id, std::span(site.outliers).subspan(begin, i - begin));
        }
        for (const TDuplicate& duplicate : site.duplicates) {
            for (const std::size_t machine : duplicate.machines) {
                duplicates_[machine].push_back(duplicate);
            }
        }
    }

    // Writes the pages of the machines of a batch, and returns what each contributes. Changes their facts,
    // and nothing else of the site.
    std::vector<TContribution> Write(const TStoredBatch& batch, unsigned threads) const {
        std::vector<TContribution> contributions(batch.presences.size());
        std::atomic<std::size_t> next = 0;
        const auto work = [&] {
            for (std::size_t i = next++; i < contributions.size(); i = next++) {
                contributions[i] = WriteMachine(batch, i);
            }
        };
        std::vector<std::future<void>> others;
        for (unsigned i = 1; i < threads; ++i) {
            others.push_back(std::async(std::launch::async, work));
        }
        work();
        for (std::future<void>& other : others) {
            other.get();
        }
        return contributions;
    }

  private:
    TContribution WriteMachine(const TStoredBatch& batch, std::size_t position) const {
        const std::size_t index = batch.first + position;
        TSiteMachine& machine = site_.machines[index];
        TContribution contribution;
        std::vector<NINVENTORY::TResource> present;
        for (const TPresence& row : batch.presences[position]) {
            NINVENTORY::TResource resource = batch.versions.Assemble(row);
            AppendParts(row, resource, index, contribution.parts);
            if (row.until == open) {
                present.push_back(std::move(resource));
            }
        }
        SortForPeople(present);
        const std::vector<TChangeRow> changes =
            FindChangesOf(machine.machine, ListChanged(batch.presences[position]), batch.versions);
        const std::vector<TDifferenceRows> differences = GroupDifferences(changes);
        machine.figures = SumUp(present);
        machine.inventories = batch.inventories[position].size();
        machine.changes = differences.size();
        machine.recentChanges = static_cast<std::size_t>(std::ranges::count_if(
            differences, [&](TDifferenceRows rows) { return IsRecent(rows.front().time); }));
        WritePages(machine, index, std::move(present), batch.inventories[position], differences);
        contribution.dayRows = MakeDayRows(machine, differences);
        for (const TInventory& inventory : batch.inventories[position]) {
            contribution.inventoryDays.push_back(GetDay(inventory.time));
        }
        return contribution;
    }

    void WritePages(const TSiteMachine& machine, std::size_t index,
                    std::vector<NINVENTORY::TResource> present, const std::vector<TInventory>& inventories,
                    const std::vector<TDifferenceRows>& differences) const {
        TMachineContent content{&machine, NINVENTORY::TReportInventory(machine.machine.key, "")};
        for (NINVENTORY::TResource& resource : present) {
            content.inventory.AddResource(std::move(resource));
        }
        content.inventories = inventories;
        content.differences = differences;
        if (const auto found = outliers_.find(machine.machine.id); found != outliers_.end()) {
            content.outliers = found->second;
        }
        if (const auto found = duplicates_.find(index); found != duplicates_.end()) {
            content.duplicates = found->second;
        }
        if (const auto found = merged_.find(machine.machine.id); found != merged_.end()) {
            content.mergedFrom = found->second;
        }
        WriteMachinePages(files_, site_, content);
    }

    bool IsRecent(TSeconds time) const { return time > site_.now - recentSpan && time <= site_.now; }

    // The rows that begin or end with a change.
    static std::vector<TPresence> ListChanged(const std::vector<TPresence>& rows) {
        std::vector<TPresence> changed;
        std::ranges::copy_if(rows, std::back_inserter(changed),
                             [](const TPresence& row) { return row.since != always || row.until != open; });
        return changed;
    }

    ISiteFiles& files_;
    TSite& site_;
    const TMergedKeys& merged_;
    std::unordered_map<TMachineId, std::span<const TOutlier>, TDigestHash> outliers_;
    std::unordered_map<std::size_t, std::vector<TDuplicate>> duplicates_;
};

// Adds what machines contribute to the site, in the order of the machines.
class TCollector {
  public:
    TCollector(TSite& site, TDaySpool& spool) : site_(site), spool_(spool) {}

    void Add(std::vector<TContribution> contributions) {
        for (TContribution& contribution : contributions) {
            for (TFoundPart& found : contribution.parts) {
                found.part.words = Share(found.words);
                found.part.kind = Share(found.kind);
                site_.parts.push_back(std::move(found.part));
            }
            for (const TDayRow& row : contribution.dayRows) {
                ++site_.days[row.day].changes.at(static_cast<std::size_t>(row.kind));
                spool_.Add(row);
            }
            for (const TDay day : contribution.inventoryDays) {
                ++site_.days[day].inventories;
            }
        }
    }

  private:
    std::uint32_t Share(const std::string& text) {
        const auto [found, isNew] = texts_.try_emplace(text, static_cast<std::uint32_t>(site_.texts.size()));
        if (isNew) {
            site_.texts.push_back(text);
        }
        return found->second;
    }

    TSite& site_;
    TDaySpool& spool_;
    std::unordered_map<std::string, std::uint32_t> texts_;
};

void SortParts(TSite& site) {
    std::vector<std::pair<std::string, TPart>> keyed;
    keyed.reserve(site.parts.size());
    for (TPart& part : site.parts) {
        std::string key = NormalizeIdentity(part.identity);
        keyed.emplace_back(std::move(key), std::move(part));
    }
    std::ranges::sort(keyed, {}, [&site](const auto& entry) {
        const TPart& part = entry.second;
        return std::tie(entry.first, part.identity, site.texts[part.words], part.since, part.machine,
                        part.until);
    });
    std::ranges::transform(keyed, site.parts.begin(), [](auto& entry) { return std::move(entry.second); });
}

// Returns the keys of the machines that were merged into others.
TMergedKeys ReadMerged(IFleetStore& store) {
    std::map<TMachineId, std::set<std::string>> sorted;
    for (const TAlias& alias : store.ReadMergedAliases(std::nullopt)) {
        sorted[alias.to].insert(alias.fromKey);
    }
    TMergedKeys merged;
    for (const auto& [machine, keys] : sorted) {
        for (const std::string& key : keys) {
            merged[machine] += (key == *keys.begin() ? "" : ", ") + key;
        }
    }
    return merged;
}

// Reads the next machines while threads write the pages of the last ones.
void WriteMachines(IFleetStore& store, unsigned threads, ISiteFiles& files, TSite& site, TDaySpool& spool) {
    const auto merged = ReadMerged(store);
    const TMachineWriter writer(files, site, merged);
    TCollector collector(site, spool);
    TBatchReader reader(store, site);
    for (TStoredBatch batch = reader.Read(); !batch.presences.empty();) {
        auto written = std::async(std::launch::async, [&] { return writer.Write(batch, threads); });
        TStoredBatch next = reader.Read();
        collector.Add(written.get());
        batch = std::move(next);
    }
}

}  // namespace

void WriteFleetSite(IFleetStore& store, const TSiteOptions& options, ISiteFiles& files) {
    std::vector<TMachine> machines = store.ReadMachines();
    TSeconds newest = 0;
    for (const TMachine& machine : machines) {
        newest = std::max(newest, machine.last);
    }
    std::vector<TOutlier> outliers = FindOutliers(store, machines);
    TSite site = MakeSite(std::move(machines), std::move(outliers), options.now.value_or(newest));
    site.duplicates = FindDuplicates(site);
    TDaySpool spool;
    WriteMachines(store, std::max(1U, options.threads), files, site, spool);
    SortParts(site);
    site.duplicates = FindDuplicates(site);
    WriteMachineLists(files, site);
    WriteModelPages(files, site);
    WriteNotablePages(files, site);
    WriteChangesPages(files, site, spool);
    WritePartPages(files, site);
    WriteSearchPage(files, site);
    WriteOverviewPage(files, site);
}

}  // namespace NFLEET
