// Here with the store client's declarations because "GetActiveSensors" hands these records over.
//
// The active sensors as "GetActiveSensors" delivers them: records of 68 bytes, at most 256 in the
// output buffer. The library and the kit's store client lay them out from this header alone.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tessera::wire {

struct SensorRecord {
  std::uint8_t index;  // sensor index, unsigned
  std::uint8_t unread1;
  std::uint8_t kind;  // a letter: 'd', 'e' or 't'; the library skips others
  std::uint8_t more;  // 0 marks the end of the records
  char name[64];      // unread by the library; the kit's store puts a terminated name here
};
static_assert(sizeof(SensorRecord) == 68 && alignof(SensorRecord) == 1);
static_assert(offsetof(SensorRecord, index) == 0 && offsetof(SensorRecord, kind) == 2);
static_assert(offsetof(SensorRecord, more) == 3 && offsetof(SensorRecord, name) == 4);

inline constexpr std::size_t kMaxSensorRecords = 256;
// The output capacity that "GetActiveSensors" is given: room for them all.
inline constexpr std::uint32_t kSensorBufferSize = 17408;
static_assert(sizeof(SensorRecord) * kMaxSensorRecords == kSensorBufferSize);

}  // namespace tessera::wire
