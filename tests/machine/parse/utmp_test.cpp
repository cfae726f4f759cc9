#include "machine/parse/utmp.h"

#include <gtest/gtest.h>

#include <string>

namespace NVORHOST {
namespace {

std::string MakeRecord(char type) {
    std::string record(utmpRecordBytes, '\0');
    record[0] = type;
    return record;
}

constexpr char bootTime = 2;
constexpr char userProcess = 7;
constexpr char deadProcess = 8;

TEST(IsUserSession, AcceptsUserProcessesOnly) {
    EXPECT_TRUE(IsUserSession(MakeRecord(userProcess)));
    EXPECT_FALSE(IsUserSession(MakeRecord(bootTime)));
    EXPECT_FALSE(IsUserSession(MakeRecord(deadProcess)));
    EXPECT_FALSE(IsUserSession(""));
}

TEST(UtmpLayout, FieldsAreWithinTheRecord) {
    EXPECT_EQ(utmpRecordBytes, 384U);
    for (const TUtmpField& field : {utmpUser, utmpHost, utmpAddress}) {
        EXPECT_LE(field.offset + field.size, utmpRecordBytes);
    }
}

TEST(CountUserProcesses, CountsUserSessionsOnly) {
    EXPECT_EQ(CountUserProcesses(MakeRecord(bootTime) + MakeRecord(userProcess) + MakeRecord(deadProcess) +
                                 MakeRecord(userProcess)),
              2U);
    EXPECT_EQ(CountUserProcesses(""), 0U);
}

TEST(CountUserProcesses, IgnoresATruncatedLastRecord) {
    const std::string whole = MakeRecord(userProcess) + MakeRecord(userProcess);
    EXPECT_EQ(CountUserProcesses(whole.substr(0, whole.size() - 1)), 1U);
    EXPECT_EQ(CountUserProcesses(whole.substr(0, 2)), 0U);
}

}  // namespace
}  // namespace NVORHOST
