// Files of the live machine or of a captured tree: the same paths, resolved below a folder.
#pragma once

#include "machine/system/system_files.h"
#include "os/file_descriptor.h"

#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// The resolution of paths below the root.
enum class EPathResolution {
    automatic,  ///< directly for the root "/"; else with openat2, or by walking if the kernel lacks it
    walk,       ///< name by name, as on kernels without openat2
};

class TRootedFiles final : public ISystemFiles {
  public:
    /// `root` is a folder of the running system: "/" or the top of a captured tree. If it cannot be opened,
    /// every access fails with that error.
    explicit TRootedFiles(std::string root, EPathResolution resolution = EPathResolution::automatic);

    /// Returns the folder that takes the place of "/".
    const std::string& GetRoot() const { return root_; }
    /// Returns the errno of opening the root; 0 if it is open.
    int GetRootError() const { return rootError_; }

    TReadResult<std::string> ReadText(std::string_view path) const override;
    TReadResult<std::string> ReadBytes(std::string_view path, std::size_t maxBytes) const override;
    TReadResult<std::vector<std::string>> List(std::string_view path) const override;
    TReadResult<std::string> ReadLink(std::string_view path) const override;
    bool Exists(std::string_view path) const override;

  private:
    // The top folder of a file system of the kernel, sysfs or procfs.
    struct TKernelFolder {
        std::string_view prefix;  // "/sys/"
        TFileDescriptor folder;
    };

    bool IsLive() const { return resolution_ == EPathResolution::automatic && root_ == "/"; }
    void OpenKernelFolders();
    TFileDescriptor Open(std::string_view path, int flags) const;
    TFileDescriptor OpenKernelFile(std::string_view path) const;
    TReadResult<TFileDescriptor> OpenRegularFile(std::string_view path) const;
    ssize_t ReadTarget(std::string_view path, char* target, std::size_t size) const;

    std::string root_;
    EPathResolution resolution_;
    std::vector<TKernelFolder> kernelFolders_;
    TFileDescriptor rootFolder_;
    int rootError_ = 0;
};

}  // namespace NVORHOST
