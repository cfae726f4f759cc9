// A request over a full namespace while each allocation fails in turn: it succeeds completely or not at all,
// passes unhandled exceptions on, and leaks nothing.
#include "full_request.h"
#include "tests/allocations/allocation_faults.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <iostream>
#include <string>

namespace {

using NDOUBLES::TLogLine;
using NTEST::LiveAllocations;
using NTEST::TAllocationFault;

const std::string frameEnd = "</ResourceCollection>\n";

class TFullRequest : public NTEST::TFullRequest {
  protected:
    /// Checks that the files of a committed instance contain complete documents.
    void CheckFiles() {
        const std::string hardware = NTEST::Unzip(NTEST::hardwareFile);
        if (!LoggedALostKey()) {
            EXPECT_TRUE(hardware == hardwareDocument_) << "another document";
        }
        // An identifier may be made without its key; its length is the same.
        EXPECT_EQ(hardware.size(), hardwareDocument_.size());
        if (std::filesystem::exists(NTEST::systemFile)) {
            EXPECT_TRUE(NTEST::Unzip(NTEST::systemFile).ends_with(frameEnd));
        }
    }

    /// Returns false if the request needs fewer allocations.
    bool RequestFailingAllocation(std::size_t number) {
        EEnd end = EEnd::other;
        bool hasStruck = false;
        {
            const auto fault = TAllocationFault::OfNumber(number);
            end = RequestEnd();
            hasStruck = fault.HasStruck();
        }
        EXPECT_NE(end, EEnd::other);
        if (resultClass_->GetInstances().empty()) {
            // Every loss is logged.
            EXPECT_TRUE(end != EEnd::returned ||
                        Logged({0, "NOXINFO: Can not get machine type from CIM result"}));
        } else {
            EXPECT_EQ(end, EEnd::returned);
            CheckInstance(/*mayLackFile=*/false);
            CheckFiles();
        }
        return hasStruck;
    }
};

TEST_F(TFullRequest, SucceedsCompletelyOrNotAtAllWhicheverAllocationFails) {
    StartAfresh();
    {
        SCOPED_TRACE("without a fault");  // creates the objects that are kept for the life of the process
        EXPECT_FALSE(RequestFailingAllocation(1'000'000));
    }
    StartAfresh();
    const std::size_t liveBefore = LiveAllocations();
    std::size_t committed = 0;
    std::size_t number = 1;
    for (bool hasStruck = true; hasStruck && !HasFailure(); ++number) {
        {
            SCOPED_TRACE("allocation " + std::to_string(number));
            hasStruck = RequestFailingAllocation(number);
            committed += resultClass_->GetInstances().size();
        }
        StartAfresh();
        EXPECT_EQ(LiveAllocations(), liveBefore) << "allocation " << number;
    }
    std::cout << number - 1 << " allocations failed, " << committed << " requests answered all the same\n";
    RecordProperty("allocationsFailed", static_cast<int>(number - 1));
    EXPECT_GT(number, 1000U) << "hardly a full request";
    EXPECT_GT(committed, 10U) << "the handled places were not met";
}

TEST_F(TFullRequest, EndsWithoutLeaksIfAllLaterAllocationsFail) {
    StartAfresh();
    Request();
    StartAfresh();
    const std::size_t liveBefore = LiveAllocations();
    constexpr std::size_t all = 1'000'000;
    for (std::size_t number = 1;; number += 1 + number / 8) {
        EEnd end = EEnd::other;
        {
            const auto fault = TAllocationFault::OfRun(number, all);
            end = RequestEnd();
        }
        ASSERT_NE(end, EEnd::other) << "from allocation " << number;
        if (end == EEnd::returned) {
            EXPECT_EQ(resultClass_->GetInstances().size(), 1U);
            break;
        }
        EXPECT_TRUE(resultClass_->GetInstances().empty()) << "from allocation " << number;
        StartAfresh();
        ASSERT_EQ(LiveAllocations(), liveBefore) << "from allocation " << number;
    }
}

TEST_F(TFullRequest, CommitsNothingWithoutMemoryForTheDocument) {
    StartAfresh();
    // Fails the reserve for the text and its later growth.
    const auto fault = TAllocationFault::OfFirst(100, 2000);
    EXPECT_EQ(RequestEnd(), EEnd::outOfMemory);
    EXPECT_TRUE(resultClass_->GetInstances().empty());
    EXPECT_FALSE(std::filesystem::exists(NTEST::hardwareFile));
}

}  // namespace
