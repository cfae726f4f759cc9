// The frame that both documents share: declaration, root element, criteria and context.
#pragma once

#include "host/cim_interfaces.h"
#include "writer/line_output.h"

#include <boost/shared_ptr.hpp>

#include <string>
#include <string_view>

/// Writes the declaration and the opening tag of the root element, after taking the time.
/// `timestampAttribute` is the text up to the time: the two documents differ in its blanks.
void WriteDocumentStart(TLineOutput& out, std::string_view timestampAttribute);

/// Writes the closing tag of the root element.
void WriteDocumentEnd(TLineOutput& out);

/// Writes the criteria block if `criteriaName` is exactly "NOXSystemInfo", nothing otherwise.
void WriteCriteria(TLineOutput& out, std::string_view criteriaName, std::string_view criteriaId);

/// Writes the context block of "HardwareInventory" or "SystemInfo", an empty block for any other name.
/// `collected` may be null unless the name is "HardwareInventory".
void WriteContext(TLineOutput& out, std::string_view contextName,
                  const boost::shared_ptr<NKELVOR20::ICIMNamespace>& collected);
