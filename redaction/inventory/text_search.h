// Searches finished files for identities, piece by piece, so that files of any size need little memory.
#pragma once

#include "documents/document_file.h"
#include "redaction/identities/identity_search.h"

#include <optional>

namespace NVORHOST {

/// Searches the decompressed bytes of a file. Identifiers of resources, which are digests, are passed over:
/// their digits may equal those of an identity by chance.
/// Absent: nullopt if there is no identity. Errors: throws TDocumentError for a file that cannot be read.
std::optional<EIdentityKind> FindInFile(TDocumentFile& file, const TIdentitySearch& search);

}  // namespace NVORHOST
