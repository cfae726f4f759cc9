// Makes every allocation fail in turn, in operator new and in the XML library: the exception must reach the
// caller, nothing may leak, and the target must be unchanged.
#include "cimxml_fixture.h"
#include "tests/allocations/allocation_faults.h"
#include "vorhost/cimxml/save.h"
#include "xml_allocation_faults.h"

#include <gtest/gtest.h>

#include <new>

namespace NVORHOST::NTEST {
namespace {

const std::string document = InGroup(
    Class("<PROPERTY NAME=\"P\" TYPE=\"string\"><VALUE>default</VALUE></PROPERTY>") +
    Instance("<PROPERTY NAME=\"P\" TYPE=\"string\"><VALUE>a value that is too long to stand in "
             "place</VALUE></PROPERTY>"
             "<PROPERTY.ARRAY NAME=\"A\" TYPE=\"string\"><QUALIFIER NAME=\"NoxinfoEncoding\" "
             "TYPE=\"string\"><VALUE>"
             "base64</VALUE></QUALIFIER><VALUE.ARRAY><VALUE>AAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBk=</"
             "VALUE><VALUE.NULL/>"
             "</VALUE.ARRAY></PROPERTY.ARRAY><PROPERTY.REFERENCE NAME=\"R\"><VALUE.REFERENCE><INSTANCENAME "
             "CLASSNAME=\"D\"><KEYBINDING NAME=\"Key\"><KEYVALUE>a key that is too long to stand in "
             "place</KEYVALUE>"
             "</KEYBINDING></INSTANCENAME></VALUE.REFERENCE></PROPERTY.REFERENCE>"));

using ::NTEST::LiveAllocations;
using ::NTEST::TAllocationFault;

enum class EOutcome { done, outOfMemory };

EOutcome TryToLoad(TMemoryNamespace& target) {
    try {
        LoadNamespaceFromText(documentName, document, target);
        return EOutcome::done;
    } catch (const std::bad_alloc&) {
        return EOutcome::outOfMemory;
    }
}

// Makes the first allocation fail, then the second, and so on until the action succeeds. Returns their
// number.
template <typename TMakeFault>
std::size_t LoadWithFailures(const TMakeFault& makeFault) {
    std::size_t number = 0;
    for (bool hasStruck = true; hasStruck;) {
        const std::size_t liveBefore = LiveAllocations();
        {
            TMemoryNamespace target;
            target.AddClass("B");
            EOutcome outcome = EOutcome::done;
            {
                const auto fault = makeFault(++number);
                outcome = TryToLoad(target);
                hasStruck = fault.HasStruck();
            }
            EXPECT_EQ(target.GetClasses().size(), outcome == EOutcome::done ? 2U : 1U) << number;
            EXPECT_TRUE(hasStruck || outcome == EOutcome::done) << number;
        }
        EXPECT_EQ(LiveAllocations(), liveBefore) << number;
    }
    return number - 1;
}

TEST(LackOfMemory, WhileLoadingLeavesTheTargetUnchanged) {
    EXPECT_GT(LoadWithFailures(TAllocationFault::OfNumber), 30U);
}

TEST(LackOfMemory, InTheXmlLibraryLeavesTheTargetUnchanged) {
    EXPECT_GT(LoadWithFailures([](std::size_t number) { return TXmlAllocationFault(number); }), 20U);
}

TEST(LackOfMemory, WhileSavingPropagatesToTheCaller) {
    TMemoryNamespace source;
    ASSERT_EQ(TryToLoad(source), EOutcome::done);
    std::ostringstream expected;
    SaveNamespace(source, expected);
    std::size_t number = 0;
    for (bool hasStruck = true; hasStruck;) {
        const std::size_t liveBefore = LiveAllocations();
        {
            std::ostringstream out;
            const auto fault = TAllocationFault::OfNumber(++number);
            try {
                SaveNamespace(source, out);
                // A stream that runs out of memory records the failure in its state.
                EXPECT_TRUE(!out.good() || out.view() == expected.view()) << number;
            } catch (const std::bad_alloc&) {
                EXPECT_TRUE(fault.HasStruck()) << number;
            }
            hasStruck = fault.HasStruck();
        }
        EXPECT_EQ(LiveAllocations(), liveBefore) << number;
    }
    EXPECT_GT(number, 10U);
}

}  // namespace
}  // namespace NVORHOST::NTEST
