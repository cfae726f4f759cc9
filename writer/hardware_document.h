// The hardware-inventory document.
#pragma once

#include "host/cim_interfaces.h"
#include "writer/line_output.h"

#include <boost/shared_ptr.hpp>

#include <string_view>

/// Writes the whole document.
void WriteHardwareDocument(TLineOutput& out, const boost::shared_ptr<NKELVOR20::ICIMNamespace>& collected);

/// Writes one resource list; an empty one for any type but "PhysicalElement" and "LogicalDevice".
void WriteHardwareList(TLineOutput& out, std::string_view resourceType,
                       const boost::shared_ptr<NKELVOR20::ICIMNamespace>& collected);
