// The files of a run of collect that are sent, apart from its documents.
#pragma once

#include "sending/run_record.h"
#include "vorhost/model/memory_namespace.h"

#include <boost/shared_ptr.hpp>

#include <string>
#include <vector>

namespace NVORHOST {

inline constexpr char sentSnapshotName[] = "snapshot.xml.gz";
inline constexpr char sentResultName[] = "result.xml";

/// Returns the namespace as a compressed snapshot.
std::string MakeSnapshotBytes(const TMemoryNamespace& collected);

/// Returns the instances of one class as CIM-XML.
std::string MakeResultBytes(const std::string& className,
                            const std::vector<boost::shared_ptr<TMemoryInstance>>& results);

/// Returns the record of a run at the local time of the host's services. The machine is the identity of the
/// computer system (its UUID), which only root can read on most machines, or else the name of the machine.
TRunRecord MakeRunRecord(const std::string& url, const TMemoryNamespace& collected);

}  // namespace NVORHOST
