// A date-time that can be parsed is written as the same text (except that the UTC offset "-000" becomes
// "+000"), and is formatted as the documents require.
#include "fuzz.h"
#include "host/cim_date_time.h"
#include "writer/nox_xml_writer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = AsText(data, size);
    const auto time = NKELVOR20::TCIMDateTime::FromText(text);
    if (time) {
        Require(NKELVOR20::TCIMDateTime::FromText(time->ToString()) == time, "the same moment");
        Require(TNOXXMLWriterImpl::ConvertCIMDateToUSMI(*time).ends_with(":00"), "whole hours of offset");
    }
    return 0;
}
