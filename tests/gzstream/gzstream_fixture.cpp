#include "gzstream_fixture.h"

#include "zlib_calls.h"

#include <stdlib.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <random>
#include <system_error>

TGzstreamFixture::TGzstreamFixture() {
    std::string name = (std::filesystem::temp_directory_path() / "gzstream-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), name);
    }
    folder_ = name;
    ZlibCalls() = {};
}

TGzstreamFixture::~TGzstreamFixture() {
    std::error_code ignored;  // A folder that cannot be removed does not fail the test.
    std::filesystem::remove_all(folder_, ignored);
}

std::string TGzstreamFixture::Path(std::string_view name) const {
    return (folder_ / name).string();
}

std::string TGzstreamFixture::Unzip(const std::string& path) {
    std::string text;
    gzFile file = gzopen(path.c_str(), "rb");
    if (file == nullptr) {
        ADD_FAILURE() << "cannot open " << path;
        return text;
    }
    char block[5000];
    int got = 0;
    while ((got = gzread(file, block, sizeof block)) > 0) {
        text.append(block, static_cast<std::size_t>(got));
    }
    EXPECT_EQ(got, 0) << path << " is damaged";
    EXPECT_EQ(gzdirect(file), 0) << path << " is not a gzip file";
    EXPECT_EQ(gzclose(file), Z_OK) << path << " breaks off";
    return text;
}

void TGzstreamFixture::Zip(const std::string& path, std::string_view text) {
    gzFile file = gzopen(path.c_str(), "wb");
    ASSERT_NE(file, nullptr) << path;
    EXPECT_EQ(gzwrite(file, text.data(), static_cast<unsigned>(text.size())), static_cast<int>(text.size()));
    EXPECT_EQ(gzclose(file), Z_OK);
}

std::string TGzstreamFixture::ReadBytes(const std::string& path) {
    std::ifstream file(path, std::ios_base::binary);
    EXPECT_TRUE(file.is_open()) << path;
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void TGzstreamFixture::WriteBytes(const std::string& path, std::string_view bytes) {
    std::ofstream file(path, std::ios_base::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    EXPECT_TRUE(file.good()) << path;
}

std::string TGzstreamFixture::RandomBytes(std::size_t size, unsigned seed) {
    std::mt19937 random(seed);
    std::string bytes(size, '\0');
    std::generate(bytes.begin(), bytes.end(), [&random] { return static_cast<char>(random() & 0xFF); });
    return bytes;
}

std::string TGzstreamFixture::Repeated(std::string_view text, std::size_t size) {
    std::string repeated;
    while (repeated.size() < size) {
        repeated += text;
    }
    repeated.resize(size);
    return repeated;
}
