// The tables' columns, and rows in them as RowBinary.
#pragma once

#include "fleet/clickhouse/presence_row.h"
#include "fleet/clickhouse/row_binary.h"
#include "fleet/model/rows.h"

#include <string_view>

namespace NFLEET {

/// The column whose greatest value marks the newest of several rows with one key.
using TChangeNumber = std::uint64_t;

/// How rows of a type are stored. Every table has the columns `change` and `removed` as well, at its end: the
/// row with the highest change of a key counts, and if that one is removed, the key does not exist.
///   table    name of the table
///   columns  names of the columns, in the order of Encode and Decode
///   key      names of the columns that identify a row, which come first
template <typename TRow>
struct TRowFormat;

template <>
struct TRowFormat<TMachine> {
    static constexpr std::string_view table = "machine_rows";
    static constexpr std::string_view key = "id";
    static constexpr std::string_view columns =
        "id, key, rule, name, vendor, model, serial, uuid, first, last, uses_snapshot";
    static void EncodeKey(TRowBinaryWriter& writer, const TMachineId& id);
    static void Encode(TRowBinaryWriter& writer, const TMachine& row);
    static TMachine Decode(TRowBinaryReader& reader);
};

template <>
struct TRowFormat<TAlias> {
    static constexpr std::string_view table = "alias_rows";
    static constexpr std::string_view columns = "machine, key, target";
    static void Encode(TRowBinaryWriter& writer, const TAlias& row);
    static TAlias Decode(TRowBinaryReader& reader);
};

template <>
struct TRowFormat<TSource> {
    static constexpr std::string_view table = "source_rows";
    static constexpr std::string_view columns = "place, state, inventories";
    static void Encode(TRowBinaryWriter& writer, const TSource& row);
    static TSource Decode(TRowBinaryReader& reader);
};

/// A head, and the row of presences that was there when it was written.
struct THeadRow {
    THead head;               ///< a digest of zeros is that of the inventory at the time of the head
    TChangeNumber state = 0;  ///< `change` of the row; 0 without one
};

template <>
struct TRowFormat<THeadRow> {
    static constexpr std::string_view table = "head_rows";
    static constexpr std::string_view key = "machine, scope";
    static constexpr std::string_view columns =
        "machine, scope, time, digest, content, name, vendor, model, serial, uuid, state";
    static void EncodeKey(TRowBinaryWriter& writer, const TMachineScope& place);
    static void Encode(TRowBinaryWriter& writer, const THeadRow& row);
    static THeadRow Decode(TRowBinaryReader& reader);
};

/// An inventory as it is stored: its volatile values have values only; a layout has the rest.
struct TInventoryRow {
    TInventory inventory;
    TDigest layout;
    std::vector<TDigest> resources;
};

template <>
struct TRowFormat<TInventoryRow> {
    static constexpr std::string_view table = "inventory_rows";
    static constexpr std::string_view key = "machine, scope, time";
    /// The columns without volatile values, which DecodeShort expects.
    static constexpr std::string_view shortColumns = "machine, scope, time, digest, source";
    static constexpr std::string_view columns =
        "machine, scope, time, digest, source, layout, resource, volatile_values";
    static void EncodeKey(TRowBinaryWriter& writer, const TInventoryKey& inventory);
    static void Encode(TRowBinaryWriter& writer, const TInventoryRow& row);
    static TInventoryRow Decode(TRowBinaryReader& reader);
    static TInventory DecodeShort(TRowBinaryReader& reader);
};

template <>
struct TRowFormat<TVolatileLayout> {
    static constexpr std::string_view table = "layout_rows";
    static constexpr std::string_view key = "digest";
    static constexpr std::string_view columns = "digest, number, position, name, type, shape";
    static void Encode(TRowBinaryWriter& writer, const TVolatileLayout& row);
    static TVolatileLayout Decode(TRowBinaryReader& reader);
};

template <>
struct TRowFormat<TVersion> {
    static constexpr std::string_view table = "version_rows";
    static constexpr std::string_view key = "digest";
    static constexpr std::string_view columns =
        "digest, type, list, id, property_name, property_type, property_shape, property_values, identifying";
    static void EncodeKey(TRowBinaryWriter& writer, const TDigest& digest);
    static void Encode(TRowBinaryWriter& writer, const TVersion& row);
    static TVersion Decode(TRowBinaryReader& reader);
};

template <>
struct TRowFormat<TPresenceRow> {
    static constexpr std::string_view table = "presence_rows";
    static constexpr std::string_view key = "machine, scope";
    static constexpr std::string_view columns =
        "machine, scope, composition, changed, resource, since, identity, until, type, version";
    static void Encode(TRowBinaryWriter& writer, const TPresenceRow& row);
    /// Reads a row whose open presences have neither type nor version yet.
    static TPresenceRow Decode(TRowBinaryReader& reader);
};

template <>
struct TRowFormat<TComposition> {
    static constexpr std::string_view table = "composition_rows";
    static constexpr std::string_view key = "digest";
    static constexpr std::string_view columns = "digest, type, version";
    static void Encode(TRowBinaryWriter& writer, const TComposition& row);
    static TComposition Decode(TRowBinaryReader& reader);
};

/// Reads one presence: machine, scope, type, resource, since, until, version, identity.
TPresence DecodePresence(TRowBinaryReader& reader);

/// Reads one presence of the present: machine, scope, type, resource, since, version, identity.
TPresence DecodeOpenPresence(TRowBinaryReader& reader);

/// Reads a digest: FixedString(16).
TDigest DecodeDigest(TRowBinaryReader& reader);

}  // namespace NFLEET
