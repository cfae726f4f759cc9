// A connection to a database, and its statements.
//
// Failure language: TStoreError, whose message is one line, "FILE: cause".
#pragma once

#include "fleet/model/digest.h"
#include "fleet/store/fleet_store.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

struct sqlite3;
struct sqlite3_stmt;

namespace NFLEET {

/// A parameter that is stored as a BLOB.
struct TBytes {
    std::string_view view;
};

/// A prepared statement. Must not outlive its connection.
class TStatement {
  public:
    TStatement(sqlite3* database, std::string_view name, std::string_view sql);
    TStatement(TStatement&& other) noexcept;
    TStatement& operator=(TStatement&&) = delete;
    ~TStatement();

    /// Begins anew with these parameters. Texts must stay valid until the statement is run to its end, run
    /// anew or closed.
    template <typename... TValues>
    TStatement& Begin(const TValues&... values) {
        Reset();
        int parameter = 0;
        (Bind(++parameter, values), ...);
        return *this;
    }
    /// Goes to the next row; false at the end.
    bool Step();
    /// Runs to the end, for statements without rows.
    template <typename... TValues>
    void Run(const TValues&... values) {
        Begin(values...);
        while (Step()) {
        }
    }

    /// Ends the statement before its last row, so that it holds no lock.
    void Close() { Reset(); }

    std::int64_t GetInteger(int column) const;
    /// Valid until the next step. Integers are returned as decimal digits.
    std::string_view GetText(int column) const;
    std::string GetString(int column) const { return std::string(GetText(column)); }
    /// Errors: throws TStoreError for a value that is not a digest.
    TDigest GetDigest(int column) const;
    bool IsNull(int column) const;

    sqlite3_stmt* Get() const { return statement_; }

  private:
    void Reset();
    void Bind(int parameter, std::int64_t value);
    void Bind(int parameter, std::string_view text);
    void Bind(int parameter, const std::string& text) { Bind(parameter, std::string_view(text)); }
    void Bind(int parameter, const TDigest& digest);
    void Bind(int parameter, const TBytes& bytes);
    void Bind(int parameter, std::nullptr_t);
    template <typename TValue>
    void Bind(int parameter, const std::optional<TValue>& value) {
        if (value) {
            Bind(parameter, *value);
        } else {
            Bind(parameter, nullptr);
        }
    }
    void Check(int result) const;

    std::string_view name_;
    sqlite3_stmt* statement_ = nullptr;
};

/// An open database.
class TConnection {
  public:
    enum class EAccess { readWrite, readOnly };

    /// Opens a database; creates it for readWrite. Errors: throws TStoreError.
    TConnection(const std::string& path, EAccess access);
    ~TConnection();
    TConnection(const TConnection&) = delete;
    TConnection& operator=(const TConnection&) = delete;

    /// Runs statements without parameters. Errors: throws TStoreError.
    void Execute(const std::string& sql);
    /// Errors: throws TStoreError for a text that is malformed.
    TStatement Prepare(std::string_view sql) { return {database_, path_, sql}; }
    /// Returns the first value of a query's first row.
    std::int64_t GetInteger(std::string_view sql);
    /// True while a transaction is open.
    bool IsInTransaction() const;

    const std::string& GetPath() const { return path_; }
    sqlite3* Get() const { return database_; }

  private:
    std::string path_;
    sqlite3* database_ = nullptr;
};

/// Throws a TStoreError, "NAME: CAUSE", whose control characters are escaped.
[[noreturn]] void FailStore(std::string_view name, std::string_view cause);

}  // namespace NFLEET
