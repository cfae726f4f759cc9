// A log of the requests that were made of a machine's files, and of the responses if they are wanted. It can
// be replayed in a process that never accesses the machine.
#pragma once

#include "machine/system/system_files.h"

#include <compare>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

enum class EFileOperation : std::uint8_t { readText, readBytes, list, readLink, exists };

/// An operation of ISystemFiles with its arguments.
struct TFileRequest {
    EFileOperation operation = EFileOperation::exists;
    std::string path;
    std::uint64_t maxBytes = 0;  ///< for readBytes; 0 for every other operation

    auto operator<=>(const TFileRequest&) const = default;
};

/// The result of a request. Only the member that belongs to the operation is used.
struct TFileResponse {
    TReadResult<std::string> text;                ///< for readText, readBytes and readLink
    TReadResult<std::vector<std::string>> names;  ///< for list
    bool exists = false;                          ///< for exists
};

/// Forwards every request and appends it to a log.
class TRequestLog final : public ISystemFiles {
  public:
    enum class EKept { requests, requestsAndResponses };

    struct TEntry {
        TFileRequest request;
        TFileResponse response;  ///< empty if only requests are kept
    };

    /// `files` must outlive this object.
    TRequestLog(const ISystemFiles& files, EKept kept) : files_(files), kept_(kept) {}

    TReadResult<std::string> ReadText(std::string_view path) const override;
    TReadResult<std::string> ReadBytes(std::string_view path, std::size_t maxBytes) const override;
    TReadResult<std::vector<std::string>> List(std::string_view path) const override;
    TReadResult<std::string> ReadLink(std::string_view path) const override;
    bool Exists(std::string_view path) const override;

    /// Removes the entries since the last call from the log and returns them, in the order of the requests.
    std::vector<TEntry> TakeEntries();

  private:
    TFileResponse& Append(EFileOperation operation, std::string_view path, std::uint64_t maxBytes = 0) const;
    TReadResult<std::string> AppendText(EFileOperation operation, std::string_view path,
                                        std::uint64_t maxBytes, TReadResult<std::string> result) const;

    const ISystemFiles& files_;
    EKept kept_;
    mutable std::vector<TEntry> entries_;  // reading is const: it changes the log, not the machine
};

/// Serves requests from a log. A request that is not in it ends as `timedOut`.
class TLoggedFiles final : public ISystemFiles {
  public:
    /// A later response to the same request replaces an earlier one, unless the later one has timed out.
    void Add(TFileRequest request, TFileResponse response);

    TReadResult<std::string> ReadText(std::string_view path) const override;
    TReadResult<std::string> ReadBytes(std::string_view path, std::size_t maxBytes) const override;
    TReadResult<std::vector<std::string>> List(std::string_view path) const override;
    TReadResult<std::string> ReadLink(std::string_view path) const override;
    bool Exists(std::string_view path) const override;

  private:
    const TFileResponse* Find(EFileOperation operation, std::string_view path,
                              std::uint64_t maxBytes = 0) const;
    TReadResult<std::string> GetText(EFileOperation operation, std::string_view path,
                                     std::uint64_t maxBytes = 0) const;

    std::map<TFileRequest, TFileResponse> responses_;
};

/// Makes the request of `files` and drops the result, for implementations that record what passes through
/// them.
void Repeat(const TFileRequest& request, const ISystemFiles& files);

}  // namespace NVORHOST
