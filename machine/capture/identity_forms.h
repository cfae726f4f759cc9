// Forms of text that identify wherever they stand: UUIDs, MAC addresses, world-wide names, the portals and
// names of iSCSI.
#pragma once

#include "machine/capture/identities.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// What a text is about.
enum class ETextContext {
    published,   ///< written by the makers of hardware and software: only distinct identities are looked for
    anything,    ///< also forms, and identities that are hardly a word by chance
    identities,  ///< names of devices and hosts: also names and short serial numbers
};

/// The part of a text that identifies.
struct TFormMatch {
    std::size_t start = 0;  ///< behind a mark such as "0x" or "enx", which stays
    std::size_t length = 0;
    EIdentityKind kind = EIdentityKind::serialNumber;
};

/// The form at the start of `text`, where a word begins; `before` is the text in front of it.
std::optional<TFormMatch> MatchForm(std::string_view text, std::string_view before, ETextContext context);

/// The address of an iSCSI portal, as bytes in network order. `text` starts behind "ip-" or "ip-[", as in
/// "192.0.2.1:3260-iscsi-..."; udev may have put "_" in the place of every separator. Absent for another
/// text.
std::optional<std::string> ParsePortalAddress(std::string_view text);

}  // namespace NVORHOST
