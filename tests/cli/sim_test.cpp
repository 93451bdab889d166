// The tessera program against the workstation kit's real daemons and SQLite store: a simulated
// controller started and seeded by `tessera sim`, in a private namespace that each later command
// joins by itself, then worked as a user would work a controller.
#include <signal.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <thread>

#include "fake_daemon.h"
#include "run_tessera.h"

namespace tessera::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

// A SIGKILL takes effect when the kernel next runs the process: waits, up to 5 s, until it has
// (the process is gone or a zombie), so that what follows sees it dead.
void wait_until_dead(pid_t pid) {
  for (int i = 0; i < 500; ++i) {
    const std::string stat = read_file("/proc/" + std::to_string(pid) + "/stat");
    const auto paren = stat.rfind(')');
    if (paren == std::string::npos || paren + 2 >= stat.size() || stat[paren + 2] == 'Z') {
      return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
}

class Simulated : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    scratch_ = std::make_unique<Scratch>();
    const Outcome start = scratch_->tessera({"sim", "start", "--namespace"});
    ASSERT_EQ(start.exit, 0) << start.err;
    EXPECT_THAT(start.out, HasSubstr("tessera-mappingd (pid "));
    EXPECT_THAT(start.out, HasSubstr(") serves /var/run/tolvex/ipmiextdSocket\n"));
    EXPECT_THAT(start.out, HasSubstr("nsenter --target "));
  }
  static void TearDownTestSuite() {
    scratch_->tessera({"sim", "stop"});
    scratch_.reset();
  }
  // A freshly seeded store before each test.
  void SetUp() override {
    const Outcome seed = tessera({"sim", "seed"});
    ASSERT_EQ(seed.exit, 0) << seed.err;
    EXPECT_THAT(seed.out, HasSubstr("8 sessions, 5 sensors."));
  }
  static Outcome tessera(const std::vector<std::string> &args) { return scratch_->tessera(args); }
  // What the command prints when it succeeds, which is nothing on standard error.
  static std::string out(const std::vector<std::string> &args) {
    const Outcome run = tessera(args);
    EXPECT_EQ(run.exit, 0) << args[0] << ": " << run.err;
    EXPECT_EQ(run.err, "") << args[0];
    return run.out;
  }

  static std::unique_ptr<Scratch> scratch_;
};
std::unique_ptr<Scratch> Simulated::scratch_;

TEST_F(Simulated, SettingsGoThroughTheDaemonOrFallBackToStoreAndNetworkRecord) {
  EXPECT_EQ(out({"get", "-v", "MIR/FIRMWARE/version", "WEBSERVER/http_port", "DNS/server1"}),
            "MIR/FIRMWARE/version = 2.10  (mapping daemon)\n"
            "WEBSERVER/http_port = 80  (store key gui_int_http_port, int)\n"
            "DNS/server1 = 10.20.0.53  (network record)\n");
  // A store key that a legacy path shares keeps that path's default.
  EXPECT_EQ(out({"get", "SNMP/COMMUNITY_NAME/get"}), "meadow\n");
  const Outcome set = tessera({"set", "MIR/name", "lab-02"});
  EXPECT_EQ(set.out + set.err, "");
  EXPECT_EQ(out({"set", "WEBSERVER/http_port", "8080"}), "");
  EXPECT_EQ(out({"set", "NETWORK/NIC/mtu", "9000"}), "");
  EXPECT_EQ(tessera({"set", "NETWORK/NIC/mtu", "70000"}).exit, 2);  // 16 bits in the record
  EXPECT_EQ(out({"set", "--direct", "DNS/server2", ""}), "");
  EXPECT_EQ(out({"get", "MIR/name", "gui_int_http_port", "NETWORK/NIC/mtu", "DNS/server2",
                 "DNS/server1"}),
            "MIR/name=lab-02\ngui_int_http_port=8080\nNETWORK/NIC/mtu=9000\nDNS/server2=\n"
            "DNS/server1=10.20.0.53\n");
  EXPECT_EQ(out({"get", "--direct", "MIR/FIRMWARE/version"}), "\n");
  EXPECT_EQ(out({"get", "--dcsgen", "service_tag"}), "7QX2K42\n");
  EXPECT_EQ(out({"set", "--dcsgen", "service_tag", "8ZZ"}), "");
  EXPECT_EQ(out({"get", "--dcsgen", "service_tag"}), "8ZZ\n");
}

TEST_F(Simulated, FailuresNameTheStatusAndItsMeaning) {
  expect_runs(
      *scratch_,
      {
          {{"get", "NO/such_setting"},
           1,
           "",
           "tessera: NO/such_setting: status 2: nothing to read: an empty name, no value"},
          {{"get", "--dcsgen", "nothing"},
           1,
           "",
           "tessera: nothing: status 1: the mapping daemon can't be reached or has no such DCSGEN"},
          {{"set", "MIR/FIRMWARE/version", "9"}, 0, "", ""},  // the daemon owns it: no failure
          {{"set", "--direct", "MIR/FIRMWARE/version", "9"},
           1,
           "",
           "tessera: MIR/FIRMWARE/version: status 1: the store refused the value, or the property "
           "can't be written"},
          {{"set", "--raw", "DNS/server1", "10.20.0.153.1.2.3.4"},
           1,
           "",
           "tessera: DNS/server1: status 1: the store refused"},
      });
}

TEST_F(Simulated, ANameThatFailsLeavesTheOthersReadAndTheExitStatus1) {
  const Outcome run = tessera({"get", "MIR/name", "NO/such_setting", "SSH/port"});
  EXPECT_EQ(run.exit, 1);
  EXPECT_EQ(run.out, "MIR/name=mirel-lab-01\nSSH/port=22\n");
  EXPECT_THAT(run.err, StartsWith("tessera: NO/such_setting: status 2: "));
  const Outcome json = tessera({"get", "--json", "SSH/port", "NO/such_setting"});
  EXPECT_EQ(json.exit, 1);
  EXPECT_THAT(json.out, StartsWith("[\n  {\"name\": \"SSH/port\", \"type\": \"int\", \"value\": "
                                   "\"22\"},\n  {\"name\": \"NO/such_setting\", \"type\": "
                                   "\"none\", \"error\": \"status 2: nothing to read"));
}

TEST_F(Simulated, AnImportOfAnExportPutsBackEveryChangeAndASecondImportNothing) {
  // A text that INI can only hold quoted, so that both forms must carry it whole.
  EXPECT_EQ(out({"set", "EMAIL_ALERT/msg1", " a;b\t\"c\" \\\n"}), "");
  const std::string before = out({"export"});
  const std::string json = scratch_->write("before.json", before);
  const std::string ini = scratch_->write("before.ini", out({"export", "--format", "ini"}));
  for (const char *change :
       {"WEBSERVER/http_port 8080", "EMAIL_ALERT/msg1 plain", "MIR/name lab-02",
        "NETWORK/NIC/mtu 9000", "IPV6/prefix_length 48", "pm_bool_remote_syslog_enable 1"}) {
    auto args = words(change);
    args.insert(args.begin(), "set");
    EXPECT_EQ(out(args), "") << change;
  }
  EXPECT_EQ(out({"set", "DNS/server2", ""}), "");
  const std::string changes =
      "WEBSERVER/http_port: \"8080\" -> \"80\"\n"
      "EMAIL_ALERT/msg1: \"plain\" -> \" a;b\\t\\\"c\\\" \\\\\\n\"\n"
      "MIR/name: \"lab-02\" -> \"mirel-lab-01\"\n"
      "NETWORK/NIC/mtu: \"9000\" -> \"1500\"\n"
      "IPV6/prefix_length: \"48\" -> \"64\"\n"
      "DNS/server2: \"\" -> \"10.20.0.54\"\n"
      "pm_bool_remote_syslog_enable: \"1\" -> \"0\"\n";
  EXPECT_EQ(out({"import", "--dry-run", ini}), changes);
  EXPECT_EQ(tessera({"diff", json}).exit, 3);
  EXPECT_EQ(out({"import", ini}), changes);
  EXPECT_EQ(out({"export"}), before);
  EXPECT_EQ(out({"import", json}), "");
  EXPECT_EQ(out({"diff", json, ini}), "");
  // Firmware values, extended IPv6 addresses and session counters are exported, but never
  // written back.
  std::string other = before;
  for (const char *value : {"\"value\": \"2.10\"", "\"value\": \"/0\""}) {
    other.replace(other.find(value), std::string(value).size(), "\"value\": \"9\"");
  }
  const std::string counter = "\"gui_int_session_count\", \"type\": \"int\", \"value\": \"";
  ASSERT_NE(other.find(counter), std::string::npos);
  other.insert(other.find(counter) + counter.size(), "7");
  EXPECT_EQ(out({"import", "--dry-run", scratch_->write("other.json", other)}), "");
}

TEST_F(Simulated, CommandsInTheNamespaceKeepTheUsersWorkingDirectory) {
  EXPECT_EQ(out({"ini", "set", "relative.ini", "s", "k", "v"}), "");
  EXPECT_EQ(scratch_->read("relative.ini"), "[s]\nk=v\n");
}

TEST_F(Simulated, DefaultsRestoreAndFill) {
  EXPECT_EQ(out({"get", "SNMP/enable"}), "1\n");
  EXPECT_EQ(out({"defaults", "restore"}), "");
  EXPECT_EQ(out({"get", "SNMP/enable", "SERIAL/escape_key"}),
            "SNMP/enable=0\nSERIAL/escape_key=^\\\n");
  EXPECT_EQ(out({"defaults", "fill"}), "");  // every listed setting reads
}

TEST_F(Simulated, SessionsAreListedFilteredShownAndClosed) {
  EXPECT_EQ(out({"sessions"}),
            "ID  TYPE             USER      ADDRESS                    PRIVILEGE  CHILDREN\n"
            "1   GUI              admin     192.168.10.21              4          vKVM,vMedia\n"
            "2   Virtual Console  admin     192.168.10.21              4          -\n"
            "3   Virtual Media    admin     192.168.10.21              4          -\n"
            "4   SSH              operator  10.20.0.7                  3          -\n"
            "5   SOL              operator  10.20.0.7                  3          -\n"
            "6   TOLVEX           root      127.0.0.1                  4          -\n"
            "7   REDFISH          monitor   fe80::7a2b:cbff:fe12:3456  2          -\n"
            "8   Serial           admin     -                          4          -\n");
  EXPECT_EQ(out({"sessions", "--type", "ssh", "--json"}),
            "[\n  {\"id\": 4, \"type\": \"SSH\", \"type_code\": 3, \"user\": \"operator\", "
            "\"address\": \"10.20.0.7\", \"privilege\": 3, \"children\": [], \"word\": 0}\n]\n");
  EXPECT_EQ(out({"sessions", "-u", "admin", "-a", "192.168.10.21", "-t", "vKVM"}),
            "ID  TYPE             USER   ADDRESS        PRIVILEGE  CHILDREN\n"
            "2   Virtual Console  admin  192.168.10.21  4          -\n");
  EXPECT_THAT(out({"sessions", "show", "1"}),
              HasSubstr("user:             admin\naddress:          192.168.10.21\n"
                        "IPv4 address:     192.168.10.21 (0x150AA8C0)\nprivilege:        4\n"
                        "virtual console:  yes\nvirtual media:    yes\n"));
  EXPECT_THAT(out({"sessions", "show", "--json", "6"}),
              StartsWith("{\"id\": 6, \"type\": \"TOLVEX\", \"type_code\": 5, \"user\": \"root\", "
                         "\"address\": \"127.0.0.1\""));
  EXPECT_EQ(out({"sessions", "close", "4"}), "");
  EXPECT_EQ(out({"sessions", "close", "--orb", "5"}), "");
  EXPECT_EQ(out({"sessions", "--user", "operator"}),
            "ID  TYPE  USER  ADDRESS  PRIVILEGE  CHILDREN\n");
  const Outcome gone = tessera({"sessions", "close", "4"});
  EXPECT_EQ(gone.exit, 3);
  EXPECT_EQ(gone.err, "tessera: session 4: status 8198: no such session at the store\n");
}

TEST_F(Simulated, StatusAndShellReachTheDaemonsAndStopEndsThem) {
  EXPECT_THAT(out({"sim", "status"}), HasSubstr("  /var/run/tolvex/ipmiextdSocket   serving\n"));
  EXPECT_THAT(out({"sim", "status", "--json"}),
              HasSubstr("\"state\": \"serving\"}], \"namespace_pid\": "));
  EXPECT_EQ(out({"sim", "shell", "ls", "/var/run/tolvex"}), "dmmappingSocket\nipmiextdSocket\n");
  EXPECT_THAT(out({"sim", "start"}), HasSubstr("runs already"));
  const std::string sessiond = scratch_->read("sim/tessera-sessiond.pid");
  ASSERT_EQ(kill(std::stoi(sessiond), SIGKILL), 0);
  wait_until_dead(std::stoi(sessiond));
  EXPECT_EQ(tessera({"sim", "status"}).exit, 1);  // one of two
  EXPECT_THAT(out({"sim", "start", "--namespace"}), HasSubstr("tessera-sessiond (pid "));
  EXPECT_NE(scratch_->read("sim/tessera-sessiond.pid"), sessiond);
  EXPECT_EQ(out({"sessions", "close", "8"}), "");
  EXPECT_EQ(out({"sim", "stop"}), "");
  EXPECT_EQ(tessera({"sim", "status"}).exit, 3);
  const Outcome get = tessera({"get", "MIR/name"});
  EXPECT_EQ(get.exit, 1);
  EXPECT_THAT(get.err, HasSubstr("status 1: the mapping daemon can't be reached"));
  const Outcome backup = tessera({"export", "WEBSERVER/http_port"});  // marked, and named
  EXPECT_EQ(backup.exit, 1);
  EXPECT_THAT(backup.out, HasSubstr("{\"name\": \"WEBSERVER/http_port\", \"type\": \"int\", "
                                    "\"error\": \"status 1: the mapping daemon can't be reached"));
  EXPECT_THAT(backup.err, StartsWith("tessera: WEBSERVER/http_port: status 1: the mapping"));
  const Outcome close = tessera({"sessions", "close", "1"});
  EXPECT_EQ(close.exit, 1);
  EXPECT_THAT(close.err, HasSubstr("status 12307: the session daemon can't be reached"));
  ASSERT_EQ(tessera({"sim", "start", "--namespace"}).exit, 0);  // for the tests that follow
}

// Where the user can write /var/run/tolvex (here, that of the test's own namespace), the
// daemons serve it directly and no namespace is made or joined.
TEST(SimulatedInPlace, ServesTheSocketsOfTheCallersNamespace) {
  TESSERA_REQUIRE_PRIVATE_NAMESPACE();
  Scratch scratch;
  const Outcome start = scratch.tessera({"sim", "start"});
  ASSERT_EQ(start.exit, 0) << start.err;
  EXPECT_THAT(start.out, Not(HasSubstr("namespace")));
  EXPECT_EQ(scratch.tessera({"sim", "seed"}).exit, 0);
  EXPECT_EQ(scratch.tessera({"get", "MIR/name"}).out, "mirel-lab-01\n");
  EXPECT_THAT(scratch.tessera({"sim", "status", "--json"}).out, HasSubstr("\"namespace_pid\": 0,"));
  EXPECT_EQ(scratch.tessera({"sim", "stop"}).exit, 0);
}

}  // namespace
}  // namespace tessera::test
