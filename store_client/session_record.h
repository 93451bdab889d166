// Here with the store client's declarations because these blocks cross to the store client.
//
// The blocks that sessions cross the store client in: the session record, the id array and the
// privilege blocks of "osi_function_getuser". The library and the kit's store client lay them
// out from this header alone, so their sizes and offsets are pinned on every target.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace tessera::wire {

// One session as orb_session_get_info hands it over: 480 bytes, integers in host byte order,
// texts NUL-terminated within their fields.
struct SessionRecord {
  char type[68];       // type keyword: "SSH", "webgui", "vKVM", ...
  char user[321];      // user name, 320 characters at most
  char address[67];    // dotted IPv4, an IPv6 text (it holds a ':'), or "localhost"
  std::uint32_t word;  // handed to the tools, unread by the library
  std::uint8_t unread1[4];
  std::int32_t children;  // number of child sessions
  std::uint8_t unread2[12];
};
static_assert(std::is_trivially_copyable_v<SessionRecord> &&
              std::is_standard_layout_v<SessionRecord>);
static_assert(sizeof(SessionRecord) == 480 && alignof(SessionRecord) == 4);
static_assert(offsetof(SessionRecord, type) == 0 && offsetof(SessionRecord, user) == 68);
static_assert(offsetof(SessionRecord, address) == 389 && offsetof(SessionRecord, word) == 456);
static_assert(offsetof(SessionRecord, unread1) == 460 && offsetof(SessionRecord, children) == 464);
static_assert(offsetof(SessionRecord, unread2) == 468);

inline constexpr std::size_t kMaxUserName = sizeof(SessionRecord::user) - 1;        // 320
inline constexpr std::size_t kMaxAddressText = sizeof(SessionRecord::address) - 1;  // 66

// The session ids of orb_session_get_type_info and orb_session_get_children_info: the count
// passed in is the array's capacity.
inline constexpr std::size_t kIdArrayLength = 100;
using IdArray = std::array<std::uint32_t, kIdArrayLength>;
static_assert(sizeof(IdArray) == 400);

// "osi_function_getuser": the request carries the user name, the response the privilege.
inline constexpr std::uint32_t kPrivilegeBlockSize = 528;
struct PrivilegeRequest {
  char user[kPrivilegeBlockSize];  // NUL-terminated, 527 characters at most
};
struct PrivilegeResponse {
  std::uint8_t unread1[516];
  std::uint32_t privilege;
  std::uint8_t unread2[8];
};
static_assert(sizeof(PrivilegeRequest) == kPrivilegeBlockSize);
static_assert(sizeof(PrivilegeResponse) == kPrivilegeBlockSize);
static_assert(offsetof(PrivilegeResponse, privilege) == 516);

}  // namespace tessera::wire
