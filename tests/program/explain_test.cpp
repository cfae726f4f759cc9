#include "program_run.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace NVORHOST {
namespace {

using ::testing::StartsWith;

const std::string smallServer = NOXINFO_TEST_DATA "/small-server.xml";
const std::string smallHardware = NOXINFO_TEST_DATA "/small-server.hardware.xml";

constexpr char explanation[] =
    "resource       Processor CPU 1\n"
    "identifier     F0412DDD4EDFB7E918E1782A3245949C\n"
    "key            kel-cdm:///CDM-Processor/DeviceID=CPU0\n"
    "digest         MD5 of the key and the zero byte after it\n"
    "class          KELSG_Processor, property DeviceID\n"
    "made from      the name that the firmware gives its place\n"
    "if moved       gets another identifier\n"
    "new board      gets another identifier\n"
    "if renamed     keeps its identifier\n";

TProgramResult Explain(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "explain");
    return RunNoxinfo({arguments, "", {}});
}

TEST(Explain, NamesTheKeyAndWhatItWasMadeFrom) {
    const auto result = Explain({"F0412DDD4EDFB7E918E1782A3245949C", smallHardware});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.standardOutput, explanation);
}

TEST(Explain, AcceptsFourDigitsTheNameAndTheKeyValue) {
    EXPECT_EQ(Explain({"f041", smallHardware}).standardOutput, explanation);
    EXPECT_EQ(Explain({"CPU 1", smallHardware}).standardOutput, explanation);
    EXPECT_EQ(Explain({"CPU0", smallHardware}).standardOutput, explanation);
}

TEST(Explain, ExplainsResourcesOfANamespaceAlike) {
    EXPECT_EQ(Explain({"F041", smallServer}).standardOutput, explanation);
}

TEST(Explain, RefusesWhatNoResourceOrSeveralResourcesHave) {
    const auto missing = Explain({"no such part", smallHardware});
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.standardError, "noxinfo: no resource has the identifier or name 'no such part'\n");
    const auto several = Explain({"Example Server OS", smallHardware});
    EXPECT_EQ(several.status, 1);
    EXPECT_THAT(several.standardError, StartsWith("noxinfo: "));
}

}  // namespace
}  // namespace NVORHOST
