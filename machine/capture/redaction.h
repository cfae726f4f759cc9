// Redacts a capture: serial numbers, UUIDs, world-wide names, MAC and IP addresses, host and user names are
// replaced by pseudonyms; everything else is kept.
#pragma once

#include "machine/capture/capture_tree.h"
#include "machine/parse/smbios_table.h"
#include "machine/replay/capture_answers.h"
#include "redaction/identities/identity_texts.h"

#include <optional>
#include <string>

namespace NVORHOST {

/// The identities that were learned from a machine while its capture was redacted.
struct TRedactedMachine {
    TIdentityTexts identities;
    TSmbiosVersion smbiosVersion{2, 0};
};

/// Redacts contents of files, names, targets of links and answers alike. An inventory of the redacted tree
/// differs from the original in identities only.
TRedactedMachine Redact(TPseudonyms::TKey key, TCaptureTree& tree, TCaptureAnswers& answers);

/// Redacts an unpacked capture with the answers in it, if it has any. Errors: throws std::runtime_error for
/// two identities with one pseudonym.
TRedactedMachine RedactCapture(TPseudonyms::TKey key, TCaptureTree& tree);

/// An identity that the redaction missed.
struct TIdentityLeft {
    EIdentityKind kind = EIdentityKind::serialNumber;
    std::string path;
};

/// Searches every name, content and target of a link for every identity of the machine, in every encoding;
/// nullopt if none is left.
std::optional<TIdentityLeft> FindIdentityLeft(const TRedactedMachine& machine, const TCaptureTree& tree);

}  // namespace NVORHOST
