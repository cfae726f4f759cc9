// KELSG_CADAT: the class whose instances the plug-in makes. The collector declares it and commits nothing.
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
namespace NVORHOST {
namespace {

struct TResult {
    std::optional<std::string> inventory, kelId, machineType, credential;
};

constexpr TPropertyRow<TResult> resultRows[] = {
    {"InventoryRCF", &TResult::inventory, "none: the plug-in's result"},
    {"KELID", &TResult::kelId, "none: the plug-in's result"},
    {"MachineType", &TResult::machineType, "none: the plug-in's result"},
    {"Credential", &TResult::credential, "none: the plug-in's result"},
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
