#include "machine/collect/frame/attribute.h"

#include "text/numbers.h"

namespace NVORHOST {

std::optional<std::string> ReadAttribute(const ISystemFiles& files, std::string_view path) {
    const auto text = files.ReadText(path);
    const std::string_view trimmed = TrimBlanks(text.value);
    return trimmed.empty() ? std::nullopt : std::optional<std::string>(trimmed);
}

std::optional<std::string> ReadLinkedName(const ISystemFiles& files, std::string_view path) {
    const auto target = files.ReadLink(path);
    if (!target.IsOk()) {
        return std::nullopt;
    }
    return target.value.substr(target.value.rfind('/') + 1);
}

}  // namespace NVORHOST
