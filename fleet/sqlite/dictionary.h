// Small numbers for texts and digests, so that large tables hold the numbers.
#pragma once

#include "fleet/sqlite/connection.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace NFLEET {

/// Rows with a number that are found by digest. Remembers the numbers that it found, up to a limit.
class TDigestTable {
  public:
    /// `connection` must outlive this object. `find` selects the number for a digest, its parameter.
    TDigestTable(TConnection& connection, std::string_view find) : find_(connection.Prepare(find)) {}

    std::optional<std::int64_t> Find(const TDigest& digest);
    /// Remembers the number of a row that was inserted.
    void Remember(const TDigest& digest, std::int64_t id);
    /// Forgets everything, because another connection may have removed rows.
    void Forget() { known_.clear(); }

  private:
    static constexpr std::size_t maxKnown = 200000;

    TStatement find_;
    std::unordered_map<TDigest, std::int64_t, TDigestHash> known_;
};

/// The table of words: names and types. There are few.
class TWordTable {
  public:
    /// `connection` must outlive this object.
    explicit TWordTable(TConnection& connection);

    /// Returns the number of a text, and inserts it if there is none. Needs a transaction.
    std::int64_t Get(std::string_view text);
    std::optional<std::int64_t> Find(std::string_view text);
    /// Returns the text of a number; valid as long as this object. Errors: throws TStoreError for an unknown
    /// number.
    const std::string& GetText(std::int64_t id);
    /// Forgets everything, because a transaction that inserted words may have been undone.
    void Forget();

  private:
    static constexpr std::size_t maxKnown = 100000;

    void Remember(std::string_view text, std::int64_t id);

    TConnection& connection_;
    TStatement find_;
    TStatement read_;
    TStatement insert_;
    /// Hashes texts without making strings of them.
    struct TTextHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
    };

    std::unordered_map<std::string, std::int64_t, TTextHash, std::equal_to<>> ids_;
    std::unordered_map<std::int64_t, std::string> texts_;
};

}  // namespace NFLEET
