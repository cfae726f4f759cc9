#include "vorhost/model/memory_namespace.h"

#include "host/add_to_vector_callback.h"
#include "throws_code.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using NVORHOST::ICIMInstance;
using NVORHOST::TCIMValue;
using NVORHOST::TMemoryClass;
using NVORHOST::TMemoryInstance;
using NVORHOST::TMemoryNamespace;
using NVORHOST::TPropertyDeclaration;
using TType = TCIMValue::TCIMType;
using TInstances = std::vector<boost::shared_ptr<ICIMInstance>>;

TInstances Enumerate(NVORHOST::ICIMClass& cimClass) {
    TInstances instances;
    cimClass.EnumerateInstances(NKELVOR20::TAddToVectorCallback<ICIMInstance>(&instances), true, {});
    return instances;
}

boost::shared_ptr<TMemoryInstance> Commit(TMemoryClass& cimClass, const char* name) {
    const auto instance = cimClass.NewInstance();
    instance->Set("Name", TCIMValue(name));
    instance->CommitInstance({});
    return instance;
}

std::vector<std::string> Names(TMemoryClass& cimClass) {
    std::vector<std::string> names;
    for (const auto& instance : Enumerate(cimClass)) {
        names.push_back(instance->GetProperty("Name", {})->GetValue({}));
    }
    return names;
}

std::vector<std::string> PropertyNames(const TMemoryInstance& instance) {
    std::vector<std::string> names;
    for (const auto& property : instance.GetProperties()) {
        names.push_back(property.name);
    }
    return names;
}

using TNames = std::vector<std::string>;

TEST(Namespace, FindsAClassInAnyCase) {
    TMemoryNamespace space;
    const auto added = space.AddClass("KELSG_ComputerSystem");
    EXPECT_EQ(space.GetClass("kelsg_computersystem", {}), added);
    EXPECT_EQ(space.FindClass("KELSG_COMPUTERSYSTEM"), added);
    EXPECT_EQ(space.GetClass("KELSG_COMPUTERSYSTEM", {})->GetClassName({}), "KELSG_ComputerSystem");
}

TEST(Namespace, ThrowsCode15ForAnUnknownClass) {
    TMemoryNamespace space;
    EXPECT_THROWS_CODE(space.GetClass("KELSG_ComputerSystem", {}), classNotFound);
    EXPECT_EQ(space.FindClass("KELSG_ComputerSystem"), nullptr);
}

TEST(Namespace, ListsClassesInTheOrderOfAddition) {
    TMemoryNamespace space;
    const auto zebra = space.AddClass("Zebra");
    const auto apple = space.AddClass("Apple");
    EXPECT_EQ(space.GetClasses(), (std::vector{zebra, apple}));
}

TEST(Namespace, RejectsASecondClassOfTheSameName) {
    TMemoryNamespace space;
    space.AddClass("Name");
    EXPECT_THROWS_CODE(space.AddClass("NAME"), alreadyExists);
    EXPECT_EQ(space.GetClasses().size(), 1U);
}

TEST(Namespace, RejectsAnEmptyNameAndADuplicateDeclaration) {
    TMemoryNamespace space;
    EXPECT_THROWS_CODE(space.AddClass(""), invalidParameter);
    EXPECT_THROWS_CODE(space.AddClass("A", {{"Name", TType::eString}, {"name", TType::eString}}),
                       invalidParameter);
    EXPECT_TRUE(space.GetClasses().empty());
    EXPECT_EQ(space.FindClass("A"), nullptr);
}

TEST(Class, EnumeratesInTheOrderOfCommit) {
    TMemoryNamespace space;
    const auto cimClass = space.AddClass("A");
    const auto first = cimClass->NewInstance();
    first->Set("Name", TCIMValue("made first, committed last"));
    Commit(*cimClass, "b");
    Commit(*cimClass, "a");
    first->CommitInstance({});
    EXPECT_EQ(Names(*cimClass), (TNames{"b", "a", "made first, committed last"}));
}

TEST(Class, EnumerationStopsIfTheCallbackReturnsFalse) {
    TMemoryNamespace space;
    const auto cimClass = space.AddClass("A");
    Commit(*cimClass, "1");
    Commit(*cimClass, "2");
    int calls = 0;
    cimClass->EnumerateInstances(
        [&calls](const boost::shared_ptr<ICIMInstance>&) {
            ++calls;
            return false;
        },
        true, {});
    EXPECT_EQ(calls, 1);
}

TEST(Class, EnumerationSkipsInstancesCommittedByItsCallback) {
    TMemoryNamespace space;
    const auto cimClass = space.AddClass("A");
    Commit(*cimClass, "1");
    int calls = 0;
    cimClass->EnumerateInstances(
        [&](const boost::shared_ptr<ICIMInstance>&) {
            Commit(*cimClass, "2");
            return ++calls < 10;
        },
        true, {});
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(cimClass->GetInstances().size(), 2U);
}

TEST(Class, PropagatesExceptionsOfTheCallback) {
    TMemoryNamespace space;
    const auto cimClass = space.AddClass("A");
    Commit(*cimClass, "1");
    const auto fail = [](const boost::shared_ptr<ICIMInstance>&) -> bool {
        throw std::runtime_error("stop");
    };
    EXPECT_THROW(cimClass->EnumerateInstances(fail, true, {}), std::runtime_error);
}

TEST(Class, EnumerationRejectsANullCallback) {
    TMemoryNamespace space;
    EXPECT_THROWS_CODE((space.AddClass("A")->EnumerateInstances({}, true, {}), 0), invalidParameter);
}

TEST(Class, CreatesInstancesThroughItsInterface) {
    TMemoryNamespace space;
    const auto cimClass = space.AddClass("KELSG_CADAT");
    const auto instance = space.GetClass("KELSG_CADAT", {})->CreateInstance({});
    instance->SetProperty("KELID", TCIMValue("4711"), {});
    instance->CommitInstance({});
    ASSERT_EQ(cimClass->GetInstances().size(), 1U);
    EXPECT_EQ(*cimClass->GetInstances()[0]->Find("KELID"), TCIMValue("4711"));
}

TEST(Class, AnUncommittedInstanceLeavesNoTrace) {
    TMemoryNamespace space;
    const auto cimClass = space.AddClass("A");
    cimClass->NewInstance()->Set("Name", TCIMValue("lost"));
    EXPECT_TRUE(Enumerate(*cimClass).empty());
    const auto other = Commit(*cimClass, "kept");
    EXPECT_EQ(other->GetProperties().size(), 1U);
}

TEST(Class, DeclaresFurtherPropertiesOnce) {
    TMemoryNamespace space;
    const auto cimClass = space.AddClass("A", {{"Name", TType::eString}});
    cimClass->Declare({"Size", TType::eUint64});
    ASSERT_EQ(cimClass->GetDeclarations().size(), 2U);
    EXPECT_EQ(cimClass->GetDeclarations()[1].name, "Size");
    EXPECT_THROWS_CODE((cimClass->Declare({"SIZE", TType::eUint64}), 0), alreadyExists);
    EXPECT_EQ(cimClass->GetDeclarations().size(), 2U);
}

TEST(Class, DeclaresPropertiesOfExistingInstances) {
    TMemoryNamespace space;
    const auto cimClass = space.AddClass("A");
    const auto instance = Commit(*cimClass, "1");
    cimClass->Declare({"Size", TType::eUint64});
    EXPECT_TRUE(instance->GetProperty("Size", {})->IsNull({}));
}

TEST(Instance, CommitIsIdempotent) {
    TMemoryNamespace space;
    const auto cimClass = space.AddClass("A");
    Commit(*cimClass, "1")->CommitInstance({});
    EXPECT_EQ(cimClass->GetInstances().size(), 1U);
}

TEST(Instance, CannotBeCommittedAfterItsClassIsDestroyed) {
    boost::shared_ptr<ICIMInstance> instance;
    {
        TMemoryNamespace space;
        instance = space.AddClass("A")->CreateInstance({});
    }
    instance->SetProperty("Name", TCIMValue("1"), {});
    EXPECT_THROWS_CODE((instance->CommitInstance({}), 0), classNotFound);
}

TEST(Instance, OutlivesItsNamespace) {
    TInstances instances;
    {
        TMemoryNamespace space;
        const auto cimClass = space.AddClass("A", {{"Size", TType::eUint64}});
        Commit(*cimClass, "kept");
        instances = Enumerate(*cimClass);
    }
    EXPECT_EQ(instances[0]->GetProperty("name", {})->GetValue({}), TCIMValue("kept"));
    EXPECT_TRUE(instances[0]->GetProperty("Size", {})->IsNull({}));
}

TEST(Instance, FindsAPropertyInAnyCase) {
    TMemoryNamespace space;
    const auto instance = Commit(*space.AddClass("A"), "1");
    EXPECT_EQ(instance->GetProperty("nAME", {})->GetValue({}), TCIMValue("1"));
    EXPECT_EQ(*instance->Find("NAME"), TCIMValue("1"));
}

TEST(Instance, ThrowsPropertyNotFoundForAMissingProperty) {
    TMemoryNamespace space;
    const auto cimClass = space.AddClass("A");
    const auto instance = Commit(*cimClass, "1");
    EXPECT_THROWS_CODE(instance->GetProperty("Size", {}), propertyNotFound);
    EXPECT_EQ(instance->Find("Size"), nullptr);

    const auto other = cimClass->NewInstance();
    other->Set("Size", TCIMValue(std::uint64_t{1}));
    EXPECT_THROWS_CODE(instance->GetProperty("Size", {}),
                       propertyNotFound);  // a name that another instance has used
}

TEST(Instance, ADeclaredPropertyWithoutValueIsANullOfItsType) {
    TMemoryNamespace space;
    const auto cimClass =
        space.AddClass("A", {{"Size", TType::eUint64}, {"Codes", TType::eUint16, /*isArray=*/true}});
    const auto instance = Commit(*cimClass, "1");
    const auto size = instance->GetProperty("size", {});
    EXPECT_TRUE(size->IsNull({}));
    EXPECT_EQ(size->GetType({}), TType::eUint64);
    EXPECT_EQ(size->GetValue({}), TCIMValue(TType::eUint64));
    EXPECT_EQ(instance->GetProperty("Codes", {})->GetValue({}), TCIMValue::NullArray(TType::eUint16));
    EXPECT_EQ(instance->Find("Size"), nullptr);
    EXPECT_EQ(PropertyNames(*instance), TNames{"Name"});
}

TEST(Instance, ANullThatWasSetCountsAsSet) {
    TMemoryNamespace space;
    const auto instance = space.AddClass("A")->NewInstance();
    instance->Set("Size", TCIMValue(TType::eUint64));
    EXPECT_TRUE(instance->GetProperty("Size", {})->IsNull({}));
    ASSERT_NE(instance->Find("Size"), nullptr);
    EXPECT_EQ(PropertyNames(*instance), TNames{"Size"});
}

TEST(Instance, ReturnsTheTypeOfAProperty) {
    TMemoryNamespace space;
    const auto instance = space.AddClass("A")->NewInstance();
    instance->Set("Size", TCIMValue(std::uint64_t{1}));
    EXPECT_EQ(instance->GetProperty("Size", {})->GetType({}), TType::eUint64);
    EXPECT_FALSE(instance->GetProperty("Size", {})->IsNull({}));
}

TEST(Instance, RejectsAValueThatConflictsWithTheDeclaration) {
    TMemoryNamespace space;
    const auto instance = space.AddClass("A", {{"Size", TType::eUint64}})->NewInstance();
    EXPECT_THROWS_CODE((instance->Set("size", TCIMValue("1")), 0), typeMismatch);
    EXPECT_THROWS_CODE((instance->Set("Size", TCIMValue::NullArray(TType::eUint64)), 0), typeMismatch);
    EXPECT_EQ(instance->Find("Size"), nullptr);
    instance->Set("SIZE", TCIMValue(std::uint64_t{1}));
    EXPECT_EQ(*instance->Find("Size"), TCIMValue(std::uint64_t{1}));
}

TEST(Instance, KeepsPropertiesInTheOrderOfTheirFirstSetting) {
    TMemoryNamespace space;
    const auto instance = space.AddClass("A", {{"Name", TType::eString}})->NewInstance();
    instance->Set("Zone", TCIMValue("1"));
    instance->Set("Name", TCIMValue("2"));
    instance->Set("Area", TCIMValue("3"));
    instance->Set("zone", TCIMValue("4"));
    EXPECT_EQ(PropertyNames(*instance), (TNames{"Zone", "Name", "Area"}));
    EXPECT_EQ(instance->GetProperties()[0].value, TCIMValue("4"));
}

TEST(Instance, FindsPropertiesThatWereSetInAnotherOrderThanInOtherInstances) {
    TMemoryNamespace space;
    const auto cimClass = space.AddClass("A");
    const TNames names{"A", "B", "C", "D", "E"};
    for (std::size_t shift = 0; shift < names.size(); ++shift) {
        const auto instance = cimClass->NewInstance();
        for (std::size_t at = 0; at < names.size(); ++at) {
            const auto& name = names[(at + shift) % names.size()];
            instance->Set(name, TCIMValue(name));
        }
        for (const auto& name : names) {
            EXPECT_EQ(*instance->Find(name), TCIMValue(name)) << shift;
        }
    }
}

TEST(Instance, FindsEachOfVeryManyProperties) {
    TMemoryNamespace space;
    const auto instance = space.AddClass("A")->NewInstance();
    for (int number = 0; number < 1000; ++number) {
        instance->Set("Property" + std::to_string(number), TCIMValue(std::int32_t{number}));
    }
    for (int number = 0; number < 1000; ++number) {
        EXPECT_EQ(*instance->Find("PROPERTY" + std::to_string(number)), TCIMValue(std::int32_t{number}));
    }
}

TEST(Instance, NamesStayValidWhenTheClassGetsMore) {
    TMemoryNamespace space;
    const auto cimClass = space.AddClass("A");
    const auto instance = Commit(*cimClass, "1");
    const auto properties = instance->GetProperties();
    const auto other = cimClass->NewInstance();
    for (int number = 0; number < 1000; ++number) {
        other->Set("Property" + std::to_string(number), TCIMValue("x"));
    }
    EXPECT_EQ(properties[0].name, "Name");
    EXPECT_EQ(properties[0].value, TCIMValue("1"));
}

TEST(Property, AHandleKeepsItsValueWhenTheInstanceChanges) {
    TMemoryNamespace space;
    const auto instance = space.AddClass("A")->NewInstance();
    instance->SetProperty("Name", TCIMValue("old"), {});
    const auto handle = instance->GetProperty("Name", {});
    instance->SetProperty("Name", TCIMValue("new"), {});
    EXPECT_EQ(handle->GetValue({}), TCIMValue("old"));
    EXPECT_EQ(instance->GetProperty("Name", {})->GetValue({}), TCIMValue("new"));
}

TEST(Property, AHandleTakenBeforeTheCommitKeepsItsValue) {
    TMemoryNamespace space;
    const auto instance = space.AddClass("A")->NewInstance();
    instance->Set("Name", TCIMValue("old"));
    instance->Set("Version", TCIMValue("1.0"));
    const auto handle = instance->GetProperty("Name", {});
    instance->CommitInstance({});
    EXPECT_EQ(handle->GetValue({}), TCIMValue("old"));
    instance->Set("Name", TCIMValue("new"));
    EXPECT_EQ(handle->GetValue({}), TCIMValue("old"));
    EXPECT_EQ(*instance->Find("Name"), TCIMValue("new"));
    EXPECT_EQ(*instance->Find("Version"), TCIMValue("1.0"));
}

TEST(Property, AHandleOutlivesItsInstance) {
    auto space = boost::make_shared<TMemoryNamespace>();
    Commit(*space->AddClass("A"), "kept");
    const auto handle = Enumerate(*space->FindClass("A")).front()->GetProperty("Name", {});
    space.reset();
    EXPECT_EQ(handle->GetValue({}), TCIMValue("kept"));
}

TEST(Property, ValueIsACopy) {
    TMemoryNamespace space;
    const auto instance = space.AddClass("A")->NewInstance();
    TCIMValue value("set");
    instance->SetProperty("Name", value, {});
    value = TCIMValue("changed");
    EXPECT_EQ(instance->GetProperty("Name", {})->GetValue({}), TCIMValue("set"));
}

TEST(Property, IgnoresOptions) {
    TMemoryNamespace space;
    const auto instance = Commit(*space.AddClass("A"), "1");
    const NVORHOST::TOptionsMap options{{"language", TCIMValue("en")}};
    EXPECT_EQ(instance->GetProperty("Name", options)->GetValue(options), TCIMValue("1"));
}

}  // namespace
