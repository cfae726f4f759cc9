// Writes the instances of one class as elements, with the properties that the catalogue lists for the class.
#pragma once

#include "host/cim_interfaces.h"
#include "writer/line_output.h"

#include <boost/shared_ptr.hpp>

#include <string>

/// Writes one element for each instance of `className`, in the order in which the host enumerates them.
/// Absent: nothing is written for a class that the namespace lacks or the catalogue does not list.
/// Errors: a TVORException of another code than 15 from the class lookup is thrown anew with its code;
///         exceptions thrown later leave the element open.
void WriteInstances(TLineOutput& out, const std::string& className, const std::string& resourceType,
                    const boost::shared_ptr<NKELVOR20::ICIMNamespace>& collected);
