// Passes every access on and remembers how it ended: which files a collection read, and which it was denied.
#pragma once

#include "machine/system/system_files.h"

#include <string>
#include <vector>

namespace NVORHOST {

class TAccessLog final : public ISystemFiles {
  public:
    /// One access; an `Exists` counts as ok or notFound.
    struct TAccess {
        std::string path;
        EReadStatus status;
        int cause = 0;  ///< as of TReadResult
    };

    /// `files` must outlive this object.
    explicit TAccessLog(const ISystemFiles& files) : files_(files) {}

    TReadResult<std::string> ReadText(std::string_view path) const override;
    TReadResult<std::string> ReadBytes(std::string_view path, std::size_t maxBytes) const override;
    TReadResult<std::vector<std::string>> List(std::string_view path) const override;
    TReadResult<std::string> ReadLink(std::string_view path) const override;
    bool Exists(std::string_view path) const override;

    /// Every access since the last call, in the order they were made; the record starts anew.
    std::vector<TAccess> TakeAccesses();

  private:
    template <typename T>
    TReadResult<T> Record(std::string_view path, TReadResult<T> result) const;

    const ISystemFiles& files_;
    mutable std::vector<TAccess> accesses_;  // reading does not change the machine, only what is known of it
};

}  // namespace NVORHOST
