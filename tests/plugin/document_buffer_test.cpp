#include "plugin/document_buffer.h"

#include "tests/allocations/allocation_faults.h"

#include <gtest/gtest.h>

#include <ios>
#include <string>

namespace {

using NTEST::TAllocationFault;

TEST(DocumentBuffer, StartsEmpty) {
    EXPECT_EQ(MakeDocumentBuffer().str(), "");
}

TEST(DocumentBuffer, ReturnsTheTextThatWasWritten) {
    std::stringstream buffer = MakeDocumentBuffer();
    buffer << "a document";
    EXPECT_EQ(buffer.str(), "a document");
    EXPECT_EQ(buffer.get(), 'a');
}

TEST(DocumentBuffer, HoldsAMegabyteWithoutAnotherAllocation) {
    std::stringstream buffer = MakeDocumentBuffer();
    const std::string text(1'000'000, 'x');
    const auto fault = TAllocationFault::OfSizeFrom(1'000'000, 1);
    buffer << text;
    EXPECT_FALSE(fault.HasStruck());
    EXPECT_EQ(buffer.view().size(), text.size());
}

TEST(DocumentBuffer, StartsSmallWithoutMemoryForTheReserve) {
    const auto fault = TAllocationFault::OfFirst(1, 1'000'000);
    std::stringstream buffer = MakeDocumentBuffer();
    EXPECT_TRUE(fault.HasStruck());
    buffer << "a document";
    EXPECT_EQ(buffer.view(), "a document");
}

TEST(DocumentBuffer, ThrowsIfTheTextOutgrowsTheMemory) {
    const std::string text(2'000'000, 'x');
    const auto fault = TAllocationFault::OfFirst(2, 1'000'000);
    std::stringstream buffer = MakeDocumentBuffer();
    EXPECT_THROW(buffer << text, std::bad_alloc);
    EXPECT_TRUE(buffer.bad());
}

}  // namespace
