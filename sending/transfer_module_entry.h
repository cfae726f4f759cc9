// The interface between the program and the transfer module, which is loaded on demand. Both are built
// together, so the interface may use C++ types.
#pragma once

#include "sending/transfer.h"

#include <memory>

namespace NVORHOST {

/// The type of the exported symbol `transferEntryName`.
using TTransferEntry = void (*)(TTransferCredentials&& credentials, std::unique_ptr<ITransfer>& transfer);

inline constexpr char transferEntryName[] = "NVORHOST_OpenTransfer";

}  // namespace NVORHOST
