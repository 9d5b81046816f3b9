// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

// SQLite: a table with a column a key.

#include <sqlite3.h>

#include "bench/peers/Peer.h"

namespace tallbook::peers {
namespace {

sqlite3* opened(int flags) {
  sqlite3* database = nullptr;
  if (sqlite3_open_v2("accounts.db", &database, flags, nullptr) != SQLITE_OK) fail("cannot open");
  return database;
}

void execute(sqlite3* database, const char* text) {
  if (sqlite3_exec(database, text, nullptr, nullptr, nullptr) != SQLITE_OK) {
    fail(sqlite3_errmsg(database));
  }
}

sqlite3_stmt* prepared(sqlite3* database, const char* text) {
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare_v2(database, text, -1, &statement, nullptr) != SQLITE_OK) {
    fail(sqlite3_errmsg(database));
  }
  return statement;
}

void make() {
  sqlite3* database = opened(SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
  execute(database, "PRAGMA journal_mode = " JOURNAL);
  execute(database,
          "CREATE TABLE accounts (identifier TEXT PRIMARY KEY, type TEXT, class TEXT, "
          "displayName TEXT, dataclasses TEXT, username TEXT, hostname TEXT, port INTEGER, "
          "ssl INTEGER, created INTEGER) WITHOUT ROWID; BEGIN");
  sqlite3_stmt* insert =
      prepared(database, "INSERT INTO accounts VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
  forEachRecord([&](const Record& record) {
    sqlite3_bind_text(insert, 1, record.identifier, -1, SQLITE_TRANSIENT);
    int column = 2;
    for (const char* value : record.values) {
      sqlite3_bind_text(insert, column++, value, -1, SQLITE_TRANSIENT);
    }
    if (sqlite3_step(insert) != SQLITE_DONE) fail(sqlite3_errmsg(database));
    sqlite3_reset(insert);
  });
  sqlite3_finalize(insert);
  execute(database, "COMMIT");
  sqlite3_close(database);
}

std::string_view text(sqlite3_stmt* row, int column) {
  const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(row, column));
  return {bytes, static_cast<std::size_t>(sqlite3_column_bytes(row, column))};
}

void read(Checksum& checksum) {
  sqlite3* database = opened(SQLITE_OPEN_READONLY);
  sqlite3_stmt* row = prepared(database, "SELECT * FROM accounts");
  while (sqlite3_step(row) == SQLITE_ROW) {
    checksum.add(kIdentifier, text(row, 0));
    int column = 1;
    for (const Key& key : kKeys) {
      if (key.kind == Kind::Text || key.kind == Kind::List) {
        checksum.add(key.name, text(row, column));
      } else {
        checksum.add(key.name, sqlite3_column_int64(row, column));
      }
      ++column;
    }
  }
}

void change(const Change& change) {
  sqlite3* database = opened(SQLITE_OPEN_READWRITE);
  execute(database, "PRAGMA synchronous = " SYNCHRONOUS);
  sqlite3_stmt* update = prepared(database, "UPDATE accounts SET port = ? WHERE identifier = ?");
  sqlite3_bind_int(update, 1, change.port);
  sqlite3_bind_text(update, 2, change.identifier, -1, SQLITE_STATIC);
  if (sqlite3_step(update) != SQLITE_DONE || sqlite3_changes(database) != 1) fail("cannot save");
}

}  // namespace
}  // namespace tallbook::peers

int main(int count, char** words) {
  using namespace tallbook::peers;
  return run({PEER_VERSION, make, read, change}, count, words);
}
