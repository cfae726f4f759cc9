#include "gzfilebuf_model.h"

#include <algorithm>

bool TGzFileBufModel::OpenFile(bool byName) {
    if (isOpen_) {
        return false;
    }
    calls.emplace_back('o', 0);
    if (faults_.Strike(EZlibFault::openFails)) {
        return false;
    }
    EnableBuffer();
    isOpen_ = true;
    isByName_ = byName;
    readAt_ = 0;
    ++leftOpen;
    if (forWriting_) {
        written.emplace_back();
    }
    return true;
}

bool TGzFileBufModel::Close() {
    if (!isOpen_) {
        return false;
    }
    const bool flushed = Flush() == 0;
    calls.emplace_back('c', 0);
    --leftOpen;
    isOpen_ = false;
    isByName_ = false;
    DisableBuffer();
    return !faults_.Strike(EZlibFault::closeError) && flushed;
}

bool TGzFileBufModel::SetBuf(std::size_t size) {
    if (Flush() != 0) {
        return false;
    }
    DisableBuffer();
    isUsers_ = size != 0;
    nextSize_ = 0;
    storage_.assign(size, '\0');
    EnableBuffer();
    return true;
}

void TGzFileBufModel::EnableBuffer() {
    if (storage_.empty()) {
        hasPutArea_ = nextSize_ != 0;
        nextSize_ = std::max<std::size_t>(nextSize_, 1);
        storage_.assign(nextSize_, '\0');
    } else {
        // The real one gets a put area without room when it is opened unbuffered, which is equivalent.
        hasPutArea_ = true;
    }
    EmptyAreas();
}

void TGzFileBufModel::DisableBuffer() {
    if (!isUsers_) {
        if (!storage_.empty() && !hasPutArea_) {
            nextSize_ = 0;
        }
        storage_.clear();
    }
    hasPutArea_ = !storage_.empty();
    EmptyAreas();
}

void TGzFileBufModel::EmptyAreas() {
    pending_ = getAt_ = getEnd_ = 0;
}

int TGzFileBufModel::Put(char c) {
    if (hasPutArea_ && pending_ + 1 < storage_.size()) {
        storage_[pending_++] = c;
        return static_cast<unsigned char>(c);
    }
    return Overflow(c) ? static_cast<unsigned char>(c) : endOfFile;
}

std::size_t TGzFileBufModel::Write(std::string_view text) {
    std::size_t taken = 0;
    while (taken < text.size() && Put(text[taken]) != endOfFile) {
        ++taken;
    }
    return taken;
}

bool TGzFileBufModel::Overflow(std::optional<char> c) {
    if (!hasPutArea_) {
        return !c || HandOver({&*c, 1});
    }
    if (pending_ + 1 > storage_.size()) {
        return false;
    }
    if (c) {
        storage_[pending_++] = *c;
    }
    if (pending_ != 0 && !HandOver({storage_.data(), pending_})) {
        return false;
    }
    pending_ = 0;
    return true;
}

bool TGzFileBufModel::HandOver(std::string_view text) {
    if (!isOpen_ || !forWriting_) {
        return false;
    }
    calls.emplace_back('w', text.size());
    if (faults_.Strike(EZlibFault::nothingWritten) || faults_.Strike(EZlibFault::writeError)) {
        return false;
    }
    const bool isShort = faults_.Strike(EZlibFault::shortWrite);
    written.back().append(text.substr(0, text.size() - (isShort ? 1 : 0)));
    return !isShort;
}

int TGzFileBufModel::Get() {
    if (getAt_ == getEnd_ && !Fill()) {
        return endOfFile;
    }
    return static_cast<unsigned char>(storage_[getAt_++]);
}

std::string TGzFileBufModel::Read(std::size_t size) {
    std::string text;
    while (text.size() < size && (getAt_ != getEnd_ || Fill())) {
        text += storage_[getAt_++];
    }
    return text;
}

bool TGzFileBufModel::Fill() {
    if (!isOpen_ || forWriting_) {
        return false;
    }
    calls.emplace_back('r', storage_.size());
    getAt_ = getEnd_ = 0;
    if (faults_.Strike(EZlibFault::readError)) {
        return false;
    }
    getEnd_ = readable_.copy(storage_.data(), storage_.size(), readAt_);
    readAt_ += getEnd_;
    return getEnd_ != 0;
}

long TGzFileBufModel::Available() const {
    if (getAt_ != getEnd_) {
        return static_cast<long>(getEnd_ - getAt_);
    }
    return isOpen_ && !forWriting_ ? 0 : -1;
}

void TGzFileBufModel::Destroy() {
    (void)Flush();
    if (isByName_) {
        (void)Close();
    }
    TGzFileBufModel next(forWriting_, readable_, faults_);
    next.calls = std::move(calls);
    next.written = std::move(written);
    next.leftOpen = leftOpen;
    *this = std::move(next);
}
