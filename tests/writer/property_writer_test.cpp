#include "host/cim_date_time.h"
#include "host/vor_exception.h"
#include "tests/doubles/cim_doubles.h"
#include "tests/doubles/host_doubles.h"
#include "tests/writer/spy_buffer.h"
#include "writer/nox_xml_writer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <string>

namespace {

using NDOUBLES::Host;
using NDOUBLES::TInstanceDouble;
using NKELVOR20::TCIMDateTime;
using NKELVOR20::TCIMValue;
using NKELVOR20::TVORException;
using TType = TCIMValue::TCIMType;
using TWriter = TNOXXMLWriterImpl;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::ThrowsMessage;

class WriteResourceProperty : public testing::Test {
  protected:
    WriteResourceProperty() { NDOUBLES::ResetHost(); }

    /// What is written for property X of that value.
    std::string Written(const TCIMValue& value) {
        instance->Add("X", value);
        EXPECT_TRUE(writer.WriteResourceProperty("X", "X", instance));
        return out.str();
    }

    boost::shared_ptr<TInstanceDouble> instance = boost::make_shared<TInstanceDouble>();
    std::ostringstream out;
    TWriter writer{out};
};

std::string Element(const std::string& type, const std::string& value) {
    return "<Property name=\"X\" type=\"" + type + "\">\n<Value>" + value + "</Value>\n</Property>\n";
}

TEST_F(WriteResourceProperty, WritesThreeLinesForAScalar) {
    EXPECT_EQ(Written(TCIMValue(std::uint16_t{5})),
              "<Property name=\"X\" type=\"unsignedShort\">\n"
              "<Value>5</Value>\n"
              "</Property>\n");
}

TEST_F(WriteResourceProperty, TypesABoolean) {
    EXPECT_EQ(Written(TCIMValue(true)), Element("boolean", "true"));
}

TEST_F(WriteResourceProperty, TypesAnUint8) {
    EXPECT_EQ(Written(TCIMValue(std::uint8_t{255})), Element("unsignedByte", "255"));
}

TEST_F(WriteResourceProperty, TypesASint8AsInt) {
    EXPECT_EQ(Written(TCIMValue(std::int8_t{-128})), Element("int", "-128"));
}

TEST_F(WriteResourceProperty, TypesASint16) {
    EXPECT_EQ(Written(TCIMValue(std::int16_t{-5})), Element("short", "-5"));
}

TEST_F(WriteResourceProperty, TypesAnUint32) {
    EXPECT_EQ(Written(TCIMValue(std::uint32_t{5})), Element("unsignedInt", "5"));
}

TEST_F(WriteResourceProperty, TypesASint32) {
    EXPECT_EQ(Written(TCIMValue(std::int32_t{-5})), Element("int", "-5"));
}

TEST_F(WriteResourceProperty, TypesAnUint64) {
    EXPECT_EQ(Written(TCIMValue(std::uint64_t{18446744073709551615U})),
              Element("unsignedLong", "18446744073709551615"));
}

TEST_F(WriteResourceProperty, TypesASint64) {
    EXPECT_EQ(Written(TCIMValue(std::int64_t{-5})), Element("long", "-5"));
}

TEST_F(WriteResourceProperty, TypesAReal32) {
    EXPECT_EQ(Written(TCIMValue(1.5F)), Element("float", "1.5"));
}

TEST_F(WriteResourceProperty, TypesAReal64AsString) {
    EXPECT_EQ(Written(TCIMValue(1.5)), Element("string", "1.5"));
}

TEST_F(WriteResourceProperty, TypesAChar16AsString) {
    EXPECT_EQ(Written(TCIMValue(u'k')), Element("string", "k"));
}

TEST_F(WriteResourceProperty, TypesAReferenceAsString) {
    EXPECT_EQ(Written(TCIMValue::Reference("A.B=\"c\"")), Element("string", "A.B=\"c\""));
}

TEST_F(WriteResourceProperty, TypesACodeThatItDoesNotKnowByTheHostsName) {
    instance->Add("X", "v")->type = TType(static_cast<TType::ECIMType>(77));
    writer.WriteResourceProperty("X", "X", instance);
    EXPECT_EQ(out.str(), Element("string", "v"));
    out.str("");
    instance->Add("X", "v")->type = TType(static_cast<TType::ECIMType>(0));
    writer.WriteResourceProperty("X", "X", instance);
    EXPECT_EQ(out.str(), Element("string", "v"));
}

TEST_F(WriteResourceProperty, EscapesTheValue) {
    EXPECT_EQ(Written("A&B <c>"), Element("string", "A&amp;B &lt;c&gt;"));
}

TEST_F(WriteResourceProperty, WritesAnEmptyTextAsAnEmptyValue) {
    EXPECT_EQ(Written(""), Element("string", ""));
}

TEST_F(WriteResourceProperty, WritesTheElementsOfAnArrayInUpperCaseTags) {
    EXPECT_EQ(Written(TCIMValue::Array(TType::eString, {"x", "y"})),
              "<Property name=\"X\" type=\"string\">\n"
              "<VALUE.ARRAY>\n"
              "<VALUE>x</VALUE>\n"
              "<VALUE>y</VALUE>\n"
              "</VALUE.ARRAY>\n"
              "</Property>\n");
}

TEST_F(WriteResourceProperty, WritesADateInTheFormOfTheDocuments) {
    EXPECT_EQ(Written(TCIMValue(*TCIMDateTime::FromText("20090307140509.000000+060"))),
              Element("dateTime", "2009-03-07T14:05:09+01:00"));
}

TEST_F(WriteResourceProperty, ReadsADateASecondTimeAndLeavesTheValueOutWhenItIsNullThen) {
    const auto property = instance->Add("X", TCIMValue(*TCIMDateTime::FromText("20090307140509.000000+060")));
    property->before = [&property = *property, reads = 0](const std::string& call) mutable {
        if (call == "GetValue" && ++reads == 2) {
            property.value = TCIMValue(TType(TType::eDateTime));
        }
    };
    EXPECT_TRUE(writer.WriteResourceProperty("X", "X", instance));
    EXPECT_EQ(out.str(), "<Property name=\"X\" type=\"dateTime\">\n</Property>\n");
}

TEST_F(WriteResourceProperty, ThrowsTypeMismatchForAnArrayOfDatesAfterTheOpeningLine) {
    instance->Add("X", TCIMValue::Array(TType::eDateTime, {}));
    EXPECT_THROW(writer.WriteResourceProperty("X", "X", instance), TVORException);
    EXPECT_EQ(out.str(), "<Property name=\"X\" type=\"dateTime\">\n");
}

TEST_F(WriteResourceProperty, ReadsUnderTheSourceNameAndWritesUnderTheOutputName) {
    instance->Add("ElementName", "CPU 1");
    EXPECT_TRUE(writer.WriteResourceProperty("Name", "ElementName", instance));
    EXPECT_EQ(out.str(), "<Property name=\"Name\" type=\"string\">\n<Value>CPU 1</Value>\n</Property>\n");
}

TEST_F(WriteResourceProperty, DoesNotEscapeTheOutputName) {
    instance->Add("X", "v");
    writer.WriteResourceProperty("a<b>&\"c\"", "X", instance);
    EXPECT_EQ(out.str(), "<Property name=\"a<b>&\"c\"\" type=\"string\">\n<Value>v</Value>\n</Property>\n");
}

TEST_F(WriteResourceProperty, AsksTheHostInAFixedOrder) {
    const auto property = instance->Add("X", "v");
    writer.WriteResourceProperty("X", "X", instance);
    EXPECT_THAT(instance->calls, ElementsAre("GetProperty X"));
    EXPECT_THAT(property->calls, ElementsAre("IsNull", "GetValue", "GetType"));
}

TEST_F(WriteResourceProperty, FlushesTheStreamOnceForEachLine) {
    TSpyBuffer buffer;
    std::ostream stream(&buffer);
    instance->Add("X", "v");
    TWriter(stream).WriteResourceProperty("X", "X", instance);
    EXPECT_THAT(buffer.flushes, ElementsAre("<Property name=\"X\" type=\"string\">\n", "<Value>v</Value>\n",
                                            "</Property>\n"));
}

TEST_F(WriteResourceProperty, AnswersFalseAndWritesNothingForAMissingProperty) {
    EXPECT_FALSE(writer.WriteResourceProperty("X", "X", instance));
    EXPECT_EQ(out.str(), "");
}

TEST_F(WriteResourceProperty, TakesAnyCodeOfTheLookupForAMissingProperty) {
    instance->before = [](const std::string&) { throw TVORException(1); };
    EXPECT_FALSE(writer.WriteResourceProperty("X", "X", instance));
    EXPECT_EQ(out.str(), "");
}

TEST_F(WriteResourceProperty, LetsOtherExceptionsOfTheLookupPass) {
    instance->before = [](const std::string&) { throw std::runtime_error("lookup"); };
    EXPECT_THAT([&] { writer.WriteResourceProperty("X", "X", instance); },
                ThrowsMessage<std::runtime_error>("lookup"));
    EXPECT_EQ(out.str(), "");
}

TEST_F(WriteResourceProperty, LetsExceptionsBehindTheLookupPass) {
    for (const std::string throwing : {"IsNull", "GetValue", "GetType"}) {
        instance->Add("X", "v")->before = [&](const std::string& call) {
            if (call == throwing) {
                throw TVORException(1);
            }
        };
        EXPECT_THROW(writer.WriteResourceProperty("X", "X", instance), TVORException) << throwing;
        EXPECT_EQ(out.str(), "") << throwing;
    }
}

TEST_F(WriteResourceProperty, LeavesNoTraceOfAPropertyThatSaysItIsNull) {
    const auto property = instance->Add("X", "v");
    property->isNull = true;
    EXPECT_TRUE(writer.WriteResourceProperty("X", "X", instance));
    EXPECT_EQ(out.str(), "");
    EXPECT_THAT(property->calls, ElementsAre("IsNull"));
}

TEST_F(WriteResourceProperty, LeavesNoTraceOfANullValue) {
    EXPECT_EQ(Written(TCIMValue(TType(TType::eString))), "");
}

TEST_F(WriteResourceProperty, AssertsThatThePropertyHandleIsNotEmpty) {
    instance->properties["X"] = nullptr;
    EXPECT_THAT([&] { writer.WriteResourceProperty("X", "X", instance); },
                ThrowsMessage<NDOUBLES::TAssertionFailed>("px != 0"));
}

TEST_F(WriteResourceProperty, AssertsThatTheInstanceHandleIsNotEmpty) {
    EXPECT_THAT([&] { writer.WriteResourceProperty("X", "X", nullptr); },
                ThrowsMessage<NDOUBLES::TAssertionFailed>("px != 0"));
}

// ---- special forms

TEST_F(WriteResourceProperty, WritesObjectTypeFromItsSourceNameUnescaped) {
    EXPECT_FALSE(writer.WriteResourceProperty("ObjectType", "A&B", instance));
    EXPECT_EQ(out.str(), "<Property name=\"ObjectType\" type=\"string\">\n<Value>A&B</Value>\n</Property>\n");
    EXPECT_THAT(instance->calls, ElementsAre("GetProperty A&B"));
}

TEST_F(WriteResourceProperty, WritesGuidFromItsSourceNameUnescaped) {
    EXPECT_FALSE(writer.WriteResourceProperty("GUID", "<1>", instance));
    EXPECT_EQ(out.str(), "<Property name=\"GUID\" type=\"string\">\n<Value><1></Value>\n</Property>\n");
}

TEST_F(WriteResourceProperty, WritesTheOperatingSystemsNameUnescapedForTheHostName) {
    Host().operatingSystemName = [] { return "Kite & Sons\n"; };
    EXPECT_FALSE(writer.WriteResourceProperty("Name", "GetHostName", instance));
    EXPECT_EQ(out.str(),
              "<Property name=\"Name\" type=\"string\">\n<Value>Kite & Sons\n</Value>\n</Property>\n");
}

TEST_F(WriteResourceProperty, WritesTheOpeningLineBeforeItAsksForTheOperatingSystemsName) {
    Host().operatingSystemName = [this]() -> std::string {
        EXPECT_EQ(out.str(), "<Property name=\"Name\" type=\"string\">\n");
        throw std::runtime_error("no name");
    };
    EXPECT_THAT([this] { writer.WriteResourceProperty("Name", "GetHostName", instance); },
                ThrowsMessage<std::runtime_error>("no name"));
    EXPECT_EQ(out.str(), "<Property name=\"Name\" type=\"string\">\n");
}

TEST_F(WriteResourceProperty, TakesGetHostNameForAnOrdinarySourceOfOtherProperties) {
    EXPECT_FALSE(writer.WriteResourceProperty("X", "GetHostName", instance));
    EXPECT_FALSE(writer.WriteResourceProperty("Name", "GetHostname", instance));
    EXPECT_FALSE(writer.WriteResourceProperty("objectType", "A", instance));
    EXPECT_EQ(out.str(), "");
}

TEST_F(WriteResourceProperty, GoesOnWithTheLookupAfterASpecialForm) {
    instance->Add("Processor", TCIMValue(std::uint8_t{1}));
    EXPECT_TRUE(writer.WriteResourceProperty("ObjectType", "Processor", instance));
    EXPECT_EQ(out.str(),
              "<Property name=\"ObjectType\" type=\"string\">\n<Value>Processor</Value>\n</Property>\n"
              "<Property name=\"ObjectType\" type=\"unsignedByte\">\n<Value>1</Value>\n</Property>\n");
}

TEST_F(WriteResourceProperty, WritesTheSpecialFormBeforeItTouchesTheInstance) {
    EXPECT_THROW(writer.WriteResourceProperty("GUID", "1", nullptr), NDOUBLES::TAssertionFailed);
    EXPECT_EQ(out.str(), "<Property name=\"GUID\" type=\"string\">\n<Value>1</Value>\n</Property>\n");
}

// ---- product names

TEST_F(WriteResourceProperty, CutsTheModelOutOfTheProductName) {
    instance->Add("ProductName", "Server -[1234AB5]-");
    writer.WriteResourceProperty("Model", "ProductName", instance);
    EXPECT_EQ(out.str(), "<Property name=\"Model\" type=\"string\">\n<Value>AB5</Value>\n</Property>\n");
}

TEST_F(WriteResourceProperty, CutsTheMachineTypeOutOfTheProductName) {
    instance->Add("ProductName", "Server -[1234AB5]-");
    writer.WriteResourceProperty("MachineType", "ProductName", instance);
    EXPECT_EQ(out.str(),
              "<Property name=\"MachineType\" type=\"string\">\n<Value>1234</Value>\n</Property>\n");
}

TEST_F(WriteResourceProperty, EscapesWhatIsCutOut) {
    instance->Add("ProductName", "-[&1<2>3\t]");
    writer.WriteResourceProperty("MachineType", "ProductName", instance);
    writer.WriteResourceProperty("Model", "ProductName", instance);
    EXPECT_EQ(out.str(),
              "<Property name=\"MachineType\" type=\"string\">\n<Value>&amp;1&lt;2</Value>\n</Property>\n"
              "<Property name=\"Model\" type=\"string\">\n<Value>&gt;3 </Value>\n</Property>\n");
}

TEST_F(WriteResourceProperty, WritesAProductNameWithoutBracketWhole) {
    instance->Add("ProductName", "Box <1>");
    writer.WriteResourceProperty("Model", "ProductName", instance);
    EXPECT_EQ(out.str(),
              "<Property name=\"Model\" type=\"string\">\n<Value>Box &lt;1&gt;</Value>\n</Property>\n");
}

TEST_F(WriteResourceProperty, CutsNothingElse) {
    instance->Add("ProductName", "Server -[1234AB5]-");
    instance->Add("Model", "Server -[1234AB5]-");
    writer.WriteResourceProperty("X", "ProductName", instance);
    writer.WriteResourceProperty("Model", "Model", instance);
    EXPECT_EQ(out.str(),
              "<Property name=\"X\" type=\"string\">\n<Value>Server -[1234AB5]-</Value>\n</Property>\n"
              "<Property name=\"Model\" type=\"string\">\n<Value>Server -[1234AB5]-</Value>\n</Property>\n");
}

TEST_F(WriteResourceProperty, LeavesTheOpeningLineWhenTheModelLiesBeyondTheProductName) {
    instance->Add("ProductName", "Server -[79]");
    EXPECT_THROW(writer.WriteResourceProperty("Model", "ProductName", instance), std::out_of_range);
    EXPECT_EQ(out.str(), "<Property name=\"Model\" type=\"string\">\n");
}

TEST(MachineType, IsTheFourCharactersBehindTheBracket) {
    EXPECT_EQ(TWriter::GetMachineTypeFromCIM("Server -[1234AB5]-"), "1234");
    EXPECT_EQ(TWriter::GetMachineTypeFromCIM("Server -[79]"), "79]");
    EXPECT_EQ(TWriter::GetMachineTypeFromCIM("Server -["), "");
    EXPECT_EQ(TWriter::GetMachineTypeFromCIM("-[1111]--[2222]-"), "1111");
}

TEST(MachineType, IsTheWholeNameWithoutABracket) {
    EXPECT_EQ(TWriter::GetMachineTypeFromCIM("Server [1234] -"), "Server [1234] -");
    EXPECT_EQ(TWriter::GetMachineTypeFromCIM(""), "");
}

TEST(ModelNumber, IsTheThreeCharactersBehindTheMachineType) {
    EXPECT_EQ(TWriter::GetModelNumber("Server -[1234AB5]-"), "AB5");
    EXPECT_EQ(TWriter::GetModelNumber("Server -[1234A"), "A");
    EXPECT_EQ(TWriter::GetModelNumber("Server -[1234"), "");
}

TEST(ModelNumber, IsTheWholeNameWithoutABracket) {
    EXPECT_EQ(TWriter::GetModelNumber("Server"), "Server");
    EXPECT_EQ(TWriter::GetModelNumber(""), "");
}

TEST(ModelNumber, ThrowsOutOfRangeWhenTheNameEndsBeforeIt) {
    EXPECT_THAT([] { TWriter::GetModelNumber("Server -[79]"); },
                ThrowsMessage<std::out_of_range>(HasSubstr("basic_string::substr")));
}

// ---- values

class WriteValue : public testing::Test {
  protected:
    std::string Written(const TCIMValue& value) {
        writer.WriteValue(value);
        return out.str();
    }

    std::ostringstream out;
    TWriter writer{out};
};

TEST_F(WriteValue, WritesNothingForNull) {
    EXPECT_EQ(Written(TCIMValue(TType(TType::eUint8))), "");
}

TEST_F(WriteValue, WritesNothingForANullArray) {
    EXPECT_EQ(Written(TCIMValue::NullArray(TType::eUint8)), "");
}

TEST_F(WriteValue, WritesOneLineForAScalar) {
    EXPECT_EQ(Written("a\tb"), "<Value>a b</Value>\n");
}

TEST_F(WriteValue, WritesTheBracketsOfAnEmptyArray) {
    EXPECT_EQ(Written(TCIMValue::Array(TType::eString, {})), "<VALUE.ARRAY>\n</VALUE.ARRAY>\n");
}

TEST_F(WriteValue, EscapesEachElementOfAnArray) {
    EXPECT_EQ(Written(TCIMValue::Array(TType::eString, {"<", "a\r\nb", ""})),
              "<VALUE.ARRAY>\n<VALUE>&lt;</VALUE>\n<VALUE>ab</VALUE>\n<VALUE></VALUE>\n</VALUE.ARRAY>\n");
}

TEST_F(WriteValue, WritesANullElementAsAnEmptyOne) {
    EXPECT_EQ(Written(TCIMValue::Array(TType::eUint8,
                                       {TCIMValue(std::uint8_t{7}), TCIMValue(TType(TType::eUint8))})),
              "<VALUE.ARRAY>\n<VALUE>7</VALUE>\n<VALUE></VALUE>\n</VALUE.ARRAY>\n");
}

TEST_F(WriteValue, KeepsAZeroByteFromEndingTheLine) {
    EXPECT_EQ(Written(std::string("a\0b", 3)), "<Value>a b</Value>\n");
}

// ---- escaping

TEST(QuoteString, EscapesMarkup) {
    EXPECT_EQ(TWriter::QuoteString("A&B <c>"), "A&amp;B &lt;c&gt;");
}

TEST(QuoteString, EscapesAnAmpersandOnce) {
    EXPECT_EQ(TWriter::QuoteString("&amp;"), "&amp;amp;");
}

TEST(QuoteString, KeepsQuotes) {
    EXPECT_EQ(TWriter::QuoteString("say \"hi\", it's"), "say \"hi\", it's");
}

TEST(QuoteString, DropsLineEnds) {
    EXPECT_EQ(TWriter::QuoteString("\ra\r\nb\n"), "ab");
}

TEST(QuoteString, MakesATabABlank) {
    EXPECT_EQ(TWriter::QuoteString("a\tb"), "a b");
}

TEST(QuoteString, MakesEveryByteOfACharacterABlank) {
    EXPECT_EQ(TWriter::QuoteString("caf\xC3\xA9!"), "caf  !");
}

TEST(QuoteString, KeepsAnEmptyText) {
    EXPECT_EQ(TWriter::QuoteString(""), "");
}

TEST(QuoteString, HasOneRuleForEachByte) {
    for (int byte = 0; byte < 256; ++byte) {
        const std::string text = {'a', static_cast<char>(byte), 'z'};
        std::string expected = " ";
        if (byte == '&') {
            expected = "&amp;";
        } else if (byte == '<') {
            expected = "&lt;";
        } else if (byte == '>') {
            expected = "&gt;";
        } else if (byte == 0x0D || byte == 0x0A) {
            expected = "";
        } else if (byte >= 0x20 && byte <= 0x7F) {
            expected = std::string(1, static_cast<char>(byte));
        }
        EXPECT_EQ(TWriter::QuoteString(text), "a" + expected + "z") << "byte " << byte;
    }
}

// ---- types

TEST(ConvertTypeFromCIM, KnowsTwelveTypes) {
    EXPECT_EQ(TWriter::ConvertTypeFromCIM("uint32"), "unsignedInt");
    EXPECT_EQ(TWriter::ConvertTypeFromCIM("sint32"), "int");
    EXPECT_EQ(TWriter::ConvertTypeFromCIM("uint8"), "unsignedByte");
    EXPECT_EQ(TWriter::ConvertTypeFromCIM("sint8"), "int");
    EXPECT_EQ(TWriter::ConvertTypeFromCIM("uint64"), "unsignedLong");
    EXPECT_EQ(TWriter::ConvertTypeFromCIM("sint64"), "long");
    EXPECT_EQ(TWriter::ConvertTypeFromCIM("uint16"), "unsignedShort");
    EXPECT_EQ(TWriter::ConvertTypeFromCIM("sint16"), "short");
    EXPECT_EQ(TWriter::ConvertTypeFromCIM("datetime"), "dateTime");
    EXPECT_EQ(TWriter::ConvertTypeFromCIM("real32"), "float");
    EXPECT_EQ(TWriter::ConvertTypeFromCIM("string"), "string");
    EXPECT_EQ(TWriter::ConvertTypeFromCIM("boolean"), "boolean");
}

TEST(ConvertTypeFromCIM, TakesEverythingElseForAString) {
    for (const char* name : {"real64", "char16", "reference", "", "UINT32", "dateTime", "uint32 "}) {
        EXPECT_EQ(TWriter::ConvertTypeFromCIM(name), "string") << name;
    }
}

}  // namespace
