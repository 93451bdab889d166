// The tools' main entry points for properties: ask the mapping daemon first, and go to the store
// or the network record only when the daemon says that the property isn't its own (status 4).
#include <array>
#include <cstdint>
#include <cstring>

#include "orb_cfg/orb_cfg_internal.h"
#include "tessera/orb_cfg.h"

namespace tessera::orb_cfg {
namespace {

// The daemon's status for a property that it doesn't serve.
inline constexpr int32_t kNotServed = 4;
// The buffer of is_same_value, as the library's own callers read.
inline constexpr unsigned int kCompareSize = TESSERA_PROPERTY_VALUE_SIZE;

}  // namespace
}  // namespace tessera::orb_cfg

using namespace tessera::orb_cfg;  // NOLINT(google-build-using-namespace): this file's own

int32_t Cfgmgr_Get_Property(const char *name, char *out, unsigned int len) {
  if (name == nullptr || out == nullptr || name[0] == '\0' || len == 0) {
    return 2;
  }
  out[0] = '\0';
  const int32_t result = DM_ORB_Get_Property(name, out, len);
  if (result == 0) {
    return 0;
  }
  if (result != kNotServed) {
    return 1;
  }
  return read_property(name, out, len, false);
}

int32_t Cfgmgr_Set_Property(const char *name, const char *value) {
  if (value == nullptr || name == nullptr || name[0] == '\0') {
    return 1;
  }
  const int32_t result = DM_ORB_Set_Property(name, value);
  if (result != kNotServed) {
    return result;
  }
  return Cfgmgr_Set_Property_ori(name, value);
}

int32_t is_same_value(const char *name, const char *text) {
  if (text == nullptr) {
    return 0;
  }
  std::array<char, kCompareSize> value;
  if (Cfgmgr_Get_Property(name, value.data(), kCompareSize) != 0) {
    return 0;
  }
  return std::strcmp(value.data(), text) == 0 ? 1 : 0;
}
