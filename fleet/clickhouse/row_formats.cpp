#include "fleet/clickhouse/row_formats.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

namespace NFLEET {
namespace {

using NINVENTORY::EShape;
using NINVENTORY::TProperty;

std::string DecodeText(TRowBinaryReader& reader) {
    return std::string(reader.Text());
}

void EncodeNullable(TRowBinaryWriter& writer, const std::optional<std::string>& text) {
    writer.Number(static_cast<std::uint8_t>(!text));
    if (text) {
        writer.Text(*text);
    }
}

std::optional<std::string> DecodeNullable(TRowBinaryReader& reader) {
    const bool isNull = reader.Number<std::uint8_t>() != 0;
    return isNull ? std::nullopt : std::optional(DecodeText(reader));
}

void EncodeTexts(TRowBinaryWriter& writer, const std::vector<std::string>& texts) {
    writer.Count(texts.size());
    for (const std::string& text : texts) {
        writer.Text(text);
    }
}

std::vector<std::string> DecodeTexts(TRowBinaryReader& reader) {
    std::vector<std::string> texts(reader.Count());
    for (std::string& text : texts) {
        text = reader.Text();
    }
    return texts;
}

// Writes one column of an array with an element for each of `items`.
template <typename TItems, typename TEncode>
void EncodeColumn(TRowBinaryWriter& writer, const TItems& items, TEncode&& encode) {
    writer.Count(items.size());
    for (const auto& item : items) {
        encode(item);
    }
}

// Reads one column of an array into the members of `items`, whose number the first column gives. Rows of
// another shape, which this program does not write, leave the members empty.
template <typename TItems, typename TDecode>
void DecodeColumn(TRowBinaryReader& reader, TItems& items, TDecode&& decode) {
    const std::size_t count = reader.Count();
    if (items.empty()) {
        items.resize(count);
    }
    typename TItems::value_type unused;
    for (std::size_t i = 0; i < count; ++i) {
        decode(i < items.size() ? items[i] : unused);
    }
}

std::uint8_t EncodeShape(EShape shape) {
    return static_cast<std::uint8_t>(shape);
}

EShape DecodeShape(TRowBinaryReader& reader) {
    return static_cast<EShape>(
        std::min<std::uint8_t>(reader.Number<std::uint8_t>(), EncodeShape(EShape::array)));
}

// Writes name, type, shape and values as columns.
template <typename TItems>
void EncodeProperties(TRowBinaryWriter& writer, const TItems& items) {
    EncodeColumn(writer, items, [&](const auto& item) { writer.Text(item.property.name); });
    EncodeColumn(writer, items, [&](const auto& item) { writer.Text(item.property.type); });
    EncodeColumn(writer, items, [&](const auto& item) { writer.Number(EncodeShape(item.property.shape)); });
    EncodeColumn(writer, items, [&](const auto& item) { EncodeTexts(writer, item.property.values); });
}

template <typename TItems>
void DecodeProperties(TRowBinaryReader& reader, TItems& items) {
    DecodeColumn(reader, items, [&](auto& item) { item.property.name = reader.Text(); });
    DecodeColumn(reader, items, [&](auto& item) { item.property.type = reader.Text(); });
    DecodeColumn(reader, items, [&](auto& item) { item.property.shape = DecodeShape(reader); });
    DecodeColumn(reader, items, [&](auto& item) { item.property.values = DecodeTexts(reader); });
}

void EncodePlace(TRowBinaryWriter& writer, const TMachineScope& place) {
    writer.Fixed(place.machine.GetView()).Number(static_cast<std::uint8_t>(place.scope));
}

TMachineScope DecodePlace(TRowBinaryReader& reader) {
    const TMachineId machine = DecodeDigest(reader);
    return {machine, static_cast<EScope>(reader.Number<std::uint8_t>())};
}

void EncodeFacts(TRowBinaryWriter& writer, const TMachineFacts& facts) {
    writer.Text(facts.name).Text(facts.vendor).Text(facts.model).Text(facts.serial).Text(facts.uuid);
}

TMachineFacts DecodeFacts(TRowBinaryReader& reader) {
    TMachineFacts facts;
    for (std::string* fact : {&facts.name, &facts.vendor, &facts.model, &facts.serial, &facts.uuid}) {
        *fact = reader.Text();
    }
    return facts;
}

}  // namespace

TDigest DecodeDigest(TRowBinaryReader& reader) {
    TDigest digest;
    const std::string_view bytes = reader.Fixed(TDigest::size);
    std::memcpy(digest.bytes.data(), bytes.data(), bytes.size());
    return digest;
}

void TRowFormat<TMachine>::EncodeKey(TRowBinaryWriter& writer, const TMachineId& id) {
    writer.Fixed(id.GetView());
}

void TRowFormat<TMachine>::Encode(TRowBinaryWriter& writer, const TMachine& row) {
    EncodeKey(writer, row.id);
    writer.Text(row.key).Number(static_cast<std::uint8_t>(row.rule));
    EncodeFacts(writer, row.facts);
    writer.Number(row.first).Number(row.last).Number(static_cast<std::uint8_t>(row.usesSnapshot));
}

TMachine TRowFormat<TMachine>::Decode(TRowBinaryReader& reader) {
    TMachine row;
    row.id = DecodeDigest(reader);
    row.key = DecodeText(reader);
    row.rule = static_cast<EMachineRule>(reader.Number<std::uint8_t>());
    row.facts = DecodeFacts(reader);
    row.first = reader.Number<TSeconds>();
    row.last = reader.Number<TSeconds>();
    row.usesSnapshot = reader.Number<std::uint8_t>() != 0;
    return row;
}

void TRowFormat<TAlias>::Encode(TRowBinaryWriter& writer, const TAlias& row) {
    writer.Fixed(row.from.GetView()).Text(row.fromKey).Fixed(row.to.GetView());
}

TAlias TRowFormat<TAlias>::Decode(TRowBinaryReader& reader) {
    TAlias row;
    row.from = DecodeDigest(reader);
    row.fromKey = DecodeText(reader);
    row.to = DecodeDigest(reader);
    return row;
}

void TRowFormat<THead>::EncodeKey(TRowBinaryWriter& writer, const TMachineScope& place) {
    EncodePlace(writer, place);
}

void TRowFormat<THead>::Encode(TRowBinaryWriter& writer, const THead& row) {
    EncodeKey(writer, row.place);
    writer.Number(row.time).Fixed(row.digest.GetView()).Fixed(row.content.GetView());
    EncodeFacts(writer, row.facts);
}

THead TRowFormat<THead>::Decode(TRowBinaryReader& reader) {
    THead row;
    row.place = DecodePlace(reader);
    row.time = reader.Number<TSeconds>();
    row.digest = DecodeDigest(reader);
    row.content = DecodeDigest(reader);
    row.facts = DecodeFacts(reader);
    return row;
}

void TRowFormat<TInventory>::EncodeKey(TRowBinaryWriter& writer, const TInventoryKey& inventory) {
    EncodePlace(writer, inventory.place);
    writer.Number(inventory.time);
}

void TRowFormat<TInventory>::Encode(TRowBinaryWriter& writer, const TInventory& row) {
    EncodeKey(writer, {row.place, row.time});
    writer.Fixed(row.digest.GetView()).Text(row.source);
    const auto& values = row.volatileValues;
    EncodeColumn(writer, values, [&](const auto& value) { writer.Fixed(value.resource.GetView()); });
    EncodeColumn(writer, values, [&](const auto& value) { writer.Number(value.position); });
    EncodeProperties(writer, values);
}

TInventory TRowFormat<TInventory>::DecodeShort(TRowBinaryReader& reader) {
    TInventory row;
    row.place = DecodePlace(reader);
    row.time = reader.Number<TSeconds>();
    row.digest = DecodeDigest(reader);
    row.source = DecodeText(reader);
    return row;
}

TInventory TRowFormat<TInventory>::Decode(TRowBinaryReader& reader) {
    TInventory row = DecodeShort(reader);
    auto& values = row.volatileValues;
    DecodeColumn(reader, values, [&](auto& value) { value.resource = DecodeDigest(reader); });
    DecodeColumn(reader, values, [&](auto& value) { value.position = reader.Number<std::uint32_t>(); });
    DecodeProperties(reader, values);
    return row;
}

void TRowFormat<TVersion>::EncodeKey(TRowBinaryWriter& writer, const TDigest& digest) {
    writer.Fixed(digest.GetView());
}

void TRowFormat<TVersion>::Encode(TRowBinaryWriter& writer, const TVersion& row) {
    EncodeKey(writer, row.digest);
    writer.Text(row.type).Text(row.list);
    EncodeNullable(writer, row.id);
    EncodeProperties(writer, row.properties);
    EncodeColumn(writer, row.properties, [&](const TVersionProperty& property) {
        writer.Number(static_cast<std::uint8_t>(property.isIdentifying));
    });
}

TVersion TRowFormat<TVersion>::Decode(TRowBinaryReader& reader) {
    TVersion row;
    row.digest = DecodeDigest(reader);
    row.type = DecodeText(reader);
    row.list = DecodeText(reader);
    row.id = DecodeNullable(reader);
    DecodeProperties(reader, row.properties);
    DecodeColumn(reader, row.properties, [&](TVersionProperty& property) {
        property.isIdentifying = reader.Number<std::uint8_t>() != 0;
    });
    return row;
}

void TRowFormat<TPresence>::EncodeKey(TRowBinaryWriter& writer, const TPresenceKey& presence) {
    EncodePlace(writer, presence.place);
    writer.Text(presence.type).Fixed(presence.resource.GetView()).Number(presence.since);
}

void TRowFormat<TPresence>::Encode(TRowBinaryWriter& writer, const TPresence& row) {
    EncodeKey(writer, row.GetKey());
    writer.Number(row.until).Fixed(row.version.GetView());
    EncodeColumn(writer, row.identity, [&](const auto& values) { EncodeTexts(writer, values); });
}

TPresence TRowFormat<TPresence>::Decode(TRowBinaryReader& reader) {
    TPresence row;
    row.place = DecodePlace(reader);
    row.type = DecodeText(reader);
    row.resource = DecodeDigest(reader);
    row.since = reader.Number<TSeconds>();
    row.until = reader.Number<TSeconds>();
    row.version = DecodeDigest(reader);
    row.identity.resize(reader.Count());
    for (auto& values : row.identity) {
        values = DecodeTexts(reader);
    }
    return row;
}

}  // namespace NFLEET
