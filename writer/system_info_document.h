// The system-information document: one instance that describes the machine as a whole. Any of its sources may
// fail without making the document incomplete.
#pragma once

#include "host/cim_interfaces.h"
#include "writer/line_output.h"

#include <boost/shared_ptr.hpp>

#include <string>
#include <string_view>

/// Writes the whole document.
void WriteSystemInfoDocument(TLineOutput& out, const boost::shared_ptr<NKELVOR20::ICIMNamespace>& collected);

/// Writes the resource list with the one instance.
void WriteSystemInfoList(TLineOutput& out, std::string_view resourceType,
                         const boost::shared_ptr<NKELVOR20::ICIMNamespace>& collected);

/// Writes one property, without a value element if `value` is empty. Nothing is escaped.
void WriteSystemInfoProperty(TLineOutput& out, std::string_view name, std::string_view value,
                             std::string_view type);

/// Returns `Manufacturer` of the single `KELSG_ComputerSystem` instance.
/// Errors: TVORException with code 15 unless there is exactly one instance; otherwise what the host throws
///         for a missing class, property or value.
std::string GetManufacturer(const boost::shared_ptr<NKELVOR20::ICIMNamespace>& collected);
