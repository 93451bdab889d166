// Closing a session: a request of operation 2 to the session daemon. The reply says nothing the
// caller learns; a result of 0 means the daemon took the request and answered.
#include <cstdint>

#include "memory/heap.h"
#include "store_client/daemon_message.h"
#include "tessera/orb_cfg.h"
#include "tessera/session.h"
#include "tessera/store_client.h"

namespace {

int32_t close_session(uint32_t id, uint32_t orb_close) {
  using namespace tessera::wire;
  const tessera::heap::Owned<DaemonMessage> message =
      tessera::heap::make_zeroed<DaemonMessage>();
  if (!message) {
    os_info("%s", "ssn_close: No Resources\n");
    return SSN_ERR_NO_RESOURCES;
  }
  message->direction = kDirectionRequest;
  message->operation = kCloseSession;
  message->session_id = id;
  message->orb_close = orb_close;
  return session_manager_ipmiextd_communicate(message.get());
}

}  // namespace

int32_t ssn_close(uint32_t id) { return close_session(id, 0); }

int32_t ssn_orb_close(uint32_t id) { return close_session(id, 1); }
