#include "tests/plugin/request_fixture.h"

#include "host/vor_exception.h"
#include "writer/nox_xml_writer.h"

#include <sstream>
#include <stdexcept>

namespace NTEST {

int TRequestFixture::RequestFailure() {
    try {
        Request();
    } catch (const NKELVOR20::TVORException& failure) {
        return failure.GetStatusCode().GetCode();
    }
    return -1;
}

std::string TRequestFixture::HardwareDocument() const {
    std::ostringstream text;
    TNOXXMLWriterImpl(text).WriteNamespace(collected_);
    return text.str();
}

std::string TRequestFixture::SystemDocument() const {
    std::ostringstream text;
    TNOXXMLWriterImpl(text).WriteSysInfoNamespace(collected_);
    return text.str();
}

TRequestFixture::TProperties TRequestFixture::PropertiesOf(const NVORHOST::TMemoryInstance& instance) {
    TProperties properties;
    for (const NVORHOST::TPropertyView& property : instance.GetProperties()) {
        properties.emplace_back(property.name,
                                property.value.IsNull() ? "(null)" : property.value.ToString(10));
    }
    return properties;
}

TRequestFixture::TProperties TRequestFixture::PropertiesOfOnlyInstance(
    const NVORHOST::TMemoryClass& resultClass) {
    if (resultClass.GetInstances().size() != 1) {
        throw std::runtime_error("not exactly one instance");
    }
    return PropertiesOf(*resultClass.GetInstances().front());
}

}  // namespace NTEST
