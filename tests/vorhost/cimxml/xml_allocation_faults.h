// The XML library's own allocations, which fail on order.
#pragma once

#include <cstddef>

namespace NVORHOST::NTEST {

/// Fails the `number`-th allocation of the XML library from here on, counted from 1, as long as it lives. The
/// first one made must be made before the library is used.
class TXmlAllocationFault {
  public:
    explicit TXmlAllocationFault(std::size_t number);
    ~TXmlAllocationFault();
    TXmlAllocationFault(const TXmlAllocationFault&) = delete;
    TXmlAllocationFault& operator=(const TXmlAllocationFault&) = delete;

    bool HasStruck() const;
};

}  // namespace NVORHOST::NTEST
