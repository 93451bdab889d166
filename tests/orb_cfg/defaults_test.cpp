// The tool's list of defaults: the unset properties filled in through the daemon, with the lines
// printed on standard output.
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <vector>

#include "fake_daemon.h"
#include "orb_cfg/orb_cfg_internal.h"
#include "orb_cfg_test.h"
#include "tests/system/os_test_support.h"

namespace tessera::test {
namespace {

namespace dm = daemon_message;

// clang-format off
const std::vector<std::string> kDefaultList = {
    "CR/enable", "CR/local_server_video", "CSR/cn", "CSR/o", "CSR/ou", "CSR/l", "CSR/s", "CSR/cc",
    "CSR/email", "CSR/keysize", "EMAIL_ALERT/enable1", "EMAIL_ALERT/enable2", "EMAIL_ALERT/enable3",
    "EMAIL_ALERT/enable4", "EMAIL_ALERT/addr1", "EMAIL_ALERT/addr2", "EMAIL_ALERT/addr3",
    "EMAIL_ALERT/addr4", "EMAIL_ALERT/enable1", "EMAIL_ALERT/enable2", "EMAIL_ALERT/enable3",
    "EMAIL_ALERT/enable4", "ENFORCED/ipenable", "ENFORCED/ipaddr", "ENFORCED/ipmask",
    "ENFORCED/IPBLOCK/enable", "ENFORCED/IPBLOCK/failcount", "ENFORCED/IPBLOCK/failwindow",
    "ENFORCED/IPBLOCK/penaltytime", "ENFORCED/LOCAL_CONFIG/disable", "ENFORCED/BBB_CONFIG/disable",
    "MIR/FIRMWARE/TFTP/update_enable", "MIR/FIRMWARE/TFTP/ipaddr", "MIR/FIRMWARE/TFTP/path",
    "MIR/TIME/daylight_offset", "MIR/TIME/timezone_offset", "TOLVEX/timeout", "TOLVEX/enable",
    "SERIAL/enable", "SERIAL/baudrate", "SERIAL/escape_key", "SERIAL/timeout",
    "SERIAL/console_no_auth", "SERIAL/login_command", "SERIAL/history_buf_size",
    "SERIAL/redirect_enable", "SMARTCARD/logon_enable", "AD/sso_enable", "SMARTCARD/CRL_enable",
    "SNMP/enable", "SNMP/COMMUNITY_NAME/get", "SNMP/COMMUNITY_NAME/set", "TELNET/timeout",
    "TELNET/enable", "TELNET/port", "VM/keyenable", "VM/floppy_emulation", "IPV6/URL/string",
    "KERBEROS/keytab_path", "KERBEROS/keytab_file", "pm_bool_remote_syslog_enable",
    "pm_str_remote_syslog_server1", "pm_str_remote_syslog_server2", "pm_str_remote_syslog_server3",
    "pm_int_remote_syslog_udp",
};
// clang-format on

// The default value of a name of the list, from its catalogue row.
std::string default_of(const std::string &name) {
  const int32_t row = name.find('/') != std::string::npos
                          ? findLegacyPropertyIndex(name.c_str())
                          : orb_cfg::findOrbPropertyIndex(name.c_str());
  EXPECT_GE(row, 0) << name;
  return orb_cfg::property_table[row < 0 ? 0 : row].default_value();
}

TEST(DefaultList, HoldsTheListInOrderEndedByNullAndEveryNameHasARow) {
  std::size_t count = 0;
  for (; default_list[count] != nullptr; ++count) {
    ASSERT_LT(count, kDefaultList.size());
    EXPECT_EQ(default_list[count], kDefaultList[count]);
    default_of(default_list[count]);
  }
  EXPECT_EQ(count, 65U);
}

// Each request as "operation name = value".
std::vector<std::string> requests_of(const FakeDaemon &daemon) {
  std::vector<std::string> requests;
  for (const auto &request : daemon.requests()) {
    requests.push_back(std::to_string(request[dm::kOperation]) + " " + dm::name(request) + " = " +
                       dm::value(request));
  }
  return requests;
}

// Every name is read through the daemon; what cannot be read is printed and written back through
// the daemon first, which keeps it (the second EMAIL_ALERT/enableN are set by then) or, for
// TELNET/port, refuses it.
TEST(SetTolvexDefault, FillsInWhatCannotBeReadThroughTheDaemonAndPrintsEachStep) {
  TESSERA_REQUIRE_PRIVATE_NAMESPACE();
  // Set at the daemon, even though empty; set at the store behind it; the rest is unset.
  std::map<std::string, std::string> held = {{"CR/enable", "0"}, {"CSR/cn", ""}};
  store().set_int("ser_int_baudrate", 9600);
  store().set_str("pm_str_remote_syslog_server2", "log.example");
  FakeDaemon mapping(kMappingSocket);
  mapping.set_handler([&held](const dm::Bytes &request) {
    const std::string name = dm::name(request);
    if (request[dm::kOperation] == 10) {
      held[name] = dm::value(request);
      return name == "TELNET/port" ? dm::refusal(7) : dm::success();
    }
    const auto it = held.find(name);
    return it == held.end() ? dm::refusal(4) : dm::success(it->second);
  });
  std::set<std::string> set = {"CR/enable", "CSR/cn", "SERIAL/baudrate",
                               "pm_str_remote_syslog_server2"};
  std::string printed;
  std::vector<std::string> requests;
  for (const std::string &name : kDefaultList) {
    requests.push_back("11 " + name + " = ");
    if (set.insert(name).second) {
      printed += name + " not set. Set to default " + default_of(name) + "\n";
      printed += name == "TELNET/port" ? "set TELNET/port failed\n" : "";
      requests.push_back("10 " + name + " = " + default_of(name));
    }
  }
  const CaptureFd out(STDOUT_FILENO);
  EXPECT_EQ(set_tolvex_default(), 0);
  EXPECT_EQ(out.text(), printed);
  EXPECT_EQ(requests_of(mapping), requests);
  EXPECT_EQ(store().calls("orb_config_set_str").size(), 0U) << "the daemon took every write";
}

TEST(SetTolvexDefault, WithTheDaemonDownPrintsTwoLinesForEveryName) {
  TESSERA_REQUIRE_PRIVATE_NAMESPACE();
  std::string expected;
  for (const std::string &name : kDefaultList) {
    expected +=
        name + " not set. Set to default " + default_of(name) + "\nset " + name + " failed\n";
  }
  const CaptureFd out(STDOUT_FILENO);
  EXPECT_EQ(set_tolvex_default(), 0);
  EXPECT_EQ(out.text(), expected);
  EXPECT_EQ(store().calls().size(), 0U);
}

}  // namespace
}  // namespace tessera::test
