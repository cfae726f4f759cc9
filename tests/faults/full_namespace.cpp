#include "full_namespace.h"

#include "writer/catalogue/resource_catalogue.h"

#include <boost/make_shared.hpp>

#include <string>
#include <vector>

namespace {

using NKELVOR20::TCIMDateTime;
using NKELVOR20::TCIMValue;
using NVORHOST::TMemoryNamespace;
using TType = TCIMValue::TCIMType;

const std::vector<TCIMValue>& Values() {
    static const std::vector<TCIMValue> values = {
        "a text of more than fifteen characters",
        "<&> \r\n\t\xC3\xA9, more than fifteen too",
        TCIMValue(std::uint64_t{18446744073709551615U}),
        TCIMValue(std::int8_t{-128}),
        TCIMValue(true),
        TCIMValue(2.5),
        TCIMValue(*TCIMDateTime::FromText("20260307140509.123456+060")),
        TCIMValue::Array(TType::eUint16, {TCIMValue(std::uint16_t{2}), TCIMValue(std::uint16_t{65535})}),
        TCIMValue::Array(TType::eString, {"the first of two elements", "the <second> of two elements"}),
        TCIMValue(TType(TType::eString)),
        TCIMValue(u'x'),
        TCIMValue::Reference("KELSG_Card.Tag=\"board\""),
    };
    return values;
}

/// Properties whose readers require a certain shape.
TCIMValue ValueOf(const std::string& property, std::size_t turn) {
    if (property == "ProductName") {
        return "Server of the usual kind -[884021X]-";
    }
    return Values()[turn % Values().size()];
}

}  // namespace

boost::shared_ptr<TMemoryNamespace> MakeFullNamespace(int instancesPerClass) {
    auto collected = boost::make_shared<TMemoryNamespace>();
    std::size_t turn = 0;
    for (const TResourceClass& row : GetResourceCatalogue()) {
        const auto cimClass = collected->AddClass(std::string(row.className));
        for (int number = 0; number < instancesPerClass; ++number) {
            const auto instance = cimClass->NewInstance();
            instance->Set("ElementName", "the element called number " + std::to_string(number));
            instance->Set("Description", "<described> as number " + std::to_string(number));
            for (const TPropertyRow& property : row.properties) {
                if (!property.sourceName.empty()) {
                    instance->Set(property.sourceName, ValueOf(std::string(property.sourceName), turn++));
                }
            }
            instance->Set(row.keyProperty, "the key called number " + std::to_string(number));
            instance->CommitInstance({});
        }
    }
    return collected;
}
