#include "fleet/sqlite/schema.h"

#include "fleet/sqlite/sqlite_store.h"

#include <iterator>

namespace NFLEET {
namespace {

// Words, resources, versions, forms, layouts and machines have small numbers, which stand for them in the
// large tables. `presence` is ordered by machine and type, so that the present state of one type is a few
// pages for each machine. The rows of `part` have no order in time, so a batch would change every page of a
// large table: they wait in `recent_part`, whose pages are few.
constexpr std::string_view migrations[] = {
    R"sql(
CREATE TABLE word(
  id INTEGER PRIMARY KEY,
  text TEXT NOT NULL UNIQUE);

CREATE TABLE machine(
  id INTEGER PRIMARY KEY,
  digest BLOB NOT NULL UNIQUE,
  key TEXT NOT NULL,
  rule INTEGER NOT NULL,
  name TEXT NOT NULL,
  vendor TEXT NOT NULL,
  model TEXT NOT NULL,
  serial TEXT NOT NULL,
  uuid TEXT NOT NULL,
  first INTEGER NOT NULL,
  last INTEGER NOT NULL,
  uses_snapshot INTEGER NOT NULL);
CREATE INDEX machine_model ON machine(model);

CREATE TABLE machine_search(
  search INTEGER NOT NULL,
  machine INTEGER NOT NULL,
  PRIMARY KEY(search, machine)) WITHOUT ROWID;

CREATE TABLE alias(
  digest BLOB PRIMARY KEY,
  key TEXT NOT NULL,
  target BLOB NOT NULL) WITHOUT ROWID;
CREATE INDEX alias_merged ON alias(target) WHERE key <> '';

CREATE TABLE head(
  machine INTEGER NOT NULL,
  scope INTEGER NOT NULL,
  time INTEGER NOT NULL,
  digest BLOB NOT NULL,
  content BLOB NOT NULL,
  name TEXT NOT NULL,
  vendor TEXT NOT NULL,
  model TEXT NOT NULL,
  serial TEXT NOT NULL,
  uuid TEXT NOT NULL,
  PRIMARY KEY(machine, scope)) WITHOUT ROWID;

CREATE TABLE form(
  id INTEGER PRIMARY KEY,
  digest BLOB NOT NULL UNIQUE,
  body TEXT NOT NULL);

CREATE TABLE layout(
  id INTEGER PRIMARY KEY,
  digest BLOB NOT NULL UNIQUE,
  form INTEGER NOT NULL,
  resources BLOB NOT NULL,
  usual TEXT NOT NULL);

CREATE TABLE inventory(
  id INTEGER PRIMARY KEY,
  machine INTEGER NOT NULL,
  scope INTEGER NOT NULL,
  time INTEGER NOT NULL,
  digest BLOB NOT NULL,
  source TEXT NOT NULL,
  layout INTEGER NOT NULL,
  volatile TEXT NOT NULL);
CREATE UNIQUE INDEX inventory_key ON inventory(machine, scope, time);

CREATE TABLE source(
  place INTEGER PRIMARY KEY,
  state INTEGER NOT NULL,
  inventories INTEGER NOT NULL);

CREATE TABLE resource(
  id INTEGER PRIMARY KEY,
  digest BLOB NOT NULL);
CREATE TABLE resource_key(
  digest BLOB PRIMARY KEY,
  resource INTEGER NOT NULL) WITHOUT ROWID;
CREATE TABLE recent_resource_key(
  digest BLOB PRIMARY KEY,
  resource INTEGER NOT NULL) WITHOUT ROWID;

CREATE TABLE version(
  id INTEGER PRIMARY KEY,
  digest BLOB NOT NULL UNIQUE,
  type INTEGER NOT NULL,
  list INTEGER NOT NULL,
  identifier TEXT);

CREATE TABLE property(
  version INTEGER NOT NULL,
  position INTEGER NOT NULL,
  element INTEGER NOT NULL,
  name INTEGER NOT NULL,
  type INTEGER NOT NULL,
  shape INTEGER NOT NULL,
  value,
  PRIMARY KEY(version, position, element)) WITHOUT ROWID;

CREATE TABLE presence(
  machine INTEGER NOT NULL,
  scope INTEGER NOT NULL,
  type INTEGER NOT NULL,
  resource INTEGER NOT NULL,
  since INTEGER NOT NULL,
  until INTEGER,
  version INTEGER NOT NULL,
  identity TEXT,
  PRIMARY KEY(machine, scope, type, resource, since)) WITHOUT ROWID;
CREATE INDEX presence_since ON presence(since) WHERE since > 0;
CREATE INDEX presence_until ON presence(until) WHERE until IS NOT NULL;

CREATE TABLE part(
  search INTEGER NOT NULL,
  machine INTEGER NOT NULL,
  scope INTEGER NOT NULL,
  type INTEGER NOT NULL,
  resource INTEGER NOT NULL,
  PRIMARY KEY(search, machine, scope, type, resource)) WITHOUT ROWID;
CREATE TABLE recent_part(
  search INTEGER NOT NULL,
  machine INTEGER NOT NULL,
  scope INTEGER NOT NULL,
  type INTEGER NOT NULL,
  resource INTEGER NOT NULL,
  PRIMARY KEY(search, machine, scope, type, resource)) WITHOUT ROWID;

CREATE VIEW inventories AS
  SELECT m.id AS machine, m.name AS machine_name,
    CASE i.scope WHEN 1 THEN 'hardware' WHEN 2 THEN 'system-information' ELSE 'snapshot' END AS scope,
    datetime(i.time, 'unixepoch') AS time, hex(i.digest) AS digest, i.source
  FROM inventory AS i JOIN machine AS m ON m.id = i.machine;

CREATE VIEW resources AS
  SELECT m.id AS machine, m.name AS machine_name, m.model, w.text AS type, hex(r.digest) AS resource,
    CASE p.scope WHEN 1 THEN 'hardware' WHEN 2 THEN 'system-information' ELSE 'snapshot' END AS scope,
    CASE WHEN p.since > 0 THEN datetime(p.since, 'unixepoch') END AS since,
    datetime(p.until, 'unixepoch') AS until, p.version, p.identity
  FROM presence AS p
    CROSS JOIN machine AS m ON m.id = p.machine
    CROSS JOIN word AS w ON w.id = p.type
    CROSS JOIN resource AS r ON r.id = p.resource;

CREATE VIEW properties AS
  SELECT p.version, n.text AS name, t.text AS type, p.element, p.value
  FROM property AS p
    CROSS JOIN word AS n ON n.id = p.name
    CROSS JOIN word AS t ON t.id = p.type;

CREATE VIEW changes AS
  SELECT since AS time, 'begins' AS change, machine, scope, type, resource, version, identity
  FROM presence WHERE since > 0
  UNION ALL
  SELECT until, 'ends', machine, scope, type, resource, version, identity
  FROM presence WHERE until IS NOT NULL;
)sql",
};
static_assert(std::size(migrations) == sqliteSchemaVersion);

void RequireOwn(TConnection& connection) {
    if (connection.GetInteger("PRAGMA application_id") != applicationId) {
        FailStore(connection.GetPath(), "is a database of another program");
    }
}

}  // namespace

std::span<const std::string_view> GetMigrations() {
    return migrations;
}

int ReadSchemaVersion(TConnection& connection) {
    if (connection.GetInteger("SELECT count(*) FROM sqlite_schema") == 0) {
        return 0;
    }
    RequireOwn(connection);
    return static_cast<int>(connection.GetInteger("PRAGMA user_version"));
}

void MigrateSchema(TConnection& connection) {
    if (ReadSchemaVersion(connection) == sqliteSchemaVersion) {
        return;
    }
    // These take effect for a new database only, and not within a transaction.
    connection.Execute("PRAGMA page_size = 8192");
    connection.Execute("PRAGMA journal_mode = WAL");
    connection.Execute("BEGIN IMMEDIATE");
    try {
        const int version = ReadSchemaVersion(connection);
        if (version > sqliteSchemaVersion) {
            FailStore(connection.GetPath(),
                      "was made by a newer version of this program: its schema is version " +
                          std::to_string(version) + ", and this program reads version " +
                          std::to_string(sqliteSchemaVersion));
        }
        for (const std::string_view migration : GetMigrations().subspan(static_cast<std::size_t>(version))) {
            connection.Execute(std::string(migration));
        }
        connection.Execute("PRAGMA application_id = " + std::to_string(applicationId));
        connection.Execute("PRAGMA user_version = " + std::to_string(sqliteSchemaVersion));
        connection.Execute("COMMIT");
    } catch (const TStoreError&) {
        connection.Execute("ROLLBACK");
        throw;
    }
}

}  // namespace NFLEET
