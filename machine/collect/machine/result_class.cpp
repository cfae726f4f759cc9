#include "machine/collect/machine/result_class.h"

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

constexpr TClassShape classes[] = {
    MakeShape<TResult, resultRows>("KELSG_CADAT"),
};

constexpr std::span<const TSourcePattern> sourcePatterns;  // a declaration, no collection

}  // namespace

std::span<const TClassShape> GetResultClasses() {
    return classes;
}

std::span<const TSourcePattern> GetResultSources() {
    return sourcePatterns;
}

void CollectResultClass(TCollection&) {}

}  // namespace NVORHOST
