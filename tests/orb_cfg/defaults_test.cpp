// Defaults: the whole catalogue written back to the store call by call, and the unset properties
// of the tool's list filled in through the daemon, with the lines printed on standard output.
#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "fake_daemon.h"
#include "fake_store.h"
#include "orb_cfg/orb_cfg_internal.h"
#include "tessera/orb_cfg.h"

namespace tessera::test {
namespace {

namespace dm = daemon_message;
using orb_cfg::property_table;

FakeStore &store() {
  return FakeStore::instance();
}

// Everything written to file descriptor 1 until text() is asked for.
class StdoutCapture {
 public:
  StdoutCapture() : file_(std::tmpfile()), saved_(::dup(1)) {
    std::fflush(stdout);
    ::dup2(::fileno(file_), 1);
  }
  ~StdoutCapture() { std::fclose(file_); }
  StdoutCapture(const StdoutCapture &) = delete;
  StdoutCapture &operator=(const StdoutCapture &) = delete;

  std::string text() {
    std::fflush(stdout);
    ::dup2(saved_, 1);
    ::close(saved_);
    std::string all(static_cast<std::size_t>(std::ftell(file_)), '\0');
    std::rewind(file_);
    all.resize(std::fread(all.data(), 1, all.size(), file_));
    return all;
  }

 private:
  std::FILE *file_;
  int saved_;
};

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

// The catalogue row of a name of the list.
const orb_cfg::PropertyRow &row_of(const std::string &name) {
  const int32_t row = name.find('/') != std::string::npos
                          ? findLegacyPropertyIndex(name.c_str())
                          : orb_cfg::findOrbPropertyIndex(name.c_str());
  EXPECT_GE(row, 0) << name;
  return property_table[row < 0 ? 0 : row];
}

TEST(DefaultList, HoldsTheListInOrderEndedByNullAndEveryNameHasARow) {
  std::size_t count = 0;
  while (default_list[count] != nullptr) {
    ASSERT_LT(count, kDefaultList.size());
    EXPECT_EQ(default_list[count], kDefaultList[count]);
    row_of(default_list[count]);
    ++count;
  }
  EXPECT_EQ(count, 65U);
}

// One store write as the catalogue row asks for it.
struct Write {
  std::string function, name, text;
  int64_t value = 0;
  bool operator==(const Write &) const = default;
};

std::vector<Write> writes_for_every_row_with_a_legacy_path() {
  std::vector<Write> writes;
  for (int32_t i = 0; i < orb_cfg::kPropertyRowCount; ++i) {
    const orb_cfg::PropertyRow &row = property_table[i];
    if (std::strlen(row.legacy_path()) == 0) {
      continue;
    }
    const std::string name = row.id != 0 ? row.store_key() : row.legacy_path();
    const std::string text = row.default_value();
    const int64_t number = std::strtol(text.c_str(), nullptr, 10);
    switch (row.type) {
      case PROP_TYPE_NONE:
      case PROP_TYPE_STR:
        writes.push_back({"orb_config_set_str", name, text});
        break;
      case PROP_TYPE_BOOL:
        writes.push_back({"orb_config_set_bool", name, "", number != 0 ? 1 : 0});
        break;
      case PROP_TYPE_INT:
      case PROP_TYPE_SHORT:
        writes.push_back({"orb_config_set_int", name, "", number});
        break;
      case PROP_TYPE_BYTE:
      case PROP_TYPE_ADDR_PREFIX:
      case PROP_TYPE_PREFIX:
        break;
      default:
        ADD_FAILURE() << "row " << i << " of type " << row.type << " has a legacy path";
    }
  }
  return writes;
}

std::vector<Write> writes_made() {
  std::vector<Write> writes;
  for (const StoreCall &call : store().calls()) {
    writes.push_back({call.function, call.name, call.text, call.value});
    EXPECT_EQ(call.flag, 1) << call.name;
  }
  return writes;
}

TEST(RestoreDefaults, WritesEveryRowWithALegacyPathInTableOrder) {
  TESSERA_REQUIRE_PRIVATE_NAMESPACE();
  FakeDaemon mapping(kMappingSocket);
  std::size_t rows = 0;
  for (int32_t i = 0; i < orb_cfg::kPropertyRowCount; ++i) {
    rows += std::strlen(property_table[i].legacy_path()) != 0 ? 1 : 0;
  }
  EXPECT_EQ(rows, 260U);
  const std::vector<Write> expected = writes_for_every_row_with_a_legacy_path();
  EXPECT_EQ(expected.size(), 230U) << "260 rows less the 30 of types 4, 8 and 9";

  EXPECT_EQ(Cfgmgr_Restore_Defaults(), 1);
  const std::vector<Write> made = writes_made();
  EXPECT_EQ(made, expected);
  EXPECT_EQ(mapping.request_count(), 0U) << "straight to the store";
  EXPECT_EQ(store().value("DNS/server1"), FakeStore::Value(std::string()));
  EXPECT_EQ(store().value("rp_bool_last_bootonce_virtual"), FakeStore::Value(false));
  EXPECT_EQ(store().value("gui_int_session_timeout"), FakeStore::Value(int32_t{1800}));
  EXPECT_EQ(store().value("SERIAL/escape_key"), std::nullopt);
  EXPECT_EQ(store().value("pm_bool_remote_syslog_enable"), std::nullopt);
  EXPECT_EQ(store().value("rm_bool_lcdrive_enable"), std::nullopt);
  const auto count = [&made](const std::string &name) {
    return std::count_if(made.begin(), made.end(),
                         [&name](const Write &w) { return w.name == name; });
  };
  EXPECT_EQ(count("pam_bool_sso_enabled"), 2);
  EXPECT_EQ(count("pm_str_snmp_community"), 2);
  EXPECT_EQ(count("rp_int_apcp_port"), 4);

  store().reset();  // a store that refuses everything still gets every attempt
  for (const char *function : {"orb_config_set_str", "orb_config_set_bool", "orb_config_set_int"}) {
    store().fail(function);
  }
  EXPECT_EQ(Cfgmgr_Restore_Defaults(), 1);
  EXPECT_EQ(writes_made(), expected);
  EXPECT_EQ(store().value_count(), 0U);
}

// A mapping daemon that keeps what is written to it, serves what it holds, leaves the rest to the
// library (status 4) and refuses writes to the names of `refused` with status 7.
class KeepingDaemon {
 public:
  explicit KeepingDaemon(std::map<std::string, std::string> held, std::string refused = "")
      : held_(std::move(held)), refused_(std::move(refused)), daemon_(kMappingSocket) {
    daemon_.set_handler([this](const dm::Bytes &request) {
      const std::lock_guard lock(mutex_);
      const std::string name = dm::name(request);
      if (request[dm::kOperation] == 10) {
        if (name == refused_) {
          return dm::refusal(7);
        }
        held_[name] = dm::value(request);
        return dm::success();
      }
      const auto it = held_.find(name);
      return it == held_.end() ? dm::refusal(4) : dm::success(it->second);
    });
  }
  [[nodiscard]] std::vector<dm::Bytes> requests() const { return daemon_.requests(); }

 private:
  std::mutex mutex_;
  std::map<std::string, std::string> held_;
  std::string refused_;
  FakeDaemon daemon_;  // last: it stops serving before the rest goes
};

TEST(SetTolvexDefault, FillsInWhatCannotBeReadThroughTheDaemonAndPrintsEachStep) {
  TESSERA_REQUIRE_PRIVATE_NAMESPACE();
  // Set at the daemon, even though empty; set at the store behind it; the rest is unset.
  KeepingDaemon mapping({{"CR/enable", "0"}, {"CSR/cn", ""}}, "TELNET/port");
  store().set_int("ser_int_baudrate", 9600);
  store().set_str("pm_str_remote_syslog_server2", "log.example");
  std::string expected;
  std::vector<std::string> writes;
  for (std::size_t i = 0; i < kDefaultList.size(); ++i) {
    const std::string &name = kDefaultList[i];
    const bool set = name == "CR/enable" || name == "CSR/cn" || name == "SERIAL/baudrate" ||
                     name == "pm_str_remote_syslog_server2" ||
                     (name.rfind("EMAIL_ALERT/enable", 0) == 0 && i > 14);
    if (!set) {
      expected += name + " not set. Set to default " + row_of(name).default_value() + "\n";
      expected += name == "TELNET/port" ? "set TELNET/port failed\n" : "";
      writes.push_back(name);
    }
  }
  StdoutCapture capture;
  EXPECT_EQ(set_tolvex_default(), 0);
  const std::string printed = capture.text();
  EXPECT_EQ(printed, expected);
  EXPECT_EQ(printed.rfind("CR/local_server_video not set. Set to default 0\n", 0), 0U);
  EXPECT_NE(printed.find("\nSERIAL/escape_key not set. Set to default ^\\\n"), std::string::npos);
  EXPECT_NE(printed.find("\nTELNET/port not set. Set to default 23\nset TELNET/port failed\n"),
            std::string::npos);

  // Every name was read through the daemon (len 1024 leaves room for 1023 characters); each
  // default went to the daemon first, the community name too.
  const auto requests = mapping.requests();
  ASSERT_EQ(requests.size(), kDefaultList.size() + writes.size());
  std::size_t write = 0;
  for (const auto &request : requests) {
    if (request[dm::kOperation] == 10) {
      ASSERT_LT(write, writes.size());
      EXPECT_EQ(dm::name(request), writes[write]);
      EXPECT_EQ(dm::value(request), row_of(writes[write]).default_value());
      ++write;
    } else {
      EXPECT_EQ(request[dm::kOperation], 11);
    }
  }
  EXPECT_EQ(write, writes.size());
  EXPECT_EQ(store().calls("orb_config_set_str").size(), 0U) << "the daemon took every write";
}

TEST(SetTolvexDefault, WithTheDaemonDownPrintsTwoLinesForEveryName) {
  TESSERA_REQUIRE_PRIVATE_NAMESPACE();
  std::string expected;
  for (const std::string &name : kDefaultList) {
    expected += name + " not set. Set to default " + row_of(name).default_value() + "\n" + "set " +
                name + " failed\n";
  }
  StdoutCapture capture;
  EXPECT_EQ(set_tolvex_default(), 0);
  EXPECT_EQ(capture.text(), expected);
  EXPECT_EQ(store().calls().size(), 0U);
}

}  // namespace
}  // namespace tessera::test
