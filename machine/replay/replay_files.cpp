#include "machine/replay/replay_files.h"

namespace NVORHOST {
namespace {

template <typename T>
TReadResult<T> Refuse(EReadStatus status, std::string_view path) {
    return {status, T{}, std::string(path) + ": refused on the captured machine"};
}

}  // namespace

EReadStatus TReplayFiles::FindRefusal(EAccess access, std::string_view path) const {
    const auto found = answers_.refusals.find({access, std::string(path)});
    return found == answers_.refusals.end() ? EReadStatus::ok : found->second;
}

TReadResult<std::string> TReplayFiles::ReadText(std::string_view path) const {
    const EReadStatus refusal = FindRefusal(EAccess::read, path);
    return refusal == EReadStatus::ok ? files_.ReadText(path) : Refuse<std::string>(refusal, path);
}

TReadResult<std::string> TReplayFiles::ReadBytes(std::string_view path, std::size_t maxBytes) const {
    const EReadStatus refusal = FindRefusal(EAccess::read, path);
    return refusal == EReadStatus::ok ? files_.ReadBytes(path, maxBytes) : Refuse<std::string>(refusal, path);
}

TReadResult<std::vector<std::string>> TReplayFiles::List(std::string_view path) const {
    const EReadStatus refusal = FindRefusal(EAccess::list, path);
    return refusal == EReadStatus::ok ? files_.List(path) : Refuse<std::vector<std::string>>(refusal, path);
}

TReadResult<std::string> TReplayFiles::ReadLink(std::string_view path) const {
    const EReadStatus refusal = FindRefusal(EAccess::readLink, path);
    return refusal == EReadStatus::ok ? files_.ReadLink(path) : Refuse<std::string>(refusal, path);
}

bool TReplayFiles::Exists(std::string_view path) const {
    return FindRefusal(EAccess::exists, path) == EReadStatus::ok && files_.Exists(path);
}

}  // namespace NVORHOST
