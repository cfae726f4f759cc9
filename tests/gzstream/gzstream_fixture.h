// A fixture with a temporary folder, access to gzip files with zlib alone, and texts for them.
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

    /// Returns the path of `name` in the test's folder, valid until the test ends.
    std::string Path(std::string_view name = "text.gz") const;

    /// Returns the decompressed text of a gzip file. Fails the test if the file is incomplete.
    static std::string Unzip(const std::string& path);
    /// Writes `text` as a complete gzip file.
    static void Zip(const std::string& path, std::string_view text);

    static std::string ReadBytes(const std::string& path);
    static void WriteBytes(const std::string& path, std::string_view bytes);

    /// Returns `size` pseudo-random characters of all 256 values, the same for the same `seed`.
    static std::string RandomBytes(std::size_t size, unsigned seed = 1);
    static std::string Repeated(std::string_view text, std::size_t size);

  private:
    std::filesystem::path folder_;
};
