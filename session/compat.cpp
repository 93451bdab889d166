// Entry points that older tools still call. They do no work and give fixed results; none of
// them touches the store, the environment or any state of the library.
#include <cstdint>

#include "tessera/session.h"

int32_t ssn_open(void) {
  return 100;
}

int32_t ssn_check(const void * /*arg1*/, const void * /*arg2*/, const void * /*arg3*/,
                  uint32_t *state, uint32_t *limit) {
  if (state != nullptr) {
    *state = 1;
  }
  if (limit != nullptr) {
    *limit = 0xFFFFFFFFU;
  }
  return 0;
}

int32_t ssn_unlock(void) {
  return 0;
}

int32_t sc_ssn_open(void) {
  return 0;
}

int32_t sc_ssn_unlock(void) {
  return 0;
}
