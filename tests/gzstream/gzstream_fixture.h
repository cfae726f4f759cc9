// A temporary folder per test, gzip files in it read and written by zlib alone, and texts to put into them.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

class TGzstreamFixture : public testing::Test {
  protected:
    TGzstreamFixture();
    ~TGzstreamFixture() override;

    /// The path of `name` in the test's folder, valid as long as the test.
    std::string Path(std::string_view name = "text.gz") const;

    /// The decompressed text of a complete gzip file; a test failure when it is not one.
    static std::string Unzip(const std::string& path);
    /// Writes `text` as a complete gzip file.
    static void Zip(const std::string& path, std::string_view text);

    static std::string ReadBytes(const std::string& path);
    static void WriteBytes(const std::string& path, std::string_view bytes);

    /// `size` characters of all 256 values without a pattern, the same ones for the same `seed`.
    static std::string RandomBytes(std::size_t size, unsigned seed = 1);
    static std::string Repeated(std::string_view text, std::size_t size);

  private:
    std::filesystem::path folder_;
};
