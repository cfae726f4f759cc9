#include "fleet/sqlite/dictionary.h"

#include <sqlite3.h>

namespace NFLEET {

std::optional<std::int64_t> TDigestTable::Find(const TDigest& digest) {
    if (const auto known = known_.find(digest); known != known_.end()) {
        return known->second;
    }
    if (!find_.Begin(digest).Step()) {
        return std::nullopt;
    }
    const std::int64_t id = find_.GetInteger(0);
    find_.Close();
    Remember(digest, id);
    return id;
}

void TDigestTable::Remember(const TDigest& digest, std::int64_t id) {
    if (known_.size() >= maxKnown) {
        known_.clear();
    }
    known_[digest] = id;
}

TWordTable::TWordTable(TConnection& connection)
    : connection_(connection),
      find_(connection.Prepare("SELECT id FROM word WHERE text = ?")),
      read_(connection.Prepare("SELECT text FROM word WHERE id = ?")),
      insert_(connection.Prepare("INSERT INTO word(text) VALUES(?)")) {}

std::int64_t TWordTable::Get(std::string_view text) {
    if (const auto id = Find(text)) {
        return *id;
    }
    insert_.Run(text);
    const std::int64_t id = sqlite3_last_insert_rowid(connection_.Get());
    Remember(text, id);
    return id;
}

std::optional<std::int64_t> TWordTable::Find(std::string_view text) {
    if (const auto known = ids_.find(text); known != ids_.end()) {
        return known->second;
    }
    if (!find_.Begin(text).Step()) {
        return std::nullopt;
    }
    const std::int64_t id = find_.GetInteger(0);
    find_.Close();
    Remember(text, id);
    return id;
}

// Hostile documents may have any number of names, so what is known is limited when texts are looked up.
void TWordTable::Remember(std::string_view text, std::int64_t id) {
    if (ids_.size() >= maxKnown) {
        ids_.clear();
    }
    ids_.emplace(text, id);
}

const std::string& TWordTable::GetText(std::int64_t id) {
    const auto known = texts_.find(id);
    if (known != texts_.end()) {
        return known->second;
    }
    if (!read_.Begin(id).Step()) {
        FailStore(connection_.GetPath(), "a word is missing");
    }
    const std::string& text = texts_.emplace(id, read_.GetString(0)).first->second;
    read_.Close();
    return text;
}

void TWordTable::Forget() {
    ids_.clear();
    texts_.clear();
}

}  // namespace NFLEET
