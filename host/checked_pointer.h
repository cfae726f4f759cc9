// Boost's shared pointer as the contract requires it: access through a null pointer calls the host's
// `boost::assertion_failed`. Every header that uses shared pointers includes this one.
#pragma once

// Boost checks the access only if the macro is defined before its headers are included, in every unit of the
// program; a unit without it would dereference the null pointer. The macro is not defined here, because a
// unit may have included boost's headers already.
#if !defined(BOOST_ENABLE_ASSERT_HANDLER) || defined(BOOST_DISABLE_ASSERTS)
#error "host/ needs -DBOOST_ENABLE_ASSERT_HANDLER and no BOOST_DISABLE_ASSERTS: null pointers are checked"
#endif

#include <boost/shared_ptr.hpp>  // IWYU pragma: export
