#include "fleet/clickhouse/row_formats.h"

#include "fleet/store/fleet_store.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <span>
#include <string>
#include <utility>
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

// Writes name, type and shape as columns.
template <typename TItems>
void EncodeDescriptions(TRowBinaryWriter& writer, const TItems& items) {
    EncodeColumn(writer, items, [&](const auto& item) { writer.Text(item.property.name); });
    EncodeColumn(writer, items, [&](const auto& item) { writer.Text(item.property.type); });
    EncodeColumn(writer, items, [&](const auto& item) { writer.Number(EncodeShape(item.property.shape)); });
}

template <typename TItems>
void DecodeDescriptions(TRowBinaryReader& reader, TItems& items) {
    DecodeColumn(reader, items, [&](auto& item) { item.property.name = reader.Text(); });
    DecodeColumn(reader, items, [&](auto& item) { item.property.type = reader.Text(); });
    DecodeColumn(reader, items, [&](auto& item) { item.property.shape = DecodeShape(reader); });
}

template <typename TItems>
void EncodeValues(TRowBinaryWriter& writer, const TItems& items) {
    EncodeColumn(writer, items, [&](const auto& item) { EncodeTexts(writer, item.property.values); });
}

template <typename TItems>
void DecodeValues(TRowBinaryReader& reader, TItems& items) {
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

TIdentity DecodeIdentity(TRowBinaryReader& reader, const TDigest& resource) {
    auto identity = ParseIdentity(reader.Text(), resource);
    if (!identity) {
        throw TStoreError("the identifying values of a resource are malformed");
    }
    return std::move(*identity);
}

}  // namespace

TDigest DecodeDigest(TRowBinaryReader& reader) {
    TDigest digest;
    const std::string_view bytes = reader.Fixed(TDigest::size);
    if (!bytes.empty()) {
        std::memcpy(digest.bytes.data(), bytes.data(), bytes.size());
    }
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

void TRowFormat<TSource>::Encode(TRowBinaryWriter& writer, const TSource& row) {
    writer.Number(row.place).Number(row.state).Number(static_cast<std::uint32_t>(row.inventories));
}

TSource TRowFormat<TSource>::Decode(TRowBinaryReader& reader) {
    TSource row;
    row.place = reader.Number<std::uint64_t>();
    row.state = reader.Number<std::uint64_t>();
    row.inventories = reader.Number<std::uint32_t>();
    return row;
}

void TRowFormat<THeadRow>::EncodeKey(TRowBinaryWriter& writer, const TMachineScope& place) {
    EncodePlace(writer, place);
}

void TRowFormat<THeadRow>::Encode(TRowBinaryWriter& writer, const THeadRow& row) {
    const THead& head = row.head;
    EncodeKey(writer, head.place);
    writer.Number(head.time).Fixed(head.digest.GetView()).Fixed(head.content.GetView());
    EncodeFacts(writer, head.facts);
    writer.Number(row.state);
}

THeadRow TRowFormat<THeadRow>::Decode(TRowBinaryReader& reader) {
    THeadRow row;
    row.head.place = DecodePlace(reader);
    row.head.time = reader.Number<TSeconds>();
    row.head.digest = DecodeDigest(reader);
    row.head.content = DecodeDigest(reader);
    row.head.facts = DecodeFacts(reader);
    row.state = reader.Number<TChangeNumber>();
    return row;
}

void TRowFormat<TInventoryRow>::EncodeKey(TRowBinaryWriter& writer, const TInventoryKey& inventory) {
    EncodePlace(writer, inventory.place);
    writer.Number(inventory.time);
}

void TRowFormat<TInventoryRow>::Encode(TRowBinaryWriter& writer, const TInventoryRow& row) {
    const TInventory& inventory = row.inventory;
    EncodeKey(writer, {inventory.place, inventory.time});
    writer.Fixed(inventory.digest.GetView()).Text(inventory.source).Fixed(row.layout.GetView());
    EncodeColumn(writer, row.resources, [&](const TDigest& resource) { writer.Fixed(resource.GetView()); });
    EncodeValues(writer, inventory.volatileValues);
}

TInventory TRowFormat<TInventoryRow>::DecodeShort(TRowBinaryReader& reader) {
    TInventory row;
    row.place = DecodePlace(reader);
    row.time = reader.Number<TSeconds>();
    row.digest = DecodeDigest(reader);
    row.source = DecodeText(reader);
    return row;
}

TInventoryRow TRowFormat<TInventoryRow>::Decode(TRowBinaryReader& reader) {
    TInventoryRow row{DecodeShort(reader), DecodeDigest(reader), {}};
    DecodeColumn(reader, row.resources, [&](TDigest& resource) { resource = DecodeDigest(reader); });
    DecodeValues(reader, row.inventory.volatileValues);
    return row;
}

void TRowFormat<TVolatileLayout>::Encode(TRowBinaryWriter& writer, const TVolatileLayout& row) {
    writer.Fixed(row.digest.GetView());
    EncodeColumn(writer, row.numbers, [&](std::uint32_t number) { writer.Number(number); });
    EncodeColumn(writer, row.values, [&](const auto& value) { writer.Number(value.position); });
    EncodeDescriptions(writer, row.values);
}

TVolatileLayout TRowFormat<TVolatileLayout>::Decode(TRowBinaryReader& reader) {
    TVolatileLayout row{DecodeDigest(reader), {}, {}};
    DecodeColumn(reader, row.numbers, [&](auto& number) { number = reader.Number<std::uint32_t>(); });
    DecodeColumn(reader, row.values, [&](auto& value) { value.position = reader.Number<std::uint32_t>(); });
    DecodeDescriptions(reader, row.values);
    return row;
}

void TRowFormat<TVersion>::EncodeKey(TRowBinaryWriter& writer, const TDigest& digest) {
    writer.Fixed(digest.GetView());
}

void TRowFormat<TVersion>::Encode(TRowBinaryWriter& writer, const TVersion& row) {
    EncodeKey(writer, row.digest);
    writer.Text(row.type).Text(row.list);
    EncodeNullable(writer, row.id);
    EncodeDescriptions(writer, row.properties);
    EncodeValues(writer, row.properties);
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
    DecodeDescriptions(reader, row.properties);
    DecodeValues(reader, row.properties);
    DecodeColumn(reader, row.properties, [&](TVersionProperty& property) {
        property.isIdentifying = reader.Number<std::uint8_t>() != 0;
    });
    return row;
}

void TRowFormat<TPresenceRow>::Encode(TRowBinaryWriter& writer, const TPresenceRow& row) {
    const std::span all(row.presences);
    const auto closed = all.subspan(CountOpen(all));
    EncodePlace(writer, row.place);
    writer.Fixed(row.composition.GetView()).Number(GetNewestChange(all));
    EncodeColumn(writer, all, [&](const TPresence& presence) { writer.Fixed(presence.resource.GetView()); });
    EncodeColumn(writer, all, [&](const TPresence& presence) { writer.Number(presence.since); });
    EncodeColumn(writer, all, [&](const TPresence& presence) {
        writer.Text(FormatIdentity(presence.identity, presence.resource));
    });
    EncodeColumn(writer, closed, [&](const TPresence& presence) { writer.Number(presence.until); });
    EncodeColumn(writer, closed, [&](const TPresence& presence) { writer.Text(presence.type); });
    EncodeColumn(writer, closed,
                 [&](const TPresence& presence) { writer.Fixed(presence.version.GetView()); });
}

TPresenceRow TRowFormat<TPresenceRow>::Decode(TRowBinaryReader& reader) {
    TPresenceRow row{DecodePlace(reader), {}, DecodeDigest(reader)};
    (void)reader.Number<TSeconds>();  // the newest change
    auto& all = row.presences;
    DecodeColumn(reader, all, [&](TPresence& presence) { presence.resource = DecodeDigest(reader); });
    DecodeColumn(reader, all, [&](TPresence& presence) { presence.since = reader.Number<TSeconds>(); });
    DecodeColumn(reader, all,
                 [&](TPresence& presence) { presence.identity = DecodeIdentity(reader, presence.resource); });
    std::vector<TPresence> closed;
    DecodeColumn(reader, closed, [&](TPresence& presence) { presence.until = reader.Number<TSeconds>(); });
    DecodeColumn(reader, closed, [&](TPresence& presence) { presence.type = reader.Text(); });
    DecodeColumn(reader, closed, [&](TPresence& presence) { presence.version = DecodeDigest(reader); });
    const std::size_t first = all.size() - std::min(all.size(), closed.size());
    for (std::size_t i = first; i < all.size(); ++i) {
        all[i].until = closed[i - first].until;
        all[i].type = std::move(closed[i - first].type);
        all[i].version = closed[i - first].version;
    }
    for (TPresence& presence : all) {
        presence.place = row.place;
    }
    return row;
}

void TRowFormat<TComposition>::Encode(TRowBinaryWriter& writer, const TComposition& row) {
    writer.Fixed(row.digest.GetView());
    EncodeColumn(writer, row.elements, [&](const auto& element) { writer.Text(element.type); });
    EncodeColumn(writer, row.elements, [&](const auto& element) { writer.Fixed(element.version.GetView()); });
}

TComposition TRowFormat<TComposition>::Decode(TRowBinaryReader& reader) {
    TComposition row{DecodeDigest(reader), {}};
    DecodeColumn(reader, row.elements, [&](auto& element) { element.type = reader.Text(); });
    DecodeColumn(reader, row.elements, [&](auto& element) { element.version = DecodeDigest(reader); });
    return row;
}

TPresence DecodePresence(TRowBinaryReader& reader) {
    TPresence presence;
    presence.place = DecodePlace(reader);
    presence.type = reader.Text();
    presence.resource = DecodeDigest(reader);
    presence.since = reader.Number<TSeconds>();
    presence.until = reader.Number<TSeconds>();
    presence.version = DecodeDigest(reader);
    presence.identity = DecodeIdentity(reader, presence.resource);
    return presence;
}

TPresence DecodeOpenPresence(TRowBinaryReader& reader) {
    TPresence presence;
    presence.place = DecodePlace(reader);
    presence.type = reader.Text();
    presence.resource = DecodeDigest(reader);
    presence.since = reader.Number<TSeconds>();
    presence.version = DecodeDigest(reader);
    presence.identity = DecodeIdentity(reader, presence.resource);
    return presence;
}

}  // namespace NFLEET
