#include "cimxml_fixture.h"
#include "equal_namespaces.h"
#include "vorhost/cimxml/save.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <random>
#include <vector>

namespace NVORHOST::NTEST {
namespace {

using TCIMType = TCIMValue::TCIMType;

std::string Save(const TMemoryNamespace& source) {
    std::ostringstream out;
    SaveNamespace(source, out);
    return out.str();
}

// Saves, loads and saves again; requires equal namespaces and equal documents.
void ExpectRoundTrip(const TMemoryNamespace& source) {
    const std::string document = Save(source);
    TMemoryNamespace loaded;
    LoadNamespaceFromText(documentName, document, loaded);
    EXPECT_TRUE(AreEqual(source, loaded)) << document;
    EXPECT_EQ(Save(loaded), document);
}

void ExpectRoundTrip(const TCIMValue& value) {
    TMemoryNamespace source;
    const auto instance =
        source.AddClass("C", {{"D", value.GetType(), value.IsArray(), value}})->NewInstance();
    instance->Set("P", value);
    instance->CommitInstance({});
    ExpectRoundTrip(source);
}

TEST(RoundTrip, KeepsSourcesAndTheStatusOfMissingValues) {
    TMemoryNamespace source;
    const auto instance =
        source.AddClass("C", {{"Serial", TCIMType::eString}, {"Size", TCIMType::eUint64}})->NewInstance();
    instance->Set("Serial", std::string("S1"));
    instance->SetSource("Serial", {EValueStatus::present, {"type 2, 07h", "/sys/a b"}, "", {"X: denied"}});
    instance->SetSource("Size", {EValueStatus::malformed, {"/sys/size"}, "<large>", {}});
    instance->CommitInstance({});
    ExpectRoundTrip(source);
    TMemoryNamespace loaded;
    LoadNamespaceFromText(documentName, Save(source), loaded);
    const auto& read = *loaded.FindClass("C")->GetInstances().at(0);
    EXPECT_EQ(*read.FindSource("Serial"),
              (TValueSource{EValueStatus::present, {"type 2, 07h", "/sys/a b"}, "", {"X: denied"}}));
    EXPECT_EQ(*read.FindSource("Size"),
              (TValueSource{EValueStatus::malformed, {"/sys/size"}, "<large>", {}}));
    EXPECT_EQ(read.Find("Size"), nullptr);
}

TEST(RoundTrip, KeepsEveryByteAlone) {
    for (int byte = 0; byte < 256; ++byte) {
        ExpectRoundTrip(TCIMValue(std::string(1, static_cast<char>(byte))));
        ExpectRoundTrip(TCIMValue::Reference(std::string(1, static_cast<char>(byte))));
    }
}

TEST(RoundTrip, KeepsEveryPairOfBytes) {
    TMemoryNamespace source;
    const auto holder = source.AddClass("C");
    for (int first = 0; first < 256; ++first) {
        const auto instance = holder->NewInstance();
        for (int second = 0; second < 256; ++second) {
            instance->Set("P" + std::to_string(second),
                          std::string{static_cast<char>(first), static_cast<char>(second)});
        }
        instance->CommitInstance({});
    }
    ExpectRoundTrip(source);
}

TEST(RoundTrip, KeepsNamesOfEveryCharacter) {
    TMemoryNamespace source;
    for (const char* text :
         {"&", "&amp;", "&#38;", "<", ">", "\"", "'", " ", "\t", "\r\n", "\xC3\xA9", "]]>"}) {
        const std::string name = std::string("a") + text + "b";
        source.AddClass(name, {{name, TCIMType::eString, false, TCIMValue("v")}});
        const auto instance = source.FindClass(name)->NewInstance();
        instance->Set(name + name, TCIMValue("w"));
        instance->CommitInstance({});
    }
    ExpectRoundTrip(source);
}

TEST(RoundTrip, KeepsEveryChar16) {
    TCIMValue::TElements units;
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        units.emplace_back(static_cast<char16_t>(unit));
    }
    ExpectRoundTrip(TCIMValue::Array(TCIMType::eChar16, units));
    for (const char16_t unit :
         {u'\0', u'\t', u'\n', u'\r', u' ', u'<', u'\x7F', u'\x80', u'\u07FF', u'\u0800', char16_t{0xD7FF},
          char16_t{0xD800}, char16_t{0xDFFF}, u'\uE000', u'\uFFFD', char16_t{0xFFFE}, char16_t{0xFFFF}}) {
        ExpectRoundTrip(TCIMValue(unit));
    }
}

TEST(RoundTrip, KeepsTextAtEveryBoundaryOfPieces) {
    for (std::size_t length = 4000; length < 4100; ++length) {
        ExpectRoundTrip(TCIMValue(std::string(length, 'x') + "\xF0\x9F\x98\x80\r\n&\xE2\x82\xAC"));
    }
}

TEST(RoundTrip, KeepsLargeValues) {
    std::string text(20'000'000, 'x');
    ExpectRoundTrip(TCIMValue(text));
    text[10'000'000] = '\0';
    ExpectRoundTrip(TCIMValue(text));
}

// Makes a random value of any type.
class TRandomValues {
  public:
    explicit TRandomValues(unsigned seed) : random_(seed) {}

    std::size_t Below(std::size_t end) { return random_() % end; }

    std::string Text() {
        static const std::vector<std::string> pieces = {"a",
                                                        " ",
                                                        "\n",
                                                        "\r",
                                                        "\t",
                                                        "&amp;",
                                                        "<![CDATA[",
                                                        "]]>",
                                                        "&",
                                                        "<",
                                                        ">",
                                                        "\"",
                                                        "\\",
                                                        "'",
                                                        "\xC3\xA9",
                                                        "\xE2\x82\xAC",
                                                        "\xF0\x9F\x98\x80",
                                                        "A.K=",
                                                        "(reference)",
                                                        "root:",
                                                        "//",
                                                        ",",
                                                        "=@",
                                                        "TRUE",
                                                        "5"};
        std::string text;
        const bool isWild = Below(4) == 0;
        for (std::size_t count = Below(8); count > 0; --count) {
            text += isWild ? std::string(1, static_cast<char>(Below(256))) : pieces[Below(pieces.size())];
        }
        return text;
    }

    TCIMValue Scalar(TCIMType type) {
        const std::uint64_t bits = random_();
        switch (type) {
            case TCIMType::eBoolean:
                return TCIMValue(bits % 2 == 0);
            case TCIMType::eChar16:
                return TCIMValue(static_cast<char16_t>(bits));
            case TCIMType::eUint8:
                return TCIMValue(static_cast<std::uint8_t>(bits));
            case TCIMType::eSint8:
                return TCIMValue(static_cast<std::int8_t>(bits));
            case TCIMType::eUint16:
                return TCIMValue(static_cast<std::uint16_t>(bits));
            case TCIMType::eSint16:
                return TCIMValue(static_cast<std::int16_t>(bits));
            case TCIMType::eUint32:
                return TCIMValue(static_cast<std::uint32_t>(bits));
            case TCIMType::eSint32:
                return TCIMValue(static_cast<std::int32_t>(bits));
            case TCIMType::eUint64:
                return TCIMValue(bits);
            case TCIMType::eSint64:
                return TCIMValue(static_cast<std::int64_t>(bits));
            case TCIMType::eReal32:
                return TCIMValue(Quiet(std::bit_cast<float>(static_cast<std::uint32_t>(bits))));
            case TCIMType::eReal64:
                return TCIMValue(std::bit_cast<double>(bits));
            case TCIMType::eDateTime:
                return TCIMValue(DateTime());
            case TCIMType::eReference:
                return TCIMValue::Reference(Text());
            default:
                return TCIMValue(Text());
        }
    }

    TCIMValue Value(TCIMType type, bool isArray) {
        if (Below(8) == 0) {
            return isArray ? TCIMValue::NullArray(type) : TCIMValue(type);
        }
        if (!isArray) {
            return Scalar(type);
        }
        TCIMValue::TElements elements;
        for (std::size_t count = Below(5); count > 0; --count) {
            elements.push_back(Below(5) == 0 ? TCIMValue(type) : Scalar(type));
        }
        return TCIMValue::Array(type, elements);
    }

    TCIMType Type() { return static_cast<TCIMType::ECIMType>(1 + Below(15)); }

  private:
    // Signalling NaNs become quiet NaNs when a float is converted to a double.
    static float Quiet(float number) {
        return std::isnan(number) ? std::bit_cast<float>(std::bit_cast<std::uint32_t>(number) | 0x400000U)
                                  : number;
    }

    TCIMDateTime DateTime() {
        std::string text = "20240229235959.123456+060";
        if (Below(2) == 0) {
            text = "00000007010203.000001:000";
        }
        const std::size_t insignificant = Below(7);
        text.replace(21 - insignificant, insignificant, insignificant, '*');
        return *TCIMDateTime::FromText(text);
    }

    std::mt19937_64 random_;
};

TEST(RoundTrip, KeepsRandomNamespaces) {
    for (unsigned seed = 0; seed < 500; ++seed) {
        TRandomValues random(seed);
        TMemoryNamespace source;
        for (std::size_t classes = random.Below(4); classes > 0; --classes) {
            std::vector<TPropertyDeclaration> declarations;
            for (std::size_t count = random.Below(6); count > 0; --count) {
                TPropertyDeclaration declaration{
                    "P" + std::to_string(count), random.Type(), random.Below(3) == 0, {}};
                if (random.Below(2) == 0) {
                    const TCIMValue value = random.Value(declaration.type, declaration.isArray);
                    declaration.defaultValue = value.IsNull() ? std::nullopt : std::optional(value);
                }
                declarations.push_back(declaration);
            }
            const auto holder = source.AddClass("C" + std::to_string(classes), declarations);
            for (std::size_t instances = random.Below(4); instances > 0; --instances) {
                const auto instance = holder->NewInstance();
                for (const auto& declaration : declarations) {
                    instance->Set(declaration.name, random.Value(declaration.type, declaration.isArray));
                }
                instance->Set("Undeclared", random.Value(random.Type(), random.Below(2) == 0));
                instance->CommitInstance({});
            }
        }
        ExpectRoundTrip(source);
    }
}

}  // namespace
}  // namespace NVORHOST::NTEST
