#include "vorhost/cimxml/mapping_string.h"

#include <gtest/gtest.h>

#include <string>

namespace NVORHOST {
namespace {

struct TCase {
    const char* source;
    const char* mapping;
};

constexpr TCase cases[] = {
    {"type 2, 07h", "SMBIOS.DMTF|Type 2|07h"},
    {"type 2, 09h bit 0", "SMBIOS.DMTF|Type 2|09h bit 0"},
    {"/proc/meminfo MemTotal", "File.Linux|/proc/meminfo|MemTotal"},
    {"/sys/class/dmi/id/board_serial", "File.Linux|/sys/class/dmi/id/board_serial"},
    {"call uname nodename", "Call.Linux|uname|nodename"},
    {"property Manufacturer", "Property.CIM|Manufacturer"},
    {"constant", "Text.Noxinfo|constant"},
    {"none: no such field", "Text.Noxinfo|none: no such field"},
};

TEST(MakeMappingString, NamesTheFormatAndItsParts) {
    for (const TCase& each : cases) {
        EXPECT_EQ(MakeMappingString(each.source), each.mapping);
    }
}

TEST(ParseMappingString, ReturnsTheSource) {
    for (const TCase& each : cases) {
        EXPECT_EQ(ParseMappingString(each.mapping), each.source);
    }
}

TEST(ParseMappingString, ReturnsOtherFormsUnchanged) {
    for (const std::string text : {"", "MIF.DMTF|Baseboard|001.2", "SMBIOS.DMTF|Table 2", "free text"}) {
        EXPECT_EQ(ParseMappingString(text), text);
    }
}

}  // namespace
}  // namespace NVORHOST
