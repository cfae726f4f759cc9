// A thread that is cancelled while it renders, in the stream or in a call to the host, must unwind
// completely.
#include "tests/cancellation/cancelled_thread.h"
#include "tests/doubles/cim_doubles.h"
#include "tests/doubles/host_doubles.h"
#include "writer/nox_xml_writer.h"

#include <gtest/gtest.h>

#include <ios>
#include <ostream>
#include <sstream>
#include <string>

namespace {

using NDOUBLES::TInstanceDouble;
using NDOUBLES::TNamespaceDouble;
using NTEST::CancelThisThread;
using NTEST::IsCancelledIn;

class CancelledThread : public testing::Test {
  protected:
    CancelledThread() { NDOUBLES::ResetHost(); }

    std::ostringstream out;
    TNOXXMLWriterImpl writer{out};
};

/// Cancels its thread at the first flush.
class TCancellingBuffer final : public std::stringbuf {
  protected:
    int sync() override { CancelThisThread(); }
};

TEST_F(CancelledThread, UnwindsThroughTheStreamAndMarksItBad) {
    TCancellingBuffer buffer;
    std::ostream stream(&buffer);
    TNOXXMLWriterImpl streamWriter(stream);
    EXPECT_TRUE(IsCancelledIn(
        [&] { streamWriter.WriteResourceList("Other", boost::make_shared<TNamespaceDouble>()); }));
    EXPECT_EQ(buffer.str(), "<ResourceList resourceType=\"Other\">\n");
    EXPECT_TRUE(stream.bad());
}

TEST_F(CancelledThread, UnwindsThroughAStreamThatThrowsOnBadbit) {
    TCancellingBuffer buffer;
    std::ostream stream(&buffer);
    stream.exceptions(std::ios_base::badbit);
    TNOXXMLWriterImpl streamWriter(stream);
    EXPECT_TRUE(IsCancelledIn(
        [&] { streamWriter.WriteResourceList("Other", boost::make_shared<TNamespaceDouble>()); }));
}

TEST_F(CancelledThread, UnwindsThroughTheLookupOfAKeyProperty) {
    const auto instance = boost::make_shared<TInstanceDouble>();
    instance->before = [](const std::string&) { CancelThisThread(); };
    EXPECT_TRUE(
        IsCancelledIn([&] { TNOXXMLWriterImpl::GetResourceID("Processor", instance, "DeviceID", "", ""); }));
    EXPECT_TRUE(NDOUBLES::Host().log.empty());
}

TEST_F(CancelledThread, UnwindsThroughAReadOfAKeyValue) {
    const auto instance = boost::make_shared<TInstanceDouble>();
    instance->Add("DeviceID", "CPU0")->before = [](const std::string&) { CancelThisThread(); };
    EXPECT_TRUE(
        IsCancelledIn([&] { TNOXXMLWriterImpl::GetResourceID("Processor", instance, "DeviceID", "", ""); }));
    EXPECT_TRUE(NDOUBLES::Host().log.empty());
}

TEST_F(CancelledThread, UnwindsThroughASourceOfTheSystemInformation) {
    NDOUBLES::Host().osVersion = [](const NDOUBLES::TNamespacePtr&) -> std::string { CancelThisThread(); };
    EXPECT_TRUE(IsCancelledIn([&] { writer.WriteSysInfoNamespace(boost::make_shared<TNamespaceDouble>()); }));
}

}  // namespace
