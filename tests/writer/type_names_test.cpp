// The types in the document come from the names that the host gives. This program replaces the host library's
// TCIMType::ToString.
#include "host/cim_value.h"
#include "tests/doubles/cim_doubles.h"
#include "tests/doubles/host_doubles.h"
#include "writer/nox_xml_writer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using TType = NKELVOR20::TCIMValue::TCIMType;

std::vector<int> namedCodes;
std::function<std::string(int code)> nameOf;

}  // namespace

std::string NKELVOR20::TCIMValue::TCIMType::ToString() const {
    const int code = static_cast<ECIMType>(*this);
    namedCodes.push_back(code);
    return nameOf(code);
}

namespace {

using NKELVOR20::TCIMValue;
using testing::ElementsAre;
using testing::StartsWith;
using testing::ThrowsMessage;

class TypeNames : public testing::Test {
  protected:
    TypeNames() {
        NDOUBLES::ResetHost();
        namedCodes.clear();
        nameOf = [](int code) { return code == TType::eUint16 ? "uint16" : "string"; };
    }

    /// Returns the text that is written for property X with that value.
    std::string Written(const TCIMValue& value) {
        instance->Add("X", value);
        out.str("");
        writer.WriteResourceProperty("X", "X", instance);
        return out.str();
    }

    boost::shared_ptr<NDOUBLES::TInstanceDouble> instance = boost::make_shared<NDOUBLES::TInstanceDouble>();
    std::ostringstream out;
    TNOXXMLWriterImpl writer{out};
};

TEST_F(TypeNames, AreReadFromTheHostForEachProperty) {
    Written(TCIMValue(std::uint16_t{1}));
    Written(TCIMValue("text"));
    Written(TCIMValue(std::uint16_t{2}));
    EXPECT_THAT(namedCodes, ElementsAre(5, 13, 5));
}

TEST_F(TypeNames, AreNotCached) {
    EXPECT_THAT(Written(TCIMValue(std::uint16_t{1})),
                StartsWith("<Property name=\"X\" type=\"unsignedShort\">\n"));
    nameOf = [](int) { return "sint64"; };
    EXPECT_THAT(Written(TCIMValue(std::uint16_t{1})), StartsWith("<Property name=\"X\" type=\"long\">\n"));
}

TEST_F(TypeNames, FailOnlyForATypeThatTheHostCannotName) {
    nameOf = [](int code) -> std::string {
        if (code == TType::eSint8) {
            throw std::runtime_error("no name");
        }
        return "uint16";
    };
    EXPECT_THAT(Written(TCIMValue(std::uint16_t{1})),
                StartsWith("<Property name=\"X\" type=\"unsignedShort\">\n"));
    EXPECT_THAT([this] { Written(TCIMValue(std::int8_t{1})); }, ThrowsMessage<std::runtime_error>("no name"));
    EXPECT_EQ(out.str(), "");
    EXPECT_THAT(Written(TCIMValue(std::uint16_t{2})),
                StartsWith("<Property name=\"X\" type=\"unsignedShort\">\n"));
}

}  // namespace
