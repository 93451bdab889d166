// What the library relies on of the store client beyond its function declarations: the constant
// arguments, capacities and names of the remote functions and the event.
#pragma once

#include <cstdint>

namespace tessera::store {

inline constexpr std::int32_t kSetFlag = 1;           // third argument of every orb_config_set_*
inline constexpr std::uint32_t kStrNCapacity = 1024;  // capacity of orb_config_get_str_n

inline constexpr const char kNetGetCurrentIfConfig[] = "netGetCurrentIfConfig";
inline constexpr const char kNetSetNetConfig[] = "netSetNetConfig";
inline constexpr const char kGetActiveSensors[] = "GetActiveSensors";
inline constexpr const char kGetUser[] = "osi_function_getuser";
inline constexpr const char kRpConfigChangedEvent[] = "gui_event_rp_config_changed";

}  // namespace tessera::store
