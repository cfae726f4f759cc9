// Identifiers by which the receiving side recognises a resource in successive inventories: the digest of a
// readable key. Identifiers already in use fix every byte of the key.
#pragma once

#include "host/cim_interfaces.h"

#include <boost/shared_ptr.hpp>

#include <string>

/// Returns the identifier of a resource, 32 hexadecimal digits, made from its type and the value of one key
/// property, or of two if `keyProperty2` is not empty.
/// Absent: a key that cannot be read is left out, after a line in the log (level 3). Such resources of one
///         type share an identifier.
/// Errors: std::bad_alloc; what the logger throws. Exceptions of the instance and its properties are caught.
std::string MakeResourceId(const std::string& resourceType,
                           const boost::shared_ptr<NKELVOR20::ICIMInstance>& instance,
                           const std::string& keyProperty1, const std::string& keyProperty2);

/// Returns the identifier for a key. The digest includes the key's terminating zero byte.
std::string DigestKey(const std::string& key);
