// CIM type names as XML-schema type names, which the `type` attribute of a property holds.
#pragma once

#include <string_view>

/// Maps a CIM type name, compared exactly, to an XML-schema type name; "string" for an unlisted name.
std::string_view GetXmlSchemaType(std::string_view cimType);
