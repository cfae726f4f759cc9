// The fixed parts of system information.
#pragma once

#include <string_view>

namespace NINVENTORY {

/// The text between the first tag of the document and the list of its resource.
inline constexpr std::string_view systemInformationContext =
    "<ResourceCollectionCriteria criteriaName=\"NOXSystemInfo\" criteriaId=\"default.NOXSystemInfo\">\n"
    "<ResourceListCriteria resourceType=\"NOXSystemInfo\" />\n"
    "</ResourceCollectionCriteria>\n"
    "<ResourceCollectionContext>\n"
    "<ResourceInstance resourceName=\"NOXSystemInfo_ContextName\""
    " resourceId=\"NOXSystemInfo_Context_ID_1\" resourceType=\"NOXSystemInfo_Type\">\n"
    "<Property name=\"NOXSystemInfo_Name\" type=\"string\">\n"
    "<Value>SystemInfo</Value>\n"
    "</Property>\n"
    "</ResourceInstance>\n"
    "</ResourceCollectionContext>\n";

}  // namespace NINVENTORY
