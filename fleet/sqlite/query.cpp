// Queries of users.
#include "fleet/sqlite/sqlite_engine.h"

#include <sqlite3.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace NFLEET {
namespace {

constexpr int allowedActions[] = {SQLITE_SELECT, SQLITE_READ, SQLITE_FUNCTION, SQLITE_RECURSIVE};
constexpr std::string_view refusedFunctions[] = {"load_extension", "readfile", "writefile", "edit"};

// Denies everything but reading tables and calling functions.
int Authorize(void* /*context*/, int action, const char* /*first*/, const char* second,
              const char* /*database*/, const char* /*trigger*/) {
    const bool isAllowed = std::ranges::find(allowedActions, action) != std::end(allowedActions);
    const bool isRefused =
        action == SQLITE_FUNCTION && second != nullptr &&
        std::ranges::find(refusedFunctions, std::string_view(second)) != std::end(refusedFunctions);
    return isAllowed && !isRefused ? SQLITE_OK : SQLITE_DENY;
}

TSqlValue GetValue(sqlite3_stmt* statement, int column) {
    switch (sqlite3_column_type(statement, column)) {
        case SQLITE_NULL:
            return {};
        case SQLITE_INTEGER:
            return std::int64_t{sqlite3_column_int64(statement, column)};
        case SQLITE_FLOAT:
            return sqlite3_column_double(statement, column);
        default:
            const auto* const bytes = static_cast<const char*>(sqlite3_column_blob(statement, column));
            const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
            return bytes == nullptr ? std::string() : std::string(bytes, size);
    }
}

// True if nothing but blanks, comments and a semicolon follows the statement.
bool IsEmptyStatement(TConnection& connection, const char* text) {
    sqlite3_stmt* statement = nullptr;
    const int result = sqlite3_prepare_v2(connection.Get(), text, -1, &statement, nullptr);
    const bool isEmpty = result == SQLITE_OK && statement == nullptr;
    (void)sqlite3_finalize(statement);
    return isEmpty;
}

struct TFinalize {
    void operator()(sqlite3_stmt* statement) const { (void)sqlite3_finalize(statement); }
};

}  // namespace

void TSqliteEngine::RunSql(std::string_view text, ISqlRows& rows) {
    (void)GetTables();
    TConnection connection(connection_.GetPath(), TConnection::EAccess::readOnly);
    (void)sqlite3_set_authorizer(connection.Get(), Authorize, nullptr);
    const std::string query(text);
    const char* tail = nullptr;
    sqlite3_stmt* prepared = nullptr;
    if (sqlite3_prepare_v2(connection.Get(), query.c_str(), -1, &prepared, &tail) != SQLITE_OK) {
        FailStore(GetName(), sqlite3_errmsg(connection.Get()));
    }
    const std::unique_ptr<sqlite3_stmt, TFinalize> statement(prepared);
    if (statement == nullptr) {
        FailStore(GetName(), "the query is empty");
    }
    if (!IsEmptyStatement(connection, tail)) {
        FailStore(GetName(), "the query has more than one statement");
    }
    std::vector<std::string> columns;
    for (int column = 0; column < sqlite3_column_count(prepared); ++column) {
        columns.emplace_back(sqlite3_column_name(prepared, column));
    }
    rows.BeginRows(columns);
    std::vector<TSqlValue> values(columns.size());
    for (;;) {
        const int result = sqlite3_step(prepared);
        if (result == SQLITE_DONE) {
            return;
        }
        if (result != SQLITE_ROW) {
            FailStore(GetName(), sqlite3_errmsg(connection.Get()));
        }
        for (std::size_t column = 0; column < values.size(); ++column) {
            values[column] = GetValue(prepared, static_cast<int>(column));
        }
        if (!rows.AddRow(values)) {
            return;
        }
    }
}

}  // namespace NFLEET
