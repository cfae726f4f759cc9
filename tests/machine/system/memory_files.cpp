#include "tests/machine/system/memory_files.h"

#include <vector>

namespace NVORHOST {

namespace {

std::vector<std::string> SplitPath(std::string_view path) {
    std::vector<std::string> names;
    while (!path.empty()) {
        const auto slash = path.find('/');
        const auto name = path.substr(0, slash);
        if (!name.empty() && name != ".") {
            names.emplace_back(name);
        }
        path.remove_prefix(slash == std::string_view::npos ? path.size() : slash + 1);
    }
    return names;
}

template <typename T>
TReadResult<T> Fail(EReadStatus status, std::string_view path) {
    return {status, T{}, std::string(path) + ": refused by the test"};
}

}  // namespace

void TMemoryFiles::Add(std::string_view path, TNode node) {
    std::string folder;
    nodes_.try_emplace(folder);
    for (const std::string& name : SplitPath(path)) {
        folder += "/" + name;
        nodes_.try_emplace(folder);
    }
    nodes_[folder] = std::move(node);
}

void TMemoryFiles::AddFile(std::string_view path, std::string bytes) {
    Add(path, {EKind::file, std::move(bytes), EReadStatus::ok});
}

void TMemoryFiles::AddFolder(std::string_view path) {
    Add(path, {});
}

void TMemoryFiles::AddLink(std::string_view path, std::string target) {
    Add(path, {EKind::link, std::move(target), EReadStatus::ok});
}

void TMemoryFiles::AddRefusal(std::string_view path, EReadStatus status) {
    Add(path, {EKind::refusal, {}, status});
}

void TMemoryFiles::Remove(std::string_view path) {
    std::erase_if(nodes_, [&](const auto& entry) {
        return entry.first == path || entry.first.starts_with(std::string(path) + "/");
    });
}

const TMemoryFiles::TNode* TMemoryFiles::Find(std::string_view path, bool followsLast,
                                              std::string* resolved) const {
    std::vector<std::string> pending = SplitPath(path);
    std::vector<std::string> walked;
    for (int steps = 0; !pending.empty(); ++steps) {
        const std::string name = pending.front();
        pending.erase(pending.begin());
        if (name == "..") {
            if (!walked.empty()) {
                walked.pop_back();
            }
            continue;
        }
        std::string here;
        for (const std::string& part : walked) {
            here += "/" + part;
        }
        const auto found = nodes_.find(here + "/" + name);
        if (found == nodes_.end() || steps > 1000) {
            return nullptr;
        }
        if (found->second.kind == EKind::link && (followsLast || !pending.empty())) {
            if (found->second.bytes.starts_with('/')) {
                walked.clear();
            }
            const auto target = SplitPath(found->second.bytes);
            pending.insert(pending.begin(), target.begin(), target.end());
        } else {
            walked.push_back(name);
        }
    }
    std::string place;
    for (const std::string& part : walked) {
        place += "/" + part;
    }
    const auto found = nodes_.find(place);
    if (found == nodes_.end()) {
        return nullptr;
    }
    if (resolved != nullptr) {
        *resolved = place;
    }
    return &found->second;
}

TReadResult<std::string> TMemoryFiles::ReadText(std::string_view path) const {
    return ReadBytes(path, maxFileBytes);
}

TReadResult<std::string> TMemoryFiles::ReadBytes(std::string_view path, std::size_t maxBytes) const {
    const TNode* node = Find(path, /*followsLast=*/true);
    if (node == nullptr) {
        return Fail<std::string>(EReadStatus::notFound, path);
    }
    if (node->kind != EKind::file) {
        return Fail<std::string>(node->kind == EKind::refusal ? node->refusal : EReadStatus::failed, path);
    }
    return {EReadStatus::ok, node->bytes.substr(0, maxBytes), {}};
}

TReadResult<std::vector<std::string>> TMemoryFiles::List(std::string_view path) const {
    using TNames = std::vector<std::string>;
    std::string folder;
    const TNode* node = Find(path, /*followsLast=*/true, &folder);
    if (node == nullptr || node->kind == EKind::file) {
        return Fail<TNames>(EReadStatus::notFound, path);
    }
    if (node->kind == EKind::refusal) {
        return Fail<TNames>(node->refusal, path);
    }
    TReadResult<TNames> result{EReadStatus::ok, {}, {}};
    folder += '/';
    for (auto entry = nodes_.lower_bound(folder); entry != nodes_.end() && entry->first.starts_with(folder);
         ++entry) {
        const std::string name = entry->first.substr(folder.size());
        if (name.find('/') == std::string::npos) {
            result.value.push_back(name);
        }
    }
    return result;
}

TReadResult<std::string> TMemoryFiles::ReadLink(std::string_view path) const {
    const TNode* node = Find(path, /*followsLast=*/false);
    if (node == nullptr) {
        return Fail<std::string>(EReadStatus::notFound, path);
    }
    if (node->kind != EKind::link) {
        return Fail<std::string>(EReadStatus::failed, path);
    }
    return {EReadStatus::ok, node->bytes, {}};
}

bool TMemoryFiles::Exists(std::string_view path) const {
    return Find(path, /*followsLast=*/true) != nullptr;
}

TReadResult<std::string> TFailingFiles::ReadText(std::string_view path) const {
    return FailsNow() ? Fail<std::string>(EReadStatus::failed, path) : files_.ReadText(path);
}

TReadResult<std::string> TFailingFiles::ReadBytes(std::string_view path, std::size_t maxBytes) const {
    return FailsNow() ? Fail<std::string>(EReadStatus::failed, path) : files_.ReadBytes(path, maxBytes);
}

TReadResult<std::vector<std::string>> TFailingFiles::List(std::string_view path) const {
    return FailsNow() ? Fail<std::vector<std::string>>(EReadStatus::failed, path) : files_.List(path);
}

TReadResult<std::string> TFailingFiles::ReadLink(std::string_view path) const {
    return FailsNow() ? Fail<std::string>(EReadStatus::failed, path) : files_.ReadLink(path);
}

bool TFailingFiles::Exists(std::string_view path) const {
    return !FailsNow() && files_.Exists(path);
}

}  // namespace NVORHOST
