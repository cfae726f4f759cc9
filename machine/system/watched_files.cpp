#include "machine/system/watched_files.h"

namespace NVORHOST {

bool TWatchedFiles::IsRefused(std::string_view path) const {
    if (unanswered_.empty() || !unanswered_.contains(path)) {
        return false;
    }
    timedOut_.emplace(path);
    return true;
}

template <typename T, typename TAccess>
TReadResult<T> TWatchedFiles::Watch(std::string_view path, const TAccess& access) const {
    if (IsRefused(path)) {
        return {EReadStatus::timedOut, T{}, std::string(path) + ": no answer in time"};
    }
    const TAccessUnderWay underWay(place_, path);
    return access();
}

TReadResult<std::string> TWatchedFiles::ReadText(std::string_view path) const {
    return Watch<std::string>(path, [&] { return files_.ReadText(path); });
}

TReadResult<std::string> TWatchedFiles::ReadBytes(std::string_view path, std::size_t maxBytes) const {
    return Watch<std::string>(path, [&] { return files_.ReadBytes(path, maxBytes); });
}

TReadResult<std::vector<std::string>> TWatchedFiles::List(std::string_view path) const {
    auto list = Watch<std::vector<std::string>>(path, [&] { return files_.List(path); });
    if (hidden_ && hidden_->starts_with(path)) {
        std::erase_if(list.value,
                      [&](const std::string& name) { return std::string(path) + "/" + name == *hidden_; });
    }
    return list;
}

TReadResult<std::string> TWatchedFiles::ReadLink(std::string_view path) const {
    return Watch<std::string>(path, [&] { return files_.ReadLink(path); });
}

bool TWatchedFiles::Exists(std::string_view path) const {
    if (IsRefused(path)) {
        return false;
    }
    const TAccessUnderWay underWay(place_, path);
    return files_.Exists(path);
}

}  // namespace NVORHOST
