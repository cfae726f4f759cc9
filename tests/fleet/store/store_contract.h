// Tests of the contract that every engine keeps. A test program links fleet_store_contract and instantiates
// it:
//     INSTANTIATE_TEST_SUITE_P(Sqlite, FleetStore, testing::Values(TStoreMaker{"sqlite", MakeStore}));
#pragma once

#include "fleet/store/fleet_store.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <ostream>
#include <string>

namespace NFLEET {

/// An engine under test.
struct TStoreMaker {
    std::string name;
    /// Returns a new, empty store without tables.
    std::function<std::unique_ptr<IFleetStore>()> make;
};

inline void PrintTo(const TStoreMaker& maker, std::ostream* out) {
    *out << maker.name;
}

class FleetStore : public testing::TestWithParam<TStoreMaker> {
  protected:
    FleetStore() : store_(GetParam().make()) { store_->Migrate(); }

    void Write(const TBatch& batch) {
        store_->BeginBatch();
        store_->Write(batch);
    }

    std::unique_ptr<IFleetStore> store_;
};

}  // namespace NFLEET
