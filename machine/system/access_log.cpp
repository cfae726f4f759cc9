#include "machine/system/access_log.h"

#include <utility>

namespace NVORHOST {

template <typename T>
TReadResult<T> TAccessLog::Record(std::string_view path, TReadResult<T> result) const {
    accesses_.push_back({std::string(path), result.status, result.cause});
    return result;
}

TReadResult<std::string> TAccessLog::ReadText(std::string_view path) const {
    TReadResult<std::string> result = Record(path, files_.ReadText(path));
    if (keepsTexts_ && result.value.size() <= maxTextBytes) {
        accesses_.back().text = result.value;
    }
    return result;
}

TReadResult<std::string> TAccessLog::ReadBytes(std::string_view path, std::size_t maxBytes) const {
    return Record(path, files_.ReadBytes(path, maxBytes));
}

TReadResult<std::vector<std::string>> TAccessLog::List(std::string_view path) const {
    return Record(path, files_.List(path));
}

TReadResult<std::string> TAccessLog::ReadLink(std::string_view path) const {
    return Record(path, files_.ReadLink(path));
}

bool TAccessLog::Exists(std::string_view path) const {
    const bool exists = files_.Exists(path);
    accesses_.push_back({std::string(path), exists ? EReadStatus::ok : EReadStatus::notFound});
    return exists;
}

std::vector<TAccessLog::TAccess> TAccessLog::TakeAccesses() {
    return std::exchange(accesses_, {});
}

}  // namespace NVORHOST
