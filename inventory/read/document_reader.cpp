#include "inventory/read/document_reader.h"

#include "documents/document_error.h"
#include "documents/xml_parser.h"
#include "inventory/read/hardware_reader.h"
#include "inventory/read/system_information_reader.h"

#include <optional>

namespace NINVENTORY {
namespace {

using NVORHOST::TDocumentCause;
using NVORHOST::TDocumentFile;
using NVORHOST::ThrowAt;
using NVORHOST::TXmlParser;

[[noreturn]] void Fail(const TDocumentInput& input, int line, std::string_view cause) {
    ThrowAt({input.GetName(), line > 0 ? std::optional(line) : std::nullopt, {}, {}}, cause);
}

void ReadHardware(TDocumentInput& input, IDocumentEvents& events) {
    THardwareReader reader(events);
    TXmlParser parser(reader);
    reader.SetParser(parser);
    try {
        for (auto bytes = input.Read(); !bytes.empty(); bytes = input.Read()) {
            parser.Feed(bytes);
        }
        parser.Finish();
    } catch (const TDocumentCause& cause) {
        Fail(input, parser.GetLine(), cause.what());
    }
}

void ReadSystemInformation(TDocumentInput& input, IDocumentEvents& events) {
    const std::string text = input.ReadAll(maxSystemInformationBytes);
    TSystemInformationReader reader(text);
    try {
        reader.Read(events);
    } catch (const TDocumentCause& cause) {
        Fail(input, reader.GetLine(), cause.what());
    }
}

}  // namespace

TDocumentInput::TDocumentInput(const std::string& path)
    : name_(path == "-" ? "standard input" : path),
      file_(path == "-" ? "/dev/stdin" : path, name_, maxDocumentBytes) {
    Recognize();
}

TDocumentInput::TDocumentInput(const std::string& name, std::string_view bytes)
    : name_(name), file_(name, bytes, maxDocumentBytes) {
    Recognize();
}

void TDocumentInput::Recognize() {
    for (auto bytes = file_.Read(); !bytes.empty(); bytes = file_.Read()) {
        start_ += bytes;
        if (start_.size() >= contentBytes) {
            break;
        }
    }
    content_ = RecognizeContent(std::string_view(start_).substr(0, contentBytes));
}

std::string_view TDocumentInput::Read() {
    if (!isStartReturned_ && !start_.empty()) {
        isStartReturned_ = true;
        return start_;
    }
    return file_.Read();
}

std::string TDocumentInput::ReadAll(std::size_t limit) {
    std::string text;
    for (auto bytes = Read(); !bytes.empty(); bytes = Read()) {
        text += bytes;
        if (text.size() > limit) {
            Fail(*this, 0, "is larger than " + std::to_string(limit) + " bytes");
        }
    }
    return text;
}

void ReadDocument(TDocumentInput& input, IDocumentEvents& events) {
    switch (input.GetContent()) {
        case EContent::hardware:
            return ReadHardware(input, events);
        case EContent::systemInformation:
            return ReadSystemInformation(input, events);
        case EContent::cimXml:
        case EContent::unknown:
            Fail(input, 0, "is not an inventory document");
    }
}

}  // namespace NINVENTORY
