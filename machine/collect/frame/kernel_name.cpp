#include "machine/collect/frame/kernel_name.h"

#include "text/numbers.h"

namespace NVORHOST {

std::optional<std::uint32_t> FindNumberAfter(std::string_view name, std::string_view prefix) {
    return name.starts_with(prefix) ? ParseNumber<std::uint32_t>(name.substr(prefix.size())) : std::nullopt;
}

std::vector<std::string> ListNumbered(const ISystemFiles& files, std::string_view folder,
                                      std::string_view prefix) {
    std::vector<std::string> names = files.List(folder).value;
    std::erase_if(names, [&](const std::string& name) { return !FindNumberAfter(name, prefix); });
    return names;
}

}  // namespace NVORHOST
