// tessera-sessiond: the session daemon of a workstation. Operation 2 closes a session, with its
// child sessions, in the store.
#include "kit/daemons/requests.h"
#include "kit/daemons/server.h"
#include "kit/store/tessera_store.h"

namespace {

class StoreSessions final : public tessera::kit::SessionStore {
 public:
  tessera::kit::Found close(uint32_t id, bool orb_close) override {
    return tessera::kit::found_of(tessera_store_close_session(id, orb_close ? 1 : 0));
  }
};

}  // namespace

int main(int argc, char **argv) {
  StoreSessions store;
  return tessera::kit::run_daemon(
      argc, argv, "tessera-sessiond", tessera::wire::kSessionSocketPath,
      "The session daemon of the workstation kit: closes sessions in the store.",
      [&store](std::span<const uint8_t> request) {
        return tessera::kit::answer_session(request, store);
      });
}
