// A fixture for requests over a full namespace, with checks that hold for every outcome.
#pragma once

#include "full_namespace.h"
#include "host/vor_exception.h"
#include "tests/plugin/plain_base64.h"
#include "tests/plugin/request_fixture.h"

#include <algorithm>
#include <filesystem>
#include <new>
#include <string>

namespace NTEST {

class TFullRequest : public TRequestFixture {
  protected:
    enum class EEnd { returned, outOfMemory, noFile, other };

    TFullRequest() {
        collected_ = MakeFullNamespace(2);
        hardwareDocument_ = HardwareDocument();
    }

    /// Resets host, result list and files.
    void StartAfresh() {
        NDOUBLES::ResetHost();
        SetIdentity("the identity 4711 of a customer");
        SetReachable("the entity of the customer 4711");
        resultClasses_.clear();
        resultClass_ = AddResultClass("KELSG_CADAT");
        std::filesystem::remove(hardwareFile);
        std::filesystem::remove(systemFile);
    }

    EEnd RequestEnd() {
        try {
            Request();
            return EEnd::returned;
        } catch (const std::bad_alloc&) {
            return EEnd::outOfMemory;
        } catch (const NKELVOR20::TVORException& failure) {
            return failure.GetStatusCode().GetCode() == 11 ? EEnd::noFile : EEnd::other;
        } catch (...) {
            return EEnd::other;
        }
    }

    bool Logged(const NDOUBLES::TLogLine& line) const {
        return std::find(host_.log.begin(), host_.log.end(), line) != host_.log.end();
    }
    bool LoggedALostKey() const {
        return std::any_of(host_.log.begin(), host_.log.end(), [](const NDOUBLES::TLogLine& line) {
            return line.message.starts_with("noxinfo-GetResourceID");
        });
    }

    /// Checks the committed instance: each property is either right or missing with a line in the log. A file
    /// that cannot be opened to be read back yields no bytes and no line.
    void CheckInstance(bool mayLackFile) {
        const TProperties properties = PropertiesOfOnlyInstance(*resultClass_);
        ASSERT_EQ(properties.size(), 4U);
        const bool hasIdentity = !Logged(DebugLine("When get ZETKELID, a problem happened."));
        EXPECT_EQ(properties[0].first, "InventoryRCF");
        EXPECT_EQ(properties[1].second, hasIdentity ? "the identity 4711 of a customer" : "");
        EXPECT_EQ(properties[2].second, "8840");
        EXPECT_EQ(properties[3].second, hasIdentity ? "the entity of the customer 4711" : "");
        EXPECT_EQ(std::filesystem::exists(systemFile), hasIdentity);

        const std::string bytes = ReadBytes(hardwareFile);
        if (Logged({3, "noxinfo-base64 error!"})) {
            EXPECT_EQ(properties[0].second, "(null)");
        } else if (Logged(DebugLine("When read hwInventoryFile, a problem happened."))) {
            EXPECT_TRUE(bytes.starts_with(PlainBase64Decode(properties[0].second)));
        } else if (properties[0].second.empty()) {
            EXPECT_TRUE(mayLackFile);
        } else {
            EXPECT_TRUE(PlainBase64Decode(properties[0].second) == bytes) << "not the bytes of the file";
        }
    }

    std::string hardwareDocument_;
    boost::shared_ptr<NVORHOST::TMemoryClass> resultClass_;
};

}  // namespace NTEST
