// The one text form of dates in the documents.
#pragma once

#include "host/cim_date_time.h"

#include <string>

/// Returns for example "2009-03-07T14:05:09+01:00".
/// Shape: fields are not range-checked, and their widths are minimums. The minutes of the offset are always
///        00. An offset below -720 minutes comes out as a large positive one.
std::string FormatDateTime(NKELVOR20::TCIMDateTime dateTime);

/// Returns the host's local time in that form.
std::string GetTimestamp();
