// Forwards every access and logs its outcome: the files that a collection read, and those that it was denied.
#pragma once

#include "machine/system/system_files.h"

#include <string>
#include <vector>

namespace NVORHOST {

class TAccessLog final : public ISystemFiles {
  public:
    /// One access; `Exists` is logged as ok or notFound.
    struct TAccess {
        std::string path;
        EReadStatus status;
        int cause = 0;       ///< errno, as in TReadResult
        std::string text{};  ///< what ReadText returned, if short texts are kept
    };

    /// The longest text that is kept, in bytes: an attribute has one line.
    static constexpr std::size_t maxTextBytes = 256;

    /// `files` must outlive this object.
    explicit TAccessLog(const ISystemFiles& files, bool keepsTexts = false)
        : files_(files), keepsTexts_(keepsTexts) {}

    TReadResult<std::string> ReadText(std::string_view path) const override;
    TReadResult<std::string> ReadBytes(std::string_view path, std::size_t maxBytes) const override;
    TReadResult<std::vector<std::string>> List(std::string_view path) const override;
    TReadResult<std::string> ReadLink(std::string_view path) const override;
    bool Exists(std::string_view path) const override;

    /// Removes the accesses since the last call from the log and returns them in order.
    std::vector<TAccess> TakeAccesses();

  private:
    template <typename T>
    TReadResult<T> Record(std::string_view path, TReadResult<T> result) const;

    const ISystemFiles& files_;
    bool keepsTexts_;
    mutable std::vector<TAccess> accesses_;  // reading is const: it changes the log, not the machine
};

}  // namespace NVORHOST
