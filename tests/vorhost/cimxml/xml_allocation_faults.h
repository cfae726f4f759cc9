// Makes allocations of the XML library fail.
#pragma once

#include <cstddef>

namespace NVORHOST::NTEST {

/// While it exists, the `number`-th allocation of the XML library, counted from 1, fails. The first object
/// must be constructed before the library is used.
class TXmlAllocationFault {
  public:
    explicit TXmlAllocationFault(std::size_t number);
    ~TXmlAllocationFault();
    TXmlAllocationFault(const TXmlAllocationFault&) = delete;
    TXmlAllocationFault& operator=(const TXmlAllocationFault&) = delete;

    bool HasStruck() const;
};

}  // namespace NVORHOST::NTEST
