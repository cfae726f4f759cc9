// The instances that block devices have, by the names of the kernel, so that others can refer to them.
#pragma once

#include "machine/collect/frame/cim_class.h"
#include "machine/collect/storage/disk_partition.h"
#include "machine/system/system_files.h"

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace NVORHOST {

class TCollection;

/// References to disks, partitions and software volumes, by kernel name.
using TBlockInstances = std::map<std::string, TCimReference, std::less<>>;

/// Returns the instances of all block devices that have one. They are found at the first call.
const TBlockInstances& GetBlockInstances(TCollection& collection);

/// Returns the names of the devices that the block device `kernelName` directly is on.
std::vector<std::string> ListBlockMembers(const ISystemFiles& files, const std::string& kernelName);

/// Appends `member` to `found` if it has an instance, or else the nearest devices below it that have one.
/// `seen` holds the names so far and ends a circle, which no kernel makes.
void AppendBlockInstances(const ISystemFiles& files, const TBlockInstances& instances,
                          const std::string& member, std::set<std::string>& seen,
                          std::vector<std::string>& found);

}  // namespace NVORHOST
