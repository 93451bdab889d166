// The catalogue, row by row: the rows are written out here a second time, in their readable
// notation, expanded by this file's own code and compared with the library's table, its lookups
// and the defaults it writes back.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "orb_cfg/orb_cfg_internal.h"
#include "orb_cfg_test.h"

namespace tessera::test {
namespace {

using orb_cfg::property_table;

// group | id | type | store key | legacy path | default [| N range[, block]]; '-' is empty.
// In a family, N stands for the number in the id, and {N} for it in a name. A legacy path
// "DIR/{a,b}" stands for the rows "DIR/a" and "DIR/b", alike in every other cell.
constexpr const char kCatalogueText[] = R"(
0 | 0 | 0 | - | - | -
1 | 8 | 2 | gui_bool_gui_enabled | WEBSERVER/enable | 1
1 | 14 | 3 | gui_int_max_sessions | WEBSERVER/maxsessions | -
1 | 15 | 3 | gui_int_session_count | - | -
1 | 16 | 3 | gui_int_session_timeout | WEBSERVER/timeout | 1800
1 | 11 | 3 | gui_int_http_port | WEBSERVER/http_port | 80
1 | 12 | 3 | gui_int_https_port | WEBSERVER/https_port | 443
1 | 13 | 2 | pm_bool_ssl_encryption_enabled | WEBSERVER/sslencypt_strength | 0
1 | 9 | 10 | gui_config_changed | - | -
2 | 22 | 2 | pm_bool_ssh_enabled | SSH/enable | 1
2 | 26 | 3 | pm_int_ssh_max_sessions | SSH/maxsessions | -
2 | 27 | 3 | pm_int_ssh_session_count | - | -
2 | 28 | 3 | pm_int_ssh_session_timeout | SSH/timeout | 300
2 | 93 | 3 | pm_int_ssh_port | SSH/port | 22
2 | 33 | 10 | pm_ssh_config_changed | - | -
3 | 23 | 2 | pm_bool_telnet_enabled | TELNET/enable | 0
3 | 29 | 3 | pm_int_telnet_max_sessions | TELNET/maxsessions | -
3 | 30 | 3 | pm_int_telnet_session_count | - | -
3 | 31 | 3 | pm_int_telnet_session_timeout | TELNET/timeout | 0
3 | 94 | 3 | pm_int_telnet_port | TELNET/port | 23
3 | 61 | 10 | pm_telnet_config_changed | - | -
4 | 62 | 2 | tolvex_bool_enabled | TOLVEX/enable | 1
4 | 65 | 3 | tolvex_int_session_count | - | -
4 | 0 | 3 | - | TOLVEX/timeout | 60
4 | 63 | 10 | tolvex_config_changed | - | -
5 | 21 | 2 | pm_bool_snmp_enabled | SNMP/enable | 0
5 | 88 | 6 | pm_str_snmp_community | SNMP/COMMUNITY_NAME/get | meadow
5 | 88 | 6 | pm_str_snmp_community | SNMP/COMMUNITY_NAME/set | meadow
5 | 32 | 10 | pm_snmp_config_changed | - | -
5 | 74+N | 2 | pm_bool_snmp_trap{N}_enabled | - | - | 1-4, block
5 | 88+N | 6 | pm_str_snmp_trap{N}_destination | - | - | 1-4, block
5 | 88 | 6 | pm_str_snmp_community | - | -
6 | 20 | 2 | pm_bool_asra_enabled | CR/asr_enable | -
6 | 17 | 10 | pm_asra_config_changed | - | -
7 | 19 | 2 | pam_bool_ad_enabled | AD/enable | -
7 | 24 | 3 | pam_int_ad_schema | AD/type | -
7 | 25 | 3 | pam_int_ad_timeout | AD/timeout | -
7 | 0 | 0 | - | AD/root_domain | -
7 | 33+N | 6 | pam_str_ad_dc_server_{N} | AD/dc_filter{N} | - | 1-3
7 | 18 | 2 | pam_bool_ad_cert_validation | AD/cert_validation | -
7 | 41 | 6 | pam_str_ad_mirel_name | AD/mir_name | -
7 | 40 | 6 | pam_str_ad_mirel_domain | AD/mir_domain | -
7 | 36+N | 6 | pam_str_ad_gc_server_{N} | AD/gc_filter{N} | - | 1-3
7 | 0 | 0 | - | AD/{filter_enable,dc_filter,gc_filter} | -
7 | 40+3N | 6 | pam_str_ad_role_group_{N}_name | SSAD/name{N} | - | 1-5, block
7 | 39+3N | 6 | pam_str_ad_role_group_{N}_domain | SSAD/domain{N} | - | 1-5, block
7 | 41+3N | 3 | pam_int_ad_role_group_{N}_privileges | SSAD/privilege{N} | - | 1-5, block
7 | 57 | 6 | pam_str_ad_userdomain_name_{N} | USERDOMAIN/name{N} | - | 1-40
7 | 58 | 6 | pm_str_krb_keytab_path | KERBEROS/keytab_path | /flash/data0/cv
7 | 59 | 6 | pm_str_krb_keytab_filename | KERBEROS/keytab_file | krb_keytab
7 | 110 | 2 | pam_bool_sso_enabled | AD/sso_enable | 0
8 | 87 | 6 | pm_str_email_server_address | SMTP/ipaddr | 0.0.0.0
8 | 70+N | 2 | pm_bool_email_alert{N}_enabled | EMAIL_ALERT/enable{N} | 0 | 1-4, block
8 | 78+2N | 6 | pm_str_email_alert{N}_destination | EMAIL_ALERT/addr{N} | - | 1-4, block
8 | 77+2N | 6 | pm_str_email_alert{N}_body | EMAIL_ALERT/msg{N} | - | 1-4, block
10 | 99 | 3 | rm_int_attach_state | VM/attached | 2
10 | 98 | 2 | rm_bool_floppy_emulation | VM/floppy_emulation | 0
10 | 100 | 2 | rm_bool_lcdrive_enable | - | 1
10 | 105 | 3 | rp_int_apcp_port | VM/port | 2068
10 | 107 | 6 | rp_str_media_encrypt | VM/encryption | NONE
10 | 96 | 2 | pm_bool_vfk_enabled | VM/keyenable | 0
10 | 105 | 3 | rp_int_apcp_port | VM/sslport | 2068
10 | 101 | 2 | rp_int_boot_once | VM/bootonce_enable | 0
10 | 102 | 2 | rp_bool_last_bootonce_virtual | rp_bool_last_bootonce_virtual | 0
10 | 97 | 3 | pm_int_vfk_size | VM/keysize | -
10 | 134 | 2 | tarnstatus_bool_tarn_sd_enable | - | 0
10 | 135 | 2 | tarnstatus_bool_tarn_sd_ro | - | 0
11 | 0 | 3 | - | MIR/type | 10
11 | 0 | 6 | - | MIR/name | Mirel
11 | 0 | 6 | - | MIR/description | This system component provides a complete set of remote management functions for Vela Stratum servers
11 | 0 | 6 | - | MIR/oemdescription | -
11 | 0 | 6 | - | MIR/productinfo | Vela Mirel Controller
11 | 0 | 6 | - | MIR/oemproductinfo | -
11 | 0 | 6 | - | MIR/FIRMWARE/version | 1.00
11 | 0 | 6 | - | MIR/FIRMWARE/{build_num,minor,revision} | 00
11 | 0 | 2 | - | MIR/FIRMWARE/TFTP/update_enable | 1
11 | 0 | 6 | - | MIR/FIRMWARE/TFTP/ipaddr | 0.0.0.0
11 | 0 | 6 | - | MIR/FIRMWARE/TFTP/path | -
11 | 0 | 3 | - | MIR/FIRMWARE/last_update | -
11 | 0 | 3 | - | MIR/TIME/{daylight_offset,timezone_offset} | 0
12 | 0 | 0 | - | BOARD/PROP/{mac,manuf,date,vela_barcode,hwrev} | -
11 | 0 | 6 | - | MIR/USER/{name,password} | -
11 | 0 | 2 | - | MIR/USER/enable | -
11 | 0 | 3 | - | MIR/USER/privilege | -
11 | 0 | 3 | - | MIR/USER/IPMILAN/privilege | -
11 | 0 | 3 | - | MIR/USER/IPMISERIAL/privilege | -
13 | 0 | 2 | - | NETWORK/IPV4/enable | 1
13 | 0 | 5 | - | NETWORK/NIC/mtu | -
13 | 0 | 3 | - | NETWORK/NIC/fullduplex | 1
13 | 0 | 2 | - | NETWORK/NIC/auto_neg | 1
13 | 0 | 3 | - | NETWORK/NIC/100B | 10
13 | 0 | 3 | - | NETWORK/NIC/selection | -
13 | 0 | 2 | - | NETWORK/NIC/enable | 1
13 | 0 | 0 | - | NETWORK/TCP/srtt_base | 0
13 | 0 | 0 | - | NETWORK/TCP/srtt_default | 6
13 | 0 | 0 | - | NETWORK/TCP/subnet_local | 1
13 | 0 | 0 | - | NETWORK/BONDING/{mode,pollmode,arp_interval,arp_ip_target,lacp_rate} | -
13 | 0 | 0 | - | NETWORK/BONDING/{downdelay,updelay,miimon,primary} | -
13 | 0 | 2 | - | IPV6/enable | 0
13 | 0 | 6 | - | IPV6/{address,gateway} | -
13 | 0 | 4 | - | IPV6/prefix_length | -
13 | 0 | 2 | - | IPV6/dhcp_enable | -
13 | 0 | 6 | - | IPV6/{link_local_address,site_local_address} | -
13 | 0 | 2 | - | IPV6/DNS_from_DHCP | -
13 | 0 | 6 | - | IPV6/{DNSServer1,DNSServer2} | -
13 | 0 | 2 | - | IPV6/IP_sec_enable | -
13 | 0 | 4 | - | IPV6/valid_address_number | -
13 | 0 | 8 | - | IPV6/extaddr{N} | - | 2-15
13 | 0 | 9 | - | IPV6/extaddr{N}_prefix | - | 2-15
13 | 0 | 6 | - | IPV6/URL/string | -
14 | 0 | 2 | - | DNS/dhcp_enable | -
14 | 0 | 6 | - | DNS/{server1,server2} | -
14 | 0 | 2 | - | DNS/register_mir | -
14 | 0 | 6 | - | DNS/mir_name | -
14 | 0 | 2 | - | DNS/use_dhcp_domain | -
14 | 0 | 6 | - | DNS/domain_name | -
15 | 0 | 0 | - | CSR/keysize | 1024
15 | 0 | 0 | - | CSR/{cn,o,ou,l,s} | -
15 | 0 | 0 | - | CSR/cc | US
15 | 0 | 0 | - | CSR/email | -
17 | 120 | 2 | vkvm_bool_enabled | CR/enable | 1
17 | 104 | 3 | rp_int_max_kvm_sessions | CR/maxsessions | 2
17 | 0 | 0 | - | CR/{port,sslport,encryption} | -
17 | 95 | 2 | pm_bool_blank_local_video | CR/local_server_video | 0
17 | 0 | 0 | - | CR/{local_video_trans_sec,post_vkvm_disable} | -
17 | 119 | 2 | vkvm_bool_local_disable | CR/local_vkvm_disable | 0
17 | 105 | 3 | rp_int_apcp_port | CR/video_port | 2068
17 | 105 | 3 | rp_int_apcp_port | CR/km_port | 2068
17 | 106 | 6 | rp_str_video_encrypt | CR/video_encryption | 1
19 | 108 | 3 | scl_int_enabled | SMARTCARD/logon_enable | 0
19 | 109 | 2 | scl_bool_crl_check_enabled | SMARTCARD/CRL_enable | 0
19 | 110 | 2 | pam_bool_sso_enabled | AD/sso_enable | 0
18 | 112 | 2 | ser_bool_console_enable | SERIAL/enable | 0
18 | 118 | 2 | ser_bool_com2redir_enable | SERIAL/redirect_enable | 1
18 | 0 | 0 | - | SERIAL/maxsessions | -
18 | 114 | 3 | ser_int_console_timeout | SERIAL/timeout | 300
18 | 111 | 3 | ser_int_baudrate | SERIAL/baudrate | 57600
18 | 115 | 2 | ser_bool_console_noauth | SERIAL/console_no_auth | 0
18 | 113 | 6 | ser_str_console_quitkey | SERIAL/escape_key | ^\
18 | 117 | 3 | ser_int_history_size | SERIAL/history_buf_size | 8192
18 | 116 | 6 | ser_str_console_command | SERIAL/login_command | -
18 | 0 | 0 | - | SERIAL/mode2default | -
20 | 0 | 0 | - | SMSP/{enable,maxsessions,timeout} | -
21 | 0 | 0 | - | SMCLP/{enable,maxsessions,timeout} | -
22 | 1 | 2 | firewall_bool_net_block_enabled | ENFORCED/ipenable | 0
22 | 2 | 6 | firewall_str_net_block_addr | ENFORCED/ipaddr | 192.168.1.1
22 | 3 | 6 | firewall_str_net_block_mask | ENFORCED/ipmask | 255.255.255.0
22 | 4 | 2 | firewall_bool_ip_block_enabled | ENFORCED/IPBLOCK/enable | 0
22 | 5 | 3 | firewall_int_ip_block_fail_count | ENFORCED/IPBLOCK/failcount | 5
22 | 6 | 3 | firewall_int_ip_block_fail_window | ENFORCED/IPBLOCK/failwindow | 60
22 | 7 | 3 | firewall_int_ip_block_penalty_time | ENFORCED/IPBLOCK/penaltytime | 300
22 | 128 | 2 | ipmi_bbb_config_disable | ENFORCED/BBB_CONFIG/disable | 0
22 | 127 | 2 | ipmi_local_config_disable | ENFORCED/LOCAL_CONFIG/disable | 0
22 | 0 | 3 | - | ENFORCED/post_status | 0
29 | 129 | 2 | pm_bool_remote_syslog_enable | - | 0
29 | 129+N | 6 | pm_str_remote_syslog_server{N} | - | - | 1-3
29 | 133 | 3 | pm_int_remote_syslog_udp | - | 514
23 | 0 | 0 | - | OEM/flag | -
)";

struct Row {
  int32_t group = 0;
  int32_t id = 0;
  int32_t type = 0;
  std::string key, path, def;
};

// The cells of a line, trimmed, with '-' read as empty.
std::vector<std::string> cells_of(const std::string &line) {
  std::vector<std::string> cells;
  std::stringstream stream(line);
  for (std::string cell; std::getline(stream, cell, '|');) {
    cell.erase(cell.find_last_not_of(' ') + 1);
    cell.erase(0, cell.find_first_not_of(' '));
    cells.push_back(cell == "-" ? "" : cell);
  }
  return cells;
}

// Puts n for the {N} of a family name.
std::string with_number(std::string name, int32_t n) {
  const auto at = name.find("{N}");
  return at == std::string::npos ? name : name.replace(at, 3, std::to_string(n));
}

// The paths that "DIR/{a,b}" stands for; any other path stands for itself.
std::vector<std::string> alternatives(const std::string &path) {
  const auto open = path.find('{');
  const auto close = path.find('}');
  if (open == std::string::npos || path.find(',', open) > close) {
    return {path};
  }
  std::vector<std::string> paths;
  std::stringstream list(path.substr(open + 1, close - open - 1));
  for (std::string item; std::getline(list, item, ',');) {
    paths.push_back(path.substr(0, open) + item + path.substr(close + 1));
  }
  return paths;
}

// "74+N" and "40+3N" give base and step; "57" a fixed id.
int32_t id_for(const std::string &text, int32_t n) {
  const auto plus = text.find('+');
  if (plus == std::string::npos) {
    return std::stoi(text);
  }
  const std::string step = text.substr(plus + 1, text.size() - plus - 2);
  return std::stoi(text.substr(0, plus)) + (step.empty() ? 1 : std::stoi(step)) * n;
}

// The rows of kCatalogueText, families expanded: a "block" family repeats its consecutive lines
// together for each number.
std::vector<Row> expected_rows() {
  std::vector<std::vector<std::string>> lines;
  std::stringstream stream(kCatalogueText);
  for (std::string line; std::getline(stream, line);) {
    if (!line.empty()) {
      lines.push_back(cells_of(line));
    }
  }
  std::vector<Row> rows;
  for (std::size_t i = 0; i < lines.size();) {
    const std::string range = lines[i].size() < 7 ? "0-0" : lines[i][6];
    std::size_t end = i + 1;
    while (range.find("block") != std::string::npos && end < lines.size() &&
           lines[end].size() == 7 && lines[end][6] == range) {
      ++end;
    }
    for (int32_t n = std::stoi(range); n <= std::stoi(range.substr(range.find('-') + 1)); ++n) {
      for (std::size_t k = i; k < end; ++k) {
        const auto &c = lines[k];
        for (const std::string &path : alternatives(with_number(c[4], n))) {
          rows.push_back({std::stoi(c[0]), id_for(c[1], n), std::stoi(c[2]), with_number(c[3], n),
                          path, c[5]});
        }
      }
    }
    i = end;
  }
  return rows;
}

const std::vector<Row> &catalogue() {
  static const std::vector<Row> rows = expected_rows();
  return rows;
}

std::string convert(const char *name, int32_t *type) {
  std::array<char, 128> key{};
  *type = convert_prop_name(name, key.data());
  return key.data();
}

TEST(Catalogue, HoldsEveryRowInOrderWithTheCountsPerTypeAndTheEndRow) {
  const auto &rows = catalogue();
  ASSERT_EQ(rows.size(), 288U);
  std::array<int, 11> counts{};
  int with_path = 0;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const auto &row = property_table[i];
    EXPECT_EQ(row.group, rows[i].group) << i;
    EXPECT_EQ(row.id, rows[i].id) << i;
    EXPECT_EQ(row.type, rows[i].type) << i;
    EXPECT_STREQ(row.store_key(), rows[i].key.c_str()) << i;
    EXPECT_STREQ(row.legacy_path(), rows[i].path.c_str()) << i;
    EXPECT_STREQ(row.default_value(), rows[i].def.c_str()) << i;
    ++counts.at(rows[i].type);
    with_path += rows[i].path.empty() ? 0 : 1;
  }
  EXPECT_EQ(counts, (std::array<int, 11>{44, 0, 50, 48, 2, 1, 109, 0, 14, 14, 6}));
  EXPECT_EQ(with_path, 260);
  const auto &end = property_table[288];
  EXPECT_EQ(end.group, -1);
  EXPECT_EQ(end.id, -1);
  EXPECT_EQ(end.type, -1);
  EXPECT_EQ(end.store_key(), nullptr);
  EXPECT_EQ(end.legacy_path(), nullptr);
  EXPECT_STREQ(end.default_value(), "");
}

// Every legacy path and every store key of the catalogue leads to its first row.
TEST(Catalogue, EveryNameTranslatesThroughItsFirstRow) {
  const auto &rows = catalogue();
  std::map<std::string, int32_t> first_path, first_key;
  for (int32_t i = 0; i < static_cast<int32_t>(rows.size()); ++i) {
    first_path.emplace(rows[i].path, i);
    first_key.emplace(rows[i].key, i);
  }
  for (const auto &[path, index] : first_path) {
    EXPECT_EQ(findLegacyPropertyIndex(path.c_str()), index) << path;
    if (path.find('/') == std::string::npos) {
      continue;  // a path without '/' is looked up as a store key
    }
    int32_t type = -1;
    const std::string key = convert(path.c_str(), &type);
    EXPECT_EQ(type, rows[index].type) << path;
    EXPECT_EQ(key, rows[index].id != 0 ? rows[index].key : path) << path;
  }
  for (const auto &[key, index] : first_key) {
    EXPECT_EQ(orb_cfg::findOrbPropertyIndex(key.c_str()), index) << key;
    int32_t type = -1;
    EXPECT_EQ(convert(key.c_str(), &type), key);
    EXPECT_EQ(type, rows[index].type) << key;
  }
  EXPECT_EQ(findLegacyPropertyIndex("gui_int_http_port"), -1);
  EXPECT_EQ(findLegacyPropertyIndex("webserver/http_port"), -1);
  EXPECT_EQ(findLegacyPropertyIndex(nullptr), -1);
  EXPECT_EQ(orb_cfg::findOrbPropertyIndex(nullptr), -1);
}

// Rows of types 4, 8 and 9 have no store write; a store that refuses every write still gets each.
TEST(Catalogue, RestoreDefaultsWritesEveryRowWithALegacyPathInTableOrder) {
  std::vector<std::string> expected;
  for (const Row &row : catalogue()) {
    if (row.path.empty() || row.type == 4 || row.type == 8 || row.type == 9) {
      continue;
    }
    const std::string name = row.id != 0 ? row.key : row.path;
    const int number = std::atoi(row.def.c_str());
    if (row.type == PROP_TYPE_BOOL) {
      expected.push_back("orb_config_set_bool " + name + " = " + (number != 0 ? "1" : "0"));
    } else if (row.type == PROP_TYPE_INT || row.type == PROP_TYPE_SHORT) {
      expected.push_back("orb_config_set_int " + name + " = " + std::to_string(number));
    } else {
      expected.push_back("orb_config_set_str " + name + " = " + row.def);
    }
  }
  EXPECT_EQ(expected.size(), 230U);
  EXPECT_EQ(Cfgmgr_Restore_Defaults(), 1);
  EXPECT_EQ(store_writes(), expected);
  store().reset();
  for (const char *function : {"orb_config_set_str", "orb_config_set_bool", "orb_config_set_int"}) {
    store().fail(function);
  }
  EXPECT_EQ(Cfgmgr_Restore_Defaults(), 1);
  EXPECT_EQ(store_writes(), expected);
}

// Names outside the catalogue: indexed names take their stem's type and lose leading zeros.
TEST(ConvertPropName, TranslatesNamesOutsideTheCatalogue) {
  struct Case {
    const char *name, *key;
    int32_t type;
  };
  // clang-format off
  const Case cases[] = {
      {"MIR/USER/name3", "MIR/USER/name3", 6}, {"MIR/USER/name007", "MIR/USER/name7", 6},
      {"MIR/USER/name000", "MIR/USER/name0", 6}, {"WEBSERVER/enable2", "WEBSERVER/enable2", 2},
      {"USERDOMAIN/name41", "USERDOMAIN/name41", 0}, {"SSAD/name6", "SSAD/name6", 0},
      {"MIR/USER/name1234", "MIR/USER/name1234", 0}, {"any_other_key", "any_other_key", 0},
      {"gui_int_http_port7", "gui_int_http_port7", 0}, {"NO/such/path", "NO/such/path", 0},
      {"NO/such/path08", "NO/such/path8", 0}, {"/", "/", 0},
  };
  // clang-format on
  for (const auto &c : cases) {
    int32_t type = -1;
    EXPECT_EQ(convert(c.name, &type), c.key) << c.name;
    EXPECT_EQ(type, c.type) << c.name;
  }
}

// Up to 127 characters translate; a longer name, or none, is refused as type 1 with an empty key
// rather than cut into another name.
TEST(ConvertPropName, RefusesNamesTheKeyCannotHold) {
  int32_t type = -1;
  const std::string longest(127, 'k');
  EXPECT_EQ(convert(longest.c_str(), &type), longest);
  EXPECT_EQ(type, 0);
  const std::string path = "MIR/USER/name" + std::string(111, 'x') + "001";
  EXPECT_EQ(convert(path.c_str(), &type), path.substr(0, 124) + "1");
  EXPECT_EQ(type, 0);
  for (const std::string &name : {std::string(128, 'k'), "A/" + std::string(200, '1')}) {
    EXPECT_EQ(convert(name.c_str(), &type), "");
    EXPECT_EQ(type, PROP_TYPE_RESERVED);
  }
  EXPECT_EQ(convert(nullptr, &type), "");
  EXPECT_EQ(type, PROP_TYPE_RESERVED);
  EXPECT_EQ(convert_prop_name("MIR/name", nullptr), PROP_TYPE_RESERVED);
}

}  // namespace
}  // namespace tessera::test
