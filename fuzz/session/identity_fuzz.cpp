// The session identity a process reads from outside: the session id variables and address texts.
// Each is checked against the C library's own scanner with the controller's 32-bit long, and an
// address survives its way to text and back.
//
// Input: four bytes of address, then "SESSION_ID" up to the first 0x01 and "ORB_SESSION_ID"
// behind it (unset when there is no 0x01). The first text is also read as an address.
#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "../harness.h"
#include "tessera/session.h"

namespace {

using tessera::fuzz::check;

// "%u" as the controller reads it: strtoul with a 32-bit unsigned long, so a number whose digits
// pass 32 bits gives the largest value, and a '-' negates modulo 2^32.
uint32_t scan_unsigned(const char *text) {
  unsigned long long value = 0;
  if (std::sscanf(text, "%llu", &value) != 1) {
    return 0;
  }
  while (std::isspace(static_cast<unsigned char>(*text)) != 0) {
    ++text;
  }
  const bool negative = *text == '-';
  unsigned long long magnitude = 0;
  std::sscanf(text + (negative || *text == '+' ? 1 : 0), "%llu", &magnitude);
  if (magnitude > UINT32_MAX) {
    return UINT32_MAX;
  }
  return negative ? 0U - static_cast<uint32_t>(magnitude) : static_cast<uint32_t>(magnitude);
}

// "%d.%d.%d.%d" as the controller reads it: each number saturates as a 32-bit long, its low
// eight bits make an octet, and the octets no number reached stay 0.
uint32_t scan_address(const char *text) {
  long long octets[4] = {};
  std::sscanf(text, "%lld.%lld.%lld.%lld", &octets[0], &octets[1], &octets[2], &octets[3]);
  uint32_t address = 0;
  for (int i = 0; i < 4; ++i) {
    const long long held = octets[i] > INT32_MAX   ? INT32_MAX
                           : octets[i] < INT32_MIN ? INT32_MIN
                                                   : octets[i];
    address |= (static_cast<uint32_t>(held) & 0xFFU) << (8 * i);
  }
  return address;
}

// The variables live in buffers of this harness's own, rewritten in place for each input:
// setenv would keep every value it was ever given.
using Variable = std::array<char, 4096>;
Variable sid_variable;
Variable orb_variable;

void set_variable(Variable &variable, const char *name, std::string &value) {
  value.resize(std::min(value.size(), variable.size() - std::strlen(name) - 2));
  std::snprintf(variable.data(), variable.size(), "%s=%s", name, value.c_str());
  ::putenv(variable.data());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  if (size < 4) {
    return 0;
  }
  uint32_t address = 0;
  std::memcpy(&address, data, sizeof address);
  char text[SSN_IP_TEXT_SIZE];
  std::memset(text, 'X', sizeof text);
  check(ssn_iptostr(text, address) == text && std::memchr(text, '\0', sizeof text) != nullptr);
  check(ssn_atoip(text) == address, "an address came back from its text changed");

  const bool orb_set = std::memchr(data + 4, 1, size - 4) != nullptr;
  auto [sid, orb_sid] = tessera::fuzz::texts_split_at_01(data + 4, size - 4);
  const auto exact =
      tessera::fuzz::exact_text(reinterpret_cast<const uint8_t *>(sid.c_str()), sid.size());
  check(ssn_atoip(exact.get()) == scan_address(sid.c_str()), "ssn_atoip differs from %d.%d.%d.%d");

  set_variable(sid_variable, "SESSION_ID", sid);
  if (orb_set) {
    set_variable(orb_variable, "ORB_SESSION_ID", orb_sid);
  } else {
    ::unsetenv("ORB_SESSION_ID");
  }
  check(ssn_get_sid() == scan_unsigned(sid.c_str()), "ssn_get_sid differs from %u");
  check(ssn_get_orbsid() == scan_unsigned(orb_set ? orb_sid.c_str() : sid.c_str()),
        "ssn_get_orbsid differs from %u");
  return 0;
}
