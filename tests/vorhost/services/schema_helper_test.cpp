#include "host/schema_helper.h"

#include "host/vor_exception.h"
#include "vorhost/model/memory_namespace.h"
#include "vorhost/services/assertion_error.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace {

using namespace NVORHOST;
using NKELVOR20::TCIMSchemaHelper;
using NKELVOR20::TVORException;
using NKELVOR20::TVORStatusCode;
using TType = TCIMValue::TCIMType;
using TSpace = boost::shared_ptr<TMemoryNamespace>;

TSpace SpaceWith(const std::string& className, const std::string& property, const TCIMValue& value) {
    const auto space = boost::make_shared<TMemoryNamespace>();
    const auto instance = space->AddClass(className)->NewInstance();
    instance->Set(property, value);
    instance->CommitInstance({});
    return space;
}

TSpace SpaceWithProduct(const std::string& productName) {
    return SpaceWith("KELSG_ComputerSystem", "ProductName", TCIMValue(productName));
}

int CodeOf(const std::function<void()>& operation) {
    try {
        operation();
        return TVORStatusCode::success;
    } catch (const TVORException& exception) {
        return exception.GetStatusCode().GetCode();
    }
}

TEST(MachineType, IsTheFourCharactersAfterTheBracket) {
    EXPECT_EQ(TCIMSchemaHelper::GetMachineType(SpaceWithProduct("Server -[1234AB5]-")), "1234");
}

TEST(MachineType, IsShorterIfTheNameEnds) {
    EXPECT_EQ(TCIMSchemaHelper::GetMachineType(SpaceWithProduct("Server -[79]")), "79]");
    EXPECT_EQ(TCIMSchemaHelper::GetMachineType(SpaceWithProduct("Server -[")), "");
}

TEST(MachineType, IsTheWholeNameIfThereIsNoBracket) {
    EXPECT_EQ(TCIMSchemaHelper::GetMachineType(SpaceWithProduct("Standard PC (Q35)")), "Standard PC (Q35)");
    EXPECT_EQ(TCIMSchemaHelper::GetMachineType(SpaceWithProduct("")), "");
}

TEST(MachineType, UsesTheFirstBracket) {
    EXPECT_EQ(TCIMSchemaHelper::GetMachineType(SpaceWithProduct("-[ABCD]- -[1234]-")), "ABCD");
}

TEST(ModelNumber, IsTheThreeCharactersAfterTheMachineType) {
    EXPECT_EQ(TCIMSchemaHelper::GetModelNumber(SpaceWithProduct("Server -[1234AB5]-")), "AB5");
}

TEST(ModelNumber, IsShorterIfTheNameEnds) {
    EXPECT_EQ(TCIMSchemaHelper::GetModelNumber(SpaceWithProduct("Server -[1234A")), "A");
    EXPECT_EQ(TCIMSchemaHelper::GetModelNumber(SpaceWithProduct("Server -[1234")), "");
}

TEST(ModelNumber, IsTheWholeNameIfThereIsNoBracket) {
    EXPECT_EQ(TCIMSchemaHelper::GetModelNumber(SpaceWithProduct("Standard PC")), "Standard PC");
}

TEST(ModelNumber, IsMalformedIfTheNameEndsBeforeIt) {
    const auto space = SpaceWithProduct("Server -[79]");
    EXPECT_EQ(CodeOf([&] { TCIMSchemaHelper::GetModelNumber(space); }), TVORStatusCode::malformedData);
}

TEST(SerialNumber, ComesFromTheComputerSystem) {
    const auto space = SpaceWith("KELSG_ComputerSystem", "SerialNumber", TCIMValue("KD55ARF"));
    EXPECT_EQ(TCIMSchemaHelper::GetSerialNumber(space, {}), "KD55ARF");
}

TEST(OperatingSystemType, AcceptsUnsignedNumbersOfAnyType) {
    EXPECT_EQ(TCIMSchemaHelper::GetOperatingSystemType(
                  SpaceWith("KELSG_OperatingSystem", "OSType", TCIMValue(std::uint16_t{36}))),
              36);
    EXPECT_EQ(TCIMSchemaHelper::GetOperatingSystemType(
                  SpaceWith("KELSG_OperatingSystem", "OSType", TCIMValue(std::uint64_t{65535}))),
              65535);
}

TEST(OperatingSystemType, IsMalformedIfItIsOutOfRange) {
    const auto space = SpaceWith("KELSG_OperatingSystem", "OSType", TCIMValue(std::uint32_t{65536}));
    EXPECT_EQ(CodeOf([&] { TCIMSchemaHelper::GetOperatingSystemType(space); }),
              TVORStatusCode::malformedData);
}

TEST(OperatingSystemVersion, ComesFromTheOperatingSystem) {
    const auto space = SpaceWith("KELSG_OperatingSystem", "Version", TCIMValue("6.1.0"));
    EXPECT_EQ(TCIMSchemaHelper::GetOperatingSystemVersion(space), "6.1.0");
}

TEST(DataSourceVersion, ComesFromTheDataSource) {
    const auto space = SpaceWith("KELSG_DataSource", "Version", TCIMValue("1.0.0"));
    EXPECT_EQ(TCIMSchemaHelper::GetDataSourceVersion(space, {}), "1.0.0");
}

struct TOperation {
    const char* name;
    const char* className;
    const char* property;
    void (*call)(const boost::shared_ptr<ICIMNamespace>& collected);
};

std::ostream& operator<<(std::ostream& out, const TOperation& operation) {
    return out << operation.name;
}

// Requires that every operation fails with the same code.
class SchemaHelper : public testing::TestWithParam<TOperation> {
  protected:
    int CallOn(const TSpace& space) const {
        return CodeOf([&] { GetParam().call(space); });
    }

    TSpace space_ = boost::make_shared<TMemoryNamespace>();
};

TEST_P(SchemaHelper, FailsWithoutTheClass) {
    EXPECT_EQ(CallOn(space_), TVORStatusCode::classNotFound);
}

TEST_P(SchemaHelper, FailsWithoutAnInstance) {
    space_->AddClass(GetParam().className);
    EXPECT_EQ(CallOn(space_), TVORStatusCode::notSingleInstance);
}

TEST_P(SchemaHelper, FailsForSeveralInstances) {
    const auto cimClass = space_->AddClass(GetParam().className);
    for (int count = 0; count < 2; ++count) {
        const auto instance = cimClass->NewInstance();
        instance->Set(GetParam().property, TCIMValue("1"));
        instance->CommitInstance({});
    }
    EXPECT_EQ(CallOn(space_), TVORStatusCode::notSingleInstance);
}

TEST_P(SchemaHelper, FailsWithoutTheProperty) {
    space_->AddClass(GetParam().className)->NewInstance()->CommitInstance({});
    EXPECT_EQ(CallOn(space_), TVORStatusCode::propertyNotFound);
}

TEST_P(SchemaHelper, FailsForANullValue) {
    EXPECT_EQ(CallOn(SpaceWith(GetParam().className, GetParam().property, TCIMValue(TType::eString))),
              TVORStatusCode::valueIsNull);
}

TEST_P(SchemaHelper, FailsForAValueOfAnotherType) {
    EXPECT_EQ(CallOn(SpaceWith(GetParam().className, GetParam().property, TCIMValue(true))),
              TVORStatusCode::typeMismatch);
}

TEST_P(SchemaHelper, FailsForANullNamespace) {
    EXPECT_THROW(GetParam().call(nullptr), TAssertionError);
}

INSTANTIATE_TEST_SUITE_P(
    Every, SchemaHelper,
    testing::Values(
        TOperation{"MachineType", "KELSG_ComputerSystem", "ProductName",
                   [](const auto& collected) { (void)TCIMSchemaHelper::GetMachineType(collected); }},
        TOperation{"ModelNumber", "KELSG_ComputerSystem", "ProductName",
                   [](const auto& collected) { (void)TCIMSchemaHelper::GetModelNumber(collected); }},
        TOperation{"SerialNumber", "KELSG_ComputerSystem", "SerialNumber",
                   [](const auto& collected) { (void)TCIMSchemaHelper::GetSerialNumber(collected, {}); }},
        TOperation{"OperatingSystemType", "KELSG_OperatingSystem", "OSType",
                   [](const auto& collected) { (void)TCIMSchemaHelper::GetOperatingSystemType(collected); }},
        TOperation{
            "OperatingSystemVersion", "KELSG_OperatingSystem", "Version",
            [](const auto& collected) { (void)TCIMSchemaHelper::GetOperatingSystemVersion(collected); }},
        TOperation{
            "DataSourceVersion", "KELSG_DataSource", "Version",
            [](const auto& collected) { (void)TCIMSchemaHelper::GetDataSourceVersion(collected, {}); }}),
    [](const auto& test) { return std::string(test.param.name); });

// A namespace with another code for a missing property.
class TForeignSystem : public ICIMNamespace,
                       public ICIMClass,
                       public ICIMInstance,
                       public boost::enable_shared_from_this<TForeignSystem> {
  public:
    boost::shared_ptr<ICIMClass> GetClass(const std::string&, TOptionsMap) override {
        return shared_from_this();
    }
    const std::string& GetClassName(TOptionsMap) override { return name_; }
    boost::shared_ptr<ICIMInstance> CreateInstance(TOptionsMap) override { return shared_from_this(); }
    void EnumerateInstances(TInstanceCallback callback, bool, TOptionsMap) override {
        callback(shared_from_this());
    }
    void CommitInstance(TOptionsMap) override {}
    boost::shared_ptr<ICIMProperty> GetProperty(const std::string&, TOptionsMap) override {
        throw TVORException(77);
    }
    void SetProperty(const std::string&, const TCIMValue&, TOptionsMap) override {}

  private:
    std::string name_;
};

TEST(SchemaHelperFailure, HasOneCodeForAMissingPropertyOfAnyNamespace) {
    const auto foreign = boost::make_shared<TForeignSystem>();
    EXPECT_EQ(CodeOf([&] { TCIMSchemaHelper::GetMachineType(foreign); }), TVORStatusCode::propertyNotFound);
}

}  // namespace
