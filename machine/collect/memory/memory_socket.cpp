#include "machine/collect/memory/memory_socket.h"

#include "machine/collect/frame/named_place.h"
#include "machine/parse/placeholders.h"

namespace NVORHOST {

std::vector<TSmbiosMemoryDevice> ReadMemorySockets(const std::vector<TSmbiosStructure>& structures) {
    constexpr std::uint8_t deviceType = 17;
    std::vector<TSmbiosMemoryDevice> sockets;
    for (const TSmbiosStructure& structure : structures) {
        if (structure.GetType() == deviceType) {
            sockets.push_back(ParseSmbiosMemoryDevice(structure));
        }
    }
    return sockets;
}

std::vector<TSmbiosMemoryArray> ReadMemoryArrays(const std::vector<TSmbiosStructure>& structures) {
    constexpr std::uint8_t arrayType = 16;
    std::vector<TSmbiosMemoryArray> arrays;
    for (const TSmbiosStructure& structure : structures) {
        if (structure.GetType() == arrayType) {
            arrays.push_back(ParseSmbiosMemoryArray(structure));
        }
    }
    return arrays;
}

std::vector<TKeySource> MakeSocketKeySources(const std::vector<TSmbiosMemoryDevice>& sockets) {
    std::vector<TNamedPlace> places;
    places.reserve(sockets.size());
    for (const TSmbiosMemoryDevice& socket : sockets) {
        places.push_back({WithoutPlaceholder(socket.locator), WithoutPlaceholder(socket.bank)});
    }
    return MakePlaceKeySources(places, "memory device");
}

}  // namespace NVORHOST
