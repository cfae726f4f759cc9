// KELSG_CADAT: the class whose instances the plug-in makes. The collector declares it and commits nothing.
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
namespace NVORHOST {
namespace {

struct TResult {
    std::optional<std::string> inventory, kelId, machineType, credential;
};

constexpr TPropertyRow<TResult> resultRows[] = {
    {"InventoryRCF", &TResult::inventory},
    {"KELID", &TResult::kelId},
    {"MachineType", &TResult::machineType},
    {"Credential", &TResult::credential},
};

constexpr TCimClass<TResult> resultClass{"KELSG_CADAT", resultRows};
constexpr const IClassDeclaration* classes[] = {&resultClass};

constexpr std::span<const TSourcePattern> sourcePatterns;

void CollectResults(TCollection&) {}

}  // namespace

extern constinit const TCollector resultCollector{
    .name = "result",
    .description = "The class that plug-ins put their results into",
    .fills = classes,
    .reads = sourcePatterns,
    .collect = CollectResults,
};

}  // namespace NVORHOST
