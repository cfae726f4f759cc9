#include "inventory/read/hardware_reader.h"

#include "documents/document_error.h"
#include "documents/xml_text.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

namespace NINVENTORY {

using NVORHOST::Quote;
using NVORHOST::TDocumentCause;
using NVORHOST::TXmlAttributes;

/// An element of the format: where it may begin, and what its beginning and its end lead to.
struct THardwareReader::TStep {
    std::string_view name;
    EPlace from;
    EPlace to;
    void (THardwareReader::*begin)(const TXmlAttributes&);
};

// clang-format off
const THardwareReader::TStep THardwareReader::steps[] = {
    {"Value",                     EPlace::property,   EPlace::scalar,     &THardwareReader::BeginScalar},
    {"Property",                  EPlace::resource,   EPlace::property,   &THardwareReader::BeginProperty},
    {"VALUE",                     EPlace::array,      EPlace::element,    &THardwareReader::BeginElement},
    {"VALUE.ARRAY",               EPlace::property,   EPlace::array,      &THardwareReader::BeginArray},
    {"ResourceInstance",          EPlace::list,       EPlace::resource,   &THardwareReader::BeginResource},
    {"ResourceList",              EPlace::collection, EPlace::list,       &THardwareReader::BeginList},
    {"ResourceCollectionContext", EPlace::collection, EPlace::list,       &THardwareReader::BeginContext},
    {"ResourceCollection",        EPlace::document,   EPlace::collection, &THardwareReader::BeginCollection},
};
// clang-format on

namespace {

std::string Require(const TXmlAttributes& attributes, std::string_view name, std::string_view element) {
    const auto value = attributes.Find(name);
    if (!value) {
        throw TDocumentCause("<" + std::string(element) + "> has no attribute " + std::string(name));
    }
    return std::string(*value);
}

}  // namespace

void THardwareReader::StartElement(std::string_view name, const TXmlAttributes& attributes) {
    const auto* const step = std::ranges::find_if(
        steps, [&](const TStep& candidate) { return candidate.from == place_ && candidate.name == name; });
    if (step == std::end(steps)) {
        throw TDocumentCause("unexpected element " + Quote(name));
    }
    (this->*step->begin)(attributes);
    place_ = step->to;
}

void THardwareReader::EndElement() {
    if (place_ == EPlace::resource) {
        events_.AddResource(std::move(resource_));
    }
    // A scalar and an array both end in their property; the context ends as a list does.
    const auto* const step = std::ranges::find(steps, place_, &TStep::to);
    place_ = step->from;
}

void THardwareReader::Text(std::string_view piece) {
    if (place_ == EPlace::scalar || place_ == EPlace::element) {
        Count(piece.size());
        resource_.properties.back().values.back().append(piece);
    } else if (!NVORHOST::TrimXmlSpace(piece).empty()) {
        throw TDocumentCause("unexpected text " + Quote(NVORHOST::TrimXmlSpace(piece)));
    }
}

void THardwareReader::Count(std::size_t bytes) {
    resourceBytes_ += bytes;
    if (resourceBytes_ > maxResourceBytes) {
        throw TDocumentCause("a resource is larger than " + std::to_string(maxResourceBytes) + " bytes");
    }
}

void THardwareReader::BeginCollection(const TXmlAttributes& attributes) {
    events_.BeginDocument({EDocument::hardware, std::string(attributes.GetNamespace()),
                           Require(attributes, "timestamp", "ResourceCollection")});
}

void THardwareReader::BeginContext(const TXmlAttributes& /*attributes*/) {
    listType_.clear();
    events_.BeginList(listType_, GetLine());
}

void THardwareReader::BeginList(const TXmlAttributes& attributes) {
    listType_ = Require(attributes, "resourceType", "ResourceList");
    events_.BeginList(listType_, GetLine());
}

void THardwareReader::BeginResource(const TXmlAttributes& attributes) {
    constexpr std::string_view element = "ResourceInstance";
    resource_ = {Require(attributes, "resourceId", element),
                 Require(attributes, "resourceType", element),
                 listType_,
                 {},
                 {},
                 GetLine()};
    resourceBytes_ = 0;
}

void THardwareReader::BeginProperty(const TXmlAttributes& attributes) {
    TProperty property{
        Require(attributes, "name", "Property"), Require(attributes, "type", "Property"), EShape::null, {}};
    Count(sizeof(TProperty) + property.name.size() + property.type.size());
    resource_.properties.push_back(std::move(property));
}

void THardwareReader::BeginScalar(const TXmlAttributes& /*attributes*/) {
    TProperty& property = resource_.properties.back();
    if (property.shape != EShape::null) {
        throw TDocumentCause("property " + Quote(property.name) + " has two values");
    }
    property.shape = EShape::scalar;
    property.values.emplace_back();
}

void THardwareReader::BeginArray(const TXmlAttributes& /*attributes*/) {
    TProperty& property = resource_.properties.back();
    if (property.shape != EShape::null) {
        throw TDocumentCause("property " + Quote(property.name) + " has two values");
    }
    property.shape = EShape::array;
}

void THardwareReader::BeginElement(const TXmlAttributes& /*attributes*/) {
    Count(sizeof(std::string));
    resource_.properties.back().values.emplace_back();
}

void ReadHardwareDocument(TDocumentInput& input, IDocumentEvents& events) {
    THardwareReader reader(events);
    NVORHOST::TXmlParser parser(reader);
    reader.SetParser(parser);
    try {
        for (auto bytes = input.Read(); !bytes.empty(); bytes = input.Read()) {
            parser.Feed(bytes);
        }
        parser.Finish();
    } catch (const TDocumentCause& cause) {
        const int line = parser.GetLine();
        NVORHOST::ThrowAt({input.GetName(), line > 0 ? std::optional(line) : std::nullopt, {}, {}},
                          cause.what());
    }
}

}  // namespace NINVENTORY
