// Result classes and instances that misbehave: each of their calls throws in turn, or returns null.
#include "host/vor_exception.h"
#include "tests/allocations/allocation_faults.h"
#include "tests/plugin/request_fixture.h"

#include <gmock/gmock.h>

#include <functional>
#include <stdexcept>

namespace {

using NKELVOR20::ICIMInstance;
using NKELVOR20::ICIMProperty;
using NKELVOR20::TCIMValue;
using NKELVOR20::TOptionsMap;
using NKELVOR20::TVORException;
using testing::ElementsAre;

/// Records the calls of result objects in order, and selects the one that fails.
struct TScript {
    std::vector<std::string> calls;
    std::vector<std::size_t> optionCounts;
    std::string failingCall;
    std::function<void()> fail = [] {};
    bool returnsNull = false;
    std::function<void()> onRelease = [] {};

    void Enter(const std::string& call, const TOptionsMap& options) {
        calls.push_back(call);
        optionCounts.push_back(options.size());
        if (call == failingCall) {
            fail();
        }
    }
};

class TScriptedInstance final : public ICIMInstance {
  public:
    explicit TScriptedInstance(TScript& script) : script_(script) {}
    ~TScriptedInstance() override { script_.onRelease(); }

    void CommitInstance(TOptionsMap options) override { script_.Enter("CommitInstance", options); }
    boost::shared_ptr<ICIMProperty> GetProperty(const std::string&, TOptionsMap options) override {
        script_.Enter("GetProperty", options);
        return nullptr;
    }
    void SetProperty(const std::string& name, const TCIMValue&, TOptionsMap options) override {
        script_.Enter("SetProperty " + name, options);
    }

  private:
    TScript& script_;
};

class TScriptedClass final : public NKELVOR20::ICIMClass {
  public:
    explicit TScriptedClass(TScript& script) : script_(script) {}

    const std::string& GetClassName(TOptionsMap options) override {
        script_.Enter("GetClassName", options);
        return name_;
    }
    boost::shared_ptr<ICIMInstance> CreateInstance(TOptionsMap options) override {
        script_.Enter("CreateInstance", options);
        if (script_.returnsNull) {
            return nullptr;
        }
        return boost::make_shared<TScriptedInstance>(script_);
    }
    void EnumerateInstances(NKELVOR20::TInstanceCallback, bool, TOptionsMap options) override {
        script_.Enter("EnumerateInstances", options);
    }

  private:
    TScript& script_;
    std::string name_ = "KELSG_CADAT";
};

class TResultInstance : public NTEST::TRequestFixture {
  protected:
    TResultInstance() {
        resultClasses_.push_back(boost::make_shared<TScriptedClass>(script_));
        host_.hostnameAvailable = [this](const std::string&, const std::string&) {
            script_.Enter("probe", {});
            return 1;
        };
    }

    TScript script_;
};

TEST_F(TResultInstance, IsCreatedFilledAndCommittedInThisOrder) {
    Request();
    EXPECT_THAT(script_.calls,
                ElementsAre("GetClassName", "CreateInstance", "SetProperty InventoryRCF", "SetProperty KELID",
                            "SetProperty MachineType", "probe", "SetProperty Credential", "CommitInstance"));
}

std::vector<std::string>* releases = nullptr;

TEST_F(TResultInstance, IsReleasedAfterTheEncodedTextIsFreed) {
    std::vector<std::string> order;
    releases = &order;
    script_.onRelease = [&order] { order.emplace_back("instance"); };
    // The arrays of rendering and encoding are freed before the network is probed.
    host_.hostnameAvailable = [](const std::string&, const std::string&) {
        NTEST::ListenToArrayFrees([] { releases->emplace_back("text"); });
        return 1;
    };
    Request();
    NTEST::ListenToArrayFrees(nullptr);
    EXPECT_THAT(order, ElementsAre("text", "instance"));
}

TEST_F(TResultInstance, IsReleasedAfterTheEncodedTextIfTheCommitFails) {
    std::vector<std::string> order;
    releases = &order;
    script_.onRelease = [&order] { order.emplace_back("instance"); };
    script_.failingCall = "CommitInstance";
    script_.fail = [] {
        NTEST::ListenToArrayFrees([] { releases->emplace_back("text"); });
        throw TVORException(1);
    };
    EXPECT_THROW(Request(), TVORException);
    NTEST::ListenToArrayFrees(nullptr);
    EXPECT_THAT(order, ElementsAre("text", "instance"));
}

TEST_F(TResultInstance, IsUsedWithEmptyOptions) {
    Request();
    EXPECT_THAT(script_.optionCounts, testing::Each(0U));
}

TEST_F(TResultInstance, AssertsThatTheInstanceIsNotNull) {
    script_.returnsNull = true;
    try {
        Request();
        FAIL() << "nothing was thrown";
    } catch (const NDOUBLES::TAssertionFailed& failed) {
        EXPECT_STREQ(failed.what(), "px != 0");
    }
}

// Each call fails with each kind of exception.
struct TFailure {
    std::string name;
    std::function<void()> fail;
};

class TFailingResult : public TResultInstance,
                       public testing::WithParamInterface<std::tuple<std::string, TFailure>> {};

TEST_P(TFailingResult, EndsTheRequestAndReleasesEveryHandle) {
    const auto& [call, failure] = GetParam();
    Request();  // creates the objects that are kept for the life of the process
    script_.calls.clear();
    script_.failingCall = call;
    script_.fail = failure.fail;

    const std::size_t logged = host_.log.size();
    host_.log.reserve(logged + 10);
    std::string thrown = "nothing";
    try {
        Request();
    } catch (const TVORException&) {
        thrown = "host exception";
    } catch (const std::runtime_error&) {
        thrown = "standard exception";
    } catch (int) {
        thrown = "number";
    }
    EXPECT_EQ(thrown, failure.name);
    EXPECT_EQ(script_.calls.back(), call) << "nothing may follow the failing call";
    EXPECT_EQ(resultClasses_.size(), 1U);
    EXPECT_EQ(resultClasses_.front().use_count(), 1);
    EXPECT_EQ(collected_.use_count(), 1);
    EXPECT_TRUE(std::filesystem::exists(NTEST::hardwareFile));
}

INSTANTIATE_TEST_SUITE_P(
    EveryCall, TFailingResult,
    testing::Combine(
        testing::Values("GetClassName", "CreateInstance", "SetProperty InventoryRCF", "SetProperty KELID",
                        "SetProperty MachineType", "probe", "SetProperty Credential", "CommitInstance"),
        testing::Values(TFailure{"host exception", [] { throw TVORException(1); }},
                        TFailure{"standard exception", [] { throw std::runtime_error("broken"); }},
                        TFailure{"number", [] { throw 42; }})),
    [](const auto& parameters) {
        std::string name = std::get<0>(parameters.param) + " " + std::get<1>(parameters.param).name;
        std::erase(name, ' ');
        return name;
    });

}  // namespace
