// Uses the host like a plug-in that was built against other declarations of the same contract: the same
// names, argument types, slot order and sizes. No header of the host is included.
#include <boost/function.hpp>
#include <boost/pointer_cast.hpp>
#include <boost/shared_ptr.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <exception>
#include <map>
#include <string>
#include <vector>

#pragma GCC visibility push(default)

namespace NKELVOR20 {

class TCIMDateTime {
  public:
    ~TCIMDateTime();
    unsigned short GetYear() const;
    unsigned short GetMonth() const;
    unsigned int GetDay() const;
    unsigned short GetHour() const;
    unsigned short GetMinute() const;
    unsigned short GetSecond() const;
    short GetUTCOffset() const;

  private:
    alignas(4) unsigned char opaque_[24];
};

class TCIMValue {
  public:
    class TCIMType {
      public:
        enum ECIMType : int {};
        operator ECIMType() const;
        std::string ToString() const;

      private:
        int opaque_;
    };

    TCIMValue(const char* text);
    TCIMValue(const std::string& text);
    TCIMValue(const TCIMValue& other);
    ~TCIMValue();

    bool IsNull() const;
    bool IsArray() const;
    std::string ToString(unsigned char radix) const;
    operator std::string() const;
    operator TCIMDateTime() const;
    operator const std::vector<TCIMValue>&() const;

  private:
    alignas(8) unsigned char opaque_[48];
};

using TOptions = std::map<std::string, TCIMValue>;

class TVORStatusCode {
  public:
    const std::string& TranslateStatusCode() const;
    int code;
};

class TVORException : public std::exception {
  public:
    const char* what() const noexcept override { return statusCode.TranslateStatusCode().c_str(); }
    TVORStatusCode statusCode;
};

class ICIMProperty {
  public:
    virtual ~ICIMProperty() = default;
    virtual TCIMValue::TCIMType GetType(TOptions options) = 0;
    virtual const TCIMValue& GetValue(TOptions options) = 0;
    virtual bool IsNull(TOptions options) = 0;
};

class ICIMInstance {
  public:
    virtual ~ICIMInstance() = default;
    virtual void CommitInstance(TOptions options) = 0;
    virtual boost::shared_ptr<ICIMProperty> GetProperty(const std::string& name, TOptions options) = 0;
    virtual void SetProperty(const std::string& name, const TCIMValue& value, TOptions options) = 0;
};

class ICIMClass {
  public:
    virtual ~ICIMClass() = default;
    virtual const std::string& GetClassName(TOptions options) = 0;
    virtual boost::shared_ptr<ICIMInstance> CreateInstance(TOptions options) = 0;
    virtual void EnumerateInstances(boost::function<bool(boost::shared_ptr<ICIMInstance>)> callback,
                                    bool flag, TOptions options) = 0;
};

class ICIMNamespace {
  public:
    virtual ~ICIMNamespace() = default;
    virtual boost::shared_ptr<ICIMClass> GetClass(const std::string& className, TOptions options) = 0;
};

class IPluginCallbacks;

class TPluginManagerNamespace : public ICIMNamespace {
  public:
    boost::shared_ptr<ICIMClass> GetClass(const std::string& className, TOptions options) override;
    void RegisterPlugin(IPluginCallbacks* plugin);
};

class ICoreLogger {
  public:
    virtual ~ICoreLogger() = default;
    virtual void Log(int level, std::string message) = 0;
};

class TRootObject {
  public:
    static ICoreLogger* GetCoreLogger();
    static boost::shared_ptr<ICIMNamespace> GetPluginManager();
};

class TCIMSchemaHelper {
  public:
    static std::string GetMachineType(boost::shared_ptr<ICIMNamespace> collected);
    static std::string GetModelNumber(boost::shared_ptr<ICIMNamespace> collected);
    static unsigned short GetOperatingSystemType(boost::shared_ptr<ICIMNamespace> collected);
    static std::string GetOperatingSystemVersion(boost::shared_ptr<ICIMNamespace> collected);
    static std::string GetSerialNumber(boost::shared_ptr<ICIMNamespace> collected, TOptions options);
    static std::string GetDataSourceVersion(boost::shared_ptr<ICIMNamespace> collected, TOptions options);
};

class TOSSpecific {
  public:
    static std::string GetEnvironment(std::string variable);
    static int DetectHostnameAvailable(std::string hostName, std::string port);
    static TCIMDateTime GetLocalTime();
    static std::string GetMachineName();
    static std::string GetOperatingSystemName();
};

class TZETUpload {
  public:
    static std::string ZETGetEntityId(std::string dataKind, std::string contentType, std::string identity,
                                      std::string endpointPath, std::string inventoryPath);
};

}  // namespace NKELVOR20

extern "C" void MakeSampleNamespace(boost::shared_ptr<NKELVOR20::ICIMNamespace>& made);

#pragma GCC visibility pop

namespace {

using namespace NKELVOR20;
using testing::ElementsAre;

/// The operations of plug-ins on values and dates, with values that the host constructed.
class HostContract : public testing::Test {
  protected:
    HostContract() { MakeSampleNamespace(collected_); }

    boost::shared_ptr<ICIMProperty> Property(const char* name) {
        std::vector<boost::shared_ptr<ICIMInstance>> instances;
        collected_->GetClass("KELSG_ComputerSystem", {})
            ->EnumerateInstances(
                [&instances](const boost::shared_ptr<ICIMInstance>& instance) {
                    instances.push_back(instance);
                    return true;
                },
                /*flag=*/true, {});
        return instances.at(0)->GetProperty(name, {});
    }
    const TCIMValue& Value(const char* name) { return Property(name)->GetValue({}); }

    boost::shared_ptr<ICIMNamespace> collected_;
};

TEST_F(HostContract, ConstructsAndCopiesTextValues) {
    const TCIMValue text("a longer text than fits into the value itself");
    const TCIMValue same(std::string("a longer text than fits into the value itself"));
    const TCIMValue copy(text);
    for (const TCIMValue* value : {&text, &same, &copy}) {
        EXPECT_FALSE(value->IsNull());
        EXPECT_FALSE(value->IsArray());
        EXPECT_EQ(value->ToString(10), "a longer text than fits into the value itself");
        EXPECT_EQ(std::string(*value), "a longer text than fits into the value itself");
    }
}

TEST_F(HostContract, DistinguishesNullFromEmpty) {
    EXPECT_TRUE(Value("Owner").IsNull());
    EXPECT_TRUE(Property("Owner")->IsNull({}));
    EXPECT_FALSE(TCIMValue("").IsNull());
}

TEST_F(HostContract, ReturnsTheElementsOfAnArray) {
    const TCIMValue& value = Value("Status");
    ASSERT_TRUE(value.IsArray());
    std::vector<std::string> texts;
    for (const TCIMValue& element : static_cast<const std::vector<TCIMValue>&>(value)) {
        texts.push_back(element.ToString(10));
    }
    EXPECT_THAT(texts, ElementsAre("2", "5"));
}

TEST_F(HostContract, NamesTypesAndConvertsThemToTheirCodes) {
    const TCIMValue::TCIMType date = Property("Start")->GetType({});
    EXPECT_EQ(static_cast<TCIMValue::TCIMType::ECIMType>(date), 14);
    EXPECT_EQ(date.ToString(), "datetime");
    EXPECT_EQ(Property("Status")->GetType({}).ToString(), "uint16");
}

TEST_F(HostContract, ReadsTheFieldsOfADate) {
    const TCIMDateTime date = Value("Start");
    EXPECT_EQ(date.GetYear(), 2009);
    EXPECT_EQ(date.GetMonth(), 3);
    EXPECT_EQ(date.GetDay(), 7U);
    EXPECT_EQ(date.GetHour(), 14);
    EXPECT_EQ(date.GetMinute(), 5);
    EXPECT_EQ(date.GetSecond(), 9);
    EXPECT_EQ(date.GetUTCOffset(), -210);
}

TEST_F(HostContract, ThrowsItsExceptionWithTheCodeOfAMissingClass) {
    try {
        (void)collected_->GetClass("KELSG_Card", {});
        FAIL() << "nothing was thrown";
    } catch (const TVORException& exception) {
        EXPECT_EQ(exception.statusCode.code, 15);
        EXPECT_STREQ(exception.what(), "class not found");
    }
}

TEST_F(HostContract, FindsThePluginManagerByItsDynamicType) {
    const auto manager =
        boost::dynamic_pointer_cast<TPluginManagerNamespace>(TRootObject::GetPluginManager());
    ASSERT_NE(manager, nullptr);
    try {
        manager->RegisterPlugin(nullptr);
        FAIL() << "nothing was thrown";
    } catch (const TVORException& exception) {
        EXPECT_STREQ(exception.what(), "invalid parameter");
    }
}

TEST_F(HostContract, ReturnsFactsAboutTheCollectedMachine) {
    EXPECT_EQ(TCIMSchemaHelper::GetMachineType(collected_), "8840");
    EXPECT_EQ(TCIMSchemaHelper::GetModelNumber(collected_), "21X");
    EXPECT_EQ(TCIMSchemaHelper::GetSerialNumber(collected_, {}), "KQ12345");
    EXPECT_EQ(TCIMSchemaHelper::GetOperatingSystemType(collected_), 36);
    EXPECT_EQ(TCIMSchemaHelper::GetOperatingSystemVersion(collected_), "6.1.0");
    EXPECT_EQ(TCIMSchemaHelper::GetDataSourceVersion(collected_, {}), "1.0.0");
}

TEST_F(HostContract, ReturnsFactsAboutTheOperatingSystem) {
    EXPECT_EQ(TOSSpecific::GetEnvironment("NOXINFO_NO_SUCH_VARIABLE"), "");
    EXPECT_NE(TOSSpecific::DetectHostnameAvailable("127.0.0.1", "1"), 0);
    EXPECT_GT(TOSSpecific::GetLocalTime().GetYear(), 2000);
    EXPECT_NE(TOSSpecific::GetMachineName(), "");
    EXPECT_NE(TOSSpecific::GetOperatingSystemName(), "");
}

TEST_F(HostContract, AcceptsLogLines) {
    EXPECT_NO_THROW(TRootObject::GetCoreLogger()->Log(3, "a line"));
}

TEST_F(HostContract, ExportsTheUploadService) {
    // Only linked, because a call would access the network.
    auto* volatile operation = &TZETUpload::ZETGetEntityId;
    EXPECT_NE(operation, nullptr);
}

TEST_F(HostContract, HandlesTheAssertionOfANullPointer) {
    const boost::shared_ptr<ICIMNamespace> null;
    try {
        (void)null->GetClass("KELSG_Card", {});
        FAIL() << "nothing was thrown";
    } catch (const std::exception& failure) {
        EXPECT_THAT(failure.what(), testing::HasSubstr("px != 0"));
    }
}

}  // namespace
