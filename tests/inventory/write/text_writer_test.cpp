#include "inventory/write/text_writer.h"

#include <gtest/gtest.h>

#include <sstream>

namespace NINVENTORY {
namespace {

using TTexts = std::vector<std::pair<std::string, std::vector<std::string>>>;

TResource MakeResource(std::string type, const TTexts& texts) {
    TResource resource{{}, std::move(type), {}, {}, {}};
    for (const auto& [name, values] : texts) {
        resource.properties.push_back(
            {name, "string", values.size() == 1 ? EShape::scalar : EShape::array, values});
    }
    return resource;
}

std::string Write(std::vector<TResource> resources, std::size_t width = 0) {
    std::ostringstream out;
    const auto writer = MakeTextWriter(out, {.layout = {.width = width}});
    writer->BeginSource("test");
    writer->BeginDocument({EDocument::collection, {}, {}});
    for (TResource& resource : resources) {
        writer->AddResource(std::move(resource));
    }
    writer->Finish();
    return out.str();
}

TEST(TextWriter, NamesEmptyMemorySlotsAndCountsTheOthers) {
    const auto slotOf = [](const std::string& name, const std::string& description) {
        return MakeResource("PhysicalConnector", {{"Name", {name}}, {"Description", {description}}});
    };
    const std::vector<TResource> slots{
        slotOf("A1", "Memory slot, DIMM"), slotOf("A2", "Empty memory slot, DIMM"),
        slotOf("B1", "Memory slot, DIMM"), slotOf("B2", "Empty memory slot, DIMM")};
    EXPECT_EQ(Write(slots), "\nMemory slots\n2 filled\n2 empty: A2, B2\n");
    EXPECT_EQ(Write({slots[1], slots[3]}, 12), "\nMemory slots\n2 empty: A2,\n  B2\n");
    EXPECT_EQ(Write({slots[0]}), "\nMemory slot\n1 filled\n");
}

TEST(TextWriter, ShowsThePlatformInTheHead) {
    EXPECT_EQ(Write({MakeResource("ComputerSystem",
                                  {{"Name", {"web-1"}},
                                   {"Description", {"Virtual machine, KVM"}},
                                   {"OtherIdentifyingInfo", {"kvm", "Example Cloud", "m1"}},
                                   {"IdentifyingDescriptions", {"Hypervisor", "Cloud", "Instance type"}}})}),
              "platform     Virtual machine, KVM, cloud Example Cloud, instance type m1\n");
}

TEST(TextWriter, ShowsDetailsOfPciFunctionsOnlyWhereTheyAreKnown) {
    EXPECT_EQ(Write({MakeResource("PCIPort", {{"DeviceID", {"0000:00:00.0"}}}),
                     MakeResource("PCIPort", {{"DeviceID", {"0000:01:00.0"}}, {"PowerState", {"D0"}}})}),
              "\nPCI port\naddress       power\n0000:01:00.0  D0\n");
    EXPECT_EQ(Write({MakeResource("PCIPort", {{"DeviceID", {"0000:00:00.0"}}})}), "");
}

TEST(TextWriter, NamesTheEntriesOfALongResource) {
    std::ostringstream out;
    const auto writer = MakeTextWriter(out, {.layout = {}, .isLong = true});
    writer->BeginSource("test");
    writer->BeginDocument({EDocument::collection, {}, {}});
    writer->AddResource(
        MakeResource("DiskDrive", {{"OtherIdentifyingInfo", {"S7M0", "2"}},
                                   {"IdentifyingDescriptions", {"Serial number", "SAS bay"}}}));
    writer->AddResource(MakeResource("Battery", {{"OtherIdentifyingInfo", {"S7M0", "2"}}}));
    writer->Finish();
    EXPECT_EQ(out.str(),
              "DiskDrive \n"
              "  OtherIdentifyingInfo     Serial number S7M0, SAS bay 2\n"
              "  IdentifyingDescriptions  Serial number, SAS bay\n"
              "\n"
              "Battery \n"
              "  OtherIdentifyingInfo  S7M0, 2\n");
}

}  // namespace
}  // namespace NINVENTORY
