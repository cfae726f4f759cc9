#include "machine/collect/processor/processor_node.h"

#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/parse/cpu_list.h"

#include <algorithm>

namespace NVORHOST {
namespace {

TProcessorNodes ReadNodes(TCollection& collection) {
    constexpr std::string_view parent = "/sys/devices/system/node";
    constexpr std::string_view prefix = "node";
    const ISystemFiles& files = collection.GetFiles();
    TProcessorNodes nodes;
    for (const std::string& name : files.List(parent).value) {
        const auto number = name.starts_with(prefix)
                                ? ParseNumber<std::uint16_t>(std::string_view(name).substr(prefix.size()))
                                : std::nullopt;
        if (!number) {
            continue;
        }
        const auto list = ReadAttribute(files, std::string(parent) + "/" + name + "/cpulist");
        nodes.emplace(*number, ParseCpuList(list.value_or("")));
    }
    return nodes;
}

}  // namespace

const TProcessorNodes& GetProcessorNodes(TCollection& collection) {
    return collection.ReadOnce(ReadNodes);
}

std::optional<std::vector<std::uint16_t>> FindNodes(const TProcessorNodes& nodes,
                                                    const std::vector<std::uint32_t>& cpus) {
    std::vector<std::uint16_t> found;
    for (const auto& [node, members] : nodes) {
        if (std::ranges::find_first_of(members, cpus) != members.end()) {
            found.push_back(node);
        }
    }
    return found.empty() ? std::nullopt : std::optional(std::move(found));
}

}  // namespace NVORHOST
