// Records with unique keys.
#pragma once

#include "machine/collect/frame/cim_class.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/device_key.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace NVORHOST {

/// A record and the source of its key. An entry without a record only takes part in the search for duplicate
/// keys, so that the key of a socket does not depend on which other sockets are populated.
template <typename TRecord>
struct TKeyedRecord {
    std::optional<TRecord> record;
    TKeySource keySource;
};

/// Returns the records in order, each with its unique key in the member that `key` projects to; entries
/// without a record are dropped. `word` names such a device in the notes on duplicate keys.
template <typename TRecord, typename TKeyMember>
std::vector<TRecord> AssignKeys(TCollection& collection, std::vector<TKeyedRecord<TRecord>> entries,
                                TKeyMember key, std::string_view word) {
    std::vector<TKeySource> sources;
    sources.reserve(entries.size());
    for (const TKeyedRecord<TRecord>& entry : entries) {
        sources.push_back(entry.keySource);
    }
    auto keys = collection.MakeKeys(sources, word);
    std::vector<TRecord> records;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (entries[i].record) {
            std::invoke(key, *entries[i].record) = std::move(keys[i]);
            records.push_back(std::move(*entries[i].record));
        }
    }
    return records;
}

/// Assigns the keys and commits every record in order. A record without an `elementName` gets its key as
/// name.
template <typename TRecord>
void CommitKeyed(TCollection& collection, const TCimClass<TRecord>& cimClass,
                 std::vector<TKeyedRecord<TRecord>> entries, std::optional<std::string> TRecord::*key,
                 std::string_view word) {
    for (TRecord& record : AssignKeys(collection, std::move(entries), key, word)) {
        if (!record.elementName) {
            record.elementName = record.*key;
        }
        collection.Commit(cimClass, record);
    }
}

}  // namespace NVORHOST
