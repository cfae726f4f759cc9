// Commits the instances of a class whose keys must not collide.
#pragma once

#include "machine/collect/frame/class_shape.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/device_key.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace NVORHOST {

/// One instance to be, and what its key is made from. Without a record it takes part in the search for
/// collisions alone: a socket's key does not change with what is in the other sockets.
template <typename TRecord>
struct TKeyedRecord {
    std::optional<TRecord> record;
    TKeySource keySource;
};

/// Commits every record in order, with its key in the member `key`; a record without an `elementName` goes by
/// its key. `word` names such a thing in the notes on keys that collided.
template <typename TRecord>
void CommitKeyed(TCollection& collection, const TClassShape& shape,
                 std::span<const TPropertyRow<TRecord>> rows, std::vector<TKeyedRecord<TRecord>> records,
                 std::optional<std::string> TRecord::*key, std::string_view word) {
    std::vector<TKeySource> sources;
    sources.reserve(records.size());
    for (const TKeyedRecord<TRecord>& record : records) {
        sources.push_back(record.keySource);
    }
    auto keys = collection.MakeKeys(sources, word);
    for (std::size_t i = 0; i < records.size(); ++i) {
        if (!records[i].record) {
            continue;
        }
        TRecord& record = *records[i].record;
        record.*key = std::move(keys[i]);
        if (!record.elementName) {
            record.elementName = record.*key;
        }
        collection.Commit<TRecord>(shape, rows, record);
    }
}

}  // namespace NVORHOST
