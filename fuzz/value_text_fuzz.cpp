// A document with any value is well formed and plain ASCII.
#include "fuzz.h"
#include "host/cim_value.h"
#include "writer/nox_xml_writer.h"

#include <libxml/parser.h>

#include <algorithm>
#include <memory>
#include <sstream>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using NKELVOR20::TCIMValue;
    const std::string text(AsText(data, size));
    const std::string quoted = TNOXXMLWriterImpl::QuoteString(text);
    Require(std::ranges::all_of(quoted, [](unsigned char c) { return c >= 0x20 && c <= 0x7F; }),
            "plain ASCII");

    std::ostringstream document;
    TNOXXMLWriterImpl writer(document);
    document << "<Property>";
    writer.WriteValue(TCIMValue(text));
    writer.WriteValue(TCIMValue::Array(TCIMValue::TCIMType::eString, {TCIMValue(text), TCIMValue(quoted)}));
    document << "</Property>";
    const std::string xml = document.str();
    const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> parsed(
        xmlReadMemory(xml.data(), static_cast<int>(xml.size()), "input", nullptr,
                      XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_NONET),
        &xmlFreeDoc);
    Require(parsed != nullptr, "well formed");
    return 0;
}
