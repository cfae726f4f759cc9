// Facts about the collected machine that take several host calls to read.
//
// Binary contract: static operations exported by the host's core library.
#pragma once

#include "host/checked_pointer.h"
#include "host/cim_interfaces.h"
#include "host/export.h"

#include <string>

namespace NKELVOR20 {

/// Reads well-known properties of single instances.
/// Errors, for every operation: throws TVORException if the class is missing (classNotFound), does not have
/// exactly one instance (notSingleInstance), lacks the property (propertyNotFound), or the value is null
/// (valueIsNull). Options maps are ignored.
class NKELVOR20_API TCIMSchemaHelper {
  public:
    TCIMSchemaHelper() = delete;

    /// Returns the four characters after "-[" in `ProductName` of `KELSG_ComputerSystem`; the whole name if
    /// it has no "-[".
    static std::string GetMachineType(boost::shared_ptr<ICIMNamespace> collected);
    /// Returns the three characters after the machine type in the same name; the whole name if it has no
    /// "-[". Throws TVORException with `malformedData` if the name ends before them.
    static std::string GetModelNumber(boost::shared_ptr<ICIMNamespace> collected);
    /// Returns `SerialNumber` of `KELSG_ComputerSystem`.
    static std::string GetSerialNumber(boost::shared_ptr<ICIMNamespace> collected, TOptionsMap options);
    /// Returns `OSType` of `KELSG_OperatingSystem`, a CIM OSType code (36 is Linux).
    static unsigned short GetOperatingSystemType(boost::shared_ptr<ICIMNamespace> collected);
    /// Returns `Version` of `KELSG_OperatingSystem`.
    static std::string GetOperatingSystemVersion(boost::shared_ptr<ICIMNamespace> collected);
    /// Returns `Version` of `KELSG_DataSource`, the software that filled the namespace.
    static std::string GetDataSourceVersion(boost::shared_ptr<ICIMNamespace> collected, TOptionsMap options);
};

}  // namespace NKELVOR20
