#include "fleet/model/named_machine.h"

#include "text/ascii.h"

namespace NFLEET {
namespace {

constexpr std::size_t minDigits = 6;

}  // namespace

bool IsNamed(const TMachine& machine, std::string_view text) {
    const TMachineFacts& facts = machine.facts;
    if (text.empty()) {
        return false;
    }
    if (machine.key == text || facts.name == text || facts.serial == text ||
        NVORHOST::EqualIgnoringCase(facts.uuid, text)) {
        return true;
    }
    const auto span = FindNamedIdentifiers(text);
    return span && span->first <= machine.id && machine.id <= span->last;
}

std::vector<std::string> ListNamesInLowerCase(const TMachine& machine) {
    const TMachineFacts& facts = machine.facts;
    std::vector<std::string> names;
    for (const std::string* const name : {&machine.key, &facts.name, &facts.serial, &facts.uuid}) {
        if (!name->empty()) {
            names.push_back(NVORHOST::ToLowerCase(*name));
        }
    }
    return names;
}

std::optional<TDigestSpan> FindNamedIdentifiers(std::string_view text) {
    return text.size() < minDigits ? std::nullopt : ParseDigestStart(text);
}

}  // namespace NFLEET
