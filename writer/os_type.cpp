#include "writer/os_type.h"

#include <algorithm>
#include <iterator>

namespace {

// Readers of the documents know no platform for ESX.
// clang-format off
constexpr TOsType osTypes[] = {
    {15, "win32", "Windows"},
    {16, "win32", "Windows"},
    {17, "win32", "Windows"},
    {18, "win32", "Windows"},
    {19, "win32", "Windows"},
    {36, "linux", "Linux"},
    {58, "win32", "Windows 2000"},
    {63, "win32", "Windows"},
    {67, "win32", "Windows XP"},
    {69, "win32", "Windows server 2003"},
    {70, "win64", "Windows server 2003"},
    {71, "win64", "Windows XP"},
    {72, "win32", "Windows server 2003"},
    {73, "win64", "Windows server 2003"},
    {74, "win32", "Windows Vista"},
    {75, "win64", "Windows Vista"},
    {76, "win32", "Windows server 2008"},
    {77, "win64", "Windows server 2008"},
    {78, "other", "Vmware ESX Server"},
};
// clang-format on

constexpr TOsType unlistedOsType = {unknownOsCode, "other", "Other"};

}  // namespace

const TOsType& GetOsType(unsigned short code) {
    const auto* const row = std::ranges::find(osTypes, code, &TOsType::code);
    return row == std::end(osTypes) ? unlistedOsType : *row;
}
