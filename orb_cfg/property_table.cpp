// The property catalogue: every controller setting that the tools can reach, with its store key,
// legacy path, type and default, and the two lookups over it.
//
// The rows are written below the way the catalogue is read, one line per row or per family of
// rows, and are expanded at compile time into a table of integers and one character pool, so
// that the table is constant data without load-time relocations.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "orb_cfg/orb_cfg_internal.h"

namespace tessera::orb_cfg {
namespace {

inline constexpr int32_t kNone = PROP_TYPE_NONE;
inline constexpr int32_t kBool = PROP_TYPE_BOOL;
inline constexpr int32_t kInt = PROP_TYPE_INT;
inline constexpr int32_t kByte = PROP_TYPE_BYTE;
inline constexpr int32_t kShort = PROP_TYPE_SHORT;
inline constexpr int32_t kStr = PROP_TYPE_STR;
inline constexpr int32_t kAddrPrefix = PROP_TYPE_ADDR_PREFIX;
inline constexpr int32_t kPrefix = PROP_TYPE_PREFIX;
inline constexpr int32_t kChanged = PROP_TYPE_CONFIG_CHANGED;

// The id of a row, or of a family of rows: base + step * N.
struct Id {
  consteval Id(int32_t id) : base(id) {}  // NOLINT(google-explicit-constructor): reads as data
  consteval Id(int32_t id_base, int32_t id_step) : base(id_base), step(id_step) {}
  int32_t base;
  int32_t step = 0;
};

// The values of N for a family line. Consecutive block lines repeat together, all of them for
// one N before the next; any other family runs through all its N before the next line.
struct Range {
  int32_t first = 0;  // a plain line is the one row of N = 0
  int32_t last = 0;
  bool block = false;
};
consteval Range each(int32_t first, int32_t last) {
  return {first, last, false};
}
consteval Range block(int32_t first, int32_t last) {
  return {first, last, true};
}

// One line of the catalogue. In a family, "{N}" in a name stands for the number.
struct Line {
  int32_t group;
  Id id;
  int32_t type;
  std::string_view store_key;
  std::string_view legacy_path;
  std::string_view default_value;
  Range n{};
};

// The catalogue in table order. A function rather than a variable, so that the line data exists
// only while the compiler builds the table; it and every helper of the build are consteval, so
// that none of them reaches the binary.
// clang-format off
consteval auto lines() {
  return std::to_array<Line>({
    {0, 0, kNone, "", "", ""},
    {1, 8, kBool, "gui_bool_gui_enabled", "WEBSERVER/enable", "1"},
    {1, 14, kInt, "gui_int_max_sessions", "WEBSERVER/maxsessions", ""},
    {1, 15, kInt, "gui_int_session_count", "", ""},
    {1, 16, kInt, "gui_int_session_timeout", "WEBSERVER/timeout", "1800"},
    {1, 11, kInt, "gui_int_http_port", "WEBSERVER/http_port", "80"},
    {1, 12, kInt, "gui_int_https_port", "WEBSERVER/https_port", "443"},
    {1, 13, kBool, "pm_bool_ssl_encryption_enabled", "WEBSERVER/sslencypt_strength", "0"},
    {1, 9, kChanged, "gui_config_changed", "", ""},
    {2, 22, kBool, "pm_bool_ssh_enabled", "SSH/enable", "1"},
    {2, 26, kInt, "pm_int_ssh_max_sessions", "SSH/maxsessions", ""},
    {2, 27, kInt, "pm_int_ssh_session_count", "", ""},
    {2, 28, kInt, "pm_int_ssh_session_timeout", "SSH/timeout", "300"},
    {2, 93, kInt, "pm_int_ssh_port", "SSH/port", "22"},
    {2, 33, kChanged, "pm_ssh_config_changed", "", ""},
    {3, 23, kBool, "pm_bool_telnet_enabled", "TELNET/enable", "0"},
    {3, 29, kInt, "pm_int_telnet_max_sessions", "TELNET/maxsessions", ""},
    {3, 30, kInt, "pm_int_telnet_session_count", "", ""},
    {3, 31, kInt, "pm_int_telnet_session_timeout", "TELNET/timeout", "0"},
    {3, 94, kInt, "pm_int_telnet_port", "TELNET/port", "23"},
    {3, 61, kChanged, "pm_telnet_config_changed", "", ""},
    {4, 62, kBool, "tolvex_bool_enabled", "TOLVEX/enable", "1"},
    {4, 65, kInt, "tolvex_int_session_count", "", ""},
    {4, 0, kInt, "", "TOLVEX/timeout", "60"},
    {4, 63, kChanged, "tolvex_config_changed", "", ""},
    {5, 21, kBool, "pm_bool_snmp_enabled", "SNMP/enable", "0"},
    {5, 88, kStr, "pm_str_snmp_community", "SNMP/COMMUNITY_NAME/get", "meadow"},
    {5, 88, kStr, "pm_str_snmp_community", "SNMP/COMMUNITY_NAME/set", "meadow"},
    {5, 32, kChanged, "pm_snmp_config_changed", "", ""},
    {5, {74, 1}, kBool, "pm_bool_snmp_trap{N}_enabled", "", "", block(1, 4)},
    {5, {88, 1}, kStr, "pm_str_snmp_trap{N}_destination", "", "", block(1, 4)},
    {5, 88, kStr, "pm_str_snmp_community", "", ""},
    {6, 20, kBool, "pm_bool_asra_enabled", "CR/asr_enable", ""},
    {6, 17, kChanged, "pm_asra_config_changed", "", ""},
    {7, 19, kBool, "pam_bool_ad_enabled", "AD/enable", ""},
    {7, 24, kInt, "pam_int_ad_schema", "AD/type", ""},
    {7, 25, kInt, "pam_int_ad_timeout", "AD/timeout", ""},
    {7, 0, kNone, "", "AD/root_domain", ""},
    {7, 34, kStr, "pam_str_ad_dc_server_1", "AD/dc_filter1", ""},
    {7, 35, kStr, "pam_str_ad_dc_server_2", "AD/dc_filter2", ""},
    {7, 36, kStr, "pam_str_ad_dc_server_3", "AD/dc_filter3", ""},
    {7, 18, kBool, "pam_bool_ad_cert_validation", "AD/cert_validation", ""},
    {7, 41, kStr, "pam_str_ad_mirel_name", "AD/mir_name", ""},
    {7, 40, kStr, "pam_str_ad_mirel_domain", "AD/mir_domain", ""},
    {7, 37, kStr, "pam_str_ad_gc_server_1", "AD/gc_filter1", ""},
    {7, 38, kStr, "pam_str_ad_gc_server_2", "AD/gc_filter2", ""},
    {7, 39, kStr, "pam_str_ad_gc_server_3", "AD/gc_filter3", ""},
    {7, 0, kNone, "", "AD/filter_enable", ""},
    {7, 0, kNone, "", "AD/dc_filter", ""},
    {7, 0, kNone, "", "AD/gc_filter", ""},
    {7, {40, 3}, kStr, "pam_str_ad_role_group_{N}_name", "SSAD/name{N}", "", block(1, 5)},
    {7, {39, 3}, kStr, "pam_str_ad_role_group_{N}_domain", "SSAD/domain{N}", "", block(1, 5)},
    {7, {41, 3}, kInt, "pam_int_ad_role_group_{N}_privileges", "SSAD/privilege{N}", "", block(1, 5)},
    {7, 57, kStr, "pam_str_ad_userdomain_name_{N}", "USERDOMAIN/name{N}", "", each(1, 40)},
    {7, 58, kStr, "pm_str_krb_keytab_path", "KERBEROS/keytab_path", "/flash/data0/cv"},
    {7, 59, kStr, "pm_str_krb_keytab_filename", "KERBEROS/keytab_file", "krb_keytab"},
    {7, 110, kBool, "pam_bool_sso_enabled", "AD/sso_enable", "0"},
    {8, 87, kStr, "pm_str_email_server_address", "SMTP/ipaddr", "0.0.0.0"},
    {8, {70, 1}, kBool, "pm_bool_email_alert{N}_enabled", "EMAIL_ALERT/enable{N}", "0", block(1, 4)},
    {8, {78, 2}, kStr, "pm_str_email_alert{N}_destination", "EMAIL_ALERT/addr{N}", "", block(1, 4)},
    {8, {77, 2}, kStr, "pm_str_email_alert{N}_body", "EMAIL_ALERT/msg{N}", "", block(1, 4)},
    {10, 99, kInt, "rm_int_attach_state", "VM/attached", "2"},
    {10, 98, kBool, "rm_bool_floppy_emulation", "VM/floppy_emulation", "0"},
    {10, 100, kBool, "rm_bool_lcdrive_enable", "", "1"},
    {10, 105, kInt, "rp_int_apcp_port", "VM/port", "2068"},
    {10, 107, kStr, "rp_str_media_encrypt", "VM/encryption", "NONE"},
    {10, 96, kBool, "pm_bool_vfk_enabled", "VM/keyenable", "0"},
    {10, 105, kInt, "rp_int_apcp_port", "VM/sslport", "2068"},
    {10, 101, kBool, "rp_int_boot_once", "VM/bootonce_enable", "0"},
    {10, 102, kBool, "rp_bool_last_bootonce_virtual", "rp_bool_last_bootonce_virtual", "0"},
    {10, 97, kInt, "pm_int_vfk_size", "VM/keysize", ""},
    {10, 134, kBool, "tarnstatus_bool_tarn_sd_enable", "", "0"},
    {10, 135, kBool, "tarnstatus_bool_tarn_sd_ro", "", "0"},
    {11, 0, kInt, "", "MIR/type", "10"},
    {11, 0, kStr, "", "MIR/name", "Mirel"},
    {11, 0, kStr, "", "MIR/description", 
     "This system component provides a complete set of remote management functions for Vela "
     "Stratum servers"},
    {11, 0, kStr, "", "MIR/oemdescription", ""},
    {11, 0, kStr, "", "MIR/productinfo", "Vela Mirel Controller"},
    {11, 0, kStr, "", "MIR/oemproductinfo", ""},
    {11, 0, kStr, "", "MIR/FIRMWARE/version", "1.00"},
    {11, 0, kStr, "", "MIR/FIRMWARE/build_num", "00"},
    {11, 0, kStr, "", "MIR/FIRMWARE/minor", "00"},
    {11, 0, kStr, "", "MIR/FIRMWARE/revision", "00"},
    {11, 0, kBool, "", "MIR/FIRMWARE/TFTP/update_enable", "1"},
    {11, 0, kStr, "", "MIR/FIRMWARE/TFTP/ipaddr", "0.0.0.0"},
    {11, 0, kStr, "", "MIR/FIRMWARE/TFTP/path", ""},
    {11, 0, kInt, "", "MIR/FIRMWARE/last_update", ""},
    {11, 0, kInt, "", "MIR/TIME/daylight_offset", "0"},
    {11, 0, kInt, "", "MIR/TIME/timezone_offset", "0"},
    {12, 0, kNone, "", "BOARD/PROP/mac", ""},
    {12, 0, kNone, "", "BOARD/PROP/manuf", ""},
    {12, 0, kNone, "", "BOARD/PROP/date", ""},
    {12, 0, kNone, "", "BOARD/PROP/vela_barcode", ""},
    {12, 0, kNone, "", "BOARD/PROP/hwrev", ""},
    {11, 0, kStr, "", "MIR/USER/name", ""},
    {11, 0, kStr, "", "MIR/USER/password", ""},
    {11, 0, kBool, "", "MIR/USER/enable", ""},
    {11, 0, kInt, "", "MIR/USER/privilege", ""},
    {11, 0, kInt, "", "MIR/USER/IPMILAN/privilege", ""},
    {11, 0, kInt, "", "MIR/USER/IPMISERIAL/privilege", ""},
    {13, 0, kBool, "", "NETWORK/IPV4/enable", "1"},
    {13, 0, kShort, "", "NETWORK/NIC/mtu", ""},
    {13, 0, kInt, "", "NETWORK/NIC/fullduplex", "1"},
    {13, 0, kBool, "", "NETWORK/NIC/auto_neg", "1"},
    {13, 0, kInt, "", "NETWORK/NIC/100B", "10"},
    {13, 0, kInt, "", "NETWORK/NIC/selection", ""},
    {13, 0, kBool, "", "NETWORK/NIC/enable", "1"},
    {13, 0, kNone, "", "NETWORK/TCP/srtt_base", "0"},
    {13, 0, kNone, "", "NETWORK/TCP/srtt_default", "6"},
    {13, 0, kNone, "", "NETWORK/TCP/subnet_local", "1"},
    {13, 0, kNone, "", "NETWORK/BONDING/mode", ""},
    {13, 0, kNone, "", "NETWORK/BONDING/pollmode", ""},
    {13, 0, kNone, "", "NETWORK/BONDING/arp_interval", ""},
    {13, 0, kNone, "", "NETWORK/BONDING/arp_ip_target", ""},
    {13, 0, kNone, "", "NETWORK/BONDING/lacp_rate", ""},
    {13, 0, kNone, "", "NETWORK/BONDING/downdelay", ""},
    {13, 0, kNone, "", "NETWORK/BONDING/updelay", ""},
    {13, 0, kNone, "", "NETWORK/BONDING/miimon", ""},
    {13, 0, kNone, "", "NETWORK/BONDING/primary", ""},
    {13, 0, kBool, "", "IPV6/enable", "0"},
    {13, 0, kStr, "", "IPV6/address", ""},
    {13, 0, kStr, "", "IPV6/gateway", ""},
    {13, 0, kByte, "", "IPV6/prefix_length", ""},
    {13, 0, kBool, "", "IPV6/dhcp_enable", ""},
    {13, 0, kStr, "", "IPV6/link_local_address", ""},
    {13, 0, kStr, "", "IPV6/site_local_address", ""},
    {13, 0, kBool, "", "IPV6/DNS_from_DHCP", ""},
    {13, 0, kStr, "", "IPV6/DNSServer1", ""},
    {13, 0, kStr, "", "IPV6/DNSServer2", ""},
    {13, 0, kBool, "", "IPV6/IP_sec_enable", ""},
    {13, 0, kByte, "", "IPV6/valid_address_number", ""},
    {13, 0, kAddrPrefix, "", "IPV6/extaddr{N}", "", each(2, 15)},
    {13, 0, kPrefix, "", "IPV6/extaddr{N}_prefix", "", each(2, 15)},
    {13, 0, kStr, "", "IPV6/URL/string", ""},
    {14, 0, kBool, "", "DNS/dhcp_enable", ""},
    {14, 0, kStr, "", "DNS/server1", ""},
    {14, 0, kStr, "", "DNS/server2", ""},
    {14, 0, kBool, "", "DNS/register_mir", ""},
    {14, 0, kStr, "", "DNS/mir_name", ""},
    {14, 0, kBool, "", "DNS/use_dhcp_domain", ""},
    {14, 0, kStr, "", "DNS/domain_name", ""},
    {15, 0, kNone, "", "CSR/keysize", "1024"},
    {15, 0, kNone, "", "CSR/cn", ""},
    {15, 0, kNone, "", "CSR/o", ""},
    {15, 0, kNone, "", "CSR/ou", ""},
    {15, 0, kNone, "", "CSR/l", ""},
    {15, 0, kNone, "", "CSR/s", ""},
    {15, 0, kNone, "", "CSR/cc", "US"},
    {15, 0, kNone, "", "CSR/email", ""},
    {17, 120, kBool, "vkvm_bool_enabled", "CR/enable", "1"},
    {17, 104, kInt, "rp_int_max_kvm_sessions", "CR/maxsessions", "2"},
    {17, 0, kNone, "", "CR/port", ""},
    {17, 0, kNone, "", "CR/sslport", ""},
    {17, 0, kNone, "", "CR/encryption", ""},
    {17, 95, kBool, "pm_bool_blank_local_video", "CR/local_server_video", "0"},
    {17, 0, kNone, "", "CR/local_video_trans_sec", ""},
    {17, 0, kNone, "", "CR/post_vkvm_disable", ""},
    {17, 119, kBool, "vkvm_bool_local_disable", "CR/local_vkvm_disable", "0"},
    {17, 105, kInt, "rp_int_apcp_port", "CR/video_port", "2068"},
    {17, 105, kInt, "rp_int_apcp_port", "CR/km_port", "2068"},
    {17, 106, kStr, "rp_str_video_encrypt", "CR/video_encryption", "1"},
    {19, 108, kInt, "scl_int_enabled", "SMARTCARD/logon_enable", "0"},
    {19, 109, kBool, "scl_bool_crl_check_enabled", "SMARTCARD/CRL_enable", "0"},
    {19, 110, kBool, "pam_bool_sso_enabled", "AD/sso_enable", "0"},
    {18, 112, kBool, "ser_bool_console_enable", "SERIAL/enable", "0"},
    {18, 118, kBool, "ser_bool_com2redir_enable", "SERIAL/redirect_enable", "1"},
    {18, 0, kNone, "", "SERIAL/maxsessions", ""},
    {18, 114, kInt, "ser_int_console_timeout", "SERIAL/timeout", "300"},
    {18, 111, kInt, "ser_int_baudrate", "SERIAL/baudrate", "57600"},
    {18, 115, kBool, "ser_bool_console_noauth", "SERIAL/console_no_auth", "0"},
    {18, 113, kStr, "ser_str_console_quitkey", "SERIAL/escape_key", "^\\"},
    {18, 117, kInt, "ser_int_history_size", "SERIAL/history_buf_size", "8192"},
    {18, 116, kStr, "ser_str_console_command", "SERIAL/login_command", ""},
    {18, 0, kNone, "", "SERIAL/mode2default", ""},
    {20, 0, kNone, "", "SMSP/enable", ""},
    {20, 0, kNone, "", "SMSP/maxsessions", ""},
    {20, 0, kNone, "", "SMSP/timeout", ""},
    {21, 0, kNone, "", "SMCLP/enable", ""},
    {21, 0, kNone, "", "SMCLP/maxsessions", ""},
    {21, 0, kNone, "", "SMCLP/timeout", ""},
    {22, 1, kBool, "firewall_bool_net_block_enabled", "ENFORCED/ipenable", "0"},
    {22, 2, kStr, "firewall_str_net_block_addr", "ENFORCED/ipaddr", "192.168.1.1"},
    {22, 3, kStr, "firewall_str_net_block_mask", "ENFORCED/ipmask", "255.255.255.0"},
    {22, 4, kBool, "firewall_bool_ip_block_enabled", "ENFORCED/IPBLOCK/enable", "0"},
    {22, 5, kInt, "firewall_int_ip_block_fail_count", "ENFORCED/IPBLOCK/failcount", "5"},
    {22, 6, kInt, "firewall_int_ip_block_fail_window", "ENFORCED/IPBLOCK/failwindow", "60"},
    {22, 7, kInt, "firewall_int_ip_block_penalty_time", "ENFORCED/IPBLOCK/penaltytime", "300"},
    {22, 128, kBool, "ipmi_bbb_config_disable", "ENFORCED/BBB_CONFIG/disable", "0"},
    {22, 127, kBool, "ipmi_local_config_disable", "ENFORCED/LOCAL_CONFIG/disable", "0"},
    {22, 0, kInt, "", "ENFORCED/post_status", "0"},
    {29, 129, kBool, "pm_bool_remote_syslog_enable", "", "0"},
    {29, 130, kStr, "pm_str_remote_syslog_server1", "", ""},
    {29, 131, kStr, "pm_str_remote_syslog_server2", "", ""},
    {29, 132, kStr, "pm_str_remote_syslog_server3", "", ""},
    {29, 133, kInt, "pm_int_remote_syslog_udp", "", "514"},
    {23, 0, kNone, "", "OEM/flag", ""},
  });
}
// clang-format on

// The end row: -1 in group, id and type, no store key or legacy path, an empty default.
inline constexpr uint16_t kNoText = 0xFFFF;
inline constexpr PropertyRow kEndRow{-1, -1, -1, kNoText, kNoText, 0, 0, 0};

// Calls visit(line, n) for every row of the catalogue, in table order.
template <class Visit>
consteval void for_each_row(Visit visit) {
  const auto all = lines();
  for (std::size_t i = 0; i < all.size();) {
    const Range &n = all[i].n;
    std::size_t end = i + 1;
    while (n.block && end < all.size() && all[end].n.block && all[end].n.first == n.first &&
           all[end].n.last == n.last) {
      ++end;
    }
    for (int32_t number = n.first; number <= n.last; ++number) {
      for (std::size_t k = i; k < end; ++k) {
        visit(all[k], number);
      }
    }
    i = end;
  }
}

consteval std::size_t decimal_length(int32_t n) {
  return n < 10 ? 1 : 1 + decimal_length(n / 10);
}

// Length of a name of line text with "{N}" put as the number n.
consteval std::size_t expanded_length(std::string_view text, int32_t n) {
  const std::size_t at = text.find("{N}");
  return at == std::string_view::npos ? text.size() : text.size() - 3 + decimal_length(n);
}

// The pool holds one empty text at offset 0 and every non-empty text once per row.
consteval std::size_t pool_size() {
  std::size_t size = 1;
  for_each_row([&size](const Line &line, int32_t n) consteval {
    for (std::string_view text : {line.store_key, line.legacy_path, line.default_value}) {
      size += text.empty() ? 0 : expanded_length(text, n) + 1;
    }
  });
  return size;
}

consteval std::size_t row_count() {
  std::size_t rows = 0;
  for_each_row([&rows](const Line &, int32_t) consteval { ++rows; });
  return rows;
}

static_assert(row_count() == kPropertyRowCount, "the catalogue has 288 rows");
static_assert(pool_size() < kNoText, "pool offsets are 16-bit");

// The length fields of a row hold a byte.
consteval bool names_fit_their_length_fields() {
  bool fit = true;
  for_each_row([&fit](const Line &line, int32_t n) consteval {
    fit = fit && expanded_length(line.store_key, n) <= UINT8_MAX &&
          expanded_length(line.legacy_path, n) <= UINT8_MAX;
  });
  return fit;
}
static_assert(names_fit_their_length_fields());

struct Catalogue {
  std::array<PropertyRow, kPropertyRowCount + 1> rows{};
  std::array<char, pool_size()> pool{};
};

consteval Catalogue build() {
  Catalogue catalogue;
  std::size_t used = 1;  // pool[0] is the empty text
  // Puts a text into the pool and gives its offset.
  auto put = [&catalogue, &used](std::string_view text, int32_t n) consteval -> uint16_t {
    if (text.empty()) {
      return 0;
    }
    const auto at = static_cast<uint16_t>(used);
    for (std::size_t i = 0; i < text.size(); ++i) {
      if (text.find("{N}", i) == i) {
        char digits[10]{};
        std::size_t length = 0;
        for (int32_t rest = n; length == 0 || rest > 0; rest /= 10) {
          digits[length++] = static_cast<char>('0' + rest % 10);
        }
        while (length > 0) {
          catalogue.pool[used++] = digits[--length];
        }
        i += 2;
      } else {
        catalogue.pool[used++] = text[i];
      }
    }
    catalogue.pool[used++] = '\0';
    return at;
  };
  std::size_t index = 0;
  for_each_row([&](const Line &line, int32_t n) consteval {
    catalogue.rows[index++] = PropertyRow{
        line.group,
        line.id.base + line.id.step * n,
        line.type,
        put(line.store_key, n),
        put(line.legacy_path, n),
        put(line.default_value, n),
        static_cast<uint8_t>(expanded_length(line.store_key, n)),
        static_cast<uint8_t>(expanded_length(line.legacy_path, n)),
    };
  });
  catalogue.rows[index] = kEndRow;
  return catalogue;
}

// What every reader of the table relies on: a store key exactly when the id is non-zero, and an
// all-empty first row.
consteval bool rows_are_consistent() {
  const Catalogue catalogue = build();
  const PropertyRow &first = catalogue.rows[0];
  if (first.group != 0 || first.id != 0 || first.type != 0 || first.store_key_size != 0 ||
      first.legacy_path_size != 0 || catalogue.pool[first.default_value_at] != '\0') {
    return false;
  }
  for (int32_t i = 0; i < kPropertyRowCount; ++i) {
    if ((catalogue.rows[i].id == 0) != (catalogue.rows[i].store_key_size == 0)) {
      return false;
    }
  }
  return true;
}
static_assert(rows_are_consistent());

// The longest store key or legacy path: a longer name is known to have no row.
consteval std::size_t longest_name() {
  std::size_t longest = 0;
  for_each_row([&longest](const Line &line, int32_t n) consteval {
    longest = std::max(
        {longest, expanded_length(line.store_key, n), expanded_length(line.legacy_path, n)});
  });
  return longest;
}
inline constexpr std::size_t kLongestName = longest_name();
static_assert(kLongestName < kKeySize);

constinit const std::array<char, pool_size()> property_text = build().pool;

// Index of the first row whose store key (or legacy path) is `name`, or -1.
int32_t find_row(const char *name, uint8_t PropertyRow::*size, uint16_t PropertyRow::*at) {
  if (name == nullptr) {
    return -1;
  }
  const std::size_t length = strnlen(name, kLongestName + 1);
  for (int32_t i = 0; i < kPropertyRowCount; ++i) {
    const PropertyRow &row = property_table[i];
    if (row.*size == length && std::memcmp(property_text.data() + row.*at, name, length) == 0) {
      return i;
    }
  }
  return -1;
}

}  // namespace

constinit const std::array<PropertyRow, kPropertyRowCount + 1> property_table = build().rows;

const char *PropertyRow::store_key() const noexcept {
  return store_key_at == kNoText ? nullptr : property_text.data() + store_key_at;
}

const char *PropertyRow::legacy_path() const noexcept {
  return legacy_path_at == kNoText ? nullptr : property_text.data() + legacy_path_at;
}

const char *PropertyRow::default_value() const noexcept {
  return property_text.data() + default_value_at;
}

int32_t findOrbPropertyIndex(const char *key) noexcept {
  return find_row(key, &PropertyRow::store_key_size, &PropertyRow::store_key_at);
}

}  // namespace tessera::orb_cfg

int32_t findLegacyPropertyIndex(const char *path) {
  using tessera::orb_cfg::PropertyRow;
  return tessera::orb_cfg::find_row(path, &PropertyRow::legacy_path_size,
                                    &PropertyRow::legacy_path_at);
}
