// Any change request applied to a stored network record: the texts stay terminated in their
// fields and the bytes without a property stay the store's.
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "kit/store/network_apply.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  using tessera::kit::NetworkRecord;
  NetworkRecord request{};
  std::memcpy(&request, data, size < sizeof request ? size : sizeof request);
  NetworkRecord stored = tessera::kit::fresh_network_record();
  tessera::kit::apply_change_request(stored, request);
  if (size > sizeof request) {  // a second request over the first
    std::memset(&request, 0, sizeof request);
    std::memcpy(&request, data + sizeof request,
                size - sizeof request < sizeof request ? size - sizeof request : sizeof request);
    tessera::kit::apply_change_request(stored, request);
  }
  const char *texts[] = {stored.mir_name,       stored.domain_name,      stored.dns_server1,
                         stored.dns_server2,    stored.ipv6_dns_server1, stored.ipv6_dns_server2,
                         stored.ipv6_address,   stored.ipv6_gateway,     stored.ipv6_link_local,
                         stored.ipv6_site_local};
  const std::size_t widths[] = {255, 255, 16, 16, 46, 46, 46, 46, 46, 46};
  for (std::size_t i = 0; i < 10; ++i) {
    if (texts[i][widths[i] - 1] != '\0') {
      std::abort();
    }
  }
  for (const auto &entry : stored.extended) {
    if (entry.address[sizeof entry.address - 1] != '\0') {
      std::abort();
    }
  }
  const uint8_t zero[sizeof stored.reserved_1832] = {};
  if (stored.byte_971 != 0 || stored.byte_646 != 0 ||
      std::memcmp(stored.reserved_1832, zero, sizeof zero) != 0 ||
      std::memcmp(stored.clear_mask_first, zero, 4) != 0) {
    std::abort();
  }
  return 0;
}
