// A fixture for requests: a collected namespace and result classes of the real model, and a temporary working
// directory.
#pragma once

#include "tests/plugin/plugin_fixture.h"
#include "tests/plugin/working_directory.h"
#include "vorhost/model/memory_namespace.h"

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include <string>
#include <utility>
#include <vector>

namespace NTEST {

inline const std::string hardwareFile = "hardwareinventory.xml.gz";
inline const std::string systemFile = "systeminformation.xml.gz";

class TRequestFixture : public TPluginFixture {
  protected:
    using TClassPtr = boost::shared_ptr<NKELVOR20::ICIMClass>;

    TRequestFixture() {
        const auto disk = collected_->AddClass("KELSG_DiskDrive")->NewInstance();
        disk->Set("DeviceID", NKELVOR20::TCIMValue("sda <fast>"));
        disk->CommitInstance({});
    }

    /// Adds an empty class of that name to the result list.
    boost::shared_ptr<NVORHOST::TMemoryClass> AddResultClass(const std::string& name) {
        auto added =
            boost::make_shared<NVORHOST::TMemoryClass>(name, std::vector<NVORHOST::TPropertyDeclaration>());
        resultClasses_.push_back(added);
        return added;
    }

    void SetIdentity(const std::string& kelId) {
        host_.environment = [kelId](const std::string&) { return kelId; };
    }

    void SetReachable(const std::string& entityId) {
        host_.hostnameAvailable = [](const std::string&, const std::string&) { return 0; };
        host_.entityId = [entityId](const NDOUBLES::THost::TUploadArguments&) { return entityId; };
    }

    void Request() { plugin_->GetData(collected_, resultClasses_); }

    /// Returns the code of the TVORException that the request throws; -1 if it throws none.
    int RequestFailure();

    /// Renders the document of the collected namespace with the writer alone.
    std::string HardwareDocument() const;
    std::string SystemDocument() const;

    using TProperties = std::vector<std::pair<std::string, std::string>>;
    /// Returns names and texts in the order in which they were set, "(null)" for a null.
    static TProperties PropertiesOf(const NVORHOST::TMemoryInstance& instance);
    /// Returns the properties of the only instance of `resultClass`.
    static TProperties PropertiesOfOnlyInstance(const NVORHOST::TMemoryClass& resultClass);

    TWorkingDirectory directory_;
    boost::shared_ptr<NVORHOST::TMemoryNamespace> collected_ =
        boost::make_shared<NVORHOST::TMemoryNamespace>();
    std::vector<TClassPtr> resultClasses_;
};

}  // namespace NTEST
