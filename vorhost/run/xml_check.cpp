#include "vorhost/run/xml_check.h"

#include "text/ascii.h"
#include "text/hex.h"

#include <algorithm>
#include <iterator>

namespace NVORHOST {
namespace {

constexpr std::string_view namedReferences[] = {"amp", "lt", "gt", "quot", "apos"};

bool IsNameByte(char byte) {
    return IsAlphanumeric(byte) || byte == '_' || byte == '-' || byte == '.' || byte == ':' ||
           static_cast<unsigned char>(byte) >= 0x80;
}

bool IsBlank(char byte) {
    return byte == ' ' || byte == '\t' || byte == '\n' || byte == '\r';
}

bool IsCharacter(char byte) {
    return static_cast<unsigned char>(byte) >= 0x20 || IsBlank(byte);
}

bool IsReference(std::string_view name) {
    if (name.starts_with("#x")) {
        return name.size() > 2 && IsHex(name.substr(2));
    }
    if (name.starts_with("#")) {
        return name.size() > 1 && std::ranges::all_of(name.substr(1), IsDigit);
    }
    return std::ranges::find(namedReferences, name) != std::end(namedReferences);
}

}  // namespace

void TXmlCheck::AddLine(std::string_view line) {
    ++lines_;
    if (fault_) {
        return;
    }
    const auto fault = std::ranges::find_if_not(line, [this](char byte) { return Read(byte); });
    if (fault != line.end() || !Read('\n')) {
        fault_ = TFault{lines_, static_cast<std::size_t>(fault - line.begin())};
    }
}

bool TXmlCheck::Enter(EState state) {
    state_ = state;
    word_.clear();
    return true;
}

bool TXmlCheck::Read(char byte) {
    switch (state_) {
        case EState::text:
            return ReadText(byte);
        case EState::reference:
            return ReadReference(byte);
        case EState::markup:
            return ReadMarkup(byte);
        case EState::declaration:
            return byte != '>' || Enter(EState::text);
        case EState::startName:
            return ReadStartName(byte);
        case EState::endName:
            return ReadEndName(byte);
        case EState::inTag:
            return ReadTag(byte);
        case EState::emptyTag:
            elements_.pop_back();
            return byte == '>' && Enter(EState::text);
        case EState::attribute:
            return ReadAttribute(byte);
        case EState::value:
            return ReadValue(byte);
    }
    return false;
}

bool TXmlCheck::ReadText(char byte) {
    if (byte == '<') {
        return Enter(EState::markup);
    }
    if (byte == '&') {
        outer_ = EState::text;
        return Enter(EState::reference);
    }
    return IsCharacter(byte) && (IsBlank(byte) || !elements_.empty());
}

bool TXmlCheck::ReadReference(char byte) {
    if (byte == ';') {
        return IsReference(word_) && Enter(outer_);
    }
    word_ += byte;
    return byte == '#' || IsNameByte(byte);
}

bool TXmlCheck::ReadMarkup(char byte) {
    if (byte == '?') {
        return lines_ == 1 && Enter(EState::declaration);
    }
    if (byte == '/') {
        return Enter(EState::endName);
    }
    Enter(EState::startName);
    word_ += byte;
    return IsNameByte(byte) && !IsDigit(byte);
}

bool TXmlCheck::ReadStartName(char byte) {
    if (IsNameByte(byte)) {
        word_ += byte;
        return true;
    }
    elements_.push_back(word_);
    attributes_.clear();
    isBlankDue_ = false;
    return Enter(EState::inTag) && ReadTag(byte);
}

bool TXmlCheck::ReadEndName(char byte) {
    if (byte != '>') {
        word_ += byte;
        return IsNameByte(byte);
    }
    if (elements_.empty() || elements_.back() != word_) {
        return false;
    }
    elements_.pop_back();
    return Enter(EState::text);
}

bool TXmlCheck::ReadTag(char byte) {
    if (byte == '>') {
        return Enter(EState::text);
    }
    if (byte == '/') {
        return Enter(EState::emptyTag);
    }
    if (IsBlank(byte)) {
        isBlankDue_ = false;
        return true;
    }
    if (isBlankDue_) {
        return false;
    }
    Enter(EState::attribute);
    word_ += byte;
    return IsNameByte(byte) && !IsDigit(byte);
}

bool TXmlCheck::ReadAttribute(char byte) {
    if (isValueDue_) {
        if (IsBlank(byte)) {
            return true;
        }
        isValueDue_ = false;
        return byte == '"' && Enter(EState::value);
    }
    if (byte != '=') {
        word_ += byte;
        return IsNameByte(byte);
    }
    isValueDue_ = true;
    const bool isNew = std::ranges::find(attributes_, word_) == attributes_.end();
    attributes_.push_back(word_);
    return isNew;
}

bool TXmlCheck::ReadValue(char byte) {
    if (byte == '"') {
        isBlankDue_ = true;
        return Enter(EState::inTag);
    }
    if (byte == '&') {
        outer_ = EState::value;
        return Enter(EState::reference);
    }
    return byte != '<' && IsCharacter(byte);
}

}  // namespace NVORHOST
