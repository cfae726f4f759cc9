// Decides how sending continues after one transfer.
#pragma once

#include "sending/transfer.h"

#include <string>

namespace NVORHOST {

enum class EVerdict {
    arrived,  ///< the document is on the server
    retry,    ///< the same document may arrive later
    refused,  ///< the server does not accept this document; others may arrive
    hopeless  ///< no document can arrive before someone corrects a setting
};

/// Maps the result of a transfer to its consequence: a status from 200 to 299 means that the document has
/// arrived; connections that fail and the statuses 408, 429 and 500 to 599 are worth another attempt; a
/// redirect, a certificate that is not accepted and a failure of this machine concern all documents; every
/// other status refuses one document.
EVerdict Judge(const TTransferResult& result);

/// Describes a result other than `arrived` in one line.
std::string DescribeResult(const TTransferResult& result);

}  // namespace NVORHOST
