// A working directory of a test's own, since a request reads and writes files by their bare names.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace NTEST {

/// Makes an empty directory and goes there; the way back, and the removal, come with the end of its life.
class TWorkingDirectory {
  public:
    TWorkingDirectory();
    ~TWorkingDirectory();
    TWorkingDirectory(const TWorkingDirectory&) = delete;
    TWorkingDirectory& operator=(const TWorkingDirectory&) = delete;

    /// Removes the directory under the process's feet: from here on no file can be made in it.
    void Remove();
    bool IsEmpty() const { return std::filesystem::is_empty(path_); }

  private:
    std::filesystem::path home_;
    std::filesystem::path path_;
};

/// Throws std::runtime_error when the file cannot be read.
std::string ReadBytes(const std::string& fileName);
/// The text of a gzip file, by zlib alone. Throws std::runtime_error when it is not a complete one.
std::string Unzip(const std::string& fileName);

}  // namespace NTEST
