// The network record as the store keeps it, and how "netSetNetConfig" applies a change request
// to it.
#pragma once

#include <array>
#include <cstdint>

#include "orb_cfg/network_record.h"

namespace tessera::kit {

using orb_cfg::NetworkRecord;
using NetworkRecordBytes = std::array<uint8_t, sizeof(NetworkRecord)>;

// The record of a fresh store: empty texts, every flag off, numbers 0.
NetworkRecordBytes fresh_network_record();

// Cuts every text field of a record to its width less one, so each one is terminated.
void terminate_texts(NetworkRecord &record);

// Applies a change request to the stored record. A field of the request changes the stored one
// unless it says "unchanged": the empty text (unless its clear bit is set, which empties the
// field), flag 0, the 0xFF marker of the signed bytes and the prefix length, 0 for the MTU, the
// address count and the extended addresses. Texts are cut to their field. The fields without a
// property and the clear masks are the request's own and never stored.
void apply_change_request(NetworkRecord &stored, const NetworkRecord &request);

}  // namespace tessera::kit
