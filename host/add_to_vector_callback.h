// Gathers what an enumeration delivers, in order.
//
// Binary contract: one pointer, no virtual operations; all members inline.
#pragma once

#include "host/checked_pointer.h"

#include <functional>
#include <vector>

namespace NKELVOR20 {

// std::unary_function left the standard with C++17, but it is part of this type's published shape, and the
// standard library still carries it under a deprecation mark.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

/// A callback for `ICIMClass::EnumerateInstances` that appends each pointer to a vector and asks for the next
/// one. The vector belongs to the caller and must outlive every copy of the callback.
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
