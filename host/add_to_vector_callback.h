// Collects the instances of an enumeration, in order.
//
// Binary contract: one pointer, no virtual operations; all members inline.
#pragma once

#include "host/checked_pointer.h"

#include <functional>
#include <vector>

namespace NKELVOR20 {

// std::unary_function was removed in C++17, but it is a base class in the contract, and the standard library
// still has it, marked as deprecated.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

/// A callback for `ICIMClass::EnumerateInstances` that appends each pointer to a vector and continues. The
/// vector is non-owning and must outlive every copy of the callback.
template <typename T>
class TAddToVectorCallback : public std::unary_function<boost::shared_ptr<T>, bool> {
  public:
    explicit TAddToVectorCallback(std::vector<boost::shared_ptr<T>>* target) : target_(target) {}

    bool operator()(boost::shared_ptr<T> item) {
        target_->push_back(item);
        return true;
    }

  private:
    std::vector<boost::shared_ptr<T>>* target_;
};

#pragma GCC diagnostic pop

}  // namespace NKELVOR20
