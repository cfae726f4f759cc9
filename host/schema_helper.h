// Answers about the collected machine that need more than one look into the namespace.
//
// Binary contract: static operations exported by the host's core library.
#pragma once

#include "host/checked_pointer.h"
#include "host/cim_interfaces.h"
#include "host/export.h"

#include <string>

namespace NKELVOR20 {

/// Reads well-known properties of single instances.
/// Errors, for every operation: throws TVORException when the class is missing (classNotFound), has not
/// exactly one instance (notSingleInstance), lacks the property (propertyNotFound), or the value is null
/// (valueIsNull). Options maps are accepted and not looked at.
class NKELVOR20_API TCIMSchemaHelper {
  public:
    TCIMSchemaHelper() = delete;

    /// The four characters behind "-[" in `ProductName` of `KELSG_ComputerSystem`; without "-[" the whole
    /// name.
    static std::string GetMachineType(boost::shared_ptr<ICIMNamespace> collected);
    /// The three characters behind the machine type in the same name; without "-[" the whole name. Throws
    /// TVORException with `malformedData` when the name ends before them.
    static std::string GetModelNumber(boost::shared_ptr<ICIMNamespace> collected);
    /// `SerialNumber` of `KELSG_ComputerSystem`.
    static std::string GetSerialNumber(boost::shared_ptr<ICIMNamespace> collected, TOptionsMap options);
    /// `OSType` of `KELSG_OperatingSystem`, a CIM OSType code (36 is Linux).
    static unsigned short GetOperatingSystemType(boost::shared_ptr<ICIMNamespace> collected);
    /// `Version` of `KELSG_OperatingSystem`.
    static std::string GetOperatingSystemVersion(boost::shared_ptr<ICIMNamespace> collected);
    /// `Version` of `KELSG_DataSource`, the software that filled the namespace.
    static std::string GetDataSourceVersion(boost::shared_ptr<ICIMNamespace> collected, TOptionsMap options);
};

}  // namespace NKELVOR20
