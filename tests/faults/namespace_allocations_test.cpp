// Loading and saving a full namespace while each allocation fails in turn: the exception reaches the caller,
// nothing is loaded in part, and nothing leaks.
#include "full_namespace.h"
#include "tests/allocations/allocation_faults.h"
#include "tests/program/temporary_directory.h"
#include "vorhost/cimxml/load.h"
#include "vorhost/cimxml/save.h"

#include <gtest/gtest.h>

#include <iostream>
#include <new>
#include <sstream>
#include <string>
#include <utility>

namespace {

using NTEST::LiveAllocations;
using NTEST::TAllocationFault;
using NVORHOST::TMemoryNamespace;

std::string Saved(const TMemoryNamespace& source) {
    std::ostringstream document;
    NVORHOST::SaveNamespace(source, document);
    return document.str();
}

class TFullNamespace : public testing::Test {
  protected:
    TFullNamespace() { NVORHOST::WriteFile(path_, document_); }

    enum class EEnd { done, outOfMemory };

    EEnd LoadEnd(TMemoryNamespace& target) const {
        try {
            NVORHOST::LoadNamespace(path_, target);
            return EEnd::done;
        } catch (const std::bad_alloc&) {
            return EEnd::outOfMemory;
        }
    }

    /// Returns false if loading needs fewer allocations.
    bool LoadFailingAllocation(std::size_t number) {
        TMemoryNamespace target;
        target.AddClass("Known");
        bool hasStruck = false;
        EEnd end = EEnd::done;
        {
            const auto fault = TAllocationFault::OfNumber(number);
            end = LoadEnd(target);
            hasStruck = fault.HasStruck();
        }
        if (end == EEnd::outOfMemory) {
            EXPECT_TRUE(hasStruck);
            EXPECT_EQ(target.GetClasses().size(), 1U) << "loaded by half";
        } else {
            // Shrinking may fail for lack of memory, so objects may keep more than they need.
            EXPECT_TRUE(Saved(target) == expected_) << "loaded by half";
        }
        return hasStruck;
    }

    const boost::shared_ptr<TMemoryNamespace> full_ = MakeFullNamespace(1);
    const std::string document_ = Saved(*full_);
    const std::string expected_ = [&] {
        const auto known = MakeFullNamespace(1);
        TMemoryNamespace target;
        target.AddClass("Known");
        target.TakeClasses(std::move(*known));
        return Saved(target);
    }();
    const NVORHOST::TTemporaryDirectory directory_;
    const std::string path_ = directory_ / "full.xml";
};

TEST_F(TFullNamespace, IsLoadedCompletelyOrNotAtAllWhicheverAllocationFails) {
    // The first load of the process loads the module and keeps it.
    for (std::size_t number = 1; LoadFailingAllocation(number) && number < 20; ++number) {
    }
    LoadFailingAllocation(1'000'000'000);
    std::size_t number = 1;
    for (bool hasStruck = true; hasStruck && !HasFailure(); ++number) {
        SCOPED_TRACE("allocation " + std::to_string(number));
        const std::size_t liveBefore = LiveAllocations();
        hasStruck = LoadFailingAllocation(number);
        EXPECT_EQ(LiveAllocations(), liveBefore) << "leaks";
    }
    std::cout << number - 1 << " allocations failed\n";
    EXPECT_GT(number, 1000U) << "hardly a full namespace";
}

TEST_F(TFullNamespace, IsSavedCompletelyOrNotAtAllWhicheverAllocationFails) {
    std::size_t number = 1;
    for (bool hasStruck = true; hasStruck && !HasFailure(); ++number) {
        SCOPED_TRACE("allocation " + std::to_string(number));
        const std::size_t liveBefore = LiveAllocations();
        {
            std::ostringstream out;
            const auto fault = TAllocationFault::OfNumber(number);
            try {
                NVORHOST::SaveNamespace(*full_, out);
                // The stream stores a lack of memory in its state.
                EXPECT_TRUE(!out.good() || out.view() == document_);
            } catch (const std::bad_alloc&) {
                EXPECT_TRUE(fault.HasStruck());
            }
            hasStruck = fault.HasStruck();
        }
        EXPECT_EQ(LiveAllocations(), liveBefore) << "leaks";
    }
    std::cout << number - 1 << " allocations failed\n";
    EXPECT_GT(number, 100U) << "hardly a full namespace";
}

TEST_F(TFullNamespace, IsNotLoadedIfAllLaterAllocationsFail) {
    LoadFailingAllocation(1'000'000'000);
    for (std::size_t number = 1;; number += 1 + number / 2) {
        TMemoryNamespace target;
        EEnd end = EEnd::done;
        {
            const auto fault = TAllocationFault::OfRun(number, 1'000'000'000);
            end = LoadEnd(target);
        }
        if (end == EEnd::done) {
            break;
        }
        EXPECT_TRUE(target.GetClasses().empty()) << "from allocation " << number;
    }
}

}  // namespace
