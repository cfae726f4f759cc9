// Accesses to a machine's files as a log: what was asked for and, where wanted, what the answer was. A log
// can be replayed in a process that never touches the machine.
#pragma once

#include "machine/system/system_files.h"

#include <compare>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

enum class EQuestion : std::uint8_t { readText, readBytes, list, readLink, exists };

/// One access: the operation of ISystemFiles and its arguments.
struct TQuestion {
    EQuestion kind = EQuestion::exists;
    std::string path;
    std::uint64_t maxBytes = 0;  ///< of readBytes; else 0

    auto operator<=>(const TQuestion&) const = default;
};

/// Its result; only the member that belongs to the kind of the question is used.
struct TAnswer {
    TReadResult<std::string> text;                ///< of readText, readBytes and readLink
    TReadResult<std::vector<std::string>> names;  ///< of list
    bool exists = false;                          ///< of exists
};

/// Passes every access on and keeps it.
class TLoggingFiles final : public ISystemFiles {
  public:
    enum class EKeeps { questions, questionsAndAnswers };

    struct TEntry {
        TQuestion question;
        TAnswer answer;  ///< empty when only questions are kept
    };

    /// `files` must outlive this object.
    TLoggingFiles(const ISystemFiles& files, EKeeps keeps) : files_(files), keeps_(keeps) {}

    TReadResult<std::string> ReadText(std::string_view path) const override;
    TReadResult<std::string> ReadBytes(std::string_view path, std::size_t maxBytes) const override;
    TReadResult<std::vector<std::string>> List(std::string_view path) const override;
    TReadResult<std::string> ReadLink(std::string_view path) const override;
    bool Exists(std::string_view path) const override;

    /// Every access since the last call, in the order they were made.
    std::vector<TEntry> TakeEntries();

  private:
    TAnswer& Log(EQuestion kind, std::string_view path, std::uint64_t maxBytes = 0) const;
    TReadResult<std::string> LogText(EQuestion kind, std::string_view path, std::uint64_t maxBytes,
                                     TReadResult<std::string> result) const;

    const ISystemFiles& files_;
    EKeeps keeps_;
    mutable std::vector<TEntry> entries_;  // looking at a machine does not change it
};

/// Answers from a log. A question that is not in it ends as `timedOut`.
class TAnsweredFiles final : public ISystemFiles {
  public:
    /// A later answer to the same question replaces an earlier one, unless it has timed out.
    void Add(TQuestion question, TAnswer answer);

    TReadResult<std::string> ReadText(std::string_view path) const override;
    TReadResult<std::string> ReadBytes(std::string_view path, std::size_t maxBytes) const override;
    TReadResult<std::vector<std::string>> List(std::string_view path) const override;
    TReadResult<std::string> ReadLink(std::string_view path) const override;
    bool Exists(std::string_view path) const override;

  private:
    TReadResult<std::string> FindText(EQuestion kind, std::string_view path,
                                      std::uint64_t maxBytes = 0) const;

    std::map<TQuestion, TAnswer> answers_;
};

/// Asks `files` the question and ignores the answer, for doors that keep what passes through them.
void Ask(const ISystemFiles& files, const TQuestion& question);

}  // namespace NVORHOST
