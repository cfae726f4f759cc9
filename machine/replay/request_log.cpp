#include "machine/replay/request_log.h"

#include <utility>

namespace NVORHOST {
namespace {

bool HasTimedOut(const TFileResponse& response) {
    return response.text.status == EReadStatus::timedOut || response.names.status == EReadStatus::timedOut;
}

template <typename T>
TReadResult<T> MakeTimedOut(std::string_view path) {
    return {EReadStatus::timedOut, T{}, std::string(path) + ": no answer in time"};
}

}  // namespace

TFileResponse& TRequestLog::Append(EFileOperation operation, std::string_view path,
                                   std::uint64_t maxBytes) const {
    return entries_.emplace_back(TEntry{{operation, std::string(path), maxBytes}, {}}).response;
}

TReadResult<std::string> TRequestLog::AppendText(EFileOperation operation, std::string_view path,
                                                 std::uint64_t maxBytes,
                                                 TReadResult<std::string> result) const {
    TFileResponse& response = Append(operation, path, maxBytes);
    if (kept_ == EKept::requestsAndResponses) {
        response.text = result;
    }
    return result;
}

TReadResult<std::string> TRequestLog::ReadText(std::string_view path) const {
    return AppendText(EFileOperation::readText, path, 0, files_.ReadText(path));
}

TReadResult<std::string> TRequestLog::ReadBytes(std::string_view path, std::size_t maxBytes) const {
    return AppendText(EFileOperation::readBytes, path, maxBytes, files_.ReadBytes(path, maxBytes));
}

TReadResult<std::vector<std::string>> TRequestLog::List(std::string_view path) const {
    auto result = files_.List(path);
    TFileResponse& response = Append(EFileOperation::list, path);
    if (kept_ == EKept::requestsAndResponses) {
        response.names = result;
    }
    return result;
}

TReadResult<std::string> TRequestLog::ReadLink(std::string_view path) const {
    return AppendText(EFileOperation::readLink, path, 0, files_.ReadLink(path));
}

bool TRequestLog::Exists(std::string_view path) const {
    const bool exists = files_.Exists(path);
    Append(EFileOperation::exists, path).exists = exists;
    return exists;
}

std::vector<TRequestLog::TEntry> TRequestLog::TakeEntries() {
    return std::exchange(entries_, {});
}

void TLoggedFiles::Add(TFileRequest request, TFileResponse response) {
    const auto [place, isNew] = responses_.try_emplace(std::move(request));
    if (isNew || !HasTimedOut(response)) {
        place->second = std::move(response);
    }
}

const TFileResponse* TLoggedFiles::Find(EFileOperation operation, std::string_view path,
                                        std::uint64_t maxBytes) const {
    const auto found = responses_.find({operation, std::string(path), maxBytes});
    return found == responses_.end() ? nullptr : &found->second;
}

TReadResult<std::string> TLoggedFiles::GetText(EFileOperation operation, std::string_view path,
                                               std::uint64_t maxBytes) const {
    const TFileResponse* response = Find(operation, path, maxBytes);
    return response == nullptr ? MakeTimedOut<std::string>(path) : response->text;
}

TReadResult<std::string> TLoggedFiles::ReadText(std::string_view path) const {
    return GetText(EFileOperation::readText, path);
}

TReadResult<std::string> TLoggedFiles::ReadBytes(std::string_view path, std::size_t maxBytes) const {
    return GetText(EFileOperation::readBytes, path, maxBytes);
}

TReadResult<std::vector<std::string>> TLoggedFiles::List(std::string_view path) const {
    const TFileResponse* response = Find(EFileOperation::list, path);
    return response == nullptr ? MakeTimedOut<std::vector<std::string>>(path) : response->names;
}

TReadResult<std::string> TLoggedFiles::ReadLink(std::string_view path) const {
    return GetText(EFileOperation::readLink, path);
}

bool TLoggedFiles::Exists(std::string_view path) const {
    const TFileResponse* response = Find(EFileOperation::exists, path);
    return response != nullptr && response->exists;
}

void Repeat(const TFileRequest& request, const ISystemFiles& files) {
    switch (request.operation) {
        case EFileOperation::readText:
            (void)files.ReadText(request.path);
            break;
        case EFileOperation::readBytes:
            (void)files.ReadBytes(request.path, request.maxBytes);
            break;
        case EFileOperation::list:
            (void)files.List(request.path);
            break;
        case EFileOperation::readLink:
            (void)files.ReadLink(request.path);
            break;
        case EFileOperation::exists:
            (void)files.Exists(request.path);
            break;
    }
}

}  // namespace NVORHOST
