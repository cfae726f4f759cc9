// A temporary working directory, because a request accesses files by their bare names.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace NTEST {

/// Creates an empty directory and changes into it; on destruction, changes back and removes it.
class TWorkingDirectory {
  public:
    TWorkingDirectory();
    ~TWorkingDirectory();
    TWorkingDirectory(const TWorkingDirectory&) = delete;
    TWorkingDirectory& operator=(const TWorkingDirectory&) = delete;

    /// Removes the current directory, so that no file can be created in it.
    void Remove();
    bool IsEmpty() const { return std::filesystem::is_empty(path_); }

  private:
    std::filesystem::path home_;
    std::filesystem::path path_;
};

/// Throws std::runtime_error if the file cannot be read.
std::string ReadBytes(const std::string& fileName);
/// Returns the text of a gzip file, read with zlib alone. Throws std::runtime_error if the file is
/// incomplete.
std::string Unzip(const std::string& fileName);

}  // namespace NTEST
