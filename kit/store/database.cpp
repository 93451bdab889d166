// The store's SQLite database. One file in WAL mode, so that readers never wait for the one
// writer; every process and thread has its own connection, waits for the write lock up to a busy
// timeout, and commits with a full sync, so a write that returned success survives a crash.
#include "kit/store/database.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <string>
#include <vector>

#include "kit/directories.h"
#include "kit/store/network_apply.h"

namespace tessera::kit {
namespace {

constexpr int kBusyTimeoutMs = 10000;
constexpr int kSchemaVersion = 1;

constexpr const char kSchema[] = R"sql(
CREATE TABLE IF NOT EXISTS config(
  key TEXT PRIMARY KEY, type INTEGER NOT NULL, value) WITHOUT ROWID;
CREATE TABLE IF NOT EXISTS sessions(
  id INTEGER PRIMARY KEY, parent INTEGER NOT NULL, word INTEGER NOT NULL,
  type TEXT NOT NULL, user TEXT NOT NULL, address TEXT NOT NULL);
CREATE INDEX IF NOT EXISTS sessions_by_parent ON sessions(parent);
CREATE TABLE IF NOT EXISTS users(
  name TEXT PRIMARY KEY, privilege INTEGER NOT NULL) WITHOUT ROWID;
CREATE TABLE IF NOT EXISTS sensors(
  position INTEGER PRIMARY KEY, sensor INTEGER NOT NULL, kind INTEGER NOT NULL,
  name TEXT NOT NULL);
CREATE TABLE IF NOT EXISTS network(
  id INTEGER PRIMARY KEY CHECK (id = 1), record BLOB NOT NULL);
CREATE TABLE IF NOT EXISTS mapped(
  space INTEGER NOT NULL, name TEXT NOT NULL, value TEXT NOT NULL,
  PRIMARY KEY (space, name)) WITHOUT ROWID;
CREATE TABLE IF NOT EXISTS events(
  sequence INTEGER PRIMARY KEY AUTOINCREMENT, time INTEGER NOT NULL, name TEXT NOT NULL,
  arg1 INTEGER NOT NULL, arg2 INTEGER NOT NULL);
)sql";

std::atomic<tessera_store_log_function> log_function{nullptr};

// The database file this process opened last, by path and identity: a different file at the same
// path means that it was removed or replaced meanwhile, which is worth a line in the log.
std::mutex opened_mutex;
std::string opened_path;
dev_t opened_device = 0;
ino_t opened_inode = 0;

void note_file(const std::string &path) {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) {
    return;
  }
  const std::lock_guard lock(opened_mutex);
  if (opened_path == path && (opened_device != info.st_dev || opened_inode != info.st_ino)) {
    log_message(path + " was removed or replaced while in use: now using the file at the path");
  }
  opened_path = path;
  opened_device = info.st_dev;
  opened_inode = info.st_ino;
}

void complain(const char *what, const std::string &path, const char *why) {
  log_message(std::string(what) + " " + path + ": " + why);
}

std::string home_directory() {
  if (const char *home = std::getenv("HOME"); home != nullptr && home[0] == '/') {
    return home;
  }
  const passwd *entry = ::getpwuid(::getuid());
  return entry != nullptr && entry->pw_dir != nullptr ? entry->pw_dir : "";
}

// The thread's connection, with the path and process it was opened for. A connection inherited
// through fork is left alone: neither used nor closed, as SQLite requires.
struct ThreadConnection {
  std::unique_ptr<Database> db;
  std::string path;
  pid_t pid = 0;

  void abandon() {
    // Kept reachable on purpose, so leak checkers don't count it.
    static auto *abandoned = new std::vector<Database *>;
    abandoned->push_back(db.release());
  }
  ~ThreadConnection() {
    if (db && pid != ::getpid()) {
      abandon();
    }
  }
};
thread_local ThreadConnection thread_connection;

}  // namespace

void log_message(const std::string &line) {
  if (const tessera_store_log_function log = log_function.load()) {
    log(line.c_str());
  } else {
    std::fprintf(stderr, "tessera-store: %s\n", line.c_str());
  }
}

void set_log(tessera_store_log_function log) {
  log_function.store(log);
}

std::string store_path() {
  if (const char *path = std::getenv("TESSERA_STORE_DB"); path != nullptr && path[0] != '\0') {
    return path;
  }
  if (const char *state = std::getenv("XDG_STATE_HOME"); state != nullptr && state[0] == '/') {
    return std::string(state) + "/tessera/store.db";
  }
  const std::string home = home_directory();
  return home.empty() ? "" : home + "/.local/state/tessera/store.db";
}

Database *Database::current() {
  const std::string path = store_path();
  ThreadConnection &connection = thread_connection;
  if (connection.db && connection.pid != ::getpid()) {
    connection.abandon();
  }
  // A database removed or replaced under an open connection would take this thread's writes
  // where nobody else sees them: open the one at the path instead. Not inside a transaction
  // that the caller opened, which would be lost.
  if (connection.db && connection.path == path &&
      sqlite3_get_autocommit(connection.db->handle()) != 0 && connection.db->moved()) {
    connection.db.reset();
  }
  if (!connection.db || connection.path != path) {
    connection.db = path.empty() ? nullptr : open(path);
    connection.path = path;
    connection.pid = ::getpid();
  }
  return connection.db.get();
}

std::unique_ptr<Database> Database::open(const std::string &path) {
  if (!make_parent_directories(path)) {
    complain("cannot create the directory of", path, std::strerror(errno));
    return nullptr;
  }
  sqlite3 *db = nullptr;
  const int rc = sqlite3_open_v2(
      path.c_str(), &db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
  std::unique_ptr<Database> database(db != nullptr ? new Database(db) : nullptr);
  if (rc != SQLITE_OK) {
    complain("cannot open", path, db != nullptr ? sqlite3_errmsg(db) : sqlite3_errstr(rc));
    return nullptr;
  }
  if (!database->set_up()) {
    complain("cannot set up", path, sqlite3_errmsg(db));
    return nullptr;
  }
  note_file(path);
  return database;
}

bool Database::set_up() {
  // Failures here are open's to report, in one line; a busy moment on the way is none.
  last_read_error_ = last_write_error_ = -1;
  sqlite3_busy_timeout(db_, kBusyTimeoutMs);
  sqlite3_extended_result_codes(db_, 1);
  // A tool that was the last to close the database would otherwise copy the whole log back into
  // it on its way out; the writers' own checkpoints do that as the log grows.
  sqlite3_db_config(db_, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
  // Switching to WAL needs a moment of exclusive access, which a concurrent first opener of a new
  // file may hold; the busy handler doesn't cover that, so wait here.
  for (int attempt = 0;; ++attempt) {
    Statement wal = prepare("PRAGMA journal_mode=WAL");
    const bool answered = wal.row();
    if (answered && wal.text(0) == "wal") {
      break;
    }
    const int why = sqlite3_errcode(db_) & 0xff;  // the primary code
    if (attempt == 500 || (!answered && why != SQLITE_BUSY && why != SQLITE_LOCKED)) {
      return false;  // not a database, unreadable, ...: no waiting mends that
    }
    const timespec pause{0, 10'000'000};
    ::nanosleep(&pause, nullptr);
  }
  if (!exec("PRAGMA synchronous=FULL")) {
    return false;
  }
  {
    Statement version = prepare("PRAGMA user_version");
    if (version.row() && version.integer(0) == kSchemaVersion) {
      last_read_error_ = last_write_error_ = SQLITE_OK;
      return true;
    }
  }
  Transaction transaction(*this);
  if (!transaction.ok() || !exec(kSchema)) {
    return false;
  }
  const NetworkRecord fresh = fresh_network_record();
  Statement seed = prepare("INSERT OR IGNORE INTO network(id, record) VALUES (1, ?)");
  seed.bind(bytes_of(fresh));
  const bool done = seed.run() && exec("PRAGMA user_version=1") && transaction.commit();
  last_read_error_ = last_write_error_ = SQLITE_OK;
  return done;
}

void Database::failed(bool writing) {
  const int code = sqlite3_extended_errcode(db_);
  int &last = writing ? last_write_error_ : last_read_error_;
  if (last == -1 || code == last) {
    return;
  }
  last = code;
  log_message(std::string(sqlite3_db_filename(db_, "main")) + ": " + sqlite3_errmsg(db_) +
              (writing ? ": the change was not made" : ": nothing was read"));
}

bool Database::moved() const {
  int moved = 0;
  return sqlite3_file_control(db_, "main", SQLITE_FCNTL_HAS_MOVED, &moved) == SQLITE_OK &&
         moved != 0;
}

Database::~Database() {
  for (auto &[sql, stmt] : statements_) {
    sqlite3_finalize(stmt);
  }
  sqlite3_close_v2(db_);
}

Statement Database::prepare(const char *sql) {
  auto [it, added] = statements_.try_emplace(sql, nullptr);
  if (added && sqlite3_prepare_v3(db_, sql, -1, SQLITE_PREPARE_PERSISTENT, &it->second, nullptr) !=
                   SQLITE_OK) {
    statements_.erase(it);
    failed(std::strncmp(sql, "SELECT", 6) != 0 && std::strncmp(sql, "PRAGMA", 6) != 0);
    return {*this, nullptr};
  }
  return {*this, it->second};
}

bool Database::exec(const char *sql) {
  if (sqlite3_exec(db_, sql, nullptr, nullptr, nullptr) == SQLITE_OK) {
    return true;
  }
  failed(true);
  return false;
}

Statement::~Statement() {
  if (stmt_ != nullptr) {
    sqlite3_reset(stmt_);
    sqlite3_clear_bindings(stmt_);
  }
}

Statement &Statement::bind(int64_t value) {
  ok_ = ok_ && sqlite3_bind_int64(stmt_, next_++, value) == SQLITE_OK;
  return *this;
}

Statement &Statement::bind(std::string_view text) {
  ok_ = ok_ && sqlite3_bind_text(stmt_, next_++, text.data(), static_cast<int>(text.size()),
                                 SQLITE_TRANSIENT) == SQLITE_OK;
  return *this;
}

Statement &Statement::bind(std::span<const uint8_t> blob) {
  ok_ = ok_ && sqlite3_bind_blob(stmt_, next_++, blob.data(), static_cast<int>(blob.size()),
                                 SQLITE_TRANSIENT) == SQLITE_OK;
  return *this;
}

bool Statement::row() {
  if (!ok_) {
    return false;
  }
  const int rc = sqlite3_step(stmt_);
  ok_ = rc == SQLITE_ROW || rc == SQLITE_DONE;
  const bool writing = sqlite3_stmt_readonly(stmt_) == 0;
  if (!ok_) {
    db_.failed(writing);
  } else if (writing && sqlite3_get_autocommit(db_.handle()) != 0) {
    db_.written();
  }
  return rc == SQLITE_ROW;
}

bool Statement::run() {
  while (row()) {
  }
  return ok_;
}

std::string_view Statement::text(int column) const {
  const auto *data = reinterpret_cast<const char *>(sqlite3_column_text(stmt_, column));
  return data == nullptr ? std::string_view()
                         : std::string_view(
                               data, static_cast<std::size_t>(sqlite3_column_bytes(stmt_, column)));
}

std::span<const uint8_t> Statement::blob(int column) const {
  const auto *data = static_cast<const uint8_t *>(sqlite3_column_blob(stmt_, column));
  return data == nullptr
             ? std::span<const uint8_t>()
             : std::span(data, static_cast<std::size_t>(sqlite3_column_bytes(stmt_, column)));
}

Transaction::Transaction(Database &db)
    : db_(db),
      nested_(sqlite3_get_autocommit(db.handle()) == 0),
      open_(db.exec(nested_ ? "SAVEPOINT step" : "BEGIN IMMEDIATE")) {}

Transaction::~Transaction() {
  if (open_) {
    roll_back();
  }
}

bool Transaction::commit() {
  if (!open_) {
    return false;
  }
  open_ = false;
  if (db_.exec(nested_ ? "RELEASE step" : "COMMIT")) {
    if (!nested_) {
      db_.written();
    }
    return true;
  }
  roll_back();
  return false;
}

// Quietly: after a failed commit SQLite may have rolled back already, and the failure that
// matters has been logged.
void Transaction::roll_back() {
  sqlite3_exec(db_.handle(), nested_ ? "ROLLBACK TO step; RELEASE step" : "ROLLBACK", nullptr,
               nullptr, nullptr);
}

}  // namespace tessera::kit
