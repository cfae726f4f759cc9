#include "inventory/read/document_input.h"

#include "documents/document_error.h"

namespace NINVENTORY {

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
            NVORHOST::ThrowAt({name_, {}, {}, {}}, "is larger than " + std::to_string(limit) + " bytes");
        }
    }
    return text;
}

}  // namespace NINVENTORY
