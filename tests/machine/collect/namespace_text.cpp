#include "tests/machine/collect/namespace_text.h"

namespace NVORHOST {

std::string ToText(const TMemoryNamespace& source) {
    constexpr unsigned char decimal = 10;
    std::string text;
    for (const auto& cimClass : source.GetClasses()) {
        const auto& instances = cimClass->GetInstances();
        for (std::size_t i = 0; i < instances.size(); ++i) {
            for (const TPropertyView property : instances[i]->GetProperties()) {
                text += cimClass->GetName() + "[" + std::to_string(i) + "]." + property.name + " = " +
                        property.value.GetType().ToString() + " " + property.value.ToString(decimal) + "\n";
            }
        }
    }
    return text;
}

}  // namespace NVORHOST
