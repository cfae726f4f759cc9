#include "inventory/read/content.h"

#include <gtest/gtest.h>

namespace NINVENTORY {
namespace {

TEST(Content, IsRecognisedByTheRootElement) {
    EXPECT_EQ(RecognizeContent("<?xml version=\"1.0\"?>\n<ResourceCollection xmlns=\"u\">\n"
                               "<ResourceCollectionContext>\n"),
              EContent::hardware);
    EXPECT_EQ(RecognizeContent("<ResourceCollection a=\"1\">\n<ResourceCollectionCriteria b=\"2\">\n"),
              EContent::systemInformation);
    EXPECT_EQ(RecognizeContent("<!-- saved -->\n<CIM CIMVERSION=\"2.0\">"), EContent::cimXml);
}

TEST(Content, MayFollowAByteOrderMark) {
    EXPECT_EQ(RecognizeContent("\xEF\xBB\xBF<?xml version=\"1.0\"?><CIM>"), EContent::cimXml);
}

TEST(Content, IsUnknownForOtherTexts) {
    for (const char* text : {"", "{}", "<html>", "<ResourceCollections>", "<CIMOBJECT>", "<?xml", "<"}) {
        EXPECT_EQ(RecognizeContent(text), EContent::unknown) << text;
    }
}

}  // namespace
}  // namespace NINVENTORY
