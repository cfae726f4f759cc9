// A namespace with one instance each of `KELSG_ComputerSystem` and `KELSG_OperatingSystem`, whose properties
// have values of every shape.
#include "host/cim_date_time.h"
#include "vorhost/model/memory_namespace.h"

#include <boost/make_shared.hpp>

#include <cstdint>

using NKELVOR20::TCIMDateTime;
using NKELVOR20::TCIMValue;

extern "C" NKELVOR20_API void MakeSampleNamespace(boost::shared_ptr<NKELVOR20::ICIMNamespace>& made) {
    const auto sample = boost::make_shared<NVORHOST::TMemoryNamespace>();
    const auto computer = sample->AddClass("KELSG_ComputerSystem")->NewInstance();
    computer->Set("ProductName", TCIMValue("Kessel K4 -[884021X]-"));
    computer->Set("SerialNumber", TCIMValue("KQ12345"));
    computer->Set("Start", TCIMValue(*TCIMDateTime::FromText("20090307140509.000000-210")));
    computer->Set("Status", TCIMValue::Array(TCIMValue::TCIMType::eUint16,
                                             {TCIMValue(std::uint16_t{2}), TCIMValue(std::uint16_t{5})}));
    computer->Set("Owner", TCIMValue(TCIMValue::TCIMType::eString));
    computer->CommitInstance({});
    const auto system = sample->AddClass("KELSG_OperatingSystem")->NewInstance();
    system->Set("OSType", TCIMValue(std::uint16_t{36}));
    system->Set("Version", TCIMValue("6.1.0"));
    system->CommitInstance({});
    const auto source = sample->AddClass("KELSG_DataSource")->NewInstance();
    source->Set("Version", TCIMValue("1.0.0"));
    source->CommitInstance({});
    made = sample;
}
