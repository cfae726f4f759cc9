#include "machine/capture/file_recorder.h"

#include "os/path_walk.h"

#include <utility>

namespace NVORHOST {

const std::optional<std::string>& TFileRecorder::FindLinkTarget(const std::string& path) const {
    const auto [place, isNew] = linkTargets_.try_emplace(path);
    if (isNew) {
        auto target = files_.ReadLink(path);
        if (target.IsOk()) {
            tree_.AddLink(path, target.value);
            place->second = std::move(target.value);
        }
    }
    return place->second;
}

std::string TFileRecorder::Resolve(std::string_view path, bool followsLast) const {
    TPendingNames names(path);
    std::string resolved;
    int links = 0;
    while (!names.IsEmpty()) {
        const std::string name = names.Pop();
        if (name == "..") {
            resolved.erase(std::min(resolved.rfind('/'), resolved.size()));
            continue;
        }
        std::string next = resolved + "/" + name;
        const bool follows = followsLast || !names.IsEmpty();
        const auto& target = FindLinkTarget(next);
        if (!target || !follows || ++links > maxLinksOnPath) {
            resolved = std::move(next);
            continue;
        }
        if (target->starts_with('/')) {
            resolved.clear();
        }
        names.PushPath(*target);
    }
    return resolved;
}

void TFileRecorder::KeepRefusal(EAccess access, std::string_view path, EReadStatus status) const {
    refusals_.emplace(TPathAccess{access, std::string(path)}, status);
}

TReadResult<std::string> TFileRecorder::ReadText(std::string_view path) const {
    auto text = ReadBytes(path, maxFileBytes + 1);
    if (text.value.size() <= maxFileBytes) {
        return text;
    }
    KeepRefusal(EAccess::read, path, EReadStatus::failed);
    return {EReadStatus::failed, {}, std::string(path) + ": larger than any file worth reading"};
}

TReadResult<std::string> TFileRecorder::ReadBytes(std::string_view path, std::size_t maxBytes) const {
    const std::string resolved = Resolve(path, /*followsLast=*/true);
    const auto known = contents_.find(resolved);
    if (known != contents_.end() && (known->second.isWhole || known->second.bytes.size() >= maxBytes)) {
        return {EReadStatus::ok, known->second.bytes.substr(0, maxBytes), {}};
    }
    auto result = files_.ReadBytes(path, maxBytes);
    if (result.IsOk()) {
        contents_[resolved] = {result.value, /*isWhole=*/result.value.size() < maxBytes};
        tree_.AddFile(resolved, result.value);
    } else {
        KeepRefusal(EAccess::read, path, result.status);
    }
    return result;
}

TReadResult<std::vector<std::string>> TFileRecorder::List(std::string_view path) const {
    const std::string resolved = Resolve(path, /*followsLast=*/true);
    if (const auto known = lists_.find(resolved); known != lists_.end()) {
        return {EReadStatus::ok, known->second, {}};
    }
    auto result = files_.List(path);
    if (!result.IsOk()) {
        KeepRefusal(EAccess::list, path, result.status);
        return result;
    }
    tree_.AddFolder(resolved);
    for (const std::string& name : result.value) {
        tree_.AddName(resolved + "/" + name);
    }
    lists_[resolved] = result.value;
    return result;
}

TReadResult<std::string> TFileRecorder::ReadLink(std::string_view path) const {
    const std::string resolved = Resolve(path, /*followsLast=*/false);
    if (const auto& known = FindLinkTarget(resolved)) {
        return {EReadStatus::ok, *known, {}};
    }
    auto result = files_.ReadLink(path);
    if (result.status == EReadStatus::failed && files_.Exists(path)) {
        tree_.AddName(resolved);  // the path is not a link in the tree either
    } else {
        KeepRefusal(EAccess::readLink, path, result.status);
    }
    return result;
}

bool TFileRecorder::Exists(std::string_view path) const {
    const std::string resolved = Resolve(path, /*followsLast=*/true);
    const bool exists = files_.Exists(path);
    if (exists) {
        tree_.AddName(resolved);
    } else {
        KeepRefusal(EAccess::exists, path, EReadStatus::notFound);
    }
    return exists;
}

std::map<TPathAccess, EReadStatus> TFileRecorder::FindRefusals() const {
    std::map<TPathAccess, EReadStatus> refusals;
    for (const auto& [access, status] : refusals_) {
        const bool followsLast = access.access != EAccess::readLink;
        // A path outside the tree is not found there either. A path in the tree may have vanished from the
        // machine during the capture.
        if (status != EReadStatus::notFound || tree_.Find(Resolve(access.path, followsLast)) != nullptr) {
            refusals.emplace(access, status);
        }
    }
    return refusals;
}

}  // namespace NVORHOST
