// A request over everything, with every allocation of the process failing once: those of zlib and of the C
// library's files, too, which operator new does not see.
#include "full_request.h"
#include "malloc_faults.h"

#include <iostream>

namespace {

class TFullRequestOfMalloc : public NTEST::TFullRequest {
  protected:
    /// False when the request needs fewer allocations than that.
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
            // What zlib could not write for lack of memory is missing from the file, and so from the
            // instance.
            CheckInstance(/*mayLackFile=*/true);
        }
        return hasStruck;
    }
};

TEST_F(TFullRequestOfMalloc, EndsInOrderWhicheverMallocFails) {
    StartAfresh();
    {
        SCOPED_TRACE("without a fault");  // whatever is made once and kept is made by now
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
