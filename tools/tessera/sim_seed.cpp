// `tessera sim seed`: fills the kit's store like a controller in use.
//
// Seeding uses the kit store's administration interface (tessera_store.h): the one place where
// this program goes past libtessera.so.1's public headers, since a real controller is seeded by
// its own firmware, not by a library call.
#include <climits>
#include <cstdio>
#include <set>
#include <string>
#include <string_view>

#include <tessera/orb_cfg.h>

#include "sim.h"

#ifdef TESSERA_CLI_SIM
#include "tessera_store.h"
#endif

namespace tessera_cli::sim {

std::string store_path() {
#ifdef TESSERA_CLI_SIM
  char path[PATH_MAX];
  if (tessera_store_path(path, sizeof path) == TESSERA_STORE_OK) {
    return path;
  }
#endif
  return "unavailable";
}

#ifdef TESSERA_CLI_SIM
namespace {

// A sample controller: a lab machine with two users logged in on the web with a virtual console
// and virtual media, an SSH and a serial-over-LAN session, a local tool, a Redfish client.
constexpr tessera_store_session kSessions[] = {
    {1, 0, 0, "webgui", "admin", "192.168.10.21"},
    {2, 1, 0, "vKVM", "admin", "192.168.10.21"},
    {3, 1, 0, "vMedia", "admin", "192.168.10.21"},
    {4, 0, 0, "SSH", "operator", "10.20.0.7"},
    {5, 0, 0, "SOL", "operator", "10.20.0.7"},
    {6, 0, 0, "tolvex", "root", "localhost"},
    {7, 0, 0, "redfish", "monitor", "fe80::7a2b:cbff:fe12:3456"},
    {8, 0, 0, "Serial", "admin", ""},
};

struct User {
  const char *name;
  uint32_t privilege;
};
constexpr User kUsers[] = {{"root", 4}, {"admin", 4}, {"operator", 3}, {"monitor", 2}};

struct Sensor {
  uint8_t index;
  char kind;  // 'd' and 'e': power supplies; 't': their redundancy
  const char *name;
};
constexpr Sensor kSensors[] = {{1, 'd', "PS1 Status"},
                               {2, 'e', "PS2 Status"},
                               {3, 't', "PS Redundancy"},
                               {10, 'a', "Inlet Temp"},
                               {11, 'f', "Fan1 RPM"}};

struct Setting {
  const char *name;
  const char *value;
};
// Written through the library like any tool writes them; the network ones become change
// requests that the store applies to its network record.
constexpr Setting kSettings[] = {
    {"WEBSERVER/maxsessions", "4"},
    {"SSH/maxsessions", "4"},
    {"SNMP/enable", "1"},
    {"SMTP/ipaddr", "10.20.0.25"},
    {"EMAIL_ALERT/enable1", "1"},
    {"EMAIL_ALERT/addr1", "ops@lab.example.net"},
    {"DNS/mir_name", "mirel-lab-01"},
    {"DNS/domain_name", "lab.example.net"},
    {"DNS/register_mir", "1"},
    {"DNS/dhcp_enable", "0"},
    {"DNS/use_dhcp_domain", "0"},
    {"DNS/server1", "10.20.0.53"},
    {"DNS/server2", "10.20.0.54"},
    {"NETWORK/NIC/enable", "1"},
    {"NETWORK/IPV4/enable", "1"},
    {"NETWORK/NIC/selection", "1"},
    {"NETWORK/NIC/auto_neg", "1"},
    {"NETWORK/NIC/fullduplex", "1"},
    {"NETWORK/NIC/mtu", "1500"},
    {"IPV6/enable", "1"},
    {"IPV6/address", "2001:db8:10::21"},
    {"IPV6/gateway", "2001:db8:10::1"},
    {"IPV6/prefix_length", "64"},
    {"IPV6/dhcp_enable", "0"},
    {"IPV6/DNSServer1", "2001:db8:10::53"},
    {"IPV6/link_local_address", "fe80::7a2b:cbff:fe12:3456"},
};

// The properties the mapping daemon owns: the firmware's own values and the controller's name.
constexpr Setting kMapped[] = {
    {"MIR/FIRMWARE/version", "2.10"}, {"MIR/FIRMWARE/minor", "10"},
    {"MIR/FIRMWARE/build_num", "17"}, {"MIR/FIRMWARE/last_update", "1716940800"},
    {"MIR/name", "mirel-lab-01"},
};
constexpr Setting kDcsgen[] = {{"chassis_model", "Stratum R40"}, {"service_tag", "7QX2K42"}};

// Flags the store keeps for the controller's add-in card.
constexpr const char *kFlags[] = {"tarnstatus_bool_tarn_present",
                                  "tarnstatus_bool_tarn_sd_present"};

int seed(const Command &, const Args &) {
  const std::string where = "sim seed: " + store_path();
  if (tessera_store_check() != TESSERA_STORE_OK || tessera_store_begin() != TESSERA_STORE_OK) {
    return fail(where, "the store can't be used");
  }
  bool ok = tessera_store_reset() == TESSERA_STORE_OK;
  // The rows with a legacy path; then those with a store key alone, but for a key that a row
  // with a legacy path shares, whose default (SNMP's community name, say) comes first.
  Cfgmgr_Restore_Defaults();
  std::set<std::string_view> restored;
  for (const auto &row : catalogue_rows()) {
    if (row.legacy_path[0] != '\0') {
      restored.insert(row.store_key);
    }
  }
  for (const auto &row : catalogue_rows()) {
    if (row.legacy_path[0] == '\0' && row.type != PROP_TYPE_CONFIG_CHANGED &&
        !restored.contains(row.store_key)) {
      ok = ok && Cfgmgr_Set_Property_ori(row.store_key, row.default_value) == 0;
    }
  }
  for (const auto &setting : kSettings) {
    if (const int32_t status = Cfgmgr_Set_Property_ori(setting.name, setting.value); status != 0) {
      tessera_store_rollback();
      return fail_status(where + ": " + setting.name, status, "the store refused the value");
    }
  }
  for (const char *flag : kFlags) {
    ok = ok && tessera_store_set_value(flag, TESSERA_STORE_BOOL, "1") == TESSERA_STORE_OK;
  }
  for (const auto &mapped : kMapped) {
    ok = ok && tessera_store_map_property(TESSERA_STORE_MAPPED, mapped.name, mapped.value) ==
                   TESSERA_STORE_OK;
  }
  for (const auto &mapped : kDcsgen) {
    ok = ok && tessera_store_map_property(TESSERA_STORE_DCSGEN, mapped.name, mapped.value) ==
                   TESSERA_STORE_OK;
  }
  for (const auto &user : kUsers) {
    ok = ok && tessera_store_set_user(user.name, user.privilege) == TESSERA_STORE_OK;
  }
  for (const auto &session : kSessions) {
    ok = ok && tessera_store_add_session(&session) == TESSERA_STORE_OK;
  }
  for (const auto &sensor : kSensors) {
    ok = ok && tessera_store_add_sensor(sensor.index, sensor.kind, sensor.name) == TESSERA_STORE_OK;
  }
  ok = ok && init_power_supply() != 0;  // notes the power supplies among the sensors
  if (!ok || tessera_store_commit() != TESSERA_STORE_OK) {
    tessera_store_rollback();
    return fail(where, "the store refused the sample controller");
  }
  std::printf(
      "Seeded %s: the catalogue's defaults, %zu settings with the network record, %zu "
      "mapping daemon properties, %zu users, %zu sessions, %zu sensors.\n",
      store_path().c_str(), std::size(kSettings), std::size(kMapped) + std::size(kDcsgen),
      std::size(kUsers), std::size(kSessions), std::size(kSensors));
  return kOk;
}

}  // namespace
#endif

std::vector<Command> seed_commands() {
#ifdef TESSERA_CLI_SIM
  return {
      {"sim seed",
       "",
       "fill the store with a sample controller",
       "Empties the store and fills it like a controller in use: every catalogue default, a\n"
       "few settings, the network record (DNS, NIC, IPv6), the mapping daemon's own\n"
       "properties (MIR/FIRMWARE/*, MIR/name, two DCSGEN ones), users with privileges, eight\n"
       "sessions of six types with virtual console and media children, and sensors with two\n"
       "power supplies. Works with the daemons running or not.\n",
       {},
       0,
       0,
       seed},
  };
#else
  return {};
#endif
}

}  // namespace tessera_cli::sim
