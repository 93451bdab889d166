// Putting defaults back: the whole catalogue straight to the store, or the unset properties of
// the tool's own list through the daemon-first entry points.
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "orb_cfg/orb_cfg_internal.h"
#include "tessera/orb_cfg.h"

// The properties that set_tolvex_default fills in when unset, in order; null ends the list. The
// e-mail alert switches stand twice, so their second pass finds them set.
const char *const default_list[] = {
    "CR/enable",
    "CR/local_server_video",
    "CSR/cn",
    "CSR/o",
    "CSR/ou",
    "CSR/l",
    "CSR/s",
    "CSR/cc",
    "CSR/email",
    "CSR/keysize",
    "EMAIL_ALERT/enable1",
    "EMAIL_ALERT/enable2",
    "EMAIL_ALERT/enable3",
    "EMAIL_ALERT/enable4",
    "EMAIL_ALERT/addr1",
    "EMAIL_ALERT/addr2",
    "EMAIL_ALERT/addr3",
    "EMAIL_ALERT/addr4",
    "EMAIL_ALERT/enable1",
    "EMAIL_ALERT/enable2",
    "EMAIL_ALERT/enable3",
    "EMAIL_ALERT/enable4",
    "ENFORCED/ipenable",
    "ENFORCED/ipaddr",
    "ENFORCED/ipmask",
    "ENFORCED/IPBLOCK/enable",
    "ENFORCED/IPBLOCK/failcount",
    "ENFORCED/IPBLOCK/failwindow",
    "ENFORCED/IPBLOCK/penaltytime",
    "ENFORCED/LOCAL_CONFIG/disable",
    "ENFORCED/BBB_CONFIG/disable",
    "MIR/FIRMWARE/TFTP/update_enable",
    "MIR/FIRMWARE/TFTP/ipaddr",
    "MIR/FIRMWARE/TFTP/path",
    "MIR/TIME/daylight_offset",
    "MIR/TIME/timezone_offset",
    "TOLVEX/timeout",
    "TOLVEX/enable",
    "SERIAL/enable",
    "SERIAL/baudrate",
    "SERIAL/escape_key",
    "SERIAL/timeout",
    "SERIAL/console_no_auth",
    "SERIAL/login_command",
    "SERIAL/history_buf_size",
    "SERIAL/redirect_enable",
    "SMARTCARD/logon_enable",
    "AD/sso_enable",
    "SMARTCARD/CRL_enable",
    "SNMP/enable",
    "SNMP/COMMUNITY_NAME/get",
    "SNMP/COMMUNITY_NAME/set",
    "TELNET/timeout",
    "TELNET/enable",
    "TELNET/port",
    "VM/keyenable",
    "VM/floppy_emulation",
    "IPV6/URL/string",
    "KERBEROS/keytab_path",
    "KERBEROS/keytab_file",
    "pm_bool_remote_syslog_enable",
    "pm_str_remote_syslog_server1",
    "pm_str_remote_syslog_server2",
    "pm_str_remote_syslog_server3",
    "pm_int_remote_syslog_udp",
    nullptr,
};

namespace tessera::orb_cfg {
namespace {

// set_tolvex_default reads into this many bytes and takes one less as the length.
inline constexpr unsigned int kReadSize = TESSERA_PROPERTY_VALUE_SIZE;

// The catalogue default of a name of the list: by legacy path or by store key.
const char *default_of(const char *name) {
  const int32_t row = std::strchr(name, '/') != nullptr ? findLegacyPropertyIndex(name)
                                                        : findOrbPropertyIndex(name);
  return row < 0 ? "" : property_table[row].default_value();
}

}  // namespace
}  // namespace tessera::orb_cfg

using namespace tessera::orb_cfg;  // NOLINT(google-build-using-namespace): this file's own

int32_t Cfgmgr_Restore_Defaults(void) {
  for (int32_t i = 0; i < kPropertyRowCount; ++i) {
    const PropertyRow &row = property_table[i];
    if (row.legacy_path_size == 0) {
      continue;
    }
    const char *name = row.id != 0 ? row.store_key() : row.legacy_path();
    static_cast<void>(setOrbConfigByType(name, row.default_value(), row.type));
  }
  return 1;
}

int32_t set_tolvex_default(void) {
  for (const char *const *entry = default_list; *entry != nullptr; ++entry) {
    const char *name = *entry;
    std::array<char, kReadSize> value;
    if (Cfgmgr_Get_Property(name, value.data(), kReadSize - 1) == 0) {
      continue;
    }
    const char *default_text = default_of(name);
    std::printf("%s not set. Set to default %s\n", name, default_text);
    if (Cfgmgr_Set_Property(name, default_text) != 0) {
      std::printf("set %s failed\n", name);
    }
  }
  return 0;
}
