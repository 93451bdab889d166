// Administration of the workstation store: seeding and inspection for the kit's daemons and
// tools (tessera_store.h).
#include <algorithm>
#include <cstring>

#include "kit/number.h"
#include "kit/store/database.h"
#include "kit/store/operations.h"
#include "kit/store/tessera_store.h"

using namespace tessera::kit;

namespace {

static_assert(sizeof(NetworkRecord) == TESSERA_STORE_NETWORK_SIZE);

int result_of(bool done) {
  return done ? TESSERA_STORE_OK : TESSERA_STORE_ERROR;
}

// Runs `body` on the calling thread's connection; ERROR when there is none.
template <typename Body>
int with_database(Body body) {
  Database *db = Database::current();
  return db != nullptr ? body(*db) : TESSERA_STORE_ERROR;
}

// A statement that changes at most one row: OK, NOT_FOUND when it changed none, or ERROR.
int changed_one(Statement &statement) {
  if (!statement.run()) {
    return TESSERA_STORE_ERROR;
  }
  return statement.changes() > 0 ? TESSERA_STORE_OK : TESSERA_STORE_NOT_FOUND;
}

// Deletes the row of `key` with `sql`, a DELETE of one key: OK, NOT_FOUND when there was none, or
// ERROR.
int remove_keyed(const char *sql, const char *key) {
  if (!valid_key(key, TESSERA_STORE_KEY_MAX)) {
    return TESSERA_STORE_ERROR;
  }
  return with_database([&](Database &db) {
    Statement remove = db.prepare(sql);
    remove.bind(key);
    return changed_one(remove);
  });
}

bool valid_space(int space) {
  return space == TESSERA_STORE_MAPPED || space == TESSERA_STORE_DCSGEN;
}

// True when `parent` may hold `id`: 0, or an existing session that isn't `id` or one of its
// descendants (which would close a loop).
bool valid_parent(Database &db, uint32_t id, uint32_t parent) {
  if (parent == 0) {
    return true;
  }
  Statement query = db.prepare(
      "WITH RECURSIVE below(id) AS (SELECT ?1 UNION SELECT s.id FROM sessions s JOIN below b "
      "ON s.parent = b.id) SELECT (SELECT count(*) FROM sessions WHERE id = ?2), "
      "(SELECT count(*) FROM below WHERE id = ?2)");
  return query.bind(id).bind(parent).row() && query.integer(0) == 1 && query.integer(1) == 0;
}

}  // namespace

extern "C" {

void tessera_store_set_log(tessera_store_log_function log) {
  set_log(log);
}

int tessera_store_path(char *path, size_t size) {
  const std::string where = store_path();
  return !where.empty() && where.size() < size && put_text(where, path, size) ? TESSERA_STORE_OK
                                                                              : TESSERA_STORE_ERROR;
}

int tessera_store_check(void) {
  const std::string path = store_path();
  const auto db = path.empty() ? nullptr : Database::open(path);
  if (db == nullptr) {
    return TESSERA_STORE_ERROR;
  }
  Statement check = db->prepare("PRAGMA quick_check");
  return result_of(check.row() && check.text(0) == "ok");
}

int tessera_store_begin(void) {
  return with_database([](Database &db) {
    return result_of(sqlite3_get_autocommit(db.handle()) != 0 && db.exec("BEGIN IMMEDIATE"));
  });
}

int tessera_store_commit(void) {
  return with_database([](Database &db) {
    return result_of(sqlite3_get_autocommit(db.handle()) == 0 && db.exec("COMMIT"));
  });
}

int tessera_store_rollback(void) {
  return with_database([](Database &db) {
    return result_of(sqlite3_get_autocommit(db.handle()) == 0 && db.exec("ROLLBACK"));
  });
}

int tessera_store_reset(void) {
  return with_database([](Database &db) {
    Transaction transaction(db);
    return result_of(transaction.ok() &&
                     db.exec("DELETE FROM config; DELETE FROM sessions; DELETE FROM users; "
                             "DELETE FROM sensors; DELETE FROM mapped; DELETE FROM events;") &&
                     write_network(db, fresh_network_record()) && transaction.commit());
  });
}

int tessera_store_set_value(const char *key, int type, const char *text) {
  if (!valid_key(key, TESSERA_STORE_KEY_MAX) || text == nullptr ||
      (type != TESSERA_STORE_BOOL && type != TESSERA_STORE_INT && type != TESSERA_STORE_TEXT)) {
    return TESSERA_STORE_ERROR;
  }
  StoredValue value{.type = type};
  if (type == TESSERA_STORE_TEXT) {
    value.text = cut(text, TESSERA_STORE_TEXT_MAX);
  } else {
    const int32_t number = decimal_int32(text);
    value.number = type == TESSERA_STORE_BOOL ? (number != 0 ? 1 : 0) : number;
  }
  return with_database([&](Database &db) { return result_of(write_value(db, key, value)); });
}

int tessera_store_get_value(const char *key, int *type, char *text, size_t size) {
  if (!valid_key(key, TESSERA_STORE_KEY_MAX) || text == nullptr || size == 0) {
    return TESSERA_STORE_ERROR;
  }
  return with_database([&](Database &db) {
    const auto value = read_value(db, key);
    if (!value) {
      return TESSERA_STORE_NOT_FOUND;
    }
    if (type != nullptr) {
      *type = value->type;
    }
    const std::string shown =
        value->type == TESSERA_STORE_TEXT ? value->text : std::to_string(value->number);
    put_text(shown, text, size);
    return TESSERA_STORE_OK;
  });
}

int tessera_store_remove_value(const char *key) {
  return remove_keyed("DELETE FROM config WHERE key = ?", key);
}

int tessera_store_add_session(const tessera_store_session *session) {
  if (session == nullptr) {
    return TESSERA_STORE_ERROR;
  }
  return with_database([&](Database &db) {
    Transaction transaction(db);
    if (!transaction.ok() || !valid_parent(db, session->id, session->parent)) {
      return TESSERA_STORE_ERROR;
    }
    Statement insert = db.prepare(
        "REPLACE INTO sessions(id, parent, word, type, user, address) VALUES (?, ?, ?, ?, ?, ?)");
    insert.bind(session->id)
        .bind(session->parent)
        .bind(session->word)
        .bind(cut(session->type, sizeof session->type - 1))
        .bind(cut(session->user, sizeof session->user - 1))
        .bind(cut(session->address, sizeof session->address - 1));
    return result_of(insert.run() && transaction.commit());
  });
}

int tessera_store_get_session(uint32_t id, tessera_store_session *session) {
  if (session == nullptr) {
    return TESSERA_STORE_ERROR;
  }
  return with_database([&](Database &db) {
    int result = TESSERA_STORE_ERROR;
    if (const auto found = read_session(db, id, &result)) {
      *session = *found;
    }
    return result;
  });
}

int tessera_store_list_sessions(uint32_t *ids, size_t capacity, size_t *count) {
  if (count == nullptr || (ids == nullptr && capacity > 0)) {
    return TESSERA_STORE_ERROR;
  }
  return with_database([&](Database &db) {
    const auto all = sessions_of_type(db, "");
    if (!all) {
      return TESSERA_STORE_ERROR;
    }
    std::copy_n(all->begin(), std::min(capacity, all->size()), ids);
    *count = all->size();
    return TESSERA_STORE_OK;
  });
}

int tessera_store_close_session(uint32_t id, uint32_t orb_close) {
  return with_database([&](Database &db) {
    Transaction transaction(db);
    Statement close = db.prepare(
        "WITH RECURSIVE doomed(id) AS (SELECT ?1 UNION SELECT s.id FROM sessions s JOIN doomed d "
        "ON s.parent = d.id) DELETE FROM sessions WHERE id IN doomed");
    close.bind(id);
    const int result = transaction.ok() ? changed_one(close) : TESSERA_STORE_ERROR;
    if (result != TESSERA_STORE_OK) {
      return result;
    }
    return result_of(log_event(db, "session_closed", static_cast<int32_t>(id),
                               static_cast<int32_t>(orb_close)) &&
                     transaction.commit());
  });
}

int tessera_store_set_user(const char *name, uint32_t privilege) {
  if (!valid_key(name, TESSERA_STORE_KEY_MAX)) {
    return TESSERA_STORE_ERROR;
  }
  return with_database([&](Database &db) {
    Statement update = db.prepare("REPLACE INTO users(name, privilege) VALUES (?, ?)");
    return result_of(update.bind(name).bind(privilege).run());
  });
}

int tessera_store_get_user(const char *name, uint32_t *privilege) {
  if (!valid_key(name, TESSERA_STORE_KEY_MAX) || privilege == nullptr) {
    return TESSERA_STORE_ERROR;
  }
  return with_database([&](Database &db) {
    const auto found = read_privilege(db, name);
    if (found) {
      *privilege = *found;
    }
    return found ? TESSERA_STORE_OK : TESSERA_STORE_NOT_FOUND;
  });
}

int tessera_store_remove_user(const char *name) {
  return remove_keyed("DELETE FROM users WHERE name = ?", name);
}

int tessera_store_add_sensor(uint8_t index, char kind, const char *name) {
  if (name == nullptr) {
    return TESSERA_STORE_ERROR;
  }
  return with_database([&](Database &db) {
    Transaction transaction(db);
    Statement count = db.prepare("SELECT count(*) FROM sensors");
    if (!transaction.ok() || !count.row() ||
        count.integer(0) >= static_cast<int64_t>(tessera::wire::kMaxSensorRecords)) {
      return TESSERA_STORE_ERROR;
    }
    Statement insert = db.prepare("INSERT INTO sensors(sensor, kind, name) VALUES (?, ?, ?)");
    insert.bind(index).bind(static_cast<uint8_t>(kind)).bind(cut(name, kSensorNameMax));
    return result_of(insert.run() && transaction.commit());
  });
}

int tessera_store_clear_sensors(void) {
  return with_database([](Database &db) { return result_of(db.exec("DELETE FROM sensors")); });
}

int tessera_store_set_network(const void *record, size_t size) {
  if (record == nullptr || size != sizeof(NetworkRecord)) {
    return TESSERA_STORE_ERROR;
  }
  NetworkRecord copy;
  std::memcpy(&copy, record, sizeof copy);
  terminate_texts(copy);
  return with_database([&](Database &db) { return result_of(write_network(db, copy)); });
}

int tessera_store_get_network(void *record, size_t size) {
  if (record == nullptr || size < sizeof(NetworkRecord)) {
    return TESSERA_STORE_ERROR;
  }
  return with_database([&](Database &db) {
    const auto stored = read_network(db);
    if (stored) {
      std::memcpy(record, &*stored, sizeof *stored);
    }
    return result_of(stored.has_value());
  });
}

int tessera_store_map_property(int space, const char *name, const char *value) {
  if (!valid_space(space) || !valid_key(name, TESSERA_STORE_KEY_MAX) || value == nullptr) {
    return TESSERA_STORE_ERROR;
  }
  return with_database([&](Database &db) {
    Statement update = db.prepare("REPLACE INTO mapped(space, name, value) VALUES (?, ?, ?)");
    return result_of(
        update.bind(space).bind(name).bind(cut(value, TESSERA_STORE_MAPPED_MAX)).run());
  });
}

int tessera_store_set_mapped(int space, const char *name, const char *value) {
  if (!valid_space(space) || !valid_key(name, TESSERA_STORE_KEY_MAX) || value == nullptr) {
    return TESSERA_STORE_ERROR;
  }
  return with_database([&](Database &db) {
    Statement update = db.prepare("UPDATE mapped SET value = ? WHERE space = ? AND name = ?");
    update.bind(cut(value, TESSERA_STORE_MAPPED_MAX)).bind(space).bind(name);
    return changed_one(update);
  });
}

int tessera_store_get_mapped(int space, const char *name, char *value, size_t size) {
  if (!valid_space(space) || !valid_key(name, TESSERA_STORE_KEY_MAX) || value == nullptr ||
      size == 0) {
    return TESSERA_STORE_ERROR;
  }
  return with_database([&](Database &db) {
    Statement query = db.prepare("SELECT value FROM mapped WHERE space = ? AND name = ?");
    if (!query.bind(space).bind(name).row()) {
      return query.ok() ? TESSERA_STORE_NOT_FOUND : TESSERA_STORE_ERROR;
    }
    put_text(query.text(0), value, size);
    return TESSERA_STORE_OK;
  });
}

int tessera_store_unmap_property(int space, const char *name) {
  if (!valid_space(space) || !valid_key(name, TESSERA_STORE_KEY_MAX)) {
    return TESSERA_STORE_ERROR;
  }
  return with_database([&](Database &db) {
    Statement remove = db.prepare("DELETE FROM mapped WHERE space = ? AND name = ?");
    remove.bind(space).bind(name);
    return changed_one(remove);
  });
}

int tessera_store_read_events(int64_t after, tessera_store_event *events, size_t capacity,
                              size_t *count) {
  if (count == nullptr || (events == nullptr && capacity > 0)) {
    return TESSERA_STORE_ERROR;
  }
  return with_database([&](Database &db) {
    Statement query = db.prepare(
        "SELECT sequence, time, arg1, arg2, name FROM events WHERE sequence > ? "
        "ORDER BY sequence LIMIT ?");
    query.bind(after).bind(static_cast<int64_t>(std::min<size_t>(capacity, INT32_MAX)));
    std::size_t read = 0;
    while (query.row()) {
      tessera_store_event &event = events[read++];
      event = {.sequence = query.integer(0),
               .time = query.integer(1),
               .arg1 = static_cast<int32_t>(query.integer(2)),
               .arg2 = static_cast<int32_t>(query.integer(3))};
      put_text(query.text(4), event.name, sizeof event.name);
    }
    *count = read;
    return result_of(query.ok());
  });
}

}  // extern "C"
