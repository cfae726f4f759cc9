// The files of a captured tree. An access that was denied on the machine is denied again, regardless of the
// user who reads the tree.
#pragma once

#include "machine/replay/capture_answers.h"
#include "machine/system/system_files.h"

namespace NVORHOST {

class TReplayFiles final : public ISystemFiles {
  public:
    /// Both must outlive this object.
    TReplayFiles(const ISystemFiles& files, const TCaptureAnswers& answers)
        : files_(files), answers_(answers) {}

    TReadResult<std::string> ReadText(std::string_view path) const override;
    TReadResult<std::string> ReadBytes(std::string_view path, std::size_t maxBytes) const override;
    TReadResult<std::vector<std::string>> List(std::string_view path) const override;
    TReadResult<std::string> ReadLink(std::string_view path) const override;
    bool Exists(std::string_view path) const override;

  private:
    /// Returns the failure that was captured for the access; ok if there is none.
    EReadStatus FindRefusal(EAccess access, std::string_view path) const;

    const ISystemFiles& files_;
    const TCaptureAnswers& answers_;
};

}  // namespace NVORHOST
