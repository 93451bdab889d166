/*
 * Administration of the workstation store behind libtessera-store.so: what the kit's daemons and
 * tools use to seed a simulated controller and to look into it. Tools that only read and write
 * settings use the orb_* functions of <tessera/store_client.h> instead.
 *
 * The store is one SQLite database, shared by every process that opens it. Its path is
 * $TESSERA_STORE_DB, or $XDG_STATE_HOME/tessera/store.db, or ~/.local/state/tessera/store.db;
 * it and its directory are created on first use. Each call is one transaction (unless grouped
 * with tessera_store_begin), durable when it returns TESSERA_STORE_OK; a call that fails changes
 * nothing. Texts longer than their field below are cut to it. Every thread has a connection of
 * its own; should the database file be removed or replaced while open, the next call opens the
 * one at the path.
 */
#ifndef TESSERA_STORE_H
#define TESSERA_STORE_H

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__) || defined(__clang__)
#define TESSERA_STORE_API __attribute__((visibility("default")))
#else
#define TESSERA_STORE_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Results. */
#define TESSERA_STORE_OK 0
#define TESSERA_STORE_NOT_FOUND 1 /* no such value, session, user or property */
#define TESSERA_STORE_ERROR (-1)  /* bad argument, or the database can't be used */

/* Types of a value. */
#define TESSERA_STORE_BOOL 1
#define TESSERA_STORE_INT 2
#define TESSERA_STORE_TEXT 3

/* Limits, in characters without the terminator. */
#define TESSERA_STORE_KEY_MAX 320     /* value keys, user names and property names */
#define TESSERA_STORE_TEXT_MAX 1024   /* text values */
#define TESSERA_STORE_MAPPED_MAX 1279 /* values of the mapping daemon's properties */

/* Namespaces of the mapping daemon's properties. */
#define TESSERA_STORE_MAPPED 0 /* the properties it owns: operations 10 and 11 */
#define TESSERA_STORE_DCSGEN 1 /* its DCSGEN properties: operations 12 and 13 */

/* The size of the network record. */
#define TESSERA_STORE_NETWORK_SIZE 4768

/* Where the store's messages go: each failure to open, read or write the database, as one line
 * (without a line feed) that names the database and the reason. A reason is told once until it
 * changes or a write succeeds again. By default the lines go to standard error behind
 * "tessera-store: "; a daemon passes its own log. Null restores the default. */
typedef void (*tessera_store_log_function)(const char *message);
TESSERA_STORE_API void tessera_store_set_log(tessera_store_log_function log);

/* Writes the database path into `path`. Returns OK, or ERROR when it doesn't fit `size`. */
TESSERA_STORE_API int tessera_store_path(char *path, size_t size);

/* Opens the database (creating it and its schema on first use) and checks its integrity. */
TESSERA_STORE_API int tessera_store_check(void);

/* Makes the calls of this thread up to tessera_store_commit one transaction, committed with one
 * sync: for seeding many entries at once. Other writers wait until the commit (up to ten
 * seconds, then they fail), so keep it short. rollback drops the changes. ERROR when a
 * transaction is (begin) or isn't (commit, rollback) open. */
TESSERA_STORE_API int tessera_store_begin(void);
TESSERA_STORE_API int tessera_store_commit(void);
TESSERA_STORE_API int tessera_store_rollback(void);

/* Empties the store: values, sessions, users, sensors, the daemon's properties and the event
 * log; the network record goes back to that of a fresh store (empty texts, flags off, 0). */
TESSERA_STORE_API int tessera_store_reset(void);

/* Values by key, typed as the orb_config_* calls keep them. A set parses `text` for BOOL ("0"
 * is false, any other number true) and INT (decimal, as strtol reads it, held to the 32-bit
 * range) and replaces the key's value and type. A get writes the value as text ("0"/"1", "%d",
 * or the text cut to `size`). */
TESSERA_STORE_API int tessera_store_set_value(const char *key, int type, const char *text);
TESSERA_STORE_API int tessera_store_get_value(const char *key, int *type, char *text, size_t size);
TESSERA_STORE_API int tessera_store_remove_value(const char *key);

/* A session. A child names its parent; `parent` 0 is a session of its own. */
typedef struct tessera_store_session {
  uint32_t id;
  uint32_t parent;
  uint32_t word; /* handed to the tools unread */
  char type[68]; /* keyword: "SSH", "webgui", "vKVM", "vMedia", ... */
  char user[321];
  char address[67]; /* dotted IPv4, IPv6 text, or "localhost" */
} tessera_store_session;

/* Adds a session, or replaces the one with its id. Its parent, when not 0, must exist. */
TESSERA_STORE_API int tessera_store_add_session(const tessera_store_session *session);
TESSERA_STORE_API int tessera_store_get_session(uint32_t id, tessera_store_session *session);
/* Ids of every session in rising order: up to `capacity` into `ids`, the number in `count`. */
TESSERA_STORE_API int tessera_store_list_sessions(uint32_t *ids, size_t capacity, size_t *count);
/* Closes a session and its children, and logs "session_closed" with the id and `orb_close`.
 * Returns OK, NOT_FOUND or ERROR. */
TESSERA_STORE_API int tessera_store_close_session(uint32_t id, uint32_t orb_close);

/* Users and their privilege, as "osi_function_getuser" answers it. */
TESSERA_STORE_API int tessera_store_set_user(const char *name, uint32_t privilege);
TESSERA_STORE_API int tessera_store_get_user(const char *name, uint32_t *privilege);
TESSERA_STORE_API int tessera_store_remove_user(const char *name);

/* Active sensors, in the order added, as "GetActiveSensors" hands them out: the sensor index,
 * its kind letter ('d', 'e', 't', ...) and a name of up to 63 characters. At most 256. */
TESSERA_STORE_API int tessera_store_add_sensor(uint8_t index, char kind, const char *name);
TESSERA_STORE_API int tessera_store_clear_sensors(void);

/* The whole network record, TESSERA_STORE_NETWORK_SIZE bytes. A set replaces it as it stands
 * (each text cut to its field); "netSetNetConfig" applies change requests to it. */
TESSERA_STORE_API int tessera_store_set_network(const void *record, size_t size);
TESSERA_STORE_API int tessera_store_get_network(void *record, size_t size);

/* The mapping daemon's properties. map_property creates or replaces one; in TESSERA_STORE_MAPPED
 * that makes the daemon own it. set_mapped replaces the value of an existing one only (NOT_FOUND
 * otherwise). get_mapped writes the value cut to `size`. Values are cut to 1279 characters. */
TESSERA_STORE_API int tessera_store_map_property(int space, const char *name, const char *value);
TESSERA_STORE_API int tessera_store_set_mapped(int space, const char *name, const char *value);
TESSERA_STORE_API int tessera_store_get_mapped(int space, const char *name, char *value,
                                               size_t size);
TESSERA_STORE_API int tessera_store_unmap_property(int space, const char *name);

/* One entry of the event log: orb_event_occurred calls and the store's own events. */
typedef struct tessera_store_event {
  int64_t sequence; /* rises by at least 1 from entry to entry */
  int64_t time;     /* seconds since the epoch */
  int32_t arg1;
  int32_t arg2;
  char name[128];
} tessera_store_event;

/* Entries with a sequence above `after`, oldest first: up to `capacity` into `events`, the
 * number written in `count`. Pass the last sequence seen to read on. */
TESSERA_STORE_API int tessera_store_read_events(int64_t after, tessera_store_event *events,
                                                size_t capacity, size_t *count);

#ifdef __cplusplus
}
#endif

#endif /* TESSERA_STORE_H */
