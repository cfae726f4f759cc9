// Sources of values in the form that the CIM schema has for the qualifier MappingStrings: a format with its
// authority, and parts that bars separate, such as "SMBIOS.DMTF|Type 2|07h".
#pragma once

#include <string>
#include <string_view>

namespace NVORHOST {

///   source                      mapping string
///   type 2, 07h                 SMBIOS.DMTF|Type 2|07h
///   /proc/meminfo MemTotal      File.Linux|/proc/meminfo|MemTotal
///   call uname nodename         Call.Linux|uname|nodename
///   property Manufacturer       Property.CIM|Manufacturer
///   any other                   Text.Noxinfo|any other
std::string MakeMappingString(std::string_view source);

/// Returns the source for which MakeMappingString returns `mapping`; `mapping` itself if it has another form.
std::string ParseMappingString(std::string_view mapping);

}  // namespace NVORHOST
