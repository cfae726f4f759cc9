// A file system is shut down during a run, as by a power failure. After it is mounted again, either the
// earlier or the new documents are there, complete.
#include "faulted_run.h"
#include "tests/program/rounds.h"
#include "tests/program/temporary_directory.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <iostream>
#include <string>

namespace NTEST {
namespace {

using NVORHOST::ReadCompressedFile;
using NVORHOST::ReadFile;
using NVORHOST::Rounds;
using NVORHOST::RunProgram;
using NVORHOST::TTemporaryDirectory;

const std::string smallServer = NOXINFO_TEST_DATA "/small-server.xml";

// Without this option, ext4 writes a file's data when the file is renamed, which would hide a missing sync.
constexpr char mountDisk[] = "mount -o loop,noauto_da_alloc disk mounted";
// The kernel releases a loop device some time after its file system is unmounted. Mounting through a second
// device before that would give the disk two inconsistent caches.
constexpr char unmountDisk[] =
    "umount mounted && for pause in $(seq 1000); do "
    "[ -n \"$(PATH=$PATH:/usr/sbin:/sbin losetup -j disk)\" ] || exit 0; sleep 0.01; done; "
    "echo the loop device is not released >&2; exit 1";
constexpr char makeDisk[] = "truncate -s 4M disk && mkfs.ext4 -q -F -b 1024 -N 64 disk && mkdir -p mounted";

class TPowerCut : public testing::TestWithParam<const char*> {
  protected:
    ~TPowerCut() override { (void)Unmount(); }

    bool Unmount() { return Run(unmountDisk); }
    bool Run(const std::string& command) {
        const auto result = RunProgram("sh", {{"-c", command}, folder_.GetPath(), {}});
        error_ = result.standardError;
        return result.status == 0;
    }
    bool MakeDisk() {
        // mkfs and mount may be outside of an ordinary user's PATH.
        return Run(std::string("PATH=$PATH:/usr/sbin:/sbin; ") + makeDisk + " && " + mountDisk +
                   " && mkdir mounted/target") &&
               Unmount();
    }

    /// Returns false if the run makes fewer calls.
    bool CutAt(const char* kind, unsigned number) {
        EXPECT_TRUE(Run(mountDisk)) << error_;
        const auto run = RunWithFault({{"collect", "--namespace", smallServer, "--reachability", "no",
                                        "--kel-id", "K1", "--directory", folder_ / "mounted/target"},
                                       "",
                                       {}},
                                      {kind, number, false, GetParam()}, folder_ / "mounted");
        EXPECT_TRUE(Unmount() && Run(mountDisk)) << error_;
        return !run.path.empty();
    }

    /// Returns "none", "earlier", "new", or a description of the fault.
    std::string StateOf(const std::string& name) const {
        const std::string path = folder_ / "mounted/target/" + name;
        if (!std::filesystem::exists(path)) {
            return "none";
        }
        const std::string text = ReadCompressedFile(path);
        if (text == "earlier") {
            return text;
        }
        return text.ends_with("</ResourceCollection>\n")
                   ? "new"
                   : "broken, " + std::to_string(text.size()) + " bytes";
    }

    TTemporaryDirectory folder_;
    std::string error_;
};

TEST_P(TPowerCut, LeavesEarlierOrNewDocumentsComplete) {
    if (!MakeDisk()) {
        GTEST_SKIP() << "no file system can be made and mounted here: " << error_;
    }
    int cuts = 0;
    const int step = Rounds(1) > 1 ? 1 : 3;  // the normal suite tests every third call
    for (const char* kind : {"write", "sync", "rename", "unlink"}) {
        for (unsigned number = 1;; number += static_cast<unsigned>(step)) {
            ASSERT_TRUE(
                Run(std::string(mountDisk) +
                    " && rm -rf mounted/target/.v* && for name in hardwareinventory systeminformation; do "
                    "printf earlier >mounted/target/$name.xml.gz; done && sync") &&
                Unmount())
                << error_;
            const bool isCut = CutAt(kind, number);
            for (const char* name : {"hardwareinventory.xml.gz", "systeminformation.xml.gz"}) {
                const std::string state = StateOf(name);
                EXPECT_TRUE(state == "new" || (state == "earlier" && isCut))
                    << kind << " " << number << ": " << name << " is " << state;
            }
            ASSERT_TRUE(Unmount()) << error_;
            if (!isCut) {
                break;
            }
            ++cuts;
        }
    }
    std::cout << cuts << " cuts\n";
    EXPECT_GT(cuts, 0);
}

// If the journal of the file system is flushed, names are on the disk but data is not; otherwise neither is.
INSTANTIATE_TEST_SUITE_P(Losing, TPowerCut, testing::Values("CUT", "CUTNAMES"),
                         [](const auto& value) { return std::string(value.param); });

}  // namespace
}  // namespace NTEST
