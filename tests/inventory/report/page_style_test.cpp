#include "inventory/report/page_style.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <array>
#include <cstddef>
#include <string>

namespace NINVENTORY {
namespace {

std::string DigestOfText(std::string_view text) {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int size = 0;
    EXPECT_EQ(EVP_Digest(text.data(), text.size(), digest.data(), &size, EVP_sha256(), nullptr), 1);
    std::array<unsigned char, std::size_t{2} * EVP_MAX_MD_SIZE> encoded{};
    const int length = EVP_EncodeBlock(encoded.data(), digest.data(), static_cast<int>(size));
    return {encoded.begin(), encoded.begin() + length};
}

TEST(PageStyle, DigestIsThatOfTheSheet) {
    EXPECT_EQ(GetStyleDigest(), DigestOfText(GetStyleSheet()));
}

TEST(PageStyle, HasNoMarkupAndLoadsNothing) {
    for (const char* text : {"<", "&", "url(", "@import"}) {
        EXPECT_EQ(GetStyleSheet().find(text), std::string_view::npos) << text;
    }
}

}  // namespace
}  // namespace NINVENTORY
