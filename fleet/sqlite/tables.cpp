#include "fleet/sqlite/tables.h"

namespace NFLEET {

TTables::TTables(TConnection& connection)
    : words(connection),
      machines(connection, "SELECT id FROM machine WHERE digest = ?"),
      resources(connection,
                "SELECT resource FROM recent_resource_key WHERE digest = ?1"
                " UNION ALL SELECT resource FROM resource_key WHERE digest = ?1"),
      versions(connection, "SELECT id FROM version WHERE digest = ?"),
      forms(connection, "SELECT id FROM form WHERE digest = ?"),
      layouts(connection, "SELECT id FROM layout WHERE digest = ?"),
      insertResource(connection.Prepare("INSERT INTO resource(digest) VALUES(?)")),
      insertResourceKey(connection.Prepare("INSERT INTO recent_resource_key(digest, resource) VALUES(?, ?)")),
      insertVersion(
          connection.Prepare("INSERT INTO version(digest, type, list, identifier) VALUES(?, ?, ?, ?)")),
      insertProperty(
          connection.Prepare("INSERT INTO property(version, position, element, name, type, shape, value)"
                             " VALUES(?, ?, ?, ?, ?, ?, ?)")),
      insertForm(connection.Prepare("INSERT INTO form(digest, body) VALUES(?, ?)")),
      insertLayout(
          connection.Prepare("INSERT INTO layout(digest, form, resources, usual) VALUES(?, ?, ?, ?)")),
      writePresence(connection.Prepare(
          "INSERT OR REPLACE INTO presence(machine, scope, type, resource, since, until, version, identity)"
          " VALUES(?, ?, ?, ?, ?, ?, ?, ?)")),
      removePresence(connection.Prepare("DELETE FROM presence WHERE machine = ? AND scope = ? AND type = ?"
                                        " AND resource = ? AND since = ?")),
      insertPart(connection.Prepare(
          "INSERT OR IGNORE INTO recent_part(search, machine, scope, type, resource) VALUES(?, ?, ?, ?, ?)")),
      writeMachine(connection.Prepare(
          "INSERT INTO machine(digest, key, rule, name, vendor, model, serial, uuid, first, last, "
          "uses_snapshot)"
          " VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?) ON CONFLICT(digest) DO UPDATE SET key = excluded.key, "
          "rule = excluded.rule,"
          " name = excluded.name, vendor = excluded.vendor, model = excluded.model, serial = excluded.serial,"
          " uuid = excluded.uuid, first = excluded.first, last = excluded.last,"
          " uses_snapshot = excluded.uses_snapshot")),
      insertMachineSearch(
          connection.Prepare("INSERT OR IGNORE INTO machine_search(search, machine) VALUES(?, ?)")),
      writeHead(connection.Prepare(
          "INSERT OR REPLACE INTO head(machine, scope, time, digest, content, name, vendor,"
          " model, serial, uuid) VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?)")),
      writeInventory(connection.Prepare("INSERT INTO inventory(machine, scope, time, digest, source, layout, "
                                        "volatile) VALUES(?, ?, ?, ?, ?, ?, ?)"
                                        " ON CONFLICT(machine, scope, time) DO UPDATE SET digest = "
                                        "excluded.digest, source = excluded.source,"
                                        " layout = excluded.layout, volatile = excluded.volatile")),
      writeAlias(connection.Prepare("INSERT OR REPLACE INTO alias(digest, key, target) VALUES(?, ?, ?)")),
      writeSource(
          connection.Prepare("INSERT OR REPLACE INTO source(place, state, inventories) VALUES(?, ?, ?)")),
      removeInventory(
          connection.Prepare("DELETE FROM inventory WHERE machine = ? AND scope = ? AND time = ?")),
      removeHead(connection.Prepare("DELETE FROM head WHERE machine = ? AND scope = ?")),
      findSource(connection.Prepare("SELECT state, inventories FROM source WHERE place = ?")),
      findAlias(connection.Prepare("SELECT key, target FROM alias WHERE digest = ?")),
      readAliasesOf(connection.Prepare("SELECT digest, key FROM alias WHERE target = ? ORDER BY digest")),
      readMachine(
          connection.Prepare("SELECT digest, key, rule, name, vendor, model, serial, uuid, first, last,"
                             " uses_snapshot FROM machine WHERE id = ?")),
      findNamedMachines(
          connection.Prepare("SELECT digest, key, rule, name, vendor, model, serial, uuid, "
                             "first, last, uses_snapshot FROM machine"
                             " WHERE id IN (SELECT machine FROM machine_search WHERE search = ?1"
                             " UNION SELECT id FROM machine WHERE digest BETWEEN ?2 AND ?3)")),
      readHeads(connection.Prepare(
          "SELECT scope, time, digest, content, name, vendor, model, serial, uuid FROM head"
          " WHERE machine = ?")),
      readInventories(connection.Prepare(
          "SELECT time, digest, source FROM inventory WHERE machine = ? AND scope = ? ORDER BY time")),
      findInventory(connection.Prepare(
          "SELECT digest, source FROM inventory WHERE machine = ? AND scope = ? AND time = ?")),
      readPresences(connection.Prepare(
          "SELECT p.type, r.digest, p.since, p.until, v.digest, p.identity FROM presence AS p"
          " CROSS JOIN resource AS r ON r.id = p.resource CROSS JOIN version AS v ON v.id = p.version"
          " WHERE p.machine = ? AND p.scope = ? AND p.since <= ? AND (p.until IS NULL OR p.until > ?)")),
      readProperties(connection.Prepare("SELECT position, element, name, type, shape, value FROM property"
                                        " WHERE version = ? ORDER BY position, element")),
      readVersion(connection.Prepare("SELECT type, list, identifier FROM version WHERE id = ?")),
      readForm(connection.Prepare("SELECT body FROM form WHERE id = ?")),
      readLayout(connection.Prepare("SELECT f.body, l.resources, l.usual FROM layout AS l"
                                    " CROSS JOIN form AS f ON f.id = l.form WHERE l.id = ?")) {}

void TTables::Forget() {
    words.Forget();
    machines.Forget();
    resources.Forget();
    versions.Forget();
    forms.Forget();
    layouts.Forget();
}

}  // namespace NFLEET
