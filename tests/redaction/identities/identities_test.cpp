#include "redaction/identities/identities.h"

#include <gtest/gtest.h>

#include <string>

namespace NVORHOST {
namespace {

using enum EIdentityKind;

struct TCase {
    const char* value;
    EIdentityKind kind;
    EIdentityReach reach;
};

TEST(FindReach, DependsOnLengthAndVarietyOfAValue) {
    constexpr TCase cases[] = {
        // Values that are too short or too common for texts.
        {"1", serialNumber, EIdentityReach::itself},
        {"42", serialNumber, EIdentityReach::itself},
        {"disk", serialNumber, EIdentityReach::itself},
        {"DISK", serialNumber, EIdentityReach::itself},
        {"Not Specified", serialNumber, EIdentityReach::itself},
        {"0000000000", serialNumber, EIdentityReach::itself},
        {"localhost", hostName, EIdentityReach::itself},
        {"server", hostName, EIdentityReach::itself},
        {"a", hostName, EIdentityReach::itself},
        {"root", userName, EIdentityReach::itself},
        // Values that may equal an ordinary word, except in names.
        {"QEMU", serialNumber, EIdentityReach::names},
        {"0001", serialNumber, EIdentityReach::names},
        {"1234567", serialNumber, EIdentityReach::names},
        {"00000001-01", uuid, EIdentityReach::names},
        {"QM00001", serialNumber, EIdentityReach::names},
        {"Laboratory", assetTag, EIdentityReach::names},
        {"db", hostName, EIdentityReach::names},
        {"falcon", hostName, EIdentityReach::names},
        {"workstation", hostName, EIdentityReach::names},
        {"t480s", hostName, EIdentityReach::names},
        {"alice", userName, EIdentityReach::names},
        // Values that rarely equal an ordinary word.
        {"20230517", serialNumber, EIdentityReach::words},
        {"1ABC2D3", serialNumber, EIdentityReach::words},
        {"A1B2C3", serialNumber, EIdentityReach::words},
        {"S3Z9N0", serialNumber, EIdentityReach::words},
        {"debian12", hostName, EIdentityReach::words},
        {"db-17.example.org", hostName, EIdentityReach::words},
        {"192.0.2.1", ipAddress, EIdentityReach::words},
        {"fd12:3456::2", ipAddress, EIdentityReach::words},
        // Values that are distinct enough for any text.
        {"1ABC2Z3", serialNumber, EIdentityReach::anywhere},
        {"S3Z9NB0K123456", serialNumber, EIdentityReach::anywhere},
        {"5000c500a1b2c3d4", worldWideName, EIdentityReach::anywhere},
        {"52:54:00:b2:0f:01", macAddress, EIdentityReach::anywhere},
        {"9f5c2a10-7b34-11e9-8f9e-2a86e4085a59", uuid, EIdentityReach::anywhere},
    };
    for (const TCase& row : cases) {
        EXPECT_EQ(FindReach(row.value, row.kind), row.reach) << row.value;
    }
}

TEST(DescribeCounts, NamesEachKindInOneOrder) {
    EXPECT_EQ(DescribeCounts({}), "");
    EXPECT_EQ(DescribeCounts({{hostName, 1}, {serialNumber, 3}, {macAddress, 2}, {ipAddress, 1}}),
              "3 serial numbers, 2 MAC addresses, 1 IP address, 1 host name");
    for (const auto kind :
         {serialNumber, assetTag, uuid, worldWideName, macAddress, ipAddress, hostName, userName}) {
        EXPECT_EQ(DescribeCounts({{kind, 1}}), "1 " + std::string(GetKindName(kind)));
    }
}

}  // namespace
}  // namespace NVORHOST
