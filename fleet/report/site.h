// What the pages of a site are made from: a few facts about each machine, and what was found in all of them.
#pragma once

#include "fleet/ask/outliers.h"
#include "fleet/model/rows.h"
#include "fleet/report/machine_facts.h"
#include "fleet/report/site_paths.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace NFLEET {

inline constexpr TSeconds secondsOfDay = 86400;
/// Machines without an inventory for longer than that are stale.
inline constexpr TSeconds staleAfter = 7 * secondsOfDay;
/// Changes of that span before now are recent.
inline constexpr TSeconds recentSpan = 7 * secondsOfDay;

/// One machine as lists and charts show it.
struct TSiteMachine {
    TMachine machine;
    std::string name;
    TMachineFigures figures{};
    std::size_t inventories = 0;
    std::size_t changes = 0;
    std::size_t recentChanges = 0;
    std::size_t outliers = 0;
};

/// The machines of one model; of all machines without one if `name` is empty.
struct TModel {
    std::string name;
    std::vector<std::string> vendors{};   ///< in the order of bytes
    std::vector<std::size_t> machines{};  ///< indices, in the order of names
};

/// One serial number, address or other identity of a part in a machine, over the time in which it had that.
struct TPart {
    std::string identity;
    std::uint32_t machine = 0;  ///< index
    std::uint32_t words = 0;    ///< index in TSite::texts: what the part is, for people
    std::uint32_t kind = 0;     ///< index in TSite::texts: parts of one kind with one identity are one part
    TSeconds since = always;
    TSeconds until = open;
    bool isUnique = false;  ///< two machines that have it at the same time are worth a look
};

/// The kinds of changes that days are drawn by.
enum class EChangeKind { part, firmware, system };
inline constexpr std::size_t changeKinds = 3;

struct TDayFigures {
    std::array<std::size_t, changeKinds> changes{};
    std::size_t inventories = 0;

    std::size_t GetChanges() const { return changes[0] + changes[1] + changes[2]; }
};

/// An identity that several machines have.
struct TDuplicate {
    std::string words;  ///< "UUID", "name", "memory module 16 GiB"
    std::string identity;
    std::vector<std::size_t> machines{};  ///< indices, in the order of names
};

struct TSite {
    TSeconds now = 0;                      ///< what ages are counted from
    TSeconds newest = 0;                   ///< time of the newest inventory; 0 for a fleet without any
    std::vector<TSiteMachine> machines{};  ///< by name and key
    std::unordered_map<TMachineId, std::size_t, TDigestHash> indices{};
    std::vector<TModel> models{};  ///< the largest first, the unknown one last
    std::vector<TOutlier> outliers{};
    std::vector<TDuplicate> duplicates{};
    std::vector<std::size_t> stale{};  ///< indices of machines, the oldest first
    std::vector<TPart> parts{};        ///< by normalized identity
    std::vector<std::string> texts{};
    std::map<TDay, TDayFigures> days{};

    bool IsStale(const TSiteMachine& machine) const { return now - machine.machine.last > staleAfter; }
};

/// Returns the machines by name, with models and stale machines, and their numbers of outliers.
TSite MakeSite(std::vector<TMachine> machines, std::vector<TOutlier> outliers, TSeconds now);

/// Returns the letters and digits of an identity in lower case, by which it is sorted and searched: serial
/// numbers are typed with and without separators.
std::string NormalizeIdentity(std::string_view identity);

/// Returns "3 machines" or "1 machine".
std::string CountOf(std::size_t count, std::string_view singular, std::string_view plural);
inline std::string CountMachines(std::size_t count) {
    return CountOf(count, "machine", "machines");
}

}  // namespace NFLEET
