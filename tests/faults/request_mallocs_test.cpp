// A request over a full namespace while each allocation of the process fails in turn, including those of zlib
// and of the C library, which do not use operator new.
#include "full_request.h"
#include "malloc_faults.h"

#include <iostream>

namespace {

class TFullRequestOfMalloc : public NTEST::TFullRequest {
  protected:
    /// Returns false if the request needs fewer allocations.
    bool RequestFailingMalloc(std::size_t number) {
        EEnd end = EEnd::other;
        bool hasStruck = false;
        {
            const TMallocFault fault(number);
            end = RequestEnd();
            hasStruck = fault.HasStruck();
        }
        EXPECT_NE(end, EEnd::other);
        if (!resultClass_->GetInstances().empty()) {
            EXPECT_EQ(end, EEnd::returned);
            // Data that zlib could not write for lack of memory is missing from the file and from the
            // instance.
            CheckInstance(/*mayLackFile=*/true);
        }
        return hasStruck;
    }
};

TEST_F(TFullRequestOfMalloc, EndsWithoutLeaksWhicheverMallocFails) {
    StartAfresh();
    {
        SCOPED_TRACE("without a fault");  // creates the objects that are kept for the life of the process
        EXPECT_FALSE(RequestFailingMalloc(1'000'000));
    }
    StartAfresh();
    const std::size_t liveBefore = LiveMallocs();
    std::size_t number = 1;
    for (bool hasStruck = true; hasStruck && !HasFailure(); ++number) {
        {
            SCOPED_TRACE("malloc " + std::to_string(number));
            hasStruck = RequestFailingMalloc(number);
        }
        StartAfresh();
        EXPECT_EQ(LiveMallocs(), liveBefore) << "malloc " << number;
    }
    std::cout << number - 1 << " calls of malloc failed\n";
    EXPECT_GT(number, 1000U) << "hardly a full request";
}

}  // namespace
