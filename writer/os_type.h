// Operating systems as the documents name them, by the CIM OSType codes of the host.
#pragma once

#include <string_view>

struct TOsType {
    unsigned short code;
    std::string_view platform;  ///< "win32", "win64", "linux" or "other"
    std::string_view name;      ///< display name
};

/// The code that is used when the host cannot give one. No operating system has it.
inline constexpr unsigned short unknownOsCode = 99;

/// Maps a CIM OSType code; "other" and "Other" for an unlisted code.
const TOsType& GetOsType(unsigned short code);
