// Lists the instances of a host class.
#pragma once

#include "host/cim_interfaces.h"

#include <boost/shared_ptr.hpp>

#include <vector>

/// Returns the instances in the order in which the host enumerates them.
std::vector<boost::shared_ptr<NKELVOR20::ICIMInstance>> ListInstances(NKELVOR20::ICIMClass& cimClass);
