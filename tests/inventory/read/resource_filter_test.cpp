#include "inventory/read/resource_filter.h"

#include "tests/inventory/read/recorded_events.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace NINVENTORY {
namespace {

std::vector<TResource> Filter(const TFilterSettings& settings) {
    TRecordedEvents events;
    TResourceFilter filter(settings, events);
    filter.AddResource({"1",
                        "DiskDrive",
                        {},
                        {},
                        {{"Name", "string", EShape::scalar, {"SSD 980"}},
                         {"OperationalStatus", "unsignedShort", EShape::array, {"2", "11"}}}});
    filter.AddResource({"2", "Card", {}, {}, {{"Name", "string", EShape::scalar, {"board"}}}});
    return events.resources;
}

TEST(ResourceFilter, PassesEverythingByDefault) {
    EXPECT_EQ(Filter({}).size(), 2U);
}

TEST(ResourceFilter, PassesTypesAndProperties) {
    const auto passed = Filter({.types = {"DiskDrive"}, .properties = {"Name"}});
    ASSERT_EQ(passed.size(), 1U);
    ASSERT_EQ(passed.front().properties.size(), 1U);
    EXPECT_EQ(passed.front().properties.front().name, "Name");
}

TEST(ResourceFilter, RequiresEveryCondition) {
    EXPECT_EQ(Filter({.conditions = {ParseCondition("Name=board")}}).size(), 1U);
    EXPECT_EQ(Filter({.conditions = {ParseCondition("OperationalStatus=11")}}).size(), 1U);
    EXPECT_EQ(
        Filter({.conditions = {ParseCondition("Name~^SSD [0-9]+$"), ParseCondition("Name=board")}}).size(),
        0U);
    EXPECT_EQ(Filter({.conditions = {ParseCondition("Missing=")}}).size(), 0U);
}

TEST(ResourceFilter, AppliesConditionsToPropertiesThatAreNotShown) {
    EXPECT_EQ(
        Filter({.properties = {"OperationalStatus"}, .conditions = {ParseCondition("Name~SSD")}}).size(), 1U);
}

TEST(ParseCondition, RejectsTextsWithoutPropertyOrSignAndMalformedExpressions) {
    for (const char* text : {"", "Name", "=x", "~x"}) {
        EXPECT_THROW(ParseCondition(text), std::invalid_argument) << text;
    }
    try {
        ParseCondition("Name~(");
        FAIL();
    } catch (const std::invalid_argument& error) {
        EXPECT_STREQ(error.what(), "'(' is not a regular expression");
    }
}

TEST(ParseCondition, TakesTheFirstSign) {
    EXPECT_EQ(ParseCondition("Name=a~b").value, "a~b");
    EXPECT_TRUE(ParseCondition("Name~a=b").expression.has_value());
}

}  // namespace
}  // namespace NINVENTORY
