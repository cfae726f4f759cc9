// The names of the instance that plug-ins return.
#pragma once

namespace NVORHOST {

inline constexpr char resultClassName[] = "KELSG_CADAT";
/// The property with the compressed hardware document in Base64.
inline constexpr char inventoryProperty[] = "InventoryRCF";

}  // namespace NVORHOST
