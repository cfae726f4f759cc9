// KELSG_IPProtocolEndpoint: the addresses of the machine's network interfaces.
#pragma once

#include "machine/collect/frame/class_shape.h"
#include "machine/collect/frame/source_patterns.h"

#include <span>

namespace NVORHOST {

class TCollection;

/// One instance for each address of an interface, by name of the interface, IPv4 before IPv6, by address. A
/// tree that was captured without the kernel's answer tells the interfaces of IPv4 addresses by its routes;
/// an address that none of them explains is known by itself alone.
void CollectIpEndpoints(TCollection& collection);
std::span<const TClassShape> GetIpEndpointClasses();
std::span<const TSourcePattern> GetIpEndpointSources();

}  // namespace NVORHOST
