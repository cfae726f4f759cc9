// Machine type and model number within a product name such as "Server -[1234AB5]-".
#pragma once

#include <string>

/// Returns the up to four characters after the first "-["; the whole name if it has no "-[".
std::string CutMachineType(const std::string& productName);

/// Returns the up to three characters after the machine type; the whole name if it has no "-[".
/// Errors: throws std::out_of_range if the name ends within the machine type.
std::string CutModelNumber(const std::string& productName);
