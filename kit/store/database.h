// The store's SQLite database: where it lives, its schema, and one connection per thread.
#pragma once

#include <sqlite3.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>

#include "kit/store/tessera_store.h"

namespace tessera::kit {

// $TESSERA_STORE_DB, else $XDG_STATE_HOME/tessera/store.db, else ~/.local/state/tessera/store.db.
// Empty when there is no home directory to put it in.
std::string store_path();

// One line to the store's log: the function that tessera_store_set_log gave, or standard error.
void log_message(const std::string &line);
void set_log(tessera_store_log_function log);

// A text argument cut to `limit` characters, never read past them.
inline std::string_view cut(const char *text, std::size_t limit) noexcept {
  return {text, strnlen(text, limit)};
}

// Copies `text` into `out` of `size` bytes, cut to fit and terminated. False when nothing fits.
inline bool put_text(std::string_view text, char *out, std::size_t size) noexcept {
  if (out == nullptr || size == 0) {
    return false;
  }
  const std::size_t length = std::min(text.size(), size - 1);
  std::memcpy(out, text.data(), length);
  out[length] = '\0';
  return true;
}

// A key or name: not null, not empty, at most `limit` characters. Longer ones are refused
// rather than cut, since a cut key would name another value.
inline bool valid_key(const char *key, std::size_t limit) noexcept {
  return key != nullptr && key[0] != '\0' && strnlen(key, limit + 1) <= limit;
}

class Statement;

// One connection. It belongs to one thread: SQLite connections are not shared between threads
// here, and never across fork.
class Database {
 public:
  // The calling thread's connection to store_path(), opened (and the schema created) on first
  // use, and again when the path changes or after fork. Null when the database can't be opened.
  static Database *current();
  // A connection of its own, for a caller that wants one outside the thread's.
  static std::unique_ptr<Database> open(const std::string &path);

  ~Database();
  Database(const Database &) = delete;
  Database &operator=(const Database &) = delete;

  // A prepared statement for `sql`, a string literal: prepared once per connection.
  Statement prepare(const char *sql);
  bool exec(const char *sql);
  sqlite3 *handle() const { return db_; }

  // Logs a failed read or write with the database's path and SQLite's reason, once for each new
  // reason, so that a client that keeps trying doesn't flood the log.
  void failed(bool writing);
  // A write that reached the file: the next failure is logged again.
  void written() { last_write_error_ = SQLITE_OK; }
  // True when the file at the path is no longer the one this connection has open (removed or
  // replaced).
  bool moved() const;

 private:
  explicit Database(sqlite3 *db) : db_(db) {}
  bool set_up();

  sqlite3 *db_;
  std::unordered_map<const char *, sqlite3_stmt *> statements_;
  int last_read_error_ = SQLITE_OK;
  int last_write_error_ = SQLITE_OK;
};

// A use of a cached statement: binds in order, steps, reads columns, and resets on destruction.
// Any failure sticks in ok(); a failed prepare gives a statement that is never ok.
class Statement {
 public:
  Statement(Database &db, sqlite3_stmt *stmt) : db_(db), stmt_(stmt), ok_(stmt != nullptr) {}
  ~Statement();
  Statement(const Statement &) = delete;
  Statement &operator=(const Statement &) = delete;

  Statement &bind(int64_t value);
  Statement &bind(std::string_view text);
  Statement &bind(std::span<const uint8_t> blob);

  // Steps once: true when a row is there to read.
  bool row();
  // Runs to the end: true when it completed.
  bool run();
  // Rows changed by the last run.
  int changes() const { return sqlite3_changes(db_.handle()); }

  int64_t integer(int column) const { return sqlite3_column_int64(stmt_, column); }
  std::string_view text(int column) const;
  std::span<const uint8_t> blob(int column) const;
  bool ok() const { return ok_; }

 private:
  Database &db_;
  sqlite3_stmt *stmt_;
  int next_ = 1;
  bool ok_;
};

// BEGIN IMMEDIATE: the write lock is taken up front, so a read-modify-write never has to be
// retried half-way. Inside a transaction that the caller opened (tessera_store_begin), a
// savepoint instead. Rolled back unless committed.
class Transaction {
 public:
  explicit Transaction(Database &db);
  ~Transaction();
  Transaction(const Transaction &) = delete;
  Transaction &operator=(const Transaction &) = delete;

  bool ok() const { return open_; }
  bool commit();

 private:
  void roll_back();

  Database &db_;
  bool nested_;
  bool open_;
};

}  // namespace tessera::kit
