// Loading and saving when memory runs out, at every allocation in turn: the exception reaches the caller,
// nothing leaks, and the target is as it was. The program's own operator new, and the XML library's own
// allocations, fail on order.
#include "allocation_faults.h"
#include "cimxml_fixture.h"
#include "vorhost/cimxml/save.h"

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

enum class EOutcome { done, outOfMemory };

EOutcome TryToLoad(TMemoryNamespace& target) {
    try {
        LoadNamespaceFromText(documentName, document, target);
        return EOutcome::done;
    } catch (const std::bad_alloc&) {
        return EOutcome::outOfMemory;
    }
}

// Fails the first allocation, then the second, and so on until there are no more; gives their number.
std::size_t LoadWithFailures(std::size_t& untilFailure) {
    std::size_t number = 0;
    for (bool hasFailed = true; hasFailed; number += hasFailed ? 1U : 0U) {
        TMemoryNamespace target;
        target.AddClass("B");
        untilFailure = number + 1;
        const EOutcome outcome = TryToLoad(target);
        hasFailed = untilFailure == 0;
        untilFailure = 0;
        EXPECT_EQ(target.GetClasses().size(), outcome == EOutcome::done ? 2U : 1U) << number;
        EXPECT_TRUE(hasFailed || outcome == EOutcome::done) << number;
    }
    return number;
}

TEST(LackOfMemory, WhileLoadingLeavesTheTargetAsItWas) {
    EXPECT_GT(LoadWithFailures(newsUntilFailure), 30U);
}

TEST(LackOfMemory, OfTheXmlLibraryLeavesTheTargetAsItWas) {
    LetXmlAllocationsFail();
    EXPECT_GT(LoadWithFailures(mallocsUntilFailure), 20U);
}

TEST(LackOfMemory, WhileSavingPassesToTheCaller) {
    TMemoryNamespace source;
    ASSERT_EQ(TryToLoad(source), EOutcome::done);
    std::ostringstream expected;
    SaveNamespace(source, expected);
    std::size_t number = 0;
    for (bool isDone = false; !isDone;) {
        std::ostringstream out;
        newsUntilFailure = ++number;
        try {
            SaveNamespace(source, out);
            isDone = true;
        } catch (const std::bad_alloc&) {
        }
        newsUntilFailure = 0;
        EXPECT_TRUE(!isDone || !out.good() || out.str() == expected.str()) << number;
    }
    EXPECT_GT(number, 10U);
}

}  // namespace
}  // namespace NVORHOST::NTEST
