#include "inventory/write/document_writer.h"

#include "inventory/read/system_information_frame.h"

#include <algorithm>
#include <span>

namespace NINVENTORY {
namespace {

struct TReplacement {
    char byte;
    std::string_view text;
};

// Readers turn a bare carriage return into a line feed, and white space of attributes into blanks.
constexpr TReplacement textReplacements[] = {{'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'\r', "&#13;"}};
constexpr TReplacement attributeReplacements[] = {{'&', "&amp;"},  {'<', "&lt;"},   {'>', "&gt;"},
                                                  {'"', "&quot;"}, {'\r', "&#13;"}, {'\n', "&#10;"},
                                                  {'\t', "&#9;"}};

void WriteEscaped(std::ostream& out, std::string_view text, std::span<const TReplacement> replacements) {
    std::string_view rest = text;
    const auto isReplaced = [&](char c) {
        return std::ranges::find(replacements, c, &TReplacement::byte) != replacements.end();
    };
    for (auto found = std::ranges::find_if(rest, isReplaced); found != rest.end();
         found = std::ranges::find_if(rest, isReplaced)) {
        const auto length = static_cast<std::size_t>(found - rest.begin());
        out << rest.substr(0, length) << std::ranges::find(replacements, *found, &TReplacement::byte)->text;
        rest.remove_prefix(length + 1);
    }
    out << rest;
}

}  // namespace

void TDocumentWriter::BeginDocument(const TDocumentHead& head) {
    kind_ = head.kind;
    const bool isHardware = kind_ == EDocument::hardware;
    out_ << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    WriteAttribute("<ResourceCollection xmlns=\"", head.namespaceUri);
    // The blank is part of the format.
    WriteAttribute(isHardware ? " timestamp= \"" : " timestamp=\"", head.timestamp);
    out_ << ">\n" << (isHardware ? std::string_view() : systemInformationContext);
}

void TDocumentWriter::BeginList(std::string_view listType, int /*line*/) {
    EndList();
    if (listType.empty()) {
        out_ << "<ResourceCollectionContext>\n";
        listEnd_ = "</ResourceCollectionContext>\n";
    } else {
        WriteAttribute("<ResourceList resourceType=\"", listType);
        out_ << ">\n";
        listEnd_ = "</ResourceList>\n";
    }
}

void TDocumentWriter::AddResource(TResource&& resource) {
    WriteAttribute("<ResourceInstance resourceId=\"", resource.id);
    if (kind_ == EDocument::systemInformation) {
        WriteAttribute(" resourceName=\"", resource.name);
    }
    WriteAttribute(" resourceType=\"", resource.type);
    out_ << ">\n";
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
    WriteAttribute("<Property name=\"", property.name);
    WriteAttribute(" type=\"", property.type);
    out_ << ">\n";
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

// Writes a value and the quote after it.
void TDocumentWriter::WriteAttribute(std::string_view start, std::string_view value) {
    out_ << start;
    if (kind_ == EDocument::hardware) {
        WriteEscaped(out_, value, attributeReplacements);
    } else {
        out_ << value;
    }
    out_ << '"';
}

// Values of system information are not escaped.
void TDocumentWriter::WriteLine(std::string_view start, std::string_view value, std::string_view end) {
    out_ << start;
    if (kind_ == EDocument::hardware) {
        WriteEscaped(out_, value, textReplacements);
    } else {
        out_ << value;
    }
    out_ << end;
}

}  // namespace NINVENTORY
