// Documents that the line scanner accepts are well-formed, and it gives the inventory that the XML parser
// gives, for documents that follow one another, separated by null characters, with one cache.
#include "documents/document_error.h"
#include "fleet/load/divided_resources.h"
#include "fleet/load/document_scanner.h"
#include "fuzz.h"
#include "inventory/read/document_input.h"
#include "inventory/read/hardware_reader.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <vector>

namespace {

using namespace NFLEET;

// Absent for a document with a malformed time.
std::optional<TReadInventory> ReadSlowly(std::string_view text) {
    TVersionCache cache;
    TDividedResources resources(cache);
    NINVENTORY::TDocumentInput input("fuzz", text);
    try {
        NINVENTORY::ReadHardwareDocument(input, resources);
    } catch (const NVORHOST::TDocumentError&) {
        Require(false, "a document that the scanner accepts is well-formed");
    }
    try {
        return resources.Take();
    } catch (const NVORHOST::TDocumentCause&) {
        return std::nullopt;
    }
}

std::vector<TVersion> ListBodies(const TReadInventory& read) {
    std::vector<TVersion> bodies;
    for (const auto& version : read.versions) {
        bodies.push_back(*version->body);
    }
    std::ranges::sort(bodies, {}, &TVersion::digest);
    bodies.erase(std::unique(bodies.begin(), bodies.end()), bodies.end());
    return bodies;
}

void RequireSame(const TReadInventory& scanned, const TReadInventory& parsed) {
    Require(scanned.resources == parsed.resources, "the scanner gives the same resources");
    Require(scanned.content == parsed.content, "the scanner gives the same content");
    Require(scanned.inventory.time == parsed.inventory.time, "the scanner gives the same time");
    Require(scanned.inventory.place == parsed.inventory.place, "the scanner gives the same scope");
    Require(scanned.inventory.volatileValues == parsed.inventory.volatileValues,
            "the scanner gives the same volatile values");
    Require(scanned.traits.facts == parsed.traits.facts, "the scanner gives the same facts");
    Require(scanned.traits.system == parsed.traits.system, "the scanner gives the same identity");
    Require(scanned.traits.address == parsed.traits.address, "the scanner gives the same address");
    Require(ListBodies(scanned) == ListBodies(parsed), "the scanner gives the same versions");
}

void Compare(std::string_view text, TVersionCache& cache) {
    try {
        if (const auto scanned = ScanDocument(text, cache)) {
            const auto parsed = ReadSlowly(text);
            Require(parsed.has_value(), "a document that the scanner accepts has a time");
            RequireSame(*scanned, *parsed);
        }
    } catch (const NVORHOST::TDocumentCause&) {
        Require(!ReadSlowly(text), "a time that the scanner refuses is malformed");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    TVersionCache cache;
    std::string_view rest = AsText(data, size);
    for (bool hasMore = true; hasMore;) {
        const std::size_t end = rest.find('\0');
        hasMore = end != std::string_view::npos;
        const std::string_view text = rest.substr(0, end);
        Compare(text, cache);
        Compare(text, cache);
        rest.remove_prefix(hasMore ? end + 1 : rest.size());
    }
    return 0;
}
