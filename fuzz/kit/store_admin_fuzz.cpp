// The kit store's administration on any keys, texts and numbers, as the kit's tools pass them on
// from their users: a call with a key that is empty or over 320 characters fails with ERROR and
// any other succeeds, and what was stored reads back as the interface says (texts cut to their
// field, numbers as a 32-bit strtol reads them).
//
// Input: one selector byte, then the key up to the first 0x01, then the text.
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "../harness.h"
#include "kit/store/tessera_store.h"

namespace {

using tessera::fuzz::check;

// A database of this run's own, removed at the end.
struct ScratchStore {
  std::string path;
  ScratchStore() {
    const char *tmp = std::getenv("TMPDIR");
    path = std::string(tmp != nullptr && tmp[0] != '\0' ? tmp : "/tmp") + "/tessera-admin-fuzz-" +
           std::to_string(::getpid()) + ".db";
    ::setenv("TESSERA_STORE_DB", path.c_str(), 1);
  }
  ~ScratchStore() {
    for (const char *suffix : {"", "-wal", "-shm"}) {
      ::unlink((path + suffix).c_str());
    }
  }
};

std::string cut(const std::string &text, std::size_t limit) {
  return text.substr(0, limit);
}

// strtol with a 32-bit long: held to the 32-bit range.
int32_t decimal(const std::string &text) {
  const long long number = std::strtoll(text.c_str(), nullptr, 10);
  return static_cast<int32_t>(number > INT32_MAX   ? INT32_MAX
                              : number < INT32_MIN ? INT32_MIN
                                                   : number);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  if (size == 0) {
    return 0;
  }
  static const ScratchStore store;
  const uint8_t selector = data[0];
  const auto [key, text] = tessera::fuzz::texts_split_at_01(data + 1, size - 1);
  const bool valid = !key.empty() && key.size() <= TESSERA_STORE_KEY_MAX;
  const int expected = valid ? TESSERA_STORE_OK : TESSERA_STORE_ERROR;
  char out[TESSERA_STORE_MAPPED_MAX + 1];
  int type = 0;

  switch (selector % 4) {
    case 0: {  // typed values
      const int asked = 1 + selector / 4 % 3;
      check(tessera_store_set_value(key.c_str(), asked, text.c_str()) == expected);
      if (!valid) {
        break;
      }
      check(tessera_store_get_value(key.c_str(), &type, out, sizeof out) == TESSERA_STORE_OK);
      const std::string shown = asked == TESSERA_STORE_TEXT  ? cut(text, TESSERA_STORE_TEXT_MAX)
                                : asked == TESSERA_STORE_INT ? std::to_string(decimal(text))
                                                             : (decimal(text) != 0 ? "1" : "0");
      check(type == asked && shown == out, "a value read back differs");
      check(tessera_store_remove_value(key.c_str()) == TESSERA_STORE_OK);
      check(tessera_store_get_value(key.c_str(), &type, out, sizeof out) ==
            TESSERA_STORE_NOT_FOUND);
      break;
    }
    case 1: {  // the mapping daemon's properties
      const int space = selector / 4 % 2;
      check(tessera_store_map_property(space, key.c_str(), text.c_str()) == expected);
      if (!valid) {
        break;
      }
      check(tessera_store_get_mapped(space, key.c_str(), out, sizeof out) == TESSERA_STORE_OK);
      check(cut(text, TESSERA_STORE_MAPPED_MAX) == out, "a mapped value read back differs");
      check(tessera_store_unmap_property(space, key.c_str()) == TESSERA_STORE_OK);
      break;
    }
    case 2: {  // users
      const auto privilege = static_cast<uint32_t>(text.size() * 2654435761U);
      check(tessera_store_set_user(key.c_str(), privilege) == expected);
      uint32_t found = 0;
      check(!valid || (tessera_store_get_user(key.c_str(), &found) == TESSERA_STORE_OK &&
                       found == privilege));
      break;
    }
    default: {  // sessions: the texts cut to their fields
      tessera_store_session session{.id = selector, .parent = 0, .word = selector};
      std::strncpy(session.type, key.c_str(), sizeof session.type - 1);
      std::strncpy(session.user, text.c_str(), sizeof session.user - 1);
      std::strncpy(session.address, text.c_str(), sizeof session.address - 1);
      check(tessera_store_add_session(&session) == TESSERA_STORE_OK);
      tessera_store_session back{};
      check(tessera_store_get_session(session.id, &back) == TESSERA_STORE_OK);
      check(std::memcmp(&back, &session, sizeof back) == 0, "a session read back differs");
      check(tessera_store_close_session(session.id, 0) == TESSERA_STORE_OK);
      break;
    }
  }
  return 0;
}
