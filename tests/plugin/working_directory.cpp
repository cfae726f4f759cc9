#include "tests/plugin/working_directory.h"

#include <zlib.h>

#include <array>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <system_error>

namespace NTEST {

TWorkingDirectory::TWorkingDirectory() : home_(std::filesystem::current_path()) {
    std::string name = (std::filesystem::temp_directory_path() / "noxinfo-test-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("cannot make a temporary directory");
    }
    path_ = name;
    std::filesystem::current_path(path_);
}

TWorkingDirectory::~TWorkingDirectory() {
    std::error_code ignored;  // a directory that cannot be removed does not fail the test
    std::filesystem::current_path(home_, ignored);
    std::filesystem::remove_all(path_, ignored);
}

void TWorkingDirectory::Remove() {
    std::filesystem::remove_all(path_);
}

std::string ReadBytes(const std::string& fileName) {
    std::ifstream file(fileName, std::ios_base::binary);
    if (!file) {
        throw std::runtime_error("cannot read " + fileName);
    }
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string Unzip(const std::string& fileName) {
    const auto close = [](gzFile file) { gzclose(file); };
    const std::unique_ptr<gzFile_s, decltype(close)> file(gzopen(fileName.c_str(), "rb"), close);
    if (!file || gzdirect(file.get()) != 0) {
        throw std::runtime_error("not a gzip file: " + fileName);
    }
    std::string text;
    std::array<char, 4096> block;
    for (int count = 0; (count = gzread(file.get(), block.data(), block.size())) != 0;) {
        if (count < 0) {
            throw std::runtime_error("damaged: " + fileName);
        }
        text.append(block.data(), static_cast<std::size_t>(count));
    }
    return text;
}

}  // namespace NTEST
