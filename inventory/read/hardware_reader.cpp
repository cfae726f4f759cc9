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

// Returns the value of an attribute, which is valid as long as `attributes`.
std::string_view Require(const TXmlAttributes& attributes, std::string_view name, std::string_view element) {
    const auto value = attributes.Find(name);
    if (!value) {
        throw TDocumentCause("<" + std::string(element) + "> has no attribute " + std::string(name));
    }
    return *value;
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
        EndResource();
    }
    // A scalar and an array both end in their property; the context ends as a list does.
    const auto* const step = std::ranges::find(steps, place_, &TStep::to);
    place_ = step->from;
}

void THardwareReader::Text(std::string_view piece) {
    if (place_ == EPlace::scalar || place_ == EPlace::element) {
        Count(piece.size());
        GetProperty().values.back().append(piece);
    } else if (!NVORHOST::IsXmlSpace(piece)) {
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
                           std::string(Require(attributes, "timestamp", "ResourceCollection"))});
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
    resource_.id = Require(attributes, "resourceId", element);
    resource_.type = Require(attributes, "resourceType", element);
    resource_.list = listType_;
    resource_.line = GetLine();
    resourceBytes_ = 0;
    propertyCount_ = 0;
}

// A receiver that only looks at a resource leaves it here, and the memory of its properties is used again.
void THardwareReader::EndResource() {
    constexpr std::size_t maxReusedBytes = std::size_t{16} << 10;
    resource_.properties.resize(propertyCount_);
    events_.AddResource(std::move(resource_));
    if (resourceBytes_ > maxReusedBytes) {
        resource_ = {};
    }
}

void THardwareReader::BeginProperty(const TXmlAttributes& attributes) {
    const std::string_view name = Require(attributes, "name", "Property");
    const std::string_view type = Require(attributes, "type", "Property");
    Count(sizeof(TProperty) + name.size() + type.size());
    if (propertyCount_ == resource_.properties.size()) {
        resource_.properties.emplace_back();
    }
    TProperty& property = resource_.properties[propertyCount_++];
    property.name = name;
    property.type = type;
    property.shape = EShape::null;
    property.values.clear();
}

void THardwareReader::BeginScalar(const TXmlAttributes& /*attributes*/) {
    TProperty& property = GetProperty();
    if (property.shape != EShape::null) {
        throw TDocumentCause("property " + Quote(property.name) + " has two values");
    }
    property.shape = EShape::scalar;
    property.values.emplace_back();
}

void THardwareReader::BeginArray(const TXmlAttributes& /*attributes*/) {
    TProperty& property = GetProperty();
    if (property.shape != EShape::null) {
        throw TDocumentCause("property " + Quote(property.name) + " has two values");
    }
    property.shape = EShape::array;
}

void THardwareReader::BeginElement(const TXmlAttributes& /*attributes*/) {
    Count(sizeof(std::string));
    GetProperty().values.emplace_back();
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
