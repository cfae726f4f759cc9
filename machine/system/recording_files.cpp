#include "machine/system/recording_files.h"

#include <utility>

namespace NVORHOST {

template <typename T>
TReadResult<T> TRecordingFiles::Record(std::string_view path, TReadResult<T> result) const {
    accesses_.push_back({std::string(path), result.status, result.cause});
    return result;
}

TReadResult<std::string> TRecordingFiles::ReadText(std::string_view path) const {
    return Record(path, files_.ReadText(path));
}

TReadResult<std::string> TRecordingFiles::ReadBytes(std::string_view path, std::size_t maxBytes) const {
    return Record(path, files_.ReadBytes(path, maxBytes));
}

TReadResult<std::vector<std::string>> TRecordingFiles::List(std::string_view path) const {
    return Record(path, files_.List(path));
}

TReadResult<std::string> TRecordingFiles::ReadLink(std::string_view path) const {
    return Record(path, files_.ReadLink(path));
}

bool TRecordingFiles::Exists(std::string_view path) const {
    const bool exists = files_.Exists(path);
    accesses_.push_back({std::string(path), exists ? EReadStatus::ok : EReadStatus::notFound});
    return exists;
}

std::vector<TRecordingFiles::TAccess> TRecordingFiles::TakeAccesses() {
    return std::exchange(accesses_, {});
}

}  // namespace NVORHOST
