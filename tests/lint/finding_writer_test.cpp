#include "lint/write/finding_writer.h"

#include <gtest/gtest.h>

#include <sstream>

namespace NLINT {
namespace {

const std::vector<TFinding> twoFindings{
    {"memory-array-slots",
     "memory array 1000h",
     {"4 slots", "SMBIOS type 16"},
     {"2 memory devices", "SMBIOS type 17"}},
    {"pcie-speed", "PCI function 0000:05:00.0", {"2000 Mbit/s", "Speed"}, {"7876 Mbit/s", "Max\nSpeed"}},
};

TEST(FindingText, HasTheEvidenceTheMendingAndTheNumbers) {
    std::ostringstream out;
    WriteFindingText("this machine", twoFindings, out);
    EXPECT_EQ(out.str(),
              "error memory-array-slots: memory array 1000h\n"
              "    4 slots  (SMBIOS type 16)\n"
              "    2 memory devices  (SMBIOS type 17)\n"
              "    Update the firmware, or report the table to the maker of the machine.\n"
              "\n"
              "note pcie-speed: PCI function 0000:05:00.0\n"
              "    2000 Mbit/s  (Speed)\n"
              "    7876 Mbit/s  (Max\\nSpeed)\n"
              "    Look again while the device works: links slow down while they are idle.\n"
              "\n"
              "this machine: 1 error, 0 warnings, 1 note\n");
}

TEST(FindingText, HasOnlyTheNumbersWithoutFindings) {
    std::ostringstream out;
    WriteFindingText("machine.xml", {}, out);
    EXPECT_EQ(out.str(), "machine.xml: 0 errors, 0 warnings, 0 notes\n");
}

TEST(FindingJson, HasEveryTextOfAFinding) {
    std::ostringstream out;
    WriteFindingJson("this machine", {twoFindings[0]}, out);
    EXPECT_EQ(out.str(), R"({
    "source": "this machine",
    "findings": [
        {
            "check": "memory-array-slots",
            "severity": "error",
            "subject": "memory array 1000h",
            "compares": "The slots that a memory array has with its memory devices",
            "evidence": [
                {
                    "value": "4 slots",
                    "source": "SMBIOS type 16"
                },
                {
                    "value": "2 memory devices",
                    "source": "SMBIOS type 17"
                }
            ],
            "mend": "Update the firmware, or report the table to the maker of the machine"
        }
    ]
}
)");
}

TEST(FindingJson, IsWellFormedWithoutFindings) {
    std::ostringstream out;
    WriteFindingJson("a", {}, out);
    EXPECT_EQ(out.str(), "{\n    \"source\": \"a\",\n    \"findings\": []\n}\n");
}

}  // namespace
}  // namespace NLINT
