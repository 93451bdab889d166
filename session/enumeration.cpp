// Listing the controller's sessions under filters and reading one session's details, privilege
// and child sessions, all from the store client. Every record and id array belongs to the call.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "session/session_types.h"
#include "store_client/platform.h"
#include "store_client/session_record.h"
#include "tessera/session.h"
#include "tessera/store_client.h"

namespace tessera::session {

using namespace wire;  // NOLINT(google-build-using-namespace): the records are this file's subject

namespace {

static_assert(kIdArrayLength == SSN_MAX_IDS && sizeof(SessionRecord::user) == SSN_USER_SIZE &&
              sizeof(SessionRecord::address) == SSN_ADDRESS_TEXT_SIZE);

constexpr auto kIdCapacity = static_cast<std::int32_t>(kIdArrayLength);

// The text of a field: up to its first NUL, and at most `limit` bytes when a broken store left
// the field without one. Nothing past the field is ever read.
std::string_view field_text(const char *field, std::size_t limit) noexcept {
  const void *end = std::memchr(field, '\0', limit);
  return {field, end != nullptr ? static_cast<std::size_t>(static_cast<const char *>(end) - field)
                                : limit};
}

// The record's texts. An unterminated user name or address text reads as its longest legal
// text, so that it still fits a caller's buffer with its terminator.
std::string_view type_keyword(const SessionRecord &record) noexcept {
  return field_text(record.type, sizeof record.type);
}
std::string_view user_name(const SessionRecord &record) noexcept {
  return field_text(record.user, kMaxUserName);
}
std::string_view address_text(const SessionRecord &record) noexcept {
  return field_text(record.address, kMaxAddressText);
}

// Reads a session into a zeroed record; a failed read leaves it zero. Gives the store's result.
std::int32_t read_session(std::uint32_t id, SessionRecord &record) noexcept {
  record = SessionRecord{};
  return orb_session_get_info(id, &record);
}

// How many of the ids a store listed may be looked at: those it reported, no more than it
// could have written.
std::size_t usable_ids(std::int32_t reported, std::int32_t capacity) noexcept {
  return static_cast<std::size_t>(std::clamp(reported, 0, capacity));
}

// The filters of ssn_entry_list, all of which must pass: a user name (none for a null user), a
// type code and a session address (none for 0). The address filter compares texts.
class Filters {
 public:
  Filters(const char *user, std::uint32_t type, std::uint32_t address) noexcept
      : by_user_(user != nullptr), user_(by_user_ ? user : ""), type_(type) {
    if (address != 0) {
      ssn_iptostr(address_, address);
    }
  }

  [[nodiscard]] bool pass(const SessionRecord &record) const noexcept {
    if (address_[0] != '\0' && address_text(record) != address_) {
      return false;
    }
    if (type_ != 0 && type_code(type_keyword(record)) != type_) {
      return false;
    }
    return !by_user_ || user_name(record) == user_;
  }

 private:
  bool by_user_;
  std::string_view user_;
  std::uint32_t type_;
  char address_[SSN_IP_TEXT_SIZE] = "";
};

// Copies a field's text into a buffer of at least text.size() + 1 bytes, terminated.
void put_text(char *buffer, std::string_view text) noexcept {
  std::memcpy(buffer, text.data(), text.size());
  buffer[text.size()] = '\0';
}

template <class T>
void put(T *output, T value) noexcept {
  if (output != nullptr) {
    *output = value;
  }
}

}  // namespace
}  // namespace tessera::session

using namespace tessera::session;  // NOLINT(google-build-using-namespace)

int32_t ssn_entry_list(const char *user, uint32_t type, uint32_t address, uint32_t *ids,
                       uint32_t *count) {
  if (ids == nullptr) {
    return SSN_ERR_NULL_COUNT;
  }
  std::fill_n(ids, kIdArrayLength, 0U);
  if (count == nullptr) {
    return SSN_ERR_NULL_COUNT;
  }
  *count = 0;

  IdArray listed{};
  int32_t listed_count = kIdCapacity;
  if (const int32_t result = orb_session_get_type_info("", &listed_count, listed.data());
      result != 0) {
    return result;
  }

  const Filters filters(user, type, address);
  uint32_t found = 0;
  SessionRecord record{};
  for (std::size_t i = 0; i < usable_ids(listed_count, kIdCapacity); ++i) {
    static_cast<void>(read_session(listed[i], record));
    if (filters.pass(record)) {
      ids[found++] = listed[i];
    }
  }
  *count = found;
  return 0;
}

int32_t ssn_entry_getinfo(uint32_t id, char *user, uint32_t *one, uint32_t *address,
                          char *address_out, uint8_t *type, uint32_t *zero, uint32_t *has_vkvm,
                          uint32_t *has_vmedia, uint32_t *privilege, uint32_t *word,
                          uint32_t *limit, uint32_t *zero2) {
  SessionRecord record{};
  if (read_session(id, record) == 0) {
    return SSN_ERR_NO_SESSION;
  }

  char name[SSN_USER_SIZE];
  put_text(name, user_name(record));
  if (user != nullptr) {
    std::memcpy(user, name, std::strlen(name) + 1);
  }

  // A local session reads as the loopback address; an IPv6 text has no 32-bit address.
  char text[SSN_ADDRESS_TEXT_SIZE];
  const std::string_view stored = address_text(record);
  put_text(text, stored == "localhost" ? std::string_view("127.0.0.1") : stored);
  if (address_out != nullptr) {
    std::memcpy(address_out, text, std::strlen(text) + 1);
  }
  put(address, std::strchr(text, ':') != nullptr ? 0U : ssn_atoip(text));

  put(one, 1U);
  put(type, static_cast<uint8_t>(type_code(type_keyword(record))));
  put(zero, 0U);
  // The child and privilege queries cost store calls; a null output does without them.
  if (has_vkvm != nullptr) {
    *has_vkvm = static_cast<uint32_t>(ssn_has_subssn(id, SSN_CHILD_VKVM));
  }
  if (has_vmedia != nullptr) {
    *has_vmedia = static_cast<uint32_t>(ssn_has_subssn(id, SSN_CHILD_VMEDIA));
  }
  if (privilege != nullptr) {
    *privilege = get_privilege(name);
  }
  put(word, record.word);
  put(limit, 0x7fffffffU);
  put(zero2, 0U);
  return 0;
}

int32_t ssn_has_subssn(uint32_t id, uint32_t kind) {
  SessionRecord record{};
  const int32_t found = read_session(id, record);
  if (found == 0) {
    return 0;
  }
  // The record's child count goes to the store as it stands, zero and negative too; only a
  // count beyond the id array is lowered to its size, so the store can't write past it.
  int32_t count = std::min(record.children, kIdCapacity);
  IdArray children{};
  if (orb_session_get_children_info(id, &count, children.data()) != 0) {
    return 0;
  }
  const char *keyword = child_keyword(kind);
  if (keyword == nullptr) {
    return 0;
  }
  // Every child the store says it returned, at most the array's 100.
  for (std::size_t i = 0; i < usable_ids(count, kIdCapacity); ++i) {
    static_cast<void>(read_session(children[i], record));
    if (type_keyword(record) == keyword) {
      return found;
    }
  }
  return 0;
}

uint32_t ssn_subssn_count(uint32_t kind) {
  const char *keyword = child_keyword(kind);
  if (keyword == nullptr) {
    return 0;
  }
  // A capacity of 0: the store fills no ids and still reports how many sessions there are.
  int32_t count = 0;
  IdArray ids{};
  static_cast<void>(orb_session_get_type_info(keyword, &count, ids.data()));
  return static_cast<uint32_t>(count);  // whatever the call left, a negative count too
}

uint32_t get_privilege(const char *user) {
  if (user == nullptr) {
    return 0;
  }
  PrivilegeRequest request{};
  put_text(request.user, std::string_view(user, ::strnlen(user, sizeof request.user - 1)));
  PrivilegeResponse response{};
  uint32_t length = kPrivilegeBlockSize;
  if (orb_function_execute(tessera::store::kGetUser, &length, &request, kPrivilegeBlockSize,
                           &response) != 0) {
    return 0;
  }
  return response.privilege;
}
