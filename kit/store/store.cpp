// A store client with no store behind it: every call answers with its failure sense, as a
// controller whose store is unreachable would. Tools link and run; settings read as unavailable.
#include "tessera/store_client.h"

namespace {
constexpr int32_t kFailed = 0;        // for the calls whose success is non-zero
constexpr int32_t kUnavailable = -1;  // for the calls whose success is 0
}  // namespace

extern "C" {

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

}  // extern "C"
