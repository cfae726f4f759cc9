#include "writer/property_writer.h"

#include "host/cim_date_time.h"
#include "host/vor_exception.h"
#include "tests/doubles/cim_doubles.h"
#include "tests/doubles/host_doubles.h"
#include "tests/writer/spy_buffer.h"

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
using testing::ElementsAre;
using testing::ThrowsMessage;

class PropertyWriter : public testing::Test {
  protected:
    PropertyWriter() { NDOUBLES::ResetHost(); }

    bool Write(const std::string& outputName, const std::string& sourceName) {
        const TPropertyBinding binding = BindProperty(outputName, sourceName);
        return WriteProperty(out, binding, binding.sourceName, instance);
    }

    /// Returns the text that is written for property X with that value.
    std::string Written(const TCIMValue& value) {
        instance->Add("X", value);
        EXPECT_TRUE(Write("X", "X"));
        return text.str();
    }

    boost::shared_ptr<TInstanceDouble> instance = boost::make_shared<TInstanceDouble>();
    std::ostringstream text;
    TLineOutput out{text};
};

std::string Element(const std::string& type, const std::string& value) {
    return "<Property name=\"X\" type=\"" + type + "\">\n<Value>" + value + "</Value>\n</Property>\n";
}

TEST_F(PropertyWriter, WritesThreeLinesForAScalar) {
    EXPECT_EQ(Written(TCIMValue(std::uint16_t{5})),
              "<Property name=\"X\" type=\"unsignedShort\">\n"
              "<Value>5</Value>\n"
              "</Property>\n");
}

TEST_F(PropertyWriter, TypesABoolean) {
    EXPECT_EQ(Written(TCIMValue(true)), Element("boolean", "true"));
}

TEST_F(PropertyWriter, TypesAnUint8) {
    EXPECT_EQ(Written(TCIMValue(std::uint8_t{255})), Element("unsignedByte", "255"));
}

TEST_F(PropertyWriter, TypesASint8AsInt) {
    EXPECT_EQ(Written(TCIMValue(std::int8_t{-128})), Element("int", "-128"));
}

TEST_F(PropertyWriter, TypesASint16) {
    EXPECT_EQ(Written(TCIMValue(std::int16_t{-5})), Element("short", "-5"));
}

TEST_F(PropertyWriter, TypesAnUint32) {
    EXPECT_EQ(Written(TCIMValue(std::uint32_t{5})), Element("unsignedInt", "5"));
}

TEST_F(PropertyWriter, TypesASint32) {
    EXPECT_EQ(Written(TCIMValue(std::int32_t{-5})), Element("int", "-5"));
}

TEST_F(PropertyWriter, TypesAnUint64) {
    EXPECT_EQ(Written(TCIMValue(std::uint64_t{18446744073709551615U})),
              Element("unsignedLong", "18446744073709551615"));
}

TEST_F(PropertyWriter, TypesASint64) {
    EXPECT_EQ(Written(TCIMValue(std::int64_t{-5})), Element("long", "-5"));
}

TEST_F(PropertyWriter, TypesAReal32) {
    EXPECT_EQ(Written(TCIMValue(1.5F)), Element("float", "1.5"));
}

TEST_F(PropertyWriter, TypesAReal64AsString) {
    EXPECT_EQ(Written(TCIMValue(1.5)), Element("string", "1.5"));
}

TEST_F(PropertyWriter, TypesAChar16AsString) {
    EXPECT_EQ(Written(TCIMValue(u'k')), Element("string", "k"));
}

TEST_F(PropertyWriter, TypesAReferenceAsString) {
    EXPECT_EQ(Written(TCIMValue::Reference("A.B=\"c\"")), Element("string", "A.B=\"c\""));
}

TEST_F(PropertyWriter, TypesAnUnknownCodeByTheNameThatTheHostGives) {
    instance->Add("X", "v")->type = TType(static_cast<TType::ECIMType>(77));
    Write("X", "X");
    EXPECT_EQ(text.str(), Element("string", "v"));
    text.str("");
    instance->Add("X", "v")->type = TType(static_cast<TType::ECIMType>(0));
    Write("X", "X");
    EXPECT_EQ(text.str(), Element("string", "v"));
}

TEST_F(PropertyWriter, EscapesTheValue) {
    EXPECT_EQ(Written("A&B <c>"), Element("string", "A&amp;B &lt;c&gt;"));
}

TEST_F(PropertyWriter, WritesAnEmptyTextAsAnEmptyValue) {
    EXPECT_EQ(Written(""), Element("string", ""));
}

TEST_F(PropertyWriter, WritesTheElementsOfAnArrayInUpperCaseTags) {
    EXPECT_EQ(Written(TCIMValue::Array(TType::eString, {"x", "y"})),
              "<Property name=\"X\" type=\"string\">\n"
              "<VALUE.ARRAY>\n"
              "<VALUE>x</VALUE>\n"
              "<VALUE>y</VALUE>\n"
              "</VALUE.ARRAY>\n"
              "</Property>\n");
}

TEST_F(PropertyWriter, WritesADateInTheTextFormOfTheDocuments) {
    EXPECT_EQ(Written(TCIMValue(*TCIMDateTime::FromText("20090307140509.000000+060"))),
              Element("dateTime", "2009-03-07T14:05:09+01:00"));
}

TEST_F(PropertyWriter, OmitsADateThatIsNullWhenReadASecondTime) {
    const auto property = instance->Add("X", TCIMValue(*TCIMDateTime::FromText("20090307140509.000000+060")));
    property->before = [&property = *property, reads = 0](const std::string& call) mutable {
        if (call == "GetValue" && ++reads == 2) {
            property.value = TCIMValue(TType(TType::eDateTime));
        }
    };
    EXPECT_TRUE(Write("X", "X"));
    EXPECT_EQ(text.str(), "<Property name=\"X\" type=\"dateTime\">\n</Property>\n");
}

TEST_F(PropertyWriter, ThrowsTypeMismatchForAnArrayOfDatesAfterTheOpeningLine) {
    instance->Add("X", TCIMValue::Array(TType::eDateTime, {}));
    EXPECT_THROW(Write("X", "X"), TVORException);
    EXPECT_EQ(text.str(), "<Property name=\"X\" type=\"dateTime\">\n");
}

TEST_F(PropertyWriter, ReadsUnderTheSourceNameAndWritesUnderTheOutputName) {
    instance->Add("ElementName", "CPU 1");
    EXPECT_TRUE(Write("Name", "ElementName"));
    EXPECT_EQ(text.str(), "<Property name=\"Name\" type=\"string\">\n<Value>CPU 1</Value>\n</Property>\n");
}

TEST_F(PropertyWriter, DoesNotEscapeTheOutputName) {
    instance->Add("X", "v");
    Write("a<b>&\"c\"", "X");
    EXPECT_EQ(text.str(), "<Property name=\"a<b>&\"c\"\" type=\"string\">\n<Value>v</Value>\n</Property>\n");
}

TEST_F(PropertyWriter, CallsTheHostInAFixedOrder) {
    const auto property = instance->Add("X", "v");
    Write("X", "X");
    EXPECT_THAT(instance->calls, ElementsAre("GetProperty X"));
    EXPECT_THAT(property->calls, ElementsAre("IsNull", "GetValue", "GetType"));
}

TEST_F(PropertyWriter, FlushesTheStreamOnceForEachLine) {
    TSpyBuffer buffer;
    std::ostream stream(&buffer);
    instance->Add("X", "v");
    TLineOutput streamOut(stream);
    const TPropertyBinding binding = BindProperty("X", "X");
    WriteProperty(streamOut, binding, "X", instance);
    EXPECT_THAT(buffer.flushes, ElementsAre("<Property name=\"X\" type=\"string\">\n", "<Value>v</Value>\n",
                                            "</Property>\n"));
}

TEST_F(PropertyWriter, ReturnsFalseAndWritesNothingForAMissingProperty) {
    EXPECT_FALSE(Write("X", "X"));
    EXPECT_EQ(text.str(), "");
}

TEST_F(PropertyWriter, TreatsAnyStatusCodeOfTheLookupAsAMissingProperty) {
    instance->before = [](const std::string&) { throw TVORException(1); };
    EXPECT_FALSE(Write("X", "X"));
    EXPECT_EQ(text.str(), "");
}

TEST_F(PropertyWriter, PassesOtherExceptionsOfTheLookupOn) {
    instance->before = [](const std::string&) { throw std::runtime_error("lookup"); };
    EXPECT_THAT([&] { Write("X", "X"); }, ThrowsMessage<std::runtime_error>("lookup"));
    EXPECT_EQ(text.str(), "");
}

TEST_F(PropertyWriter, PassesExceptionsAfterTheLookupOn) {
    for (const std::string throwing : {"IsNull", "GetValue", "GetType"}) {
        instance->Add("X", "v")->before = [&](const std::string& call) {
            if (call == throwing) {
                throw TVORException(1);
            }
        };
        EXPECT_THROW(Write("X", "X"), TVORException) << throwing;
        EXPECT_EQ(text.str(), "") << throwing;
    }
}

TEST_F(PropertyWriter, WritesNothingForANullProperty) {
    const auto property = instance->Add("X", "v");
    property->isNull = true;
    EXPECT_TRUE(Write("X", "X"));
    EXPECT_EQ(text.str(), "");
    EXPECT_THAT(property->calls, ElementsAre("IsNull"));
}

TEST_F(PropertyWriter, WritesNothingForANullValue) {
    EXPECT_EQ(Written(TCIMValue(TType(TType::eString))), "");
}

TEST_F(PropertyWriter, AssertsThatThePropertyHandleIsNotNull) {
    instance->properties["X"] = nullptr;
    EXPECT_THAT([&] { Write("X", "X"); }, ThrowsMessage<NDOUBLES::TAssertionFailed>("px != 0"));
}

TEST_F(PropertyWriter, AssertsThatTheInstanceHandleIsNotNull) {
    instance.reset();
    EXPECT_THAT([&] { Write("X", "X"); }, ThrowsMessage<NDOUBLES::TAssertionFailed>("px != 0"));
}

TEST_F(PropertyWriter, WritesTheSourceNameOfObjectTypeUnescaped) {
    EXPECT_FALSE(Write("ObjectType", "A&B"));
    EXPECT_EQ(text.str(),
              "<Property name=\"ObjectType\" type=\"string\">\n<Value>A&B</Value>\n</Property>\n");
    EXPECT_THAT(instance->calls, ElementsAre("GetProperty A&B"));
}

TEST_F(PropertyWriter, WritesTheSourceNameOfGuidUnescaped) {
    EXPECT_FALSE(Write("GUID", "<1>"));
    EXPECT_EQ(text.str(), "<Property name=\"GUID\" type=\"string\">\n<Value><1></Value>\n</Property>\n");
}

TEST_F(PropertyWriter, WritesTheOperatingSystemsNameUnescapedForGetHostName) {
    Host().operatingSystemName = [] { return "Kite & Sons\n"; };
    EXPECT_FALSE(Write("Name", "GetHostName"));
    EXPECT_EQ(text.str(),
              "<Property name=\"Name\" type=\"string\">\n<Value>Kite & Sons\n</Value>\n</Property>\n");
}

TEST_F(PropertyWriter, WritesTheOpeningLineBeforeItReadsTheOperatingSystemsName) {
    Host().operatingSystemName = [this]() -> std::string {
        EXPECT_EQ(text.str(), "<Property name=\"Name\" type=\"string\">\n");
        throw std::runtime_error("no name");
    };
    EXPECT_THAT([this] { Write("Name", "GetHostName"); }, ThrowsMessage<std::runtime_error>("no name"));
    EXPECT_EQ(text.str(), "<Property name=\"Name\" type=\"string\">\n");
}

TEST_F(PropertyWriter, TreatsGetHostNameAsAnOrdinarySourceOfOtherProperties) {
    EXPECT_FALSE(Write("X", "GetHostName"));
    EXPECT_FALSE(Write("Name", "GetHostname"));
    EXPECT_FALSE(Write("objectType", "A"));
    EXPECT_EQ(text.str(), "");
}

TEST_F(PropertyWriter, LooksThePropertyUpAfterASpecialForm) {
    instance->Add("Processor", TCIMValue(std::uint8_t{1}));
    EXPECT_TRUE(Write("ObjectType", "Processor"));
    EXPECT_EQ(text.str(),
              "<Property name=\"ObjectType\" type=\"string\">\n<Value>Processor</Value>\n</Property>\n"
              "<Property name=\"ObjectType\" type=\"unsignedByte\">\n<Value>1</Value>\n</Property>\n");
}

TEST_F(PropertyWriter, WritesTheSpecialFormBeforeItAccessesTheInstance) {
    instance.reset();
    EXPECT_THROW(Write("GUID", "1"), NDOUBLES::TAssertionFailed);
    EXPECT_EQ(text.str(), "<Property name=\"GUID\" type=\"string\">\n<Value>1</Value>\n</Property>\n");
}

TEST_F(PropertyWriter, CutsTheModelFromTheProductName) {
    instance->Add("ProductName", "Server -[1234AB5]-");
    Write("Model", "ProductName");
    EXPECT_EQ(text.str(), "<Property name=\"Model\" type=\"string\">\n<Value>AB5</Value>\n</Property>\n");
}

TEST_F(PropertyWriter, CutsTheMachineTypeFromTheProductName) {
    instance->Add("ProductName", "Server -[1234AB5]-");
    Write("MachineType", "ProductName");
    EXPECT_EQ(text.str(),
              "<Property name=\"MachineType\" type=\"string\">\n<Value>1234</Value>\n</Property>\n");
}

TEST_F(PropertyWriter, EscapesTheCutText) {
    instance->Add("ProductName", "-[&1<2>3\t]");
    Write("MachineType", "ProductName");
    Write("Model", "ProductName");
    EXPECT_EQ(text.str(),
              "<Property name=\"MachineType\" type=\"string\">\n<Value>&amp;1&lt;2</Value>\n</Property>\n"
              "<Property name=\"Model\" type=\"string\">\n<Value>&gt;3 </Value>\n</Property>\n");
}

TEST_F(PropertyWriter, WritesTheWholeProductNameIfItHasNoBracket) {
    instance->Add("ProductName", "Box <1>");
    Write("Model", "ProductName");
    EXPECT_EQ(text.str(),
              "<Property name=\"Model\" type=\"string\">\n<Value>Box &lt;1&gt;</Value>\n</Property>\n");
}

TEST_F(PropertyWriter, CutsOnlyModelAndMachineTypeFromProductName) {
    instance->Add("ProductName", "Server -[1234AB5]-");
    instance->Add("Model", "Server -[1234AB5]-");
    Write("X", "ProductName");
    Write("Model", "Model");
    EXPECT_EQ(text.str(),
              "<Property name=\"X\" type=\"string\">\n<Value>Server -[1234AB5]-</Value>\n</Property>\n"
              "<Property name=\"Model\" type=\"string\">\n<Value>Server -[1234AB5]-</Value>\n</Property>\n");
}

TEST_F(PropertyWriter, LeavesTheElementOpenIfTheProductNameEndsBeforeTheModel) {
    instance->Add("ProductName", "Server -[79]");
    EXPECT_THROW(Write("Model", "ProductName"), std::out_of_range);
    EXPECT_EQ(text.str(), "<Property name=\"Model\" type=\"string\">\n");
}

class ValueLines : public testing::Test {
  protected:
    std::string Written(const TCIMValue& value) {
        WriteValueLines(out, value);
        return text.str();
    }

    std::ostringstream text;
    TLineOutput out{text};
};

TEST_F(ValueLines, WritesNothingForNull) {
    EXPECT_EQ(Written(TCIMValue(TType(TType::eUint8))), "");
}

TEST_F(ValueLines, WritesNothingForANullArray) {
    EXPECT_EQ(Written(TCIMValue::NullArray(TType::eUint8)), "");
}

TEST_F(ValueLines, WritesOneLineForAScalar) {
    EXPECT_EQ(Written("a\tb"), "<Value>a b</Value>\n");
}

TEST_F(ValueLines, WritesOnlyTheArrayTagsForAnEmptyArray) {
    EXPECT_EQ(Written(TCIMValue::Array(TType::eString, {})), "<VALUE.ARRAY>\n</VALUE.ARRAY>\n");
}

TEST_F(ValueLines, EscapesEachElementOfAnArray) {
    EXPECT_EQ(Written(TCIMValue::Array(TType::eString, {"<", "a\r\nb", ""})),
              "<VALUE.ARRAY>\n<VALUE>&lt;</VALUE>\n<VALUE>ab</VALUE>\n<VALUE></VALUE>\n</VALUE.ARRAY>\n");
}

TEST_F(ValueLines, WritesANullElementAsAnEmptyElement) {
    EXPECT_EQ(Written(TCIMValue::Array(TType::eUint8,
                                       {TCIMValue(std::uint8_t{7}), TCIMValue(TType(TType::eUint8))})),
              "<VALUE.ARRAY>\n<VALUE>7</VALUE>\n<VALUE></VALUE>\n</VALUE.ARRAY>\n");
}

TEST_F(ValueLines, WritesAZeroByteAsABlank) {
    EXPECT_EQ(Written(std::string("a\0b", 3)), "<Value>a b</Value>\n");
}

}  // namespace
