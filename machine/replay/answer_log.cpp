#include "machine/replay/answer_log.h"

#include <utility>

namespace NVORHOST {

namespace {

bool HasTimedOut(const TAnswer& answer) {
    return answer.text.status == EReadStatus::timedOut || answer.names.status == EReadStatus::timedOut;
}

template <typename T>
TReadResult<T> NotInTheLog(std::string_view path) {
    return {EReadStatus::timedOut, T{}, std::string(path) + ": no answer in time"};
}

}  // namespace

TAnswer& TLoggingFiles::Log(EQuestion kind, std::string_view path, std::uint64_t maxBytes) const {
    return entries_.emplace_back(TEntry{{kind, std::string(path), maxBytes}, {}}).answer;
}

TReadResult<std::string> TLoggingFiles::LogText(EQuestion kind, std::string_view path, std::uint64_t maxBytes,
                                                TReadResult<std::string> result) const {
    TAnswer& answer = Log(kind, path, maxBytes);
    if (keeps_ == EKeeps::questionsAndAnswers) {
        answer.text = result;
    }
    return result;
}

TReadResult<std::string> TLoggingFiles::ReadText(std::string_view path) const {
    return LogText(EQuestion::readText, path, 0, files_.ReadText(path));
}

TReadResult<std::string> TLoggingFiles::ReadBytes(std::string_view path, std::size_t maxBytes) const {
    return LogText(EQuestion::readBytes, path, maxBytes, files_.ReadBytes(path, maxBytes));
}

TReadResult<std::vector<std::string>> TLoggingFiles::List(std::string_view path) const {
    auto result = files_.List(path);
    TAnswer& answer = Log(EQuestion::list, path);
    if (keeps_ == EKeeps::questionsAndAnswers) {
        answer.names = result;
    }
    return result;
}

TReadResult<std::string> TLoggingFiles::ReadLink(std::string_view path) const {
    return LogText(EQuestion::readLink, path, 0, files_.ReadLink(path));
}

bool TLoggingFiles::Exists(std::string_view path) const {
    const bool exists = files_.Exists(path);
    Log(EQuestion::exists, path).exists = exists;
    return exists;
}

std::vector<TLoggingFiles::TEntry> TLoggingFiles::TakeEntries() {
    return std::exchange(entries_, {});
}

void TAnsweredFiles::Add(TQuestion question, TAnswer answer) {
    const auto [place, isNew] = answers_.try_emplace(std::move(question));
    if (isNew || !HasTimedOut(answer)) {
        place->second = std::move(answer);
    }
}

TReadResult<std::string> TAnsweredFiles::FindText(EQuestion kind, std::string_view path,
                                                  std::uint64_t maxBytes) const {
    const auto found = answers_.find({kind, std::string(path), maxBytes});
    return found == answers_.end() ? NotInTheLog<std::string>(path) : found->second.text;
}

TReadResult<std::string> TAnsweredFiles::ReadText(std::string_view path) const {
    return FindText(EQuestion::readText, path);
}

TReadResult<std::string> TAnsweredFiles::ReadBytes(std::string_view path, std::size_t maxBytes) const {
    return FindText(EQuestion::readBytes, path, maxBytes);
}

TReadResult<std::vector<std::string>> TAnsweredFiles::List(std::string_view path) const {
    const auto found = answers_.find({EQuestion::list, std::string(path), 0});
    return found == answers_.end() ? NotInTheLog<std::vector<std::string>>(path) : found->second.names;
}

TReadResult<std::string> TAnsweredFiles::ReadLink(std::string_view path) const {
    return FindText(EQuestion::readLink, path);
}

bool TAnsweredFiles::Exists(std::string_view path) const {
    const auto found = answers_.find({EQuestion::exists, std::string(path), 0});
    return found != answers_.end() && found->second.exists;
}

void Ask(const ISystemFiles& files, const TQuestion& question) {
    switch (question.kind) {
        case EQuestion::readText:
            (void)files.ReadText(question.path);
            break;
        case EQuestion::readBytes:
            (void)files.ReadBytes(question.path, question.maxBytes);
            break;
        case EQuestion::list:
            (void)files.List(question.path);
            break;
        case EQuestion::readLink:
            (void)files.ReadLink(question.path);
            break;
        case EQuestion::exists:
            (void)files.Exists(question.path);
            break;
    }
}

}  // namespace NVORHOST
