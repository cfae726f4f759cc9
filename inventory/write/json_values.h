// The parts that all JSON outputs share: texts, values with their units and words, and properties.
// docs/json-format.md describes them.
#pragma once

#include "inventory/model/resource.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <string_view>

namespace NINVENTORY {

using TJsonOutput = rapidjson::Writer<rapidjson::StringBuffer>;

/// Writes a text or a name; malformed UTF-8 becomes U+FFFD.
void WriteJsonText(TJsonOutput& json, std::string_view text);

/// Writes the members "value", "unit" and "word" or "words" of a property.
void WriteJsonValue(TJsonOutput& json, std::string_view resourceType, const TProperty& property);

/// Writes the member "properties" with the properties of a resource; of those with one name, the first. If
/// their sources are known, each has its status and sources, and those without a value follow.
void WriteJsonProperties(TJsonOutput& json, const TResource& resource);

/// Returns the name of a kind of documents, such as "hardware".
std::string_view NameJsonKind(EDocument kind);

/// Builds one object at a time, so that memory is needed for one resource only.
class TJsonObjects {
  public:
    /// Returns the object with the members that `writeMembers` writes; valid until the next call.
    template <typename TWriteMembers>
    std::string_view Make(const TWriteMembers& writeMembers) {
        buffer_.Clear();
        TJsonOutput json(buffer_);
        json.StartObject();
        writeMembers(json);
        json.EndObject();
        return {buffer_.GetString(), buffer_.GetSize()};
    }

  private:
    rapidjson::StringBuffer buffer_;
};

}  // namespace NINVENTORY
