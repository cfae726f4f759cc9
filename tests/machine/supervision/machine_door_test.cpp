#include "machine/supervision/machine_door.h"

#include "tests/program/temporary_directory.h"
#include "vorhost/run/run_failure.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

TMachineOptions TreeOptions(const std::string& sysroot) {
    TMachineOptions options;
    options.sysroot = sysroot;
    return options;
}

std::string FailureOf(const std::string& sysroot) {
    try {
        const TMachineDoor door(TreeOptions(sysroot));
    } catch (const TRunFailure& failure) {
        return failure.what();
    }
    return "no failure";
}

TEST(MachineDoor, ReadsTheFilesOfATree) {
    const TTemporaryDirectory directory;
    std::filesystem::create_directory(directory / "proc");
    WriteFile(directory / "proc/version", "Linux\n");
    const TMachineDoor door(TreeOptions(directory.GetPath()));
    EXPECT_EQ(door.GetFiles().ReadText("/proc/version").value, "Linux\n");
}

TEST(MachineDoor, RejectsAMissingDirectoryAndAFile) {
    const TTemporaryDirectory directory;
    WriteFile(directory / "file", "");
    EXPECT_EQ(FailureOf(directory / "absent"),
              "cannot collect from " + (directory / "absent") + ": no such directory");
    EXPECT_EQ(FailureOf(directory / "file"),
              "cannot collect from " + (directory / "file") +
                  ": not a directory; unpack a capture first: mkdir DIR && tar -xJf FILE -C DIR");
}

TEST(MachineDoor, RejectsADirectoryThatIsNotATreeAndSuggestsOneInIt) {
    const TTemporaryDirectory directory;
    const std::string failure =
        "cannot collect from " + directory.GetPath() +
        ": not the tree of a machine: it has neither proc nor sys nor noxinfo-system.txt";
    EXPECT_EQ(FailureOf(directory.GetPath()), failure);
    std::filesystem::create_directories(directory / "machine/proc");
    EXPECT_EQ(FailureOf(directory.GetPath()), failure + "; did you mean " + (directory / "machine") + "?");
}

TEST(MachineDoor, PrefersTheTimeOfTheOptionsToThatOfTheCapture) {
    const TTemporaryDirectory directory;
    std::filesystem::create_directory(directory / "proc");
    TMachineOptions options = TreeOptions(directory.GetPath());
    EXPECT_FALSE(TMachineDoor(options).FindLocalTime().has_value());
    TCaptureAnswers answers;
    answers.localTime = "20230101000000.000000+000";
    WriteFile(directory / "noxinfo-system.txt", FormatCaptureAnswers(answers));
    EXPECT_EQ(TMachineDoor(options).FindLocalTime()->ToString(), "20230101000000.000000+000");
    options.localTime = NKELVOR20::TCIMDateTime::FromText("20240229134500.000000+060");
    EXPECT_EQ(TMachineDoor(options).FindLocalTime()->ToString(), "20240229134500.000000+060");
}

TEST(MachineDoor, KeepsTheDevicesOfATreeAsleepUnlessTheyMayBeWoken) {
    const TTemporaryDirectory directory;
    const std::string function = "/sys/bus/pci/devices/0000:01:00.0";
    std::filesystem::create_directories(directory / "proc");
    std::filesystem::create_directories(directory / function.substr(1));
    WriteFile(directory / function.substr(1) + "/power_state", "D3cold\n");
    WriteFile(directory / function.substr(1) + "/config", "bytes");
    TMachineOptions options = TreeOptions(directory.GetPath());
    EXPECT_EQ(TMachineDoor(options).GetFiles().ReadText(function + "/config").status, EReadStatus::asleep);
    options.wakes = true;
    EXPECT_EQ(TMachineDoor(options).GetFiles().ReadText(function + "/config").value, "bytes");
    options.wakes = false;
    WriteFile(directory / "noxinfo-system.txt", FormatCaptureAnswers({}));
    EXPECT_EQ(TMachineDoor(options).GetFiles().ReadText(function + "/config").value, "bytes");
}

TEST(MachineDoor, RefusesAgainWhatWasAsleepDuringTheCapture) {
    const TTemporaryDirectory directory;
    std::filesystem::create_directories(directory / "proc");
    TCaptureAnswers answers;
    answers.refusals = {{{EAccess::read, "/sys/bus/pci/devices/0000:01:00.0/config"}, EReadStatus::asleep}};
    WriteFile(directory / "noxinfo-system.txt", FormatCaptureAnswers(answers));
    const TMachineDoor door(TreeOptions(directory.GetPath()));
    EXPECT_EQ(door.GetFiles().ReadText("/sys/bus/pci/devices/0000:01:00.0/config").status,
              EReadStatus::asleep);
}

TEST(MachineOptions, DescribeTheMachine) {
    EXPECT_EQ(DescribeMachine(TreeOptions("/")), "this machine");
    EXPECT_EQ(DescribeMachine(TreeOptions("/srv/tree")), "tree /srv/tree");
}

}  // namespace
}  // namespace NVORHOST
