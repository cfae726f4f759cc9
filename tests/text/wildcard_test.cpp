#include "text/wildcard.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

TEST(MatchesWildcards, ComparesTextsWithoutAStar) {
    EXPECT_TRUE(MatchesWildcards("name", "name"));
    EXPECT_TRUE(MatchesWildcards("", ""));
    EXPECT_FALSE(MatchesWildcards("name", "names"));
    EXPECT_FALSE(MatchesWildcards("name", "nam"));
    EXPECT_FALSE(MatchesWildcards("name", "NAME"));
    EXPECT_FALSE(MatchesWildcards("", "name"));
}

TEST(MatchesWildcards, MatchesAnyPartForAStar) {
    EXPECT_TRUE(MatchesWildcards("*", ""));
    EXPECT_TRUE(MatchesWildcards("*", "name"));
    EXPECT_TRUE(MatchesWildcards("ID_FS_*", "ID_FS_"));
    EXPECT_TRUE(MatchesWildcards("ID_FS_*", "ID_FS_UUID"));
    EXPECT_TRUE(MatchesWildcards("*UUID", "ID_FS_UUID"));
    EXPECT_FALSE(MatchesWildcards("ID_FS_*", "ID_FS"));
    EXPECT_FALSE(MatchesWildcards("*UUID", "ID_FS_UUID_ENC"));
}

TEST(MatchesWildcards, MatchesSeveralStars) {
    EXPECT_TRUE(MatchesWildcards("SCSI_IDENT_*_NAA_*", "SCSI_IDENT_LUN_NAA_REG"));
    EXPECT_TRUE(MatchesWildcards("*a*a", "aaa"));
    EXPECT_TRUE(MatchesWildcards("a**b", "ab"));
    EXPECT_FALSE(MatchesWildcards("*a*a", "a"));
    EXPECT_FALSE(MatchesWildcards("a*b*c", "acb"));
}

}  // namespace
}  // namespace NVORHOST
