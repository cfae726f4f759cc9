// Statements and rows to a ClickHouse server, and rows from it.
//
// Failure language: TClickHouseError, which is a TStoreError.
#pragma once

#include "fleet/clickhouse/address.h"
#include "fleet/clickhouse/http.h"
#include "fleet/clickhouse/row_binary.h"
#include "fleet/store/fleet_store.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace NFLEET {

/// A statement that has failed, or a server that cannot be reached. The text is one line that names the
/// server and is safe to show.
class TClickHouseError : public TStoreError {
  public:
    TClickHouseError(const std::string& text, int code) : TStoreError(text), code_(code) {}
    /// The server's number of the failure; 0 if the server did not answer.
    int GetCode() const { return code_; }

  private:
    int code_;
};

/// Codes of the server that callers distinguish.
constexpr int unknownTableCode = 60;
constexpr int unknownDatabaseCode = 81;

/// The content of the body of a failed answer.
struct TServerFailure {
    int code = 0;      ///< 0 if the body is not a ClickHouse server's
    std::string text;  ///< first line of the description
};

/// Parses "Code: 60, e.displayText() = DB::Exception: TEXT, e.what() = ..." and the form of newer servers,
/// "Code: 60. DB::Exception: TEXT. (UNKNOWN_TABLE) (version 23.8.1)". Another body gives its first line.
TServerFailure ParseServerFailure(std::string_view body);

/// Returns `text` as a string literal of a statement. Every byte may occur.
std::string QuoteText(std::string_view text);
/// Returns `name` as an identifier of a statement.
std::string QuoteName(std::string_view name);

/// A table that exists for one query, under a name of its own.
struct TTemporaryTable {
    std::string name;
    std::string columns;  ///< such as "id FixedString(16), place UInt32"
    std::string rows;     ///< RowBinary
};

/// Settings of a statement, such as {"readonly", "1"}.
using TStatementSettings = std::vector<std::pair<std::string, std::string>>;

/// A connection to one database. For one thread at a time.
class TClickHouseClient {
  public:
    TClickHouseClient(TClickHouseAddress address, std::unique_ptr<IHttp> http);

    /// Runs a statement that returns no rows. Without `inDatabase`, the database need not exist.
    void Execute(std::string_view statement, const TStatementSettings& settings = {});
    /// Creates the database unless it exists. The only operation that works without it.
    void CreateDatabase();
    /// Inserts rows in the format RowBinary. `target` is a table, with its columns in parentheses. The rows
    /// of a failed call may have been stored, all of them or some.
    void Insert(std::string_view target, std::string_view rows, const TStatementSettings& settings = {});
    /// Runs a query and passes each of its rows, which `decode` makes from values in RowBinary, to `take`. A
    /// failure of the query is thrown before the first row. With `tables`, the query can read them.
    template <typename TDecode, typename TTake>
    void Select(std::string_view query, TDecode&& decode, TTake&& take,
                const std::optional<TTemporaryTable>& table = std::nullopt);
    /// Runs a query and returns its answer in `format` as it is.
    std::string SelectText(std::string_view query, std::string_view format,
                           const TStatementSettings& settings);

    const TClickHouseAddress& GetAddress() const { return address_; }
    /// Limits the time of each of the statements that follow; ten minutes at first.
    void SetLimit(std::chrono::milliseconds limit) { limit_ = limit; }

  private:
    /// Takes rows from the front of the text and returns how many bytes they had.
    using TConsume = std::function<std::size_t(std::string_view)>;

    void SelectRows(std::string_view query, const std::optional<TTemporaryTable>& table,
                    const TConsume& consume);
    void Post(const TStatementSettings& settings, std::string_view contentType, std::string_view body,
              const TConsume& consume);
    std::string MakeUrl(const TStatementSettings& settings) const;
    [[noreturn]] void Fail(const std::string& text, int code) const;

    TClickHouseAddress address_;
    std::unique_ptr<IHttp> http_;
    std::chrono::milliseconds limit_;
};

template <typename TDecode, typename TTake>
void TClickHouseClient::Select(std::string_view query, TDecode&& decode, TTake&& take,
                               const std::optional<TTemporaryTable>& table) {
    SelectRows(query, table, [&](std::string_view bytes) {
        std::size_t consumed = 0;
        while (consumed < bytes.size()) {
            TRowBinaryReader reader(bytes.substr(consumed));
            auto row = decode(reader);
            if (!reader.IsComplete()) {
                break;  // the rest of the row is still on its way
            }
            take(std::move(row));
            consumed = bytes.size() - reader.GetRest().size();
        }
        return consumed;
    });
}

}  // namespace NFLEET
