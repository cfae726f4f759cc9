#include "inventory/write/diff_json_writer.h"

#include "inventory/write/json_values.h"

#include <set>
#include <string>
#include <string_view>

namespace NINVENTORY {
namespace {

constexpr EChange changes[] = {EChange::replaced, EChange::moved,   EChange::removed,
                               EChange::added,    EChange::updated, EChange::changed};

void WriteSource(TJsonOutput& json, const TInventory& inventory) {
    json.StartObject();
    WriteJsonText(json, "source");
    WriteJsonText(json, inventory.source);
    WriteJsonText(json, "kinds");
    json.StartArray();
    for (const TDocumentHead& document : inventory.documents) {
        WriteJsonText(json, NameJsonKind(document.kind));
    }
    json.EndArray();
    if (const std::string_view timestamp = inventory.GetTimestamp(); !timestamp.empty()) {
        WriteJsonText(json, "timestamp");
        WriteJsonText(json, timestamp);
    }
    json.EndObject();
}

// A part that is on one side only is written whole.
void WriteSide(TJsonOutput& json, std::string_view name, const TResource* resource, bool isWhole) {
    WriteJsonText(json, name);
    if (resource == nullptr) {
        json.Null();
        return;
    }
    json.StartObject();
    WriteJsonText(json, "resourceId");
    WriteJsonText(json, resource->id);
    if (isWhole) {
        WriteJsonProperties(json, *resource);
    }
    json.EndObject();
}

void WriteValueOf(TJsonOutput& json, std::string_view name, std::string_view type,
                  const TProperty* property) {
    WriteJsonText(json, name);
    if (property == nullptr) {
        json.Null();
        return;
    }
    json.StartObject();
    WriteJsonValue(json, type, *property);
    json.EndObject();
}

void WriteChangedProperties(TJsonOutput& json, const TDifference& difference) {
    WriteJsonText(json, "properties");
    json.StartObject();
    std::set<std::string_view> names;
    for (const TPropertyDifference& property : difference.properties) {
        if (names.insert(property.GetName()).second) {  // a name may occur only once in JSON
            WriteJsonText(json, property.GetName());
            json.StartObject();
            WriteValueOf(json, "old", difference.GetResource().type, property.before);
            WriteValueOf(json, "new", difference.GetResource().type, property.after);
            json.EndObject();
        }
    }
    json.EndObject();
}

void WriteDifference(TJsonOutput& json, const TDifference& difference) {
    const bool isPair = difference.before != nullptr && difference.after != nullptr;
    WriteJsonText(json, "change");
    WriteJsonText(json, GetWord(difference.change));
    WriteJsonText(json, "resourceType");
    WriteJsonText(json, difference.GetResource().type);
    if (const std::string_view name = difference.GetResource().GetText("Name"); !name.empty()) {
        WriteJsonText(json, "name");
        WriteJsonText(json, name);
    }
    WriteSide(json, "old", difference.before, !isPair);
    WriteSide(json, "new", difference.after, !isPair);
    if (isPair) {
        WriteChangedProperties(json, difference);
    }
}

void WriteCounts(TJsonOutput& json, const TComparison& comparison) {
    WriteJsonText(json, "counts");
    json.StartObject();
    for (const EChange change : changes) {
        WriteJsonText(json, GetWord(change));
        json.Uint64(comparison.Count(change));
    }
    json.EndObject();
    WriteJsonText(json, "unchanged");
    json.StartObject();
    for (const TUnchanged& unchanged : comparison.unchanged) {
        WriteJsonText(json, unchanged.type);
        json.Uint64(unchanged.count);
    }
    json.EndObject();
}

void WriteNotKnown(TJsonOutput& json, const TComparison& comparison) {
    WriteJsonText(json, "notKnown");
    json.StartArray();
    for (const TNotKnown& notKnown : comparison.notKnown) {
        json.StartObject();
        WriteJsonText(json, "side");
        WriteJsonText(json, notKnown.isInNew ? "new" : "old");
        WriteJsonText(json, "resourceType");
        WriteJsonText(json, notKnown.resource->type);
        WriteJsonText(json, "resourceId");
        WriteJsonText(json, notKnown.resource->id);
        if (notKnown.property != nullptr) {
            WriteJsonText(json, "property");
            WriteJsonText(json, notKnown.property->name);
        }
        WriteJsonText(json, "status");
        WriteJsonText(json, NVORHOST::NameValueStatus(notKnown.source->status));
        json.EndObject();
    }
    json.EndArray();
}

void WriteLeftOut(TJsonOutput& json, const TComparison& comparison) {
    WriteJsonText(json, "leftOut");
    json.StartObject();
    WriteJsonText(json, "onOneSide");
    json.StartArray();
    for (const TOneSided& oneSided : comparison.oneSided) {
        json.StartObject();
        WriteJsonText(json, "side");
        WriteJsonText(json, oneSided.isInNew ? "new" : "old");
        WriteJsonText(json, "resourceType");
        WriteJsonText(json, oneSided.type);
        if (!oneSided.property.empty()) {
            WriteJsonText(json, "property");
            WriteJsonText(json, oneSided.property);
        }
        json.EndObject();
    }
    json.EndArray();
    if (!comparison.notKnown.empty()) {
        WriteNotKnown(json, comparison);
    }
    WriteJsonText(json, "volatile");
    json.Uint64(comparison.volatileDifferences);
    WriteJsonText(json, "links");
    json.Bool(comparison.hasAuxiliary);
    json.EndObject();
}

}  // namespace

void WriteDiffJson(const TComparison& comparison, const TInventory& before, const TInventory& after,
                   std::ostream& out) {
    TJsonObjects objects;
    std::string_view head = objects.Make([&](TJsonOutput& json) {
        WriteJsonText(json, "old");
        WriteSource(json, before);
        WriteJsonText(json, "new");
        WriteSource(json, after);
        WriteJsonText(json, "isSame");
        json.Bool(comparison.IsSame());
        WriteCounts(json, comparison);
        WriteLeftOut(json, comparison);
    });
    head.remove_suffix(1);  // the list of changes is its last member
    out << head << ",\"changes\":[";
    const char* separator = "\n";
    for (const TDifference& difference : comparison.differences) {
        out << separator << objects.Make([&](TJsonOutput& json) { WriteDifference(json, difference); });
        separator = ",\n";
    }
    out << "\n]}\n";
}

void WriteDiffNdjson(const TComparison& comparison, const TInventory& before, const TInventory& after,
                     std::ostream& out) {
    TJsonObjects objects;
    for (const TDifference& difference : comparison.differences) {
        out << objects.Make([&](TJsonOutput& json) {
            WriteJsonText(json, "oldSource");
            WriteJsonText(json, before.source);
            WriteJsonText(json, "newSource");
            WriteJsonText(json, after.source);
            WriteDifference(json, difference);
        }) << '\n';
    }
}

}  // namespace NINVENTORY
