// The files of a captured tree. What was denied on the machine is denied again, whoever reads the tree.
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
    /// ok when nothing is kept of such an access.
    EReadStatus FindRefusal(EAccess access, std::string_view path) const;

    const ISystemFiles& files_;
    const TCaptureAnswers& answers_;
};

}  // namespace NVORHOST
