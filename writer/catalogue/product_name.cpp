#include "writer/catalogue/product_name.h"

#include <cstddef>
#include <string_view>

namespace {

constexpr std::size_t machineTypeLength = 4;
constexpr std::size_t modelNumberLength = 3;

/// Returns up to `length` characters that start `offset` characters after the first "-[".
std::string CutAfterBracket(const std::string& productName, std::size_t offset, std::size_t length) {
    constexpr std::string_view bracket = "-[";
    const std::size_t found = productName.find(bracket);
    return found == std::string::npos ? productName
                                      : productName.substr(found + bracket.size() + offset, length);
}

}  // namespace

std::string CutMachineType(const std::string& productName) {
    return CutAfterBracket(productName, 0, machineTypeLength);
}

std::string CutModelNumber(const std::string& productName) {
    return CutAfterBracket(productName, machineTypeLength, modelNumberLength);
}
