#include "inventory/model/resource.h"

#include <gtest/gtest.h>

namespace NINVENTORY {
namespace {

TResource MakeDisk() {
    return {"00",
            "DiskDrive",
            "LogicalDevice",
            {},
            {{"Name", "string", EShape::scalar, {"SSD"}},
             {"OperationalStatus", "unsignedShort", EShape::array, {"2"}},
             {"TimeOfLastMount", "dateTime", EShape::null, {}}}};
}

TEST(Resource, FindsAPropertyByName) {
    const TResource disk = MakeDisk();
    EXPECT_EQ(disk.Find("Name"), &disk.properties[0]);
    EXPECT_EQ(disk.Find("name"), nullptr);
}

TEST(Resource, GivesTheTextOfScalarsOnly) {
    const TResource disk = MakeDisk();
    EXPECT_EQ(disk.GetText("Name"), "SSD");
    EXPECT_EQ(disk.GetText("OperationalStatus"), "");
    EXPECT_EQ(disk.GetText("TimeOfLastMount"), "");
    EXPECT_EQ(disk.GetText("Missing"), "");
}

}  // namespace
}  // namespace NINVENTORY
