#include "machine/collect/frame/logical_processors.h"

#include "machine/collect/frame/collection.h"

namespace NVORHOST {
namespace {

std::vector<TLogicalProcessor> ReadLogicalProcessors(TCollection& collection) {
    return ParseCpuInfo(collection.GetFiles().ReadText("/proc/cpuinfo").value);
}

}  // namespace

const std::vector<TLogicalProcessor>& GetLogicalProcessors(TCollection& collection) {
    return collection.ReadOnce(ReadLogicalProcessors);
}

}  // namespace NVORHOST
