#include "machine/collect/frame/collection.h"

#include "machine/collect/frame/cim_time.h"
#include "text/printable_text.h"

namespace NVORHOST {
namespace {

// Quotes and backslashes within the quotes of an object path have a backslash in front.
std::string Quote(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            quoted += '\\';
        }
        quoted += c;
    }
    return quoted + "\"";
}

}  // namespace

TCIMDateTime TCollection::ToDateTime(std::int64_t secondsSinceEpoch) const {
    // A captured tree has no history of its time zone; fall back to the offset at the time of the collection.
    const int atCollection = context_.localTime ? context_.localTime->GetUTCOffset() : 0;
    const int offset = context_.calls.ReadUtcOffsetMinutes(secondsSinceEpoch).value_or(atCollection);
    return MakeCimTime(secondsSinceEpoch, offset);
}

std::vector<std::string> TCollection::MakeKeys(const std::vector<TKeySource>& sources,
                                               std::string_view deviceWord) {
    return MakeUniqueKeys(sources, deviceWord, notes_);
}

std::optional<TCIMValue> TCollection::ToCimValue(std::string_view property, const std::string& text) {
    auto printable = ToPrintableText(text);
    replacedBytes_ += printable.replacements;
    if (property == "ElementName" || property == "Description") {
        printable.text = SqueezeBlanks(printable.text);
    }
    if (printable.text.empty()) {
        return std::nullopt;
    }
    return TCIMValue(printable.text);
}

std::optional<TCIMValue> TCollection::ToCimValue(std::string_view property,
                                                 const std::vector<std::string>& texts) {
    TCIMValue::TElements elements;
    elements.reserve(texts.size());
    for (const std::string& text : texts) {
        elements.push_back(ToCimValue(property, text).value_or(TCIMValue(ECimType::eString)));
    }
    return TCIMValue::Array(ECimType::eString, std::move(elements));
}

std::optional<TCIMValue> TCollection::ToCimValue(std::string_view /*property*/,
                                                 const TCimReference& reference) {
    auto printable = ToPrintableText(reference.key);
    replacedBytes_ += printable.replacements;
    return TCIMValue::Reference(std::string(reference.className) + "." + std::string(reference.keyProperty) +
                                "=" + Quote(printable.text));
}

}  // namespace NVORHOST
