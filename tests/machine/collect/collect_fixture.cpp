#include "tests/machine/collect/collect_fixture.h"

#include <stdexcept>

namespace NVORHOST {

TCIMDateTime CollectionTime() {
    return *TCIMDateTime::FromText("20240301120000.000000+060");
}

const TCollectReport& TCollected::GetReport(std::string_view collector) const {
    for (const TCollectReport& report : reports) {
        if (report.collector == collector) {
            return report;
        }
    }
    throw std::out_of_range("no such collector: " + std::string(collector));
}

std::size_t TCollected::CountInstances(std::string_view className) const {
    return target.FindClass(className)->GetInstances().size();
}

std::string TCollected::Get(std::string_view className, std::string_view property,
                            std::size_t instance) const {
    constexpr unsigned char decimal = 10;
    const TCIMValue* value = target.FindClass(className)->GetInstances().at(instance)->Find(property);
    return value == nullptr ? "absent" : value->ToString(decimal);
}

std::vector<std::string> TCollected::GetAll(std::string_view className, std::string_view property) const {
    std::vector<std::string> values;
    for (std::size_t i = 0; i < CountInstances(className); ++i) {
        values.push_back(Get(className, property, i));
    }
    return values;
}

void Collect(const ISystemFiles& files, const ISystemCalls& calls, TCollected& collected) {
    const TCollectContext context{files, calls, collected.target, CollectionTime()};
    collected.reports = CollectAll(context);
}

void Collect(std::string_view tree, TCollected& collected) {
    const TMachine machine = ParseMachineTree(tree);
    Collect(machine.files, machine.calls, collected);
}

}  // namespace NVORHOST
