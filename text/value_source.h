// Where the value of a property comes from, or why there is none.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// How the search for the value of a property ended.
enum class EValueStatus : std::uint8_t {
    present,
    absent,       ///< no source has it
    denied,       ///< a source that may have it is for root only
    asleep,       ///< a source that may have it would wake a device
    timedOut,     ///< a source that may have it did not answer in time
    unread,       ///< a source that may have it failed, or is larger than the limit
    malformed,    ///< a source has something else in its place
    placeholder,  ///< a source has a placeholder of its maker
};

/// Number of properties by status; the index is the number of the EValueStatus.
using TValueCounts = std::array<std::size_t, static_cast<std::size_t>(EValueStatus::placeholder) + 1>;

struct TValueSource {
    EValueStatus status = EValueStatus::absent;
    std::vector<std::string> sources;  ///< for people, such as "type 2, 07h"; in the order of the search
    std::string passedOver;            ///< the malformed text or the placeholder; empty for other statuses
    /// The elements that an array lacks although a source may have them, such as "Serial number: denied".
    std::vector<std::string> gaps;

    bool operator==(const TValueSource&) const = default;
};

/// Returns the word for a status, such as "timed out".
std::string_view NameValueStatus(EValueStatus status);
/// Returns the status with this word; nullopt for other texts.
std::optional<EValueStatus> FindValueStatus(std::string_view word);
/// Returns what can be done about a status: "needs root"; empty if there is nothing.
std::string_view GetValueRemedy(EValueStatus status);

}  // namespace NVORHOST
