#include "inventory/compare/kernel_names.h"

#include "text/ascii.h"

#include <algorithm>
#include <iterator>

namespace NINVENTORY {
namespace {

using NVORHOST::IsAlphanumeric;
using NVORHOST::IsDigit;
using NVORHOST::IsLower;

struct TPrefix {
    std::string_view text;
    bool (*isCounter)(char);  // the characters that the kernel counts with
};

constexpr TPrefix prefixes[] = {
    {"sd", IsLower},   {"hd", IsLower},     {"vd", IsLower},  {"xvd", IsLower},
    {"nvme", IsDigit}, {"mmcblk", IsDigit}, {"dm-", IsDigit},
};

constexpr std::string_view types[] = {"DiskDrive", "DiskPartition", "LogicalVolume", "LocalFileSystem"};
constexpr std::string_view properties[] = {"Name", "Description", "ElementName"};

// Length of a partition's number after the counter: "1", or "n1p2".
std::size_t MeasureNumbers(std::string_view text) {
    std::size_t length = 0;
    while (length < text.size() &&
           (IsDigit(text[length]) || ((text[length] == 'n' || text[length] == 'p') &&
                                      length + 1 < text.size() && IsDigit(text[length + 1])))) {
        ++length;
    }
    return length;
}

// Returns the length of the kernel name that `text` starts with, and appends it without its counter.
std::size_t TakeKernelName(std::string_view text, std::string& target) {
    for (const auto& [prefix, isCounter] : prefixes) {
        if (!text.starts_with(prefix)) {
            continue;
        }
        std::size_t end = prefix.size();
        while (end < text.size() && isCounter(text[end])) {
            ++end;
        }
        const std::size_t numbers = MeasureNumbers(text.substr(end));
        const bool ends = end + numbers == text.size() || !IsAlphanumeric(text[end + numbers]);
        if (end > prefix.size() && ends) {
            target.append(prefix).append("?").append(text.substr(end, numbers));
            return end + numbers;
        }
    }
    return 0;
}

}  // namespace

std::string HideKernelNames(std::string_view text) {
    std::string hidden;
    bool isWordStart = true;
    while (!text.empty()) {
        const std::size_t length = isWordStart ? TakeKernelName(text, hidden) : 0;
        if (length == 0) {
            hidden += text.front();
        }
        isWordStart = length == 0 && !IsAlphanumeric(text.front());
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return hidden;
}

bool HasKernelNames(std::string_view resourceType, std::string_view property) {
    return std::ranges::find(types, resourceType) != std::end(types) &&
           std::ranges::find(properties, property) != std::end(properties);
}

}  // namespace NINVENTORY
