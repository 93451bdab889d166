// tessera-sessiond: the session daemon of a workstation. Operation 2 closes a session, with its
// child sessions, in the store.
#include <cstdio>

#include "kit/daemons/requests.h"
#include "kit/daemons/server.h"
#include "kit/store/tessera_store.h"

namespace {

using tessera::kit::Found;

class StoreSessions final : public tessera::kit::SessionStore {
 public:
  Found close(uint32_t id, bool orb_close) override {
    const int result = tessera_store_close_session(id, orb_close ? 1 : 0);
    return result == TESSERA_STORE_OK          ? Found::yes
           : result == TESSERA_STORE_NOT_FOUND ? Found::no
                                               : Found::failed;
  }
};

}  // namespace

int main(int argc, char **argv) {
  const auto options = tessera::kit::parse_options(
      argc, argv, "tessera-sessiond", tessera::orb_cfg::kSessionSocketPath,
      "The session daemon of the workstation kit: closes sessions in the store.");
  if (tessera_store_check() != TESSERA_STORE_OK) {
    std::fprintf(stderr, "tessera-sessiond: the store cannot be used\n");
    return 1;
  }
  StoreSessions store;
  return tessera::kit::serve(options, [&store](std::span<const uint8_t> request) {
    return tessera::kit::answer_session(request, store);
  });
}
