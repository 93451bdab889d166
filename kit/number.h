// What the store and the sink both need to read a number from a text: the controller's strtol.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace tessera::kit {

// A decimal number as strtol reads it where `long` has 32 bits, as on the controller: past the
// 32-bit range it stays at the limit, on a 64-bit host too, instead of losing its high bits.
inline int32_t decimal_int32(const char *text) {
  return static_cast<int32_t>(
      std::clamp<long>(std::strtol(text, nullptr, 10), INT32_MIN, INT32_MAX));
}

}  // namespace tessera::kit
