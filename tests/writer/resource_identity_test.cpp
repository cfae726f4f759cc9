#include "writer/resource_identity.h"

#include "host/vor_exception.h"
#include "tests/doubles/cim_doubles.h"
#include "tests/doubles/host_doubles.h"
#include "tests/writer/catalogue/plain_md5.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace {

using NDOUBLES::Host;
using NDOUBLES::TInstanceDouble;
using NDOUBLES::TLogLine;
using NKELVOR20::TCIMValue;
using NKELVOR20::TVORException;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr char idOfTheTypeAlone[] = "2F11D4578DA1BEDD6C3CABB5763346EE";  // kel-cdm:///CDM-Processor
constexpr char idOfCpu0[] = "F0412DDD4EDFB7E918E1782A3245949C";  // kel-cdm:///CDM-Processor/DeviceID=CPU0

const TLogLine noProperty = {3, "noxinfo-GetResourceID: didn't find Name property"};
const TLogLine noValue = {
    3, "noxinfo-GetResourceID- class:Processor valProperty1=DeviceIDdidn't find Name value"};

class ResourceId : public testing::Test {
  protected:
    ResourceId() { NDOUBLES::ResetHost(); }

    std::string Id(const std::string& type = "Processor", const std::string& key1 = "DeviceID",
                   const std::string& key2 = "") {
        return MakeResourceId(type, instance, key1, key2);
    }

    boost::shared_ptr<TInstanceDouble> instance = boost::make_shared<TInstanceDouble>();
};

TEST_F(ResourceId, DigestsTypeAndKeyPropertyWithATerminatingZero) {
    instance->Add("DeviceID", "CPU0");
    EXPECT_EQ(Id(), idOfCpu0);
    EXPECT_EQ(Id(),
              PlainMd5(std::string("kel-cdm:///CDM-Processor/DeviceID=CPU0\0", 39), EPadding::oneBlockShort));
    EXPECT_THAT(Host().log, IsEmpty());
}

TEST_F(ResourceId, DiffersBetweenKeyValues) {
    instance->Add("DeviceID", "CPU1");
    EXPECT_EQ(Id(), "F2AC0BD10072D4CBC91A97A6FA562283");
}

TEST_F(ResourceId, UsesTheDecimalTextOfANumber) {
    instance->Add("CoreCount", TCIMValue(std::uint16_t{12}));
    EXPECT_EQ(Id("Processor", "CoreCount"), "F5467FFCFC13194FE6D6454B1DBFFF81");
}

TEST_F(ResourceId, EndsTheKeyWithAnEqualsSignForAnEmptyValue) {
    instance->Add("DeviceID", "");
    EXPECT_EQ(Id(), "380CDCFA8DCEC1B7C81767AF66ECA08C");
    EXPECT_THAT(Host().log, IsEmpty());
}

TEST_F(ResourceId, TreatsANullKeyValueAsAnEmptyText) {
    instance->Add("DeviceID", TCIMValue(TCIMValue::TCIMType(TCIMValue::TCIMType::eString)));
    EXPECT_EQ(Id(), "380CDCFA8DCEC1B7C81767AF66ECA08C");
}

TEST_F(ResourceId, AppendsASecondKeyProperty) {
    instance->Add("DeviceID", "CPU0");
    instance->Add("Tag", "T1");
    EXPECT_EQ(Id("Processor", "DeviceID", "Tag"), "F466D8FE8A4C8CF39FCC99F1AC96FD6A");
    EXPECT_THAT(instance->calls, ElementsAre("GetProperty DeviceID", "GetProperty Tag"));
}

TEST_F(ResourceId, LooksUpOnlyOnePropertyIfTheSecondNameIsEmpty) {
    instance->Add("DeviceID", "CPU0");
    Id();
    EXPECT_THAT(instance->calls, ElementsAre("GetProperty DeviceID"));
}

TEST_F(ResourceId, DigestsAKeyOf55BytesWithTheShortPadding) {
    const std::string value(21, 'd');
    instance->Add("DeviceID", value);
    EXPECT_EQ(Id("DiskDrive"), "DE211E362B5F6C44CF68F15D8C1B0C13");
    const std::string key = "kel-cdm:///CDM-DiskDrive/DeviceID=" + value;
    ASSERT_EQ(key.size(), 55U);
    EXPECT_NE(Id("DiskDrive"), PlainMd5(std::string_view(key.c_str(), 56), EPadding::standard));
}

TEST_F(ResourceId, HasThirtyTwoUpperCaseHexadecimalDigits) {
    instance->Add("DeviceID", "a value of some length & <characters> of all kinds \xC3\xA9\n");
    EXPECT_THAT(Id(), testing::MatchesRegex("[0-9A-F]{32}"));
}

TEST_F(ResourceId, DigestsTheTypeAloneAndLogsTwoLinesIfTheKeyPropertyIsMissing) {
    EXPECT_EQ(Id(), idOfTheTypeAlone);
    EXPECT_THAT(Host().log, ElementsAre(noProperty, noValue));
}

TEST_F(ResourceId, LooksUpNoSecondPropertyIfTheFirstIsMissing) {
    instance->Add("Tag", "T1");
    EXPECT_EQ(Id("Processor", "DeviceID", "Tag"), idOfTheTypeAlone);
    EXPECT_THAT(instance->calls, ElementsAre("GetProperty DeviceID"));
    EXPECT_THAT(Host().log, ElementsAre(noProperty, noValue));
}

TEST_F(ResourceId, KeepsTheFirstPairIfTheSecondPropertyIsMissing) {
    instance->Add("DeviceID", "CPU0");
    EXPECT_EQ(Id("Processor", "DeviceID", "Tag"), idOfCpu0);
    EXPECT_THAT(Host().log, ElementsAre(noProperty, noValue));
}

TEST_F(ResourceId, CatchesOtherExceptionsOfTheLookupAndLogsOnlyTheMissingValue) {
    instance->before = [](const std::string&) { throw std::runtime_error("no memory"); };
    EXPECT_EQ(Id(), idOfTheTypeAlone);
    EXPECT_THAT(Host().log, ElementsAre(noValue));
}

TEST_F(ResourceId, CatchesExceptionsOfAnyType) {
    instance->before = [](const std::string&) { throw 42; };
    EXPECT_EQ(Id(), idOfTheTypeAlone);
    EXPECT_THAT(Host().log, ElementsAre(noValue));
}

TEST_F(ResourceId, TreatsANullPropertyHandleAsAnUnreadableValue) {
    instance->properties["DeviceID"] = nullptr;
    EXPECT_EQ(Id(), idOfTheTypeAlone);
    EXPECT_THAT(Host().log, ElementsAre(noValue));
}

TEST_F(ResourceId, NeverCallsTheAssertionHandlerForANullHandle) {
    instance->properties["DeviceID"] = nullptr;
    EXPECT_EQ(Id(), idOfTheTypeAlone);
    EXPECT_THAT(Host().failedAssertions, testing::IsEmpty());
}

TEST_F(ResourceId, KeepsTheFirstPairIfTheSecondHandleIsNull) {
    instance->Add("DeviceID", "CPU0");
    instance->properties["Tag"] = nullptr;
    EXPECT_EQ(Id("Processor", "DeviceID", "Tag"), idOfCpu0);
    EXPECT_THAT(Host().log, ElementsAre(noValue));
}

TEST_F(ResourceId, CatchesExceptionsOfReadingTheValue) {
    instance->Add("DeviceID", "CPU0")->before = [](const std::string&) { throw TVORException(1); };
    EXPECT_EQ(Id(), idOfTheTypeAlone);
    EXPECT_THAT(Host().log, ElementsAre(noValue));
}

TEST_F(ResourceId, KeepsTheFirstPairIfReadingTheSecondValueThrows) {
    instance->Add("DeviceID", "CPU0");
    instance->Add("Tag", "T1")->before = [](const std::string&) { throw 42; };
    EXPECT_EQ(Id("Processor", "DeviceID", "Tag"), idOfCpu0);
    EXPECT_THAT(Host().log, ElementsAre(noValue));
}

TEST_F(ResourceId, DigestsTheTypeAloneForANullInstanceHandle) {
    instance.reset();
    EXPECT_EQ(Id(), idOfTheTypeAlone);
    EXPECT_THAT(Host().log, ElementsAre(noValue));
}

TEST_F(ResourceId, ReadsTheValueWithoutCallingGetTypeOrIsNull) {
    const auto property = instance->Add("DeviceID", "CPU0");
    Id();
    EXPECT_THAT(property->calls, ElementsAre("GetValue"));
}

TEST(DigestKey, IncludesTheTerminatingZero) {
    EXPECT_EQ(DigestKey("ab"), PlainMd5(std::string_view("ab", 3), EPadding::standard));
}

}  // namespace
