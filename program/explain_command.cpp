#include "program/explain_command.h"

#include "inventory/check/identifier_origin.h"
#include "inventory/model/resource_type.h"
#include "inventory/model/shown_value.h"
#include "inventory/write/source_lines.h"
#include "program/inventory_source.h"
#include "text/ascii.h"
#include "text/shown_text.h"
#include "vorhost/run/log_sinks.h"
#include "vorhost/run/run_environment.h"
#include "vorhost/run/run_failure.h"

#include <algorithm>
#include <iomanip>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {
namespace {

using NINVENTORY::EKeyOrigin;
using NINVENTORY::TIdentifierOrigin;
using NINVENTORY::TResource;

class TResources final : public NINVENTORY::IDocumentEvents {
  public:
    void BeginDocument(const NINVENTORY::TDocumentHead& head) override { kind = head.kind; }
    void BeginList(std::string_view /*listType*/, int /*line*/) override {}
    void AddResource(TResource&& resource) override { resources.push_back(std::move(resource)); }

    std::vector<TResource> resources;
    NINVENTORY::EDocument kind = NINVENTORY::EDocument::collection;  ///< of the last document
};

TResources ReadResources(const TExplainOptions& options) {
    TResources events;
    const TBeginSource begin = [](const std::string&) {};
    TSourceOptions machine = options.machine;
    machine.machine.withSources = true;
    if (options.source) {
        (void)PassSource(*options.source, machine, begin, events);
    } else {
        (void)PassMachine(machine, begin, events);
    }
    return events;
}

// Four digits are few enough to type, and enough to be the only match on most machines.
bool IsIdentifierStart(std::string_view text) {
    constexpr std::size_t fewest = 4;
    constexpr std::size_t most = 32;
    return text.size() >= fewest && text.size() <= most &&
           std::ranges::all_of(text, [](char c) { return IsHexDigit(c); });
}

std::vector<const TResource*> FindResources(const std::vector<TResource>& resources,
                                            const std::string& wanted) {
    std::vector<const TResource*> found;
    const std::string start = ToUpperCase(wanted);
    for (const TResource& resource : resources) {
        const bool isMeant = IsIdentifierStart(wanted) && resource.id.starts_with(start);
        if (isMeant || resource.GetText("Name") == wanted || resource.GetText("DeviceID") == wanted ||
            resource.GetText("Tag") == wanted) {
            found.push_back(&resource);
        }
    }
    return found;
}

std::string Title(const TResource& resource) {
    const std::string_view name = resource.GetText("Name");
    return resource.type + (name.empty() ? "" : " " + std::string(name));
}

void RequireOneIdentifier(const std::vector<const TResource*>& found, const std::string& wanted) {
    if (found.empty()) {
        throw TRunFailure("no resource has the identifier or name '" + wanted + "'");
    }
    for (const TResource* const other : found) {
        if (other->id != found.front()->id) {
            throw TRunFailure("'" + wanted + "' matches several resources, such as " + Title(*found.front()) +
                              " (" + found.front()->id + ") and " + Title(*other) + " (" + other->id + ")");
        }
    }
}

void WriteRow(std::ostream& out, std::string_view label, std::string_view text) {
    constexpr int labelWidth = 15;
    out << std::left << std::setw(labelWidth) << label << MakeVisible(text) << '\n';
}

void WriteKey(std::ostream& out, const TIdentifierOrigin& origin) {
    WriteRow(out, "key", origin.key);
    WriteRow(out, "digest", "MD5 of the key and the zero byte after it");
    if (origin.hasShortPadding) {
        WriteRow(out, "",
                 "keys of this length are padded one block short: other programs' MD5 of it differs");
    }
    if (!origin.isConfirmed) {
        WriteRow(out, "",
                 "the digest is not the identifier: the value has characters that the document lost, "
                 "or the document was changed");
    }
    if (!origin.className.empty()) {
        WriteRow(out, "class", origin.className + ", property " + origin.keyProperty);
    }
}

// Joins "world-wide name" and "serial number" to "its world-wide name and serial number".
std::string JoinWords(const std::vector<std::string_view>& words, std::string_view conjunction) {
    std::string joined = "its";
    for (std::size_t i = 0; i < words.size(); ++i) {
        joined.append(i == 0 ? " " : i + 1 == words.size() ? conjunction : ", ").append(words[i]);
    }
    return joined;
}

// Documents lack most serial numbers and addresses, so that only the form of the key is left.
void WriteEvidence(std::ostream& out, const TIdentifierOrigin& origin, bool isDocument) {
    if (origin.passedOver.empty()) {
        return;
    }
    if (isDocument) {
        WriteRow(out, "judged by",
                 "the form of the key: a document does not have " + JoinWords(origin.passedOver, " or "));
    } else {
        WriteRow(out, "instead of",
                 JoinWords(origin.passedOver, " and ") +
                     ", which the machine does not report, or only as a placeholder");
    }
}

void WriteOrigin(std::ostream& out, const TIdentifierOrigin& origin, bool isDocument) {
    const auto& text = NINVENTORY::GetOriginText(origin.origin);
    if (!origin.borrowed.empty()) {
        WriteRow(out, "made from", origin.borrowed);
        WriteRow(out, "", "that key is made from " + std::string(text.madeFrom));
    } else {
        WriteRow(out, "made from", text.madeFrom);
    }
    if (origin.hasUnit) {
        WriteRow(out, "", "and the number of its unit, because the device has several");
    }
    if (origin.isCollisionResolved) {
        WriteRow(out, "", "and its position, because another resource has the same identity");
    }
    if (origin.isNumbered) {
        WriteRow(out, "", "and a number, because other resources are equal to it");
    }
    if (origin.isCut) {
        WriteRow(out, "", "cut to 64 characters; the last ones are a digest of the whole");
    }
    WriteEvidence(out, origin, isDocument);
    WriteRow(out, "if moved", origin.isCollisionResolved ? "gets another identifier" : text.ifMoved);
    WriteRow(out, "new board", origin.isCollisionResolved ? "gets another identifier" : text.ifBoardReplaced);
    WriteRow(out, "if renamed", text.ifRenamed);
}

// True if the key was made from the same identity, which is the part before the position or the number.
bool HasSameIdentity(const TResource& resource, const TResource& other) {
    const auto identityOf = [](const TResource& each) {
        const std::string key = NINVENTORY::ExplainIdentifier(each).keyValue;
        return key.substr(0, key.find_first_of("@#"));
    };
    return resource.type == other.type && identityOf(resource) == identityOf(other);
}

void WriteExplanation(std::ostream& out, const TResource& resource, const std::vector<TResource>& resources,
                      bool isDocument) {
    const TIdentifierOrigin origin = NINVENTORY::ExplainIdentifier(resource);
    WriteRow(out, "resource", Title(resource));
    WriteRow(out, "identifier", resource.id);
    WriteKey(out, origin);
    WriteOrigin(out, origin, isDocument);
    for (const TResource& other : resources) {
        if (&other != &resource && other.id == resource.id) {
            WriteRow(out, "same id", Title(other));
        } else if (&other != &resource && (origin.isCollisionResolved || origin.isNumbered) &&
                   HasSameIdentity(resource, other)) {
            WriteRow(out, "same identity", Title(other) + " (" + other.id + ")");
        }
    }
}

std::string ShowProperty(const TResource& resource, const NINVENTORY::TProperty& property) {
    return NINVENTORY::ShowValue(resource.type, property);
}

}  // namespace

EExitStatus RunExplain(const TExplainOptions& options, std::ostream& out) {
    const TLogSinks sinks(options.machine.log);
    const TRunEnvironment environment({.localTime = options.machine.machine.localTime});
    const TResources source = ReadResources(options);
    const std::vector<const TResource*> found = FindResources(source.resources, options.resource);
    RequireOneIdentifier(found, options.resource);
    WriteExplanation(out, *found.front(), source.resources, source.kind != NINVENTORY::EDocument::collection);
    if (!found.front()->sources.empty()) {
        out << "\nproperties\n";
        NINVENTORY::WriteSourceLines(*found.front(), {.hasAbsent = true, .show = &ShowProperty}, out);
    }
    return eExitDone;
}

}  // namespace NVORHOST
