// Malicious documents must be rejected quickly and in bounded memory, without fetching anything and with the
// target unchanged.
#include "cimxml_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace NVORHOST::NTEST {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

const std::string sample =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<!DOCTYPE CIM SYSTEM \"cim.dtd\">\n<!-- \xC3\xA9 -->" +
    InGroup(
        Class("<PROPERTY NAME=\"P\" TYPE=\"uint8\"><QUALIFIER NAME=\"Q\" TYPE=\"string\"><VALUE>q</VALUE>"
              "</QUALIFIER></PROPERTY>") +
        Instance("<PROPERTY NAME=\"P\" TYPE=\"uint8\"><VALUE>0x7</VALUE></PROPERTY>"
                 "<PROPERTY NAME=\"S\" TYPE=\"string\"><VALUE>\xC3\xA9&amp;&#x20AC;<![CDATA[<\xE2\x82\xAC]]>"
                 "</VALUE></PROPERTY>"
                 "<PROPERTY.ARRAY NAME=\"A\" TYPE=\"datetime\"><VALUE.ARRAY><VALUE>20240229235959.123456+060"
                 "</VALUE><VALUE.NULL/></VALUE.ARRAY></PROPERTY.ARRAY>"
                 "<PROPERTY.REFERENCE NAME=\"R\"><VALUE.REFERENCE><INSTANCENAME CLASSNAME=\"D\">"
                 "<KEYBINDING NAME=\"K\"><KEYVALUE VALUETYPE=\"numeric\">1</KEYVALUE></KEYBINDING>"
                 "</INSTANCENAME></VALUE.REFERENCE></PROPERTY.REFERENCE>"));

TEST(LoadHostile, RejectsAnEntityBombAtItsFirstLine) {
    std::string bomb = "<!DOCTYPE CIM [\n<!ENTITY a \"aaaaaaaaaa\">\n";
    for (char name = 'b'; name < 'k'; ++name) {
        bomb += std::string("<!ENTITY ") + name + " \"";
        for (int times = 0; times < 10; ++times) {
            bomb += std::string("&") + static_cast<char>(name - 1) + ";";
        }
        bomb += "\">\n";
    }
    EXPECT_EQ(LoadError(bomb + "]>" + InGroup(Instance(Property("string", "&j;")))),
              "t.xml:1: a DOCTYPE with an internal subset is not supported");
}

TEST(LoadHostile, RejectsAnyInternalSubset) {
    for (const char* subset : {"[]", " [ <!ELEMENT CIM ANY> ]", "SYSTEM \"x.dtd\" [ %x; ]",
                               "[<!ENTITY % x SYSTEM \"file:///etc/passwd\"> %x;]"}) {
        EXPECT_EQ(LoadError("<!DOCTYPE CIM " + std::string(subset) + ">" + InGroup("")),
                  "t.xml:1: a DOCTYPE with an internal subset is not supported")
            << subset;
    }
}

TEST(LoadHostile, RejectsUndeclaredEntities) {
    const std::string text = InGroup(Instance(Property("string", "&x;")));
    EXPECT_EQ(LoadError(text), "t.xml:1: class C, property P: Entity 'x' not defined");
    EXPECT_EQ(LoadError("<!DOCTYPE CIM SYSTEM \"x.dtd\">" + text),
              "t.xml:1: class C, property P: Entity 'x' not defined");
    EXPECT_THAT(LoadError("<!DOCTYPE CIM SYSTEM \"x.dtd\">" +
                          InGroup("<VALUE.OBJECT><INSTANCE CLASSNAME=\"&x;\"/></VALUE.OBJECT>")),
                StartsWith("t.xml:1: Entity 'x' not defined"));
}

TEST(LoadHostile, RejectsElementsBelowTheSixtyFourthLevel) {
    const auto deep = [](int levels) {
        std::string open = "<CIM><DECLARATION><DECLGROUP><QUALIFIER.DECLARATION>";
        for (int level = 4; level < levels; ++level) {
            open += "<x>";
        }
        return open;
    };
    EXPECT_EQ(LoadError(deep(64)), "t.xml:1: truncated document");
    EXPECT_EQ(LoadError(deep(65)), "t.xml:1: elements are nested more than 64 levels deep");
    EXPECT_EQ(LoadError(deep(100'000)), "t.xml:1: elements are nested more than 64 levels deep");
}

TEST(LoadHostile, RejectsTooLongTagsCommentsAndInstructions) {
    const std::string cause = "a tag, comment or processing instruction is longer than 65536 bytes";
    const std::string huge(100'000'000, 'x');
    EXPECT_EQ(LoadError("<CIM a=\"" + huge), "t.xml:1: " + cause);
    EXPECT_EQ(LoadError(InGroup("<!--" + huge)), "t.xml:1: " + cause);
    EXPECT_EQ(LoadError(InGroup("<?x " + huge)), "t.xml:1: " + cause);
    EXPECT_EQ(LoadError(InGroup("<!--" + std::string(60'000, 'x') + "-->")), "loaded");
}

TEST(LoadHostile, RejectsTagsWithTooManyAttributes) {
    std::string tag = "<CIM";
    for (int number = 1; number <= 64; ++number) {
        tag += " a" + std::to_string(number) + "=\"\"";
    }
    EXPECT_EQ(LoadError(tag + "/>"), "loaded");
    EXPECT_EQ(LoadError(tag + " b=\"\"/>"), "t.xml:1: a tag has more than 64 attributes");
}

TEST(LoadHostile, RejectsTooManyProperties) {
    std::string properties;
    for (int number = 1; number <= 4096; ++number) {
        properties += "<PROPERTY NAME=\"P" + std::to_string(number) + "\" TYPE=\"uint8\"/>";
    }
    EXPECT_EQ(LoadError(InGroup(Instance(properties))), "loaded");
    EXPECT_EQ(LoadError(InGroup(Instance(properties + "<PROPERTY NAME=\"Q\" TYPE=\"uint8\"/>"))),
              "t.xml:1: class C, property Q: more than 4096 properties");
    EXPECT_EQ(LoadError(InGroup(Class(properties + "<PROPERTY NAME=\"Q\" TYPE=\"uint8\"/>"))),
              "t.xml:1: class C, property Q: more than 4096 properties");
}

TEST(LoadHostile, RejectsInvalidBytesForTheEncoding) {
    const auto error = [](const std::string& bytes) {
        return LoadError(InGroup(Instance(Property("string", bytes))));
    };
    for (const char* bytes :
         {"\xFF", "\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\x80", "\xE2\x82", "\xEF\xBF\xBE"}) {
        EXPECT_THAT(error(bytes), StartsWith("t.xml:1: class C, property P: "));
    }
    EXPECT_THAT(LoadError("<?xml version=\"1.0\" encoding=\"nonsense\"?>" + InGroup("")),
                HasSubstr("encoding nonsense"));
}

TEST(LoadHostile, RejectsBytesThatCannotBeConvertedWithOneMessage) {
    const std::string head = "<?xml version=\"1.0\" encoding=\"";
    testing::internal::CaptureStderr();
    for (const char* encoding : {"UTF-7", "US-ASCII", "EUC-JP", "ISO-2022-JP"}) {
        const std::string document =
            head + encoding + "\"?>" + InGroup(Instance(Property("string", "\xFF\xFF")));
        EXPECT_THAT(LoadError(document), StartsWith("t.xml:1: ")) << encoding;
        for (const unsigned filled : {3000U, 4000U, 4096U, 5000U, 20'000U}) {
            EXPECT_THAT(LoadError(head + encoding + "\"?>" +
                                  InGroup("<!--" + std::string(filled, 'x') + "-->" +
                                          Instance(Property("string", "\xFF\xFF")))),
                        StartsWith("t.xml:1: "))
                << encoding << filled;
        }
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(LoadHostile, RejectsATruncatedDocumentInUtf16) {
    std::string text = "\xFE\xFF";
    for (const char byte : InGroup("")) {
        text += '\0';
        text += byte;
    }
    EXPECT_EQ(LoadError(text), "loaded");
    EXPECT_NE(LoadError(text.substr(0, text.size() - 1)), "loaded");
    EXPECT_NE(LoadError("<?xml version=\"1.0\" encoding=\"UTF-16\"?>" + text.substr(2)), "loaded");
}

TEST(LoadHostile, RejectsEveryPrefixOfADocument) {
    ASSERT_EQ(LoadError(sample), "loaded");
    for (std::size_t length = 0; length < sample.size(); ++length) {
        EXPECT_THAT(LoadError(sample.substr(0, length)), StartsWith("t.xml:")) << length;
    }
}

TEST(LoadHostile, HandlesEveryDocumentWithOneWrongByte) {
    for (std::size_t at = 0; at < sample.size(); ++at) {
        for (const char byte : {'\0', '<', '>', '&', '"', ']', '\x80', '\xFF', 'x'}) {
            std::string damaged = sample;
            damaged[at] = byte;
            const std::string answer = LoadError(damaged);
            EXPECT_TRUE(answer == "loaded" || answer.starts_with("t.xml:")) << at << ": " << answer;
            EXPECT_EQ(answer.find('\n'), std::string::npos) << answer;
        }
    }
}

TEST(LoadHostile, HandlesDocumentsOfRandomPieces) {
    const std::vector<std::string> pieces = {"<CIM>",
                                             "</CIM>",
                                             "<DECLARATION>",
                                             "</DECLARATION>",
                                             "<DECLGROUP>",
                                             "</DECLGROUP>",
                                             "<VALUE.OBJECT>",
                                             "</VALUE.OBJECT>",
                                             "<INSTANCE CLASSNAME=\"C\">",
                                             "</INSTANCE>",
                                             "<CLASS NAME=\"C\">",
                                             "</CLASS>",
                                             "<PROPERTY NAME=\"P\" TYPE=\"uint8\">",
                                             "</PROPERTY>",
                                             "<PROPERTY.ARRAY NAME=\"A\" TYPE=\"string\">",
                                             "</PROPERTY.ARRAY>",
                                             "<VALUE.ARRAY>",
                                             "</VALUE.ARRAY>",
                                             "<VALUE>",
                                             "</VALUE>",
                                             "<VALUE.NULL/>",
                                             "7",
                                             "<PROPERTY.REFERENCE NAME=\"R\">",
                                             "</PROPERTY.REFERENCE>",
                                             "<VALUE.REFERENCE>",
                                             "</VALUE.REFERENCE>",
                                             "<INSTANCENAME CLASSNAME=\"\">",
                                             "</INSTANCENAME>",
                                             "<KEYVALUE>",
                                             "</KEYVALUE>",
                                             "<KEYBINDING NAME=\"K\">",
                                             "</KEYBINDING>",
                                             "<CLASSNAME NAME=\"C\"/>",
                                             "<QUALIFIER NAME=\"NoxinfoEncoding\">",
                                             "</QUALIFIER>",
                                             "base64",
                                             "<![CDATA[",
                                             "]]>",
                                             "<INSTANCEPATH>",
                                             "</INSTANCEPATH>"};
    std::mt19937 random(1);
    const std::string head = "<CIM><DECLARATION><DECLGROUP><VALUE.OBJECT><INSTANCE CLASSNAME=\"C\">";
    for (int run = 0; run < 20'000; ++run) {
        std::string document = head;
        for (auto count = random() % 20; count > 0; --count) {
            document += pieces[random() % pieces.size()];
        }
        EXPECT_THAT(LoadError(document), StartsWith("t.xml:1: ")) << document;
    }
}

TEST(LoadHostile, LeavesTheTargetUnchangedIfTheLastLineIsMalformed) {
    TMemoryNamespace target;
    target.AddClass("B");
    EXPECT_THROW(LoadNamespaceFromText(documentName, InGroup(Instance("") + Instance("<x/>")), target),
                 TDocumentError);
    EXPECT_EQ(Describe(target), "class B\n");
}

}  // namespace
}  // namespace NVORHOST::NTEST
