#include "fleet/report/site_script.h"
#include "fleet/report/site_style.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <array>
#include <cstddef>
#include <string>

namespace NFLEET {
namespace {

std::string DigestOfBytes(std::string_view text) {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int size = 0;
    EXPECT_EQ(EVP_Digest(text.data(), text.size(), digest.data(), &size, EVP_sha256(), nullptr), 1);
    std::array<unsigned char, std::size_t{2} * EVP_MAX_MD_SIZE> encoded{};
    const int length = EVP_EncodeBlock(encoded.data(), digest.data(), static_cast<int>(size));
    return {encoded.begin(), encoded.begin() + length};
}

TEST(SiteTexts, DigestsAreThoseOfTheTexts) {
    EXPECT_EQ(GetSiteStyleDigest(), DigestOfBytes(GetSiteStyle()));
    EXPECT_EQ(GetSiteScriptDigest(), DigestOfBytes(GetSiteScript()));
}

TEST(SiteTexts, HaveNoMarkupAndLoadNothing) {
    for (const char* text : {"<", "&", "url(", "@import", "fetch", "import(", "eval", "innerHTML"}) {
        EXPECT_EQ(GetSiteStyle().find(text), std::string_view::npos) << text;
        EXPECT_EQ(GetSiteScript().find(text), std::string_view::npos) << text;
    }
}

}  // namespace
}  // namespace NFLEET
