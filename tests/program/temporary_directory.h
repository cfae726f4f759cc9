// A temporary directory, which is removed with its contents.
#pragma once

#include "gzstream/gzstreams.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace NVORHOST {

class TTemporaryDirectory {
  public:
    TTemporaryDirectory() : path_((std::filesystem::temp_directory_path() / "noxinfo-dir-XXXXXX").string()) {
        if (::mkdtemp(path_.data()) == nullptr) {
            throw std::runtime_error("cannot make a temporary directory");
        }
    }
    ~TTemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TTemporaryDirectory(const TTemporaryDirectory&) = delete;
    TTemporaryDirectory& operator=(const TTemporaryDirectory&) = delete;

    const std::string& GetPath() const { return path_; }
    std::string operator/(const std::string& name) const { return path_ + "/" + name; }
    bool IsEmpty() const { return std::filesystem::is_empty(path_); }
    /// The names of its entries, sorted.
    std::vector<std::string> GetNames() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(path_)) {
            names.push_back(entry.path().filename().string());
        }
        std::ranges::sort(names);
        return names;
    }

  private:
    std::string path_;
};

inline std::string ReadFile(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    if (!stream) {
        throw std::runtime_error("cannot read " + path);
    }
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}

inline std::string ReadCompressedFile(const std::string& path) {
    gzifstream stream(path.c_str(), std::ios::in | std::ios::binary);
    if (!stream) {
        throw std::runtime_error("cannot read " + path);
    }
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}

inline void WriteCompressedFile(const std::string& path, const std::string& text) {
    gzofstream stream(path.c_str(), std::ios::out | std::ios::binary);
    stream << text;
    stream.close();
    if (!stream) {
        throw std::runtime_error("cannot write " + path);
    }
}

inline void WriteFile(const std::string& path, const std::string& text) {
    std::ofstream stream(path, std::ios::binary);
    stream << text;
    if (!stream.flush()) {
        throw std::runtime_error("cannot write " + path);
    }
}

}  // namespace NVORHOST
