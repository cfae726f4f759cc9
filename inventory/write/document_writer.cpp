#include "inventory/write/document_writer.h"

#include <algorithm>

namespace NINVENTORY {
namespace {

struct TReplacement {
    char byte;
    std::string_view text;
};

constexpr TReplacement replacements[] = {{'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}};

void WriteEscaped(std::ostream& out, std::string_view text) {
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find_first_of("&<>", begin), text.size());
        out << text.substr(begin, end - begin);
        if (end < text.size()) {
            out << std::ranges::find(replacements, text[end], &TReplacement::byte)->text;
        }
        begin = end + 1;
    }
}

// The fixed text between the head of system information and its resource.
constexpr std::string_view systemInformationContext =
    "<ResourceCollectionCriteria criteriaName=\"NOXSystemInfo\" criteriaId=\"default.NOXSystemInfo\">\n"
    "<ResourceListCriteria resourceType=\"NOXSystemInfo\" />\n"
    "</ResourceCollectionCriteria>\n"
    "<ResourceCollectionContext>\n"
    "<ResourceInstance resourceName=\"NOXSystemInfo_ContextName\""
    " resourceId=\"NOXSystemInfo_Context_ID_1\" resourceType=\"NOXSystemInfo_Type\">\n"
    "<Property name=\"NOXSystemInfo_Name\" type=\"string\">\n"
    "<Value>SystemInfo</Value>\n"
    "</Property>\n"
    "</ResourceInstance>\n"
    "</ResourceCollectionContext>\n";

}  // namespace

void TDocumentWriter::BeginDocument(const TDocumentHead& head) {
    kind_ = head.kind;
    const bool isHardware = kind_ == EDocument::hardware;
    out_ << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<ResourceCollection xmlns=\""
         << head.namespaceUri
         // The blank is part of the format.
         << (isHardware ? "\" timestamp= \"" : "\" timestamp=\"") << head.timestamp << "\">\n"
         << (isHardware ? std::string_view() : systemInformationContext);
}

void TDocumentWriter::BeginList(std::string_view listType, int /*line*/) {
    EndList();
    if (listType.empty()) {
        out_ << "<ResourceCollectionContext>\n";
        listEnd_ = "</ResourceCollectionContext>\n";
    } else {
        out_ << "<ResourceList resourceType=\"" << listType << "\">\n";
        listEnd_ = "</ResourceList>\n";
    }
}

void TDocumentWriter::AddResource(TResource&& resource) {
    out_ << "<ResourceInstance resourceId=\"" << resource.id;
    if (kind_ == EDocument::systemInformation) {
        out_ << "\" resourceName=\"" << resource.name;
    }
    out_ << "\" resourceType=\"" << resource.type << "\">\n";
    for (const TProperty& property : resource.properties) {
        WriteProperty(property);
    }
    out_ << "</ResourceInstance>\n";
}

void TDocumentWriter::Finish() {
    EndList();
    out_ << "</ResourceCollection>\n";
}

void TDocumentWriter::EndList() {
    out_ << listEnd_;
    listEnd_ = {};
}

void TDocumentWriter::WriteProperty(const TProperty& property) {
    out_ << "<Property name=\"" << property.name << "\" type=\"" << property.type << "\">\n";
    if (property.shape == EShape::scalar) {
        WriteLine("<Value>", property.values.front(), "</Value>\n");
    } else if (property.shape == EShape::array) {
        out_ << "<VALUE.ARRAY>\n";
        for (const std::string& value : property.values) {
            WriteLine("<VALUE>", value, "</VALUE>\n");
        }
        out_ << "</VALUE.ARRAY>\n";
    }
    out_ << "</Property>\n";
}

// Values of system information are not escaped.
void TDocumentWriter::WriteLine(std::string_view start, std::string_view value, std::string_view end) {
    out_ << start;
    if (kind_ == EDocument::hardware) {
        WriteEscaped(out_, value);
    } else {
        out_ << value;
    }
    out_ << end;
}

}  // namespace NINVENTORY
