#include "fleet/load/document_scanner.h"

#include "fleet/model/division.h"
#include "fleet/model/machine_traits.h"
#include "fleet/model/property_part.h"
#include "text/ascii.h"

#include <xxhash.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <utility>

namespace NFLEET {
namespace {

using NINVENTORY::EShape;
using NINVENTORY::TProperty;
using NINVENTORY::TResource;

constexpr std::string_view declaration =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<ResourceCollection xmlns=\"";
constexpr std::string_view timestampStart = "\" timestamp= \"";
constexpr std::string_view tagEnd = "\">\n";
constexpr std::string_view contextStart = "<ResourceCollectionContext>\n";
constexpr std::string_view contextEnd = "</ResourceCollectionContext>\n";
constexpr std::string_view listStart = "<ResourceList resourceType=\"";
constexpr std::string_view listEnd = "</ResourceList>\n";
constexpr std::string_view collectionEnd = "</ResourceCollection>\n";
constexpr std::string_view instanceStart = "<ResourceInstance resourceId=\"";
constexpr std::string_view typeStart = "\" resourceType=\"";
constexpr std::string_view instanceEnd = "</ResourceInstance>\n";
constexpr std::string_view propertyStart = "<Property name=\"";
constexpr std::string_view propertyTypeStart = "\" type=\"";
constexpr std::string_view propertyEnd = "</Property>\n";
constexpr std::string_view scalarStart = "<Value>";
constexpr std::string_view scalarEnd = "</Value>\n</Property>\n";
constexpr std::string_view arrayStart = "<VALUE.ARRAY>\n";
constexpr std::string_view arrayEnd = "</VALUE.ARRAY>\n</Property>\n";
constexpr std::string_view elementStart = "<VALUE>";
constexpr std::string_view elementEnd = "</VALUE>\n";

// Resources and tags that come near the limits of the XML parser are left to it.
constexpr std::size_t maxScannedBytes = std::size_t{1} << 20;
constexpr std::size_t maxAttributeBytes = 4096;

// Thrown for a document in another form; caught in ScanDocument.
struct TOtherForm {};

// Branch-free and in bytes, so that the loop vectorises.
bool IsPlainText(std::string_view text) {
    std::uint8_t foreign = 0;
    for (const char c : text) {
        const auto byte = static_cast<std::uint8_t>(c);
        foreign |= static_cast<std::uint8_t>(static_cast<std::uint8_t>(byte - ' ') > '~' - ' ') &
                   static_cast<std::uint8_t>(byte != '\n');
    }
    return foreign == 0;
}

// The characters that end or forbid a piece of text.
constexpr std::array<bool, 256> markupCharacters = [] {
    std::array<bool, 256> characters{};
    for (const char c : {'<', '>', '&', '"', '\n'}) {
        characters[static_cast<unsigned char>(c)] = true;
    }
    return characters;
}();

// Returns the number of characters before the first one of these, or before the end.
std::size_t CountPlain(std::string_view text) {
    std::size_t count = 0;
    while (count < text.size() && !markupCharacters[static_cast<unsigned char>(text[count])]) {
        ++count;
    }
    return count;
}

// The seed keeps documents from choosing bytes whose hashes collide.
XXH64_hash_t GetSeed() {
    static const XXH64_hash_t seed = [] {
        std::random_device device;
        return (XXH64_hash_t{device()} << 32U) | device();
    }();
    return seed;
}

TDigest Hash(std::string_view bytes, XXH64_hash_t seed) {
    const XXH128_hash_t hash = XXH3_128bits_withSeed(bytes.data(), bytes.size(), seed);
    TDigest digest;
    std::memcpy(digest.bytes.data(), &hash, TDigest::size);
    return digest;
}

// What a resource's lines hold.
struct TScannedResource {
    std::string stable;  // the lines without identifying values and volatile properties
    TIdentity identity;
    std::vector<TPlacedProperty> volatileProperties;
};

class TScanner {
  public:
    TScanner(std::string_view text, TVersionCache& cache) : text_(text), cache_(cache), builder_(cache) {}

    TReadInventory Read() {
        Expect(declaration);
        RequirePlainUri(TakeAttribute());
        Expect(timestampStart);
        const std::string_view timestamp = TakeAttribute();
        Expect(tagEnd);
        while (!Take(collectionEnd)) {
            ReadList();
        }
        if (!text_.empty()) {
            throw TOtherForm();
        }
        return builder_.Take(EScope::hardware, timestamp);
    }

  private:
    bool Take(std::string_view literal) {
        if (!text_.starts_with(literal)) {
            return false;
        }
        text_.remove_prefix(literal.size());
        return true;
    }

    void Expect(std::string_view literal) {
        if (!Take(literal)) {
            throw TOtherForm();
        }
    }

    // Returns the text up to the closing quote.
    std::string_view TakeAttribute() {
        const std::size_t length = CountPlain(text_.substr(0, maxAttributeBytes));
        if (length >= text_.size() || text_[length] != '"') {
            throw TOtherForm();
        }
        const std::string_view value = text_.substr(0, length);
        text_.remove_prefix(length);
        return value;
    }

    // The XML parser refuses some namespaces.
    static void RequirePlainUri(std::string_view uri) {
        const bool isPlain = std::ranges::all_of(uri, [](char c) {
            return NVORHOST::IsAlphanumeric(c) || std::string_view(":/._-").find(c) != std::string_view::npos;
        });
        if (uri.empty() || !isPlain || uri.find("w3.org") != std::string_view::npos) {
            throw TOtherForm();
        }
    }

    // Returns the text up to the next tag, in which references are not resolved.
    std::string_view TakeText() {
        std::size_t length = CountPlain(text_);
        while (length < text_.size() && text_[length] != '<') {
            if (text_[length] != '"' && !IsPlainReference(text_.substr(length))) {
                throw TOtherForm();
            }
            ++length;
            length += CountPlain(text_.substr(length));
        }
        if (length >= text_.size()) {
            throw TOtherForm();
        }
        const std::string_view value = text_.substr(0, length);
        text_.remove_prefix(length);
        return value;
    }

    static bool IsPlainReference(std::string_view text) {
        return text.starts_with("&amp;") || text.starts_with("&lt;") || text.starts_with("&gt;");
    }

    static std::string Resolve(std::string_view text) {
        std::string resolved;
        for (std::size_t at = text.find('&'); at != std::string_view::npos; at = text.find('&')) {
            resolved.append(text.substr(0, at));
            resolved.push_back(text[at + 1] == 'a' ? '&' : text[at + 1] == 'l' ? '<' : '>');
            text.remove_prefix(text.find(';', at) + 1);
        }
        return resolved.append(text);
    }

    void ReadList() {
        const bool isContext = Take(contextStart);
        list_ = {};
        if (!isContext) {
            Expect(listStart);
            list_ = TakeAttribute();
            Expect(tagEnd);
        }
        seed_ = XXH3_64bits_withSeed(list_.data(), list_.size(), GetSeed());
        while (Take(instanceStart)) {
            ReadResource();
        }
        Expect(isContext ? contextEnd : listEnd);
    }

    void ReadResource() {
        const std::string_view id = TakeAttribute();
        const std::string_view start = text_;
        Expect(typeStart);
        const std::string_view type = TakeAttribute();
        Expect(tagEnd);
        const bool hasTraits = HasTraits(type);
        if (!IsStoredType(type)) {
            throw TOtherForm();
        }
        if (!hasTraits && ReadKnown(id, start)) {
            return;
        }
        ReadLines(type);
        const std::string_view whole = start.substr(0, start.size() - text_.size());
        if (hasTraits) {
            TResource resource = Parse(id, type, whole);
            builder_.AddTraitsOf(resource);
            return builder_.Add(id, DivideResource(resource));
        }
        const bool isWhole = scanned_.identity.empty() && scanned_.volatileProperties.empty();
        // Another seed is for resources without some of their lines.
        const TDigest key = isWhole ? Hash(whole, seed_) : Hash(scanned_.stable, seed_ + 1);
        auto version = cache_.Find(key);
        if (version == nullptr) {
            version = cache_.Add(key, AddVersion(DivideResource(Parse(id, type, whole)).version, cache_));
        }
        Add(id, version, std::move(scanned_.identity), std::move(scanned_.volatileProperties));
    }

    void Add(std::string_view id, const std::shared_ptr<TCachedVersion>& version, TIdentity identity,
             std::vector<TPlacedProperty> volatileProperties) {
        if (!builder_.Add(id, version, std::move(identity), std::move(volatileProperties))) {
            throw TOtherForm();
        }
    }

    // Finds a resource without identifying and volatile properties whose lines were read before: equal bytes
    // have been found to be in this form.
    bool ReadKnown(std::string_view id, std::string_view start) {
        const auto* const end = static_cast<const char*>(::memmem(
            start.data(), std::min(start.size(), maxScannedBytes), instanceEnd.data(), instanceEnd.size()));
        if (end == nullptr) {
            return false;
        }
        const auto length = static_cast<std::size_t>(end - start.data()) + instanceEnd.size();
        const auto version = cache_.Find(Hash(start.substr(0, length), seed_));
        if (version == nullptr) {
            return false;
        }
        Add(id, version, {}, {});
        text_ = start.substr(length);
        return true;
    }

    // Checks the lines of a resource and separates its parts.
    void ReadLines(std::string_view type) {
        const TTypeParts& parts = GetTypeParts(type);
        scanned_.stable.assign(type).push_back('\n');
        scanned_.identity.clear();
        scanned_.volatileProperties.clear();
        const std::size_t before = text_.size();
        for (std::uint32_t position = 0; !Take(instanceEnd); ++position) {
            ReadProperty(parts, position);
            if (before - text_.size() > maxScannedBytes) {
                throw TOtherForm();
            }
        }
    }

    void ReadProperty(const TTypeParts& parts, std::uint32_t position) {
        const std::string_view line = text_;
        Expect(propertyStart);
        const std::string_view name = TakeAttribute();
        Expect(propertyTypeStart);
        const std::string_view type = TakeAttribute();
        Expect(tagEnd);
        const std::string_view head = line.substr(0, line.size() - text_.size());
        const EPropertyPart part = parts.Get(name);
        if (part == EPropertyPart::stable) {
            SkipValue();
            scanned_.stable.append(line.substr(0, line.size() - text_.size()));
            return;
        }
        TProperty property{std::string(name), std::string(type), EShape::null, {}};
        ReadValue(property);
        if (part == EPropertyPart::isVolatile) {
            scanned_.volatileProperties.push_back({position, std::move(property)});
            return;
        }
        scanned_.stable.append(head).push_back(static_cast<char>('0' + static_cast<int>(property.shape)));
        scanned_.identity.push_back(std::move(property.values));
    }

    void SkipValue() {
        if (Take(scalarStart)) {
            (void)TakeText();
            Expect(scalarEnd);
        } else if (Take(arrayStart)) {
            while (Take(elementStart)) {
                (void)TakeText();
                Expect(elementEnd);
            }
            Expect(arrayEnd);
        } else {
            Expect(propertyEnd);
        }
    }

    void ReadValue(TProperty& property) {
        if (Take(scalarStart)) {
            property.shape = EShape::scalar;
            property.values.push_back(Resolve(TakeText()));
            Expect(scalarEnd);
        } else if (Take(arrayStart)) {
            property.shape = EShape::array;
            while (Take(elementStart)) {
                property.values.push_back(Resolve(TakeText()));
                Expect(elementEnd);
            }
            Expect(arrayEnd);
        } else {
            Expect(propertyEnd);
        }
    }

    // Parses lines that were checked.
    TResource Parse(std::string_view id, std::string_view type, std::string_view lines) {
        TResource resource{std::string(id), std::string(type), std::string(list_), {}, {}, 0};
        const std::string_view rest =
            std::exchange(text_, lines.substr(typeStart.size() + type.size() + tagEnd.size()));
        while (!Take(instanceEnd)) {
            Expect(propertyStart);
            TProperty& property = resource.properties.emplace_back();
            property.name = TakeAttribute();
            Expect(propertyTypeStart);
            property.type = TakeAttribute();
            Expect(tagEnd);
            ReadValue(property);
        }
        text_ = rest;
        return resource;
    }

    std::string_view text_;
    TVersionCache& cache_;
    TInventoryBuilder builder_;
    std::string_view list_;
    XXH64_hash_t seed_ = 0;
    TScannedResource scanned_;
};

}  // namespace

std::optional<TReadInventory> ScanDocument(std::string_view text, TVersionCache& cache) {
    if (!text.starts_with(declaration) || !IsPlainText(text)) {
        return std::nullopt;
    }
    try {
        return TScanner(text, cache).Read();
    } catch (const TOtherForm&) {
        return std::nullopt;
    }
}

}  // namespace NFLEET
