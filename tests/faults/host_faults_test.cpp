// Requests on a host that misbehaves: its calls throw each kind of exception, return null handles, arrays in
// place of scalars, or very large data. The table lists the outcome of the request for each call.
#include "tests/doubles/cim_doubles.h"
#include "tests/plugin/plain_base64.h"
#include "tests/plugin/request_fixture.h"
#include "writer/nox_xml_writer.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <functional>
#include <new>
#include <sstream>
#include <stdexcept>
#include <string>
#include <tuple>

namespace {

using NDOUBLES::TClassDouble;
using NDOUBLES::TInstanceDouble;
using NDOUBLES::TNamespaceDouble;
using NDOUBLES::TPropertyDouble;
using NKELVOR20::ICIMInstance;
using NKELVOR20::TCIMDateTime;
using NKELVOR20::TCIMValue;
using NKELVOR20::TOptionsMap;
using NKELVOR20::TVORException;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

/// The outcome of a request in which one host call throws.
enum class EOutcome {
    passes,     ///< the request throws the exception; nothing is committed
    ends,       ///< the request returns; nothing is written or committed
    continues,  ///< the request succeeds with both documents
    noSystem,   ///< the request succeeds as for a machine without an identity
    skips,      ///< the request succeeds; the documents lack the data of the call
};

struct TKind {
    const char* name;
    void (*raise)();
};

void PrintTo(const TKind& kind, std::ostream* out) {
    *out << kind.name;
}

constexpr TKind classNotFound = {"ClassNotFound", [] { throw TVORException(15); }};
constexpr TKind propertyNotFound = {"PropertyNotFound", [] { throw TVORException(16); }};
constexpr TKind accessDenied = {"AccessDenied", [] { throw TVORException(2); }};
constexpr TKind cannotCreateFile = {"CannotCreateFile", [] { throw TVORException(11); }};
constexpr TKind unknownCode = {"UnknownCode", [] { throw TVORException(-1); }};
constexpr TKind standard = {"StandardException", [] { throw std::runtime_error("broken"); }};
constexpr TKind noMemory = {"NoMemory", [] { throw std::bad_alloc(); }};
constexpr TKind number = {"Number", [] { throw 42; }};

/// Returns the kind of the exception that is being handled.
std::string KindOf(const std::exception_ptr& thrown) {
    try {
        std::rethrow_exception(thrown);
    } catch (const TVORException& failure) {
        return "code " + std::to_string(failure.GetStatusCode().GetCode());
    } catch (const std::bad_alloc&) {
        return "bad_alloc";
    } catch (const std::exception& failure) {
        return failure.what();
    } catch (int value) {
        return std::to_string(value);
    }
}

std::string KindOf(const TKind& kind) {
    try {
        kind.raise();
    } catch (...) {
        return KindOf(std::current_exception());
    }
    return "nothing";
}

/// A fixture with a machine that has a computer, an operating system and a processor.
class THostFault : public NTEST::TRequestFixture {
  protected:
    THostFault() {
        SetIdentity("4711");
        SetReachable("entity-4711");
        resultClass_ = AddResultClass("KELSG_CADAT");
        computer_->Add("Name", "4C4C4544");
        computer_->Add("Manufacturer", "Kessel Technologies");
        computer_->Add("ProductName", "System K3650 -[884021X]-");
        processor_->Add("DeviceID", "CPU0");
        processor_->Add("ElementName", "the processor");
        processor_->properties["Family"] = family_;
    }

    void RequestOfDoubles() { plugin_->GetData(doubles_, resultClasses_); }

    /// Makes the call of that name, in the machine or its host, run `act`.
    void Arm(const std::string& call, const std::function<void()>& act) {
        const auto when = [call, act](const std::string& made) {
            if (made == call) {
                act();
            }
        };
        doubles_->before = processors_->before = processor_->before = when;
        family_->before = [act, call](const std::string& made) {
            if ("Family " + made == call) {
                act();
            }
        };
        computer_->before = [act, call](const std::string& made) {
            if ("computer's " + made == call) {
                act();
            }
        };
        ArmServices(call, act);
    }

    boost::shared_ptr<TNamespaceDouble> doubles_ = boost::make_shared<TNamespaceDouble>();
    boost::shared_ptr<TClassDouble> processors_ = doubles_->AddClass("KELSG_Processor");
    boost::shared_ptr<TInstanceDouble> processor_ = processors_->AddInstance();
    boost::shared_ptr<TPropertyDouble> family_ =
        boost::make_shared<TPropertyDouble>(TCIMValue(std::uint16_t{179}));
    boost::shared_ptr<TInstanceDouble> computer_ = doubles_->AddClass("KELSG_ComputerSystem")->AddInstance();
    boost::shared_ptr<NVORHOST::TMemoryClass> resultClass_;

  private:
    void ArmServices(const std::string& call, const std::function<void()>& act) {
        const auto arm = [&](const char* name, auto& service) {
            if (call == name) {
                service = [act, answer = service](auto&&... arguments) {
                    act();
                    return answer(arguments...);
                };
            }
        };
        host_.localTime = [] { return *TCIMDateTime::FromText("20260307140509.000000+060"); };
        arm("GetMachineType", host_.machineType);
        arm("GetModelNumber", host_.modelNumber);
        arm("GetSerialNumber", host_.serialNumber);
        arm("GetOperatingSystemType", host_.osType);
        arm("GetOperatingSystemVersion", host_.osVersion);
        arm("GetDataSourceVersion", host_.dataSourceVersion);
        arm("GetEnvironment", host_.environment);
        arm("GetLocalTime", host_.localTime);
        arm("GetMachineName", host_.machineName);
        arm("GetOperatingSystemName", host_.operatingSystemName);
        arm("DetectHostnameAvailable", host_.hostnameAvailable);
        arm("ZETGetEntityId", host_.entityId);
        arm("Log", host_.onLog);
    }
};

struct TRow {
    const char* call;
    EOutcome ofClassNotFound;  // code 15
    EOutcome ofOtherCodes;
    EOutcome ofOtherExceptions;
    const char* lacking;  // text missing from the hardware document if the outcome is `skips`
};

void PrintTo(const TRow& row, std::ostream* out) {
    *out << row.call;
}

// clang-format off
constexpr TRow rows[] = {
    // call                            code 15            other codes        other exceptions
    {"GetMachineType",                 EOutcome::ends,     EOutcome::ends,     EOutcome::ends,     ""},
    {"GetEnvironment",                 EOutcome::noSystem, EOutcome::noSystem, EOutcome::noSystem, ""},
    {"Log",                            EOutcome::passes,   EOutcome::passes,   EOutcome::passes,   ""},
    {"GetLocalTime",                   EOutcome::passes,   EOutcome::passes,   EOutcome::passes,   ""},
    {"GetModelNumber",                 EOutcome::continues,   EOutcome::continues,   EOutcome::continues,   ""},
    {"GetSerialNumber",                EOutcome::continues,   EOutcome::continues,   EOutcome::continues,   ""},
    {"GetOperatingSystemType",         EOutcome::continues,   EOutcome::continues,   EOutcome::continues,   ""},
    {"GetOperatingSystemVersion",      EOutcome::continues,   EOutcome::continues,   EOutcome::continues,   ""},
    {"GetDataSourceVersion",           EOutcome::continues,   EOutcome::continues,   EOutcome::continues,   ""},
    {"GetMachineName",                 EOutcome::continues,   EOutcome::continues,   EOutcome::continues,   ""},
    {"GetOperatingSystemName",         EOutcome::passes,   EOutcome::passes,   EOutcome::passes,   ""},
    {"DetectHostnameAvailable",        EOutcome::passes,   EOutcome::passes,   EOutcome::passes,   ""},
    {"ZETGetEntityId",                 EOutcome::passes,   EOutcome::passes,   EOutcome::passes,   ""},
    {"GetClass KELSG_Processor",       EOutcome::skips,    EOutcome::passes,   EOutcome::passes,   "CPU0, the processor, >179<"},
    {"GetClass KELSG_ComputerSystem",  EOutcome::skips,    EOutcome::passes,   EOutcome::passes,   "Server, Kessel"},
    {"EnumerateInstances true",        EOutcome::passes,   EOutcome::passes,   EOutcome::passes,   ""},
    {"GetProperty ElementName",        EOutcome::skips,    EOutcome::skips,    EOutcome::passes,   "the processor"},
    {"GetProperty DeviceID",           EOutcome::skips,    EOutcome::skips,    EOutcome::passes,   "CPU0"},
    {"Family IsNull",                  EOutcome::passes,   EOutcome::passes,   EOutcome::passes,   ""},
    {"Family GetValue",                EOutcome::passes,   EOutcome::passes,   EOutcome::passes,   ""},
    {"Family GetType",                 EOutcome::passes,   EOutcome::passes,   EOutcome::passes,   ""},
    {"computer's GetProperty Manufacturer", EOutcome::skips, EOutcome::skips, EOutcome::passes, "Kessel"},
};
// clang-format on

class THostCall : public THostFault, public testing::WithParamInterface<std::tuple<TRow, TKind>> {
  protected:
    static EOutcome Expected() {
        const auto& [row, kind] = GetParam();
        const std::string what = KindOf(kind);
        if (what == "code 15") {
            return row.ofClassNotFound;
        }
        return what.starts_with("code ") ? row.ofOtherCodes : row.ofOtherExceptions;
    }

    /// Runs the request and returns the kind of exception that it throws.
    std::string Thrown() {
        try {
            RequestOfDoubles();
        } catch (...) {
            return KindOf(std::current_exception());
        }
        return "nothing";
    }
};

TEST_P(THostCall, HasItsOutcomeIfItThrows) {
    const auto& [row, kind] = GetParam();
    Arm(row.call, kind.raise);
    const EOutcome expected = Expected();
    EXPECT_EQ(Thrown(), expected == EOutcome::passes ? KindOf(kind) : "nothing");
    Arm("nothing", [] {});

    const bool isAnswered = expected != EOutcome::passes && expected != EOutcome::ends;
    ASSERT_EQ(resultClass_->GetInstances().size(), isAnswered ? 1U : 0U);
    EXPECT_EQ(doubles_.use_count(), 1);
    EXPECT_EQ(processor_.use_count(), 2);
    if (!isAnswered) {
        return;
    }
    const TProperties properties = PropertiesOfOnlyInstance(*resultClass_);
    EXPECT_EQ(properties.size(), 4U);
    EXPECT_EQ(PlainBase64Decode(properties[0].second), NTEST::ReadBytes(NTEST::hardwareFile));
    EXPECT_EQ(properties[1].second, expected == EOutcome::noSystem ? "" : "4711");
    EXPECT_EQ(std::filesystem::exists(NTEST::systemFile), expected != EOutcome::noSystem);
    const std::string document = NTEST::Unzip(NTEST::hardwareFile);
    EXPECT_TRUE(document.ends_with("</ResourceCollection>\n"));
    for (const std::string_view text : {"CPU0", "the processor", "Server", "Kessel", ">179<"}) {
        const bool isLacking = std::string_view(row.lacking).find(text) != std::string_view::npos;
        EXPECT_EQ(document.find(text) == std::string::npos, isLacking) << text;
    }
}

INSTANTIATE_TEST_SUITE_P(Table, THostCall,
                         testing::Combine(testing::ValuesIn(rows),
                                          testing::Values(classNotFound, propertyNotFound, accessDenied,
                                                          cannotCreateFile, unknownCode, standard, noMemory,
                                                          number)),
                         [](const auto& parameters) {
                             std::string name = std::string(std::get<0>(parameters.param).call) +
                                                std::get<1>(parameters.param).name;
                             std::erase_if(name, [](unsigned char c) { return std::isalnum(c) == 0; });
                             return name;
                         });

TEST_F(THostFault, ANullInstanceOfAnEnumerationIsAssertedAndCommitsNothing) {
    processors_->instances.push_back(nullptr);
    EXPECT_THROW(RequestOfDoubles(), NDOUBLES::TAssertionFailed);
    EXPECT_TRUE(resultClass_->GetInstances().empty());
}

TEST_F(THostFault, ANullPropertyIsAssertedAndCommitsNothing) {
    processor_->properties["Family"] = nullptr;
    EXPECT_THROW(RequestOfDoubles(), NDOUBLES::TAssertionFailed);
    EXPECT_TRUE(resultClass_->GetInstances().empty());
}

TEST_F(THostFault, ANullComputerLeavesOnlyTheManufacturerEmpty) {
    std::ostringstream out;
    doubles_->classes["KELSG_ComputerSystem"] = nullptr;
    EXPECT_TRUE(TNOXXMLWriterImpl(out).WriteSysInfoNamespace(doubles_));
    EXPECT_THAT(out.str(), AllOf(HasSubstr("<Property name=\"Manufacturer\" type=\"string\">\n</Property>\n"),
                                 HasSubstr("<Value>8840</Value>"), HasSubstr("</ResourceCollection>\n")));
}

TCIMValue TwoTexts() {
    return TCIMValue::Array(TCIMValue::TCIMType::eString, {"-[123456789", "<b>"});
}

class TArrayFault : public THostFault {
  protected:
    std::string HardwareText() {
        std::ostringstream out;
        TNOXXMLWriterImpl(out).WriteNamespace(doubles_);
        return out.str();
    }
};

TEST_F(TArrayFault, TheTextOfAnArrayIsUsedAsKeyValue) {
    processor_->Add("DeviceID", TwoTexts());
    const std::string ofArray = TNOXXMLWriterImpl::GetResourceID("Processor", processor_, "DeviceID", "", "");
    processor_->Add("DeviceID", "{-[123456789, <b>}");
    EXPECT_EQ(ofArray, TNOXXMLWriterImpl::GetResourceID("Processor", processor_, "DeviceID", "", ""));
}

TEST_F(TArrayFault, TheTextOfAnArrayIsCutAsProductName) {
    computer_->Add("ProductName", TwoTexts());
    EXPECT_THAT(HardwareText(), AllOf(HasSubstr("<Property name=\"MachineType\" type=\"string\">\n"
                                                "<Value>1234</Value>\n</Property>\n"),
                                      HasSubstr("<Property name=\"Model\" type=\"string\">\n"
                                                "<Value>567</Value>\n</Property>\n")));
}

TEST_F(TArrayFault, AnArrayAsNameIsWrittenAsAnArray) {
    processor_->Add("ElementName", TwoTexts());
    EXPECT_THAT(HardwareText(), HasSubstr("<Property name=\"Name\" type=\"string\">\n<VALUE.ARRAY>\n"
                                          "<VALUE>-[123456789</VALUE>\n<VALUE>&lt;b&gt;</VALUE>\n"
                                          "</VALUE.ARRAY>\n</Property>\n"));
}

TEST_F(TArrayFault, AnArrayOfDatesEndsTheRequestWithATypeMismatch) {
    processor_->Add("Family",
                    TCIMValue::Array(TCIMValue::TCIMType::eDateTime,
                                     {TCIMValue(*TCIMDateTime::FromText("20260307140509.000000+060"))}));
    try {
        RequestOfDoubles();
        FAIL() << "nothing was thrown";
    } catch (const TVORException& failure) {
        EXPECT_EQ(failure.GetStatusCode().GetCode(), 9);
    }
    EXPECT_TRUE(resultClass_->GetInstances().empty());
}

TEST_F(TArrayFault, AnArrayAsManufacturerCountsAsMissing) {
    std::ostringstream out;
    computer_->Add("Manufacturer", TwoTexts());
    TNOXXMLWriterImpl(out).WriteSysInfoNamespace(doubles_);
    EXPECT_THAT(out.str(), HasSubstr("<Property name=\"Manufacturer\" type=\"string\">\n</Property>\n"));
}

std::string EveryByte() {
    std::string bytes;
    for (int value = 0; value < 256; ++value) {
        bytes += static_cast<char>(value);
    }
    return bytes;
}

TEST_F(THostFault, ResultClassesOfOtherNamesAreIgnored) {
    for (const char byte : EveryByte()) {
        for (std::size_t i = 0; i < 12; ++i) {
            std::string changed = "KELSG_CADAT";
            changed.insert(i > 11 ? 11 : i, 1, byte);
            AddResultClass(changed);
        }
        AddResultClass(std::string(1, byte));
    }
    RequestOfDoubles();
    for (const auto& resultClass : resultClasses_) {
        const auto& memoryClass = static_cast<const NVORHOST::TMemoryClass&>(*resultClass);
        EXPECT_EQ(memoryClass.GetInstances().size(), resultClass == resultClass_ ? 1U : 0U)
            << memoryClass.GetName();
    }
}

TEST_F(THostFault, AnIdentityOfEveryByteIsPassedOnUnchanged) {
    SetIdentity(EveryByte());
    RequestOfDoubles();
    EXPECT_EQ(PropertiesOfOnlyInstance(*resultClass_)[1].second, EveryByte());
    EXPECT_EQ(host_.entityRequests.front()[2], EveryByte());
}

TEST_F(THostFault, AKeyAndAValueOfEveryByteAreWrittenAsPlainAscii) {
    processor_->Add("DeviceID", EveryByte());
    RequestOfDoubles();
    const std::string document = NTEST::Unzip(NTEST::hardwareFile);
    EXPECT_TRUE(std::all_of(document.begin(), document.end(),
                            [](unsigned char c) { return c == '\n' || (c >= 0x20 && c <= 0x7F); }));
    EXPECT_THAT(document, HasSubstr("%&amp;'()*+,-./0123456789:;&lt;=&gt;?@"));
}

/// Enumerates one instance any number of times.
class TManyInstances final : public NKELVOR20::ICIMClass {
  public:
    TManyInstances(boost::shared_ptr<ICIMInstance> instance, std::size_t count)
        : instance_(std::move(instance)), count_(count) {}

    const std::string& GetClassName(TOptionsMap /*options*/) override { return name_; }
    boost::shared_ptr<ICIMInstance> CreateInstance(TOptionsMap /*options*/) override { return {}; }
    void EnumerateInstances(NKELVOR20::TInstanceCallback callback, bool /*flag*/,
                            TOptionsMap /*options*/) override {
        for (std::size_t i = 0; i < count_ && callback(instance_); ++i) {
        }
    }

  private:
    std::string name_ = "KELSG_srDiskGroup";
    boost::shared_ptr<ICIMInstance> instance_;
    std::size_t count_;
};

/// Has every property, all with the same value.
class TAlikeInstance final : public ICIMInstance {
  public:
    void CommitInstance(TOptionsMap /*options*/) override {}
    boost::shared_ptr<NKELVOR20::ICIMProperty> GetProperty(const std::string& /*name*/,
                                                           TOptionsMap /*options*/) override {
        return property_;
    }
    void SetProperty(const std::string& /*name*/, const TCIMValue& /*value*/,
                     TOptionsMap /*options*/) override {}

  private:
    boost::shared_ptr<NVORHOST::TMemoryProperty> property_ =
        boost::make_shared<NVORHOST::TMemoryProperty>(TCIMValue("x"));
};

/// Counts lines and discards the text.
class TLineCounter final : public std::streambuf {
  public:
    std::size_t lines = 0;

  protected:
    std::streamsize xsputn(const char* text, std::streamsize size) override {
        lines += static_cast<std::size_t>(std::count(text, text + size, '\n'));
        return size;
    }
    int_type overflow(int_type c) override { return c; }
};

TEST_F(THostFault, AMillionInstancesAreWritten) {
    constexpr std::size_t count = 1'000'000;
    doubles_->classes["KELSG_srDiskGroup"] =
        boost::make_shared<TManyInstances>(boost::make_shared<TAlikeInstance>(), count);
    TLineCounter counter;
    std::ostream out(&counter);
    TNOXXMLWriterImpl(out).WriteResourceInstance("KELSG_srDiskGroup", "DiskGroup", doubles_, false);
    // Two lines for the element; three for each of Name, Description and CollectionID; six for each of
    // ObjectType and GUID, which have both the special form and the property.
    EXPECT_EQ(counter.lines, count * (2 + 3 * (3 + 2 * 2)));
    EXPECT_TRUE(out.good());
}

TEST_F(THostFault, AValueOfAHundredMegabytesIsReturned) {
    std::string value(100'000'000, 'x');
    value[50'000'000] = '<';
    processor_->Add("ElementName", value);
    RequestOfDoubles();
    const std::string document = NTEST::Unzip(NTEST::hardwareFile);
    EXPECT_NE(document.find("<Value>" + value.substr(0, 50'000'000) + "&lt;" + value.substr(50'000'001) +
                            "</Value>\n"),
              std::string::npos);
    EXPECT_TRUE(document.ends_with("</ResourceCollection>\n"));
    EXPECT_TRUE(PlainBase64Decode(PropertiesOfOnlyInstance(*resultClass_)[0].second) ==
                NTEST::ReadBytes(NTEST::hardwareFile));
}

}  // namespace
