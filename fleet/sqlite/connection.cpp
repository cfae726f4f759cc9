#include "fleet/sqlite/connection.h"

#include "text/shown_text.h"

#include <sqlite3.h>

namespace NFLEET {
namespace {

// Another loader holds the database for one batch, which takes a fraction of a second.
constexpr int busyMilliseconds = 120000;

}  // namespace

void FailStore(std::string_view name, std::string_view cause) {
    throw TStoreError(NVORHOST::ToShownText(std::string(name) + ": " + std::string(cause)));
}

TStatement::TStatement(sqlite3* database, std::string_view name, std::string_view sql) : name_(name) {
    const int result = sqlite3_prepare_v3(database, sql.data(), static_cast<int>(sql.size()),
                                          SQLITE_PREPARE_PERSISTENT, &statement_, nullptr);
    if (result != SQLITE_OK) {
        FailStore(name_, sqlite3_errmsg(database));
    }
}

TStatement::TStatement(TStatement&& other) noexcept
    : name_(other.name_), statement_(std::exchange(other.statement_, nullptr)) {}

TStatement::~TStatement() {
    (void)sqlite3_finalize(statement_);
}

void TStatement::Reset() {
    (void)sqlite3_reset(statement_);  // repeats the error of the last step, which was reported
}

bool TStatement::Step() {
    const int result = sqlite3_step(statement_);
    if (result == SQLITE_ROW) {
        return true;
    }
    if (result != SQLITE_DONE) {
        const std::string cause = sqlite3_errmsg(sqlite3_db_handle(statement_));
        Reset();
        FailStore(name_, cause);
    }
    Reset();
    return false;
}

std::int64_t TStatement::GetInteger(int column) const {
    return sqlite3_column_int64(statement_, column);
}

std::string_view TStatement::GetText(int column) const {
    const auto* const text = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
    return text == nullptr
               ? std::string_view()
               : std::string_view(text, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column)));
}

TDigest TStatement::GetDigest(int column) const {
    const auto* const bytes = static_cast<const char*>(sqlite3_column_blob(statement_, column));
    const auto digest =
        FromBytes({bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))});
    if (!digest) {
        FailStore(name_, "a stored digest is malformed");
    }
    return *digest;
}

bool TStatement::IsNull(int column) const {
    return sqlite3_column_type(statement_, column) == SQLITE_NULL;
}

void TStatement::Bind(int parameter, std::int64_t value) {
    Check(sqlite3_bind_int64(statement_, parameter, value));
}

void TStatement::Bind(int parameter, std::string_view text) {
    // A null pointer would be SQL's null.
    const char* const begin = text.empty() ? "" : text.data();
    Check(sqlite3_bind_text64(statement_, parameter, begin, text.size(), SQLITE_STATIC, SQLITE_UTF8));
}

void TStatement::Bind(int parameter, const TDigest& digest) {
    Check(sqlite3_bind_blob64(statement_, parameter, digest.bytes.data(), TDigest::size, SQLITE_STATIC));
}

void TStatement::Bind(int parameter, const TBytes& bytes) {
    const char* const begin = bytes.view.empty() ? "" : bytes.view.data();
    Check(sqlite3_bind_blob64(statement_, parameter, begin, bytes.view.size(), SQLITE_STATIC));
}

void TStatement::Bind(int parameter, std::nullptr_t /*absent*/) {
    Check(sqlite3_bind_null(statement_, parameter));
}

void TStatement::Check(int result) const {
    if (result != SQLITE_OK) {
        FailStore(name_, sqlite3_errstr(result));
    }
}

TConnection::TConnection(const std::string& path, EAccess access) : path_(path) {
    const int flags =
        access == EAccess::readOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    const int result = sqlite3_open_v2(path.c_str(), &database_, flags | SQLITE_OPEN_NOMUTEX, nullptr);
    if (result != SQLITE_OK) {
        (void)sqlite3_close(std::exchange(database_, nullptr));
        FailStore(path_, std::string("cannot be opened: ") + sqlite3_errstr(result));
    }
    (void)sqlite3_busy_timeout(database_, busyMilliseconds);
}

TConnection::~TConnection() {
    (void)sqlite3_close(database_);
}

void TConnection::Execute(const std::string& sql) {
    if (sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        FailStore(path_, sqlite3_errmsg(database_));
    }
}

std::int64_t TConnection::GetInteger(std::string_view sql) {
    TStatement statement = Prepare(sql);
    return statement.Step() ? statement.GetInteger(0) : 0;
}

bool TConnection::IsInTransaction() const {
    return sqlite3_get_autocommit(database_) == 0;
}

}  // namespace NFLEET
