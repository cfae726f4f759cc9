#include "host/schema_helper.h"

#include "host/vor_exception.h"

#include <cstdint>
#include <limits>

namespace NKELVOR20 {
namespace {

constexpr char computerSystem[] = "KELSG_ComputerSystem";
constexpr char operatingSystem[] = "KELSG_OperatingSystem";
constexpr char dataSource[] = "KELSG_DataSource";

// A product name contains machine type and model in this form: "Server -[1234AB5]-".
constexpr char typeMark[] = "-[";
constexpr std::size_t typeOffset = 2;  // from the start of the mark
constexpr std::size_t typeLength = 4;
constexpr std::size_t modelOffset = typeOffset + typeLength;
constexpr std::size_t modelLength = 3;

boost::shared_ptr<ICIMInstance> GetSingleInstance(ICIMClass& cimClass) {
    boost::shared_ptr<ICIMInstance> single;
    int count = 0;
    cimClass.EnumerateInstances(
        [&](const boost::shared_ptr<ICIMInstance>& instance) {
            single = instance;
            return ++count < 2;
        },
        /*flag=*/true, {});
    if (count != 1) {
        throw TVORException(TVORStatusCode::notSingleInstance);
    }
    return single;
}

boost::shared_ptr<ICIMProperty> FindProperty(ICIMInstance& instance, const std::string& name) {
    try {
        return instance.GetProperty(name, {});
    } catch (const TVORException&) {
        // Namespaces use different codes for a missing property; the helper guarantees this one.
        throw TVORException(TVORStatusCode::propertyNotFound);
    }
}

TCIMValue GetSingleValue(const boost::shared_ptr<ICIMNamespace>& collected, const std::string& className,
                         const std::string& propertyName) {
    const auto cimClass = collected->GetClass(className, {});
    const auto instance = GetSingleInstance(*cimClass);
    const auto property = FindProperty(*instance, propertyName);
    if (property->IsNull({})) {
        throw TVORException(TVORStatusCode::valueIsNull);
    }
    return property->GetValue({});
}

std::string GetProductName(const boost::shared_ptr<ICIMNamespace>& collected) {
    return GetSingleValue(collected, computerSystem, "ProductName");
}

}  // namespace

std::string TCIMSchemaHelper::GetMachineType(boost::shared_ptr<ICIMNamespace> collected) {
    const std::string productName = GetProductName(collected);
    const auto mark = productName.find(typeMark);
    return mark == std::string::npos ? productName : productName.substr(mark + typeOffset, typeLength);
}

std::string TCIMSchemaHelper::GetModelNumber(boost::shared_ptr<ICIMNamespace> collected) {
    std::string productName = GetProductName(collected);
    const auto mark = productName.find(typeMark);
    if (mark == std::string::npos) {
        return productName;
    }
    if (mark + modelOffset > productName.size()) {
        throw TVORException(TVORStatusCode::malformedData);
    }
    return productName.substr(mark + modelOffset, modelLength);
}

std::string TCIMSchemaHelper::GetSerialNumber(boost::shared_ptr<ICIMNamespace> collected,
                                              TOptionsMap /*options*/) {
    return GetSingleValue(collected, computerSystem, "SerialNumber");
}

unsigned short TCIMSchemaHelper::GetOperatingSystemType(boost::shared_ptr<ICIMNamespace> collected) {
    const std::uint64_t type = GetSingleValue(collected, operatingSystem, "OSType").GetUnsigned();
    if (type > std::numeric_limits<unsigned short>::max()) {
        throw TVORException(TVORStatusCode::malformedData);
    }
    return static_cast<unsigned short>(type);
}

std::string TCIMSchemaHelper::GetOperatingSystemVersion(boost::shared_ptr<ICIMNamespace> collected) {
    return GetSingleValue(collected, operatingSystem, "Version");
}

std::string TCIMSchemaHelper::GetDataSourceVersion(boost::shared_ptr<ICIMNamespace> collected,
                                                   TOptionsMap /*options*/) {
    return GetSingleValue(collected, dataSource, "Version");
}

}  // namespace NKELVOR20
