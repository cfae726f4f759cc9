// Writes one property of one instance as an element.
#pragma once

#include "host/cim_interfaces.h"
#include "host/cim_value.h"
#include "writer/line_output.h"

#include <boost/shared_ptr.hpp>

#include <string>
#include <string_view>

/// The form of a property: text that is written in addition to, or instead of, its own value.
enum class EPropertyForm : unsigned char {
    plain,                ///< the value
    sourceName,           ///< an element with the source name as its value, then the property if it exists
    operatingSystemName,  ///< an element with the operating system's name, then the property if it exists
    machineType,          ///< the machine type cut from the value
    model,                ///< the model number cut from the value
};

/// A property of the document, prepared once for all instances of a class.
struct TPropertyBinding {
    std::string startTag;    ///< the opening tag up to the value of `type`
    std::string sourceName;  ///< the host's name of the property
    EPropertyForm form;
};

TPropertyBinding BindProperty(std::string_view outputName, std::string sourceName);

/// Writes the property `sourceName` of `instance`. The form of `binding` decides what else is written.
/// Absent: nothing is written for a property that is null or has a null value.
/// Returns false if the instance has no such property (TVORException from the lookup).
/// Errors: std::out_of_range for a product name that ends before its model number; exceptions from the host
///         after the lookup. The element may then be left open.
bool WriteProperty(TLineOutput& out, const TPropertyBinding& binding, const std::string& sourceName,
                   const boost::shared_ptr<NKELVOR20::ICIMInstance>& instance);

/// Writes one "Value" line for a scalar, "VALUE" lines within "VALUE.ARRAY" for an array, nothing for null.
void WriteValueLines(TLineOutput& out, const NKELVOR20::TCIMValue& value);
