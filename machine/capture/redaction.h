// Takes what identifies the machine out of a capture: serial numbers, UUIDs, world-wide names, MAC and IP
// addresses, host and user names give way to pseudonyms; everything else stays.
#pragma once

#include "machine/capture/capture_tree.h"
#include "machine/capture/identity_texts.h"
#include "machine/parse/smbios_table.h"
#include "machine/replay/capture_answers.h"

#include <optional>
#include <string>

namespace NVORHOST {

/// What was learnt of a machine while its capture was redacted.
struct TRedactedMachine {
    TIdentityTexts identities;
    TSmbiosVersion smbiosVersion{2, 0};
};

/// In the contents of files, in names and in targets of links alike. What is collected from the redacted tree
/// differs from the original in values that identify, and in nothing else.
TRedactedMachine Redact(TPseudonyms::TKey key, TCaptureTree& tree, TCaptureAnswers& answers);

/// An identity that the redaction missed.
struct TIdentityLeft {
    EIdentityKind kind = EIdentityKind::serialNumber;
    std::string path;
};

/// Searches every name, content and target of a link for every identity of the machine, in every writing;
/// absent when none is left.
std::optional<TIdentityLeft> FindIdentityLeft(const TRedactedMachine& machine, const TCaptureTree& tree);

}  // namespace NVORHOST
