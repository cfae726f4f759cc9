// Takes what identifies the machine out of a capture: serial numbers, UUIDs, world-wide names, MAC and IP
// addresses, host and user names give way to pseudonyms; everything else stays.
#pragma once

#include "vorhost/capture/captured_tree.h"
#include "vorhost/capture/pseudonyms.h"
#include "vorhost/system/captured_answers.h"

namespace NVORHOST {

/// In the contents of files, in names and in targets of links alike. What is collected from the redacted tree
/// differs from the original in values that identify, and in nothing else.
void Redact(TPseudonyms::TKey key, TCapturedTree& tree, TCapturedAnswers& answers);

}  // namespace NVORHOST
