// The store client of a build without SQLite (the cross builds): no store behind it. Every call
// answers with its failure sense, as a controller whose store is unreachable would, so tools
// and the kit's programs still link and run, and settings read as unavailable.
#include "kit/store/tessera_store.h"
#include "tessera/store_client.h"

namespace {
constexpr int32_t kFailed = 0;        // for the calls whose success is non-zero
constexpr int32_t kUnavailable = -1;  // for the calls whose success is 0
}  // namespace

extern "C" {

// clang-format off
int32_t orb_config_get_bool(const char *, uint8_t *) { return kFailed; }
int32_t orb_config_get_int(const char *, int32_t *) { return kFailed; }
int32_t orb_config_get_str(const char *, char *) { return kFailed; }
int32_t orb_config_get_str_n(const char *, char *, uint32_t) { return kFailed; }
int32_t orb_config_set_bool(const char *, int32_t, int32_t) { return kFailed; }
int32_t orb_config_set_int(const char *, int32_t, int32_t) { return kFailed; }
int32_t orb_config_set_str(const char *, const char *, int32_t) { return kFailed; }
int32_t orb_config_set_str_n(const char *, const char *, int32_t) { return kFailed; }
int32_t orb_session_get_info(uint32_t, void *) { return kFailed; }

int32_t orb_session_get_children_info(uint32_t, int32_t *count, uint32_t *) {
  if (count != nullptr) {
    *count = 0;
  }
  return kUnavailable;
}

int32_t orb_session_get_type_info(const char *, int32_t *count, uint32_t *) {
  if (count != nullptr) {
    *count = 0;
  }
  return kUnavailable;
}

int32_t orb_function_execute(const char *, uint32_t *, const void *, uint32_t, void *) {
  return kUnavailable;
}

int32_t orb_event_occurred(const char *, int32_t, int32_t) { return kUnavailable; }

int tessera_store_path(char *, size_t) { return TESSERA_STORE_ERROR; }
void tessera_store_set_log(tessera_store_log_function) {}
int tessera_store_check(void) { return TESSERA_STORE_ERROR; }
int tessera_store_begin(void) { return TESSERA_STORE_ERROR; }
int tessera_store_commit(void) { return TESSERA_STORE_ERROR; }
int tessera_store_rollback(void) { return TESSERA_STORE_ERROR; }
int tessera_store_reset(void) { return TESSERA_STORE_ERROR; }
int tessera_store_set_value(const char *, int, const char *) { return TESSERA_STORE_ERROR; }
int tessera_store_get_value(const char *, int *, char *, size_t) { return TESSERA_STORE_ERROR; }
int tessera_store_remove_value(const char *) { return TESSERA_STORE_ERROR; }
int tessera_store_add_session(const tessera_store_session *) { return TESSERA_STORE_ERROR; }
int tessera_store_get_session(uint32_t, tessera_store_session *) { return TESSERA_STORE_ERROR; }
int tessera_store_list_sessions(uint32_t *, size_t, size_t *) { return TESSERA_STORE_ERROR; }
int tessera_store_close_session(uint32_t, uint32_t) { return TESSERA_STORE_ERROR; }
int tessera_store_set_user(const char *, uint32_t) { return TESSERA_STORE_ERROR; }
int tessera_store_get_user(const char *, uint32_t *) { return TESSERA_STORE_ERROR; }
int tessera_store_remove_user(const char *) { return TESSERA_STORE_ERROR; }
int tessera_store_add_sensor(uint8_t, char, const char *) { return TESSERA_STORE_ERROR; }
int tessera_store_clear_sensors(void) { return TESSERA_STORE_ERROR; }
int tessera_store_set_network(const void *, size_t) { return TESSERA_STORE_ERROR; }
int tessera_store_get_network(void *, size_t) { return TESSERA_STORE_ERROR; }
int tessera_store_map_property(int, const char *, const char *) { return TESSERA_STORE_ERROR; }
int tessera_store_set_mapped(int, const char *, const char *) { return TESSERA_STORE_ERROR; }
int tessera_store_get_mapped(int, const char *, char *, size_t) { return TESSERA_STORE_ERROR; }
int tessera_store_unmap_property(int, const char *) { return TESSERA_STORE_ERROR; }
int tessera_store_read_events(int64_t, tessera_store_event *, size_t, size_t *) {
  return TESSERA_STORE_ERROR;
}
// clang-format on

}  // extern "C"
