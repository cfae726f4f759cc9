// A folder for one test, removed with its content.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace NVORHOST {

class TTemporaryFolder {
  public:
    TTemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "noxinfo-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("cannot make a temporary folder");
        }
        path_ = name;
    }
    TTemporaryFolder(const TTemporaryFolder&) = delete;
    TTemporaryFolder& operator=(const TTemporaryFolder&) = delete;
    ~TTemporaryFolder() {
        std::error_code ignored;  // a leftover folder fails no test
        std::filesystem::remove_all(path_, ignored);
    }

    const std::filesystem::path& GetPath() const { return path_; }

    /// Writes a file below the folder, making the folders on the way.
    void Write(const std::string& name, const std::string& bytes) const {
        std::filesystem::create_directories((path_ / name).parent_path());
        std::ofstream(path_ / name, std::ios::binary) << bytes;
    }

  private:
    std::filesystem::path path_;
};

}  // namespace NVORHOST
