// The network record as the store keeps it, and how "netSetNetConfig" applies a change request
// to it.
#pragma once

#include <cstdint>
#include <span>

#include "store_client/network_record.h"

namespace tessera::kit {

using wire::NetworkRecord;

// The record of a fresh store: empty texts, every flag off, numbers 0.
NetworkRecord fresh_network_record();

// The record's bytes, as the database keeps them.
inline std::span<const uint8_t> bytes_of(const NetworkRecord &record) {
  return {reinterpret_cast<const uint8_t *>(&record), sizeof record};
}

// Cuts every text field of a record to its width less one, so each one is terminated.
void terminate_texts(NetworkRecord &record);

// Applies a change request to the stored record. A field of the request changes the stored one
// unless it says "unchanged": the empty text (unless its clear bit is set, which empties the
// field), flag 0, the 0xFF marker of the signed bytes and the prefix length, 0 for the MTU, the
// address count and the extended addresses. Texts are cut to their field. The fields without a
// property and the clear masks are the request's own and never stored.
void apply_change_request(NetworkRecord &stored, const NetworkRecord &request);

}  // namespace tessera::kit
