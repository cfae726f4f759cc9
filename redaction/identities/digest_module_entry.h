// The only function that the module of the keyed digest exports.
#pragma once

#include "redaction/identities/keyed_digest.h"

namespace NVORHOST {

/// The type of the exported symbol `digestEntryName`, which returns an object that the caller owns.
using TDigestEntry = IKeyedDigest* (*)(const TDigestKey& key);

constexpr char digestEntryName[] = "NVORHOST_MakeKeyedDigest";

}  // namespace NVORHOST
