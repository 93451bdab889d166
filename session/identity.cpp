// Session types, addresses and the id of the session a process runs in. Nothing here touches
// the store: the listing code and the tools use it on what the store hands out.
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "session/session_types.h"
#include "string/number.h"
#include "tessera/session.h"

constinit const char *const SsnTypeString[SSN_TYPE_COUNT] = {
    "Unknown",       "Serial",          "Telnet", "SSH",     "GUI",
    "TOLVEX",        "Local",           "SM-SP",  "SM-CLP",  "Serial-NoAuth",
    "Virtual Media", "Virtual Console", "SOL",    "REDFISH",
};

namespace tessera::session {
namespace {

struct TypeKeyword {
  std::string_view keyword;
  std::uint32_t code;
};

// Code 9 (Serial-NoAuth) has a label but no keyword: no text maps to it.
constexpr std::array<TypeKeyword, 12> kTypeKeywords{{
    {"Serial", SSN_TYPE_SERIAL},
    {"Telnet", SSN_TYPE_TELNET},
    {"SSH", SSN_TYPE_SSH},
    {"webgui", SSN_TYPE_WEBGUI},
    {"tolvex", SSN_TYPE_TOLVEX},
    {"Local", SSN_TYPE_LOCAL},
    {"SM-SP", SSN_TYPE_SMSP},
    {"CLP", SSN_TYPE_CLP},
    {"vMedia", SSN_TYPE_VMEDIA},
    {"vKVM", SSN_TYPE_VKVM},
    {"SOL", SSN_TYPE_SOL},
    {"redfish", SSN_TYPE_REDFISH},
}};

bool is_digit(char c) noexcept {
  return c >= '0' && c <= '9';
}

// One number of "%d" as the controller's C library reads it: blanks, an optional sign, then at
// least one digit, saturated to the signed 32-bit range. Moves `text` behind the number; false
// when there is no number.
bool scan_number(const char *&text, std::int32_t &value) noexcept {
  const char *p = text;
  while (strlib::is_space(*p)) {
    ++p;
  }
  if (*p == '-' || *p == '+') {
    ++p;
  }
  if (!is_digit(*p)) {
    return false;
  }
  value = strlib::to_signed32(text, 10);
  while (is_digit(*p)) {
    ++p;
  }
  text = p;
  return true;
}

// "%u" of a session id variable, 0 for none. A number past the 32-bit range gives 4294967295 and
// a '-' negates modulo 2^32, as the controller's C library does, on every target alike.
std::uint32_t session_id_of(const char *text) noexcept {
  return text != nullptr ? strlib::to_unsigned32(text, 10) : 0U;
}

}  // namespace

std::uint32_t type_code(std::string_view keyword) noexcept {
  for (const auto &entry : kTypeKeywords) {
    if (entry.keyword == keyword) {
      return entry.code;
    }
  }
  return SSN_TYPE_UNKNOWN;
}

const char *child_keyword(std::uint32_t kind) noexcept {
  switch (kind) {
    case SSN_CHILD_VKVM:
      return "vKVM";
    case SSN_CHILD_VMEDIA:
      return "vMedia";
    default:
      return nullptr;
  }
}

}  // namespace tessera::session

uint32_t str2ssntype(const char *keyword) {
  return keyword != nullptr ? tessera::session::type_code(keyword) : SSN_TYPE_UNKNOWN;
}

char *ssn_iptostr(char *text, uint32_t address) {
  if (text == nullptr) {
    return nullptr;
  }
  if (address == 0) {
    static_cast<void>(std::snprintf(text, SSN_IP_TEXT_SIZE, "serial"));
  } else {
    static_cast<void>(
        std::snprintf(text, SSN_IP_TEXT_SIZE, "%d.%d.%d.%d", static_cast<int>(address & 0xFFU),
                      static_cast<int>((address >> 8) & 0xFFU),
                      static_cast<int>((address >> 16) & 0xFFU), static_cast<int>(address >> 24)));
  }
  return text;
}

// Reading stops at the first number or point that isn't there; the octets behind it stay 0.
uint32_t ssn_atoip(const char *text) {
  if (text == nullptr) {
    return 0;
  }
  uint32_t address = 0;
  for (unsigned shift = 0; shift < 32; shift += 8) {
    if (shift != 0 && *text++ != '.') {
      break;
    }
    // Only the low eight bits of each number count, after it saturated as a 32-bit long.
    std::int32_t number = 0;
    if (!tessera::session::scan_number(text, number)) {
      break;
    }
    address |= (static_cast<uint32_t>(number) & 0xFFU) << shift;
  }
  return address;
}

uint32_t ssn_get_sid(void) {
  return tessera::session::session_id_of(std::getenv("SESSION_ID"));
}

uint32_t ssn_get_orbsid(void) {
  const char *text = std::getenv("ORB_SESSION_ID");
  if (text == nullptr) {
    text = std::getenv("SESSION_ID");
  }
  return tessera::session::session_id_of(text);
}
