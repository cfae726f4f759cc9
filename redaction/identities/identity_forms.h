// Self-describing forms of identities: UUIDs, MAC addresses, world-wide names, iSCSI portals and names.
#pragma once

#include "redaction/identities/identities.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// The subject of a text, which limits the identities that are searched for in it.
enum class ETextContext {
    published,   ///< text of vendors and distributions: only identities that reach anywhere
    anything,    ///< also forms, and identities that reach words
    identities,  ///< names of devices and hosts: also identities that reach names
};

/// The part of a text that is an identity.
struct TFormMatch {
    std::size_t start = 0;  ///< after a prefix such as "0x" or "enx", which is kept
    std::size_t length = 0;
    EIdentityKind kind = EIdentityKind::serialNumber;
};

/// Returns the form at the start of `text`, which must be the start of a word; nullopt if there is none.
/// `before` is the text in front of it.
std::optional<TFormMatch> MatchForm(std::string_view text, std::string_view before, ETextContext context);

/// Parses the address of an iSCSI portal into bytes in network order; nullopt for any other text. `text`
/// starts after "ip-" or "ip-[", as in "192.0.2.1:3260-iscsi-..."; udev may have replaced each separator by
/// "_".
std::optional<std::string> ParsePortalAddress(std::string_view text);

}  // namespace NVORHOST
