// The SQLite store client through its own orb_* functions and its administration interface.
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "kit_support.h"
#include "store_client/network_record.h"
#include "store_client/session_record.h"

namespace tessera::kit::test {
namespace {

using wire::NetworkRecord;

class Store : public ::testing::Test {
 protected:
  ScratchStore scratch;
  const Orb &o = orb();
};

// Values of each type go through the store in the daemons' and the command's tests.
TEST_F(Store, KeepsTypedValuesAndRefusesOtherTypesAndBadArguments) {
  ASSERT_NE(o.set_int("number", -42, 1), 0);
  ASSERT_NE(o.set_str_n("text", "hello", 1), 0);
  uint8_t flag = 9;
  int32_t number = 0;
  char text[1025] = "keep";
  EXPECT_EQ(o.get_str("number", text), 0) << "another type";
  EXPECT_EQ(o.get_int("text", &number), 0);
  EXPECT_EQ(o.get_bool("missing", &flag), 0);
  EXPECT_EQ(o.get_str_n("text", text, 0), 0);
  EXPECT_STREQ(text, "keep");
  const std::string long_key(321, 'k');
  for (const char *key : {static_cast<const char *>(nullptr), "", long_key.c_str()}) {
    EXPECT_EQ(o.set_int(key, 1, 1), 0);
    EXPECT_EQ(o.get_int(key, &number), 0);
  }
  EXPECT_EQ(o.get_int("number", nullptr), 0);
  EXPECT_EQ(o.set_str("text", nullptr, 1), 0);
  EXPECT_EQ(o.get_str("text", nullptr), 0);
  EXPECT_NE(o.set_str("number", "now text", 1), 0) << "a write sets the type";
  EXPECT_NE(o.get_str("number", text), 0);
}

TEST_F(Store, CutsLongTextsToTheRoomOfTheReads) {
  const std::string huge(5000, 'x');
  ASSERT_NE(o.set_str("big", huge.c_str(), 1), 0);
  std::vector<char> out(6000, '#');
  ASSERT_NE(o.get_str("big", out.data()), 0);
  EXPECT_EQ(std::strlen(out.data()), 1024U);
  EXPECT_EQ(out[1025], '#') << "nothing written behind the terminator";
  char small[8];
  ASSERT_NE(o.get_str_n("big", small, sizeof small), 0);
  EXPECT_STREQ(small, "xxxxxxx");
}

TEST_F(Store, AWriteIsDurableWhenTheCallReturns) {
  const pid_t child = ::fork();
  if (child == 0) {
    ::_exit(orb().set_int("written", 1234, 1) != 0 ? 0 : 1);  // no orderly close
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  ASSERT_EQ(status, 0);
  int32_t number = 0;
  EXPECT_NE(o.get_int("written", &number), 0);
  EXPECT_EQ(number, 1234);
}

std::string key_of(int process, int value) {
  return "p" + std::to_string(process) + "." + std::to_string(value);
}

TEST_F(Store, ManyProcessesCreateAndWriteOneFreshStoreAtOnce) {
  constexpr int kProcesses = 6;
  constexpr int kValues = 100;
  std::vector<pid_t> children;
  for (int p = 0; p < kProcesses; ++p) {
    const pid_t child = ::fork();
    if (child == 0) {
      int failures = 0;
      for (int i = 0; i < kValues; ++i) {
        failures += orb().set_int(key_of(p, i).c_str(), p * 1000 + i, 1) == 0 ? 1 : 0;
      }
      ::_exit(failures == 0 ? 0 : 1);
    }
    children.push_back(child);
  }
  for (const pid_t child : children) {
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
  }
  for (int p = 0; p < kProcesses; ++p) {
    for (int i = 0; i < kValues; ++i) {
      int32_t number = -1;
      ASSERT_NE(o.get_int(key_of(p, i).c_str(), &number), 0) << key_of(p, i);
      ASSERT_EQ(number, p * 1000 + i);
    }
  }
  EXPECT_EQ(tessera_store_check(), TESSERA_STORE_OK);
}

// The fields of a record reach the tools through the daemons' tests; here the store's own rules.
TEST_F(Store, HandsOutSessionRecordsChildrenAndTypeLists) {
  ASSERT_EQ(add_session(session(7, "webgui", "root", "10.0.0.9")), 0);
  ASSERT_EQ(add_session(session(9, "vMedia", "root", "", 7)), 0);
  ASSERT_EQ(add_session(session(8, "vKVM", "root", "", 7)), 0);
  ASSERT_EQ(add_session(session(3, "SSH", std::string(400, 'u').c_str())), 0);
  EXPECT_EQ(add_session(session(4, "SSH", "", "", 99)), TESSERA_STORE_ERROR) << "unknown parent";
  EXPECT_EQ(add_session(session(7, "webgui", "", "", 8)), TESSERA_STORE_ERROR) << "a loop";

  wire::SessionRecord record{};
  ASSERT_NE(o.session_info(3, &record), 0);
  EXPECT_EQ(std::strlen(record.user), 320U);
  EXPECT_EQ(o.session_info(5, &record), 0);
  EXPECT_EQ(o.session_info(7, nullptr), 0);

  uint32_t ids[4] = {};
  int32_t count = 1;
  ASSERT_EQ(o.children_info(7, &count, ids), 0);
  EXPECT_EQ(count, 2) << "the whole number, beyond the room";
  EXPECT_EQ(ids[0], 8U);
  EXPECT_EQ(ids[1], 0U);
  count = 4;
  EXPECT_EQ(o.children_info(5, &count, ids), -1);
  EXPECT_EQ(o.children_info(7, nullptr, ids), -1);
  count = 4;
  ASSERT_EQ(o.type_info("", &count, ids), 0);
  EXPECT_EQ(std::vector<uint32_t>(ids, ids + count), (std::vector<uint32_t>{3, 7, 8, 9}));
  count = 0;
  ASSERT_EQ(o.type_info("vKVM", &count, nullptr), 0);
  EXPECT_EQ(count, 1);
  EXPECT_EQ(o.type_info(nullptr, &count, ids), -1);
  EXPECT_EQ(tessera_store_close_session(7, 1), TESSERA_STORE_OK);
  EXPECT_EQ(tessera_store_close_session(7, 0), TESSERA_STORE_NOT_FOUND);
}

NetworkRecord fetch(const Orb &o) {
  NetworkRecord record{};
  uint32_t length = 0;
  EXPECT_EQ(o.execute("netGetCurrentIfConfig", &length, nullptr, sizeof record, &record), 0);
  EXPECT_EQ(length, sizeof record);
  return record;
}

// A change request that changes nothing, as the library starts one.
NetworkRecord no_change() {
  NetworkRecord request{};
  request.byte_646 = 1;
  request.nic_selection = request.nic_100b = request.nic_full_duplex = 0xFF;
  request.ipv6_prefix_length = 0xFF;
  std::memset(request.word_514, 0xFF, 2);
  std::memset(request.word_516, 0xFF, 2);
  return request;
}

int32_t apply(const Orb &o, const NetworkRecord &request, uint32_t length = sizeof(NetworkRecord)) {
  return o.execute("netSetNetConfig", &length, &request, 0, nullptr);
}

TEST_F(Store, AppliesNetworkChangeRequestsFieldByField) {
  NetworkRecord seeded{};
  std::strcpy(seeded.mir_name, "mir-1");
  std::strcpy(seeded.dns_server1, "10.0.0.1");
  std::strcpy(seeded.ipv6_address, "fe80::2");
  seeded.dns_dhcp_enable = 2;
  seeded.nic_selection = 3;
  seeded.ipv6_prefix_length = 64;
  seeded.nic_mtu[0] = 0xDC;  // 1500
  seeded.nic_mtu[1] = 0x05;
  ASSERT_EQ(tessera_store_set_network(&seeded, sizeof seeded), 0);

  ASSERT_EQ(apply(o, no_change()), 0);
  NetworkRecord now = fetch(o);
  EXPECT_EQ(std::memcmp(&now, &seeded, sizeof now), 0) << "a request of markers changes nothing";

  // That texts stay terminated and bytes without a property stay the store's, the fuzzer checks
  // for any request.
  struct Case {
    const char *what;
    void (*change)(NetworkRecord &);
    void (*expect)(NetworkRecord &);
  };
  const Case cases[] = {
      {"the first mask's bits are its own",
       [](NetworkRecord &r) { r.clear_mask_second[0] = 0x20; },  // IPV6/DNSServer2, not address
       [](NetworkRecord &) {}},
      {"first mask", [](NetworkRecord &r) { r.clear_mask_first[0] = 0x20; },
       [](NetworkRecord &r) { std::memset(r.ipv6_address, 0, sizeof r.ipv6_address); }},
      {"a flag other than 1 or 2 is no change", [](NetworkRecord &r) { r.nic_enable = 7; },
       [](NetworkRecord &) {}},
  };
  for (const Case &c : cases) {
    NetworkRecord request = no_change();
    c.change(request);
    NetworkRecord expected = fetch(o);
    c.expect(expected);
    ASSERT_EQ(apply(o, request), 0) << c.what;
    now = fetch(o);
    EXPECT_EQ(std::memcmp(&now, &expected, sizeof now), 0) << c.what;
  }

  EXPECT_EQ(apply(o, no_change(), sizeof(NetworkRecord) - 1), -1) << "short request";
  uint32_t length = sizeof(NetworkRecord);
  EXPECT_EQ(o.execute("netSetNetConfig", &length, nullptr, 0, nullptr), -1);
  EXPECT_EQ(o.execute("netGetCurrentIfConfig", &length, nullptr, 100, &now), -1);
  EXPECT_EQ(o.execute("netGetCurrentIfConfig", &length, nullptr, sizeof now, nullptr), -1);
}

TEST_F(Store, ListsSensorsAndAnswersPrivileges) {
  ASSERT_EQ(tessera_store_add_sensor(4, 'd', "PSU 1"), 0);
  ASSERT_EQ(tessera_store_add_sensor(9, 'e', "PSU 2"), 0);
  ASSERT_EQ(tessera_store_add_sensor(2, 't', std::string(100, 'n').c_str()), 0);
  std::vector<uint8_t> out(17408, 0xEE);
  uint32_t length = 0;
  ASSERT_EQ(o.execute("GetActiveSensors", &length, nullptr, 17408, out.data()), 0);
  EXPECT_EQ(length, 3U);
  EXPECT_EQ(out[0], 4);
  EXPECT_EQ(out[2], 'd');
  EXPECT_NE(out[3], 0);
  EXPECT_STREQ(reinterpret_cast<char *>(&out[4]), "PSU 1");
  EXPECT_EQ(out[68 + 2], 'e');
  EXPECT_EQ(std::strlen(reinterpret_cast<char *>(&out[136 + 4])), 63U);
  EXPECT_EQ(out[204 + 3], 0) << "a zero record ends the list";
  EXPECT_EQ(out[272], 0xEE);
  ASSERT_EQ(o.execute("GetActiveSensors", &length, nullptr, 100, out.data()), 0);
  EXPECT_EQ(length, 1U) << "only what fits";

  // A known user's privilege reaches the tools in the daemons' tests.
  ASSERT_EQ(tessera_store_set_user("operator", 0x1FF), 0);
  std::array<uint8_t, 528> request{};
  std::array<uint8_t, 528> response{};
  std::strcpy(reinterpret_cast<char *>(request.data()), "operator");
  length = 528;
  EXPECT_EQ(o.execute("osi_function_getuser", &length, request.data(), 527, response.data()), -1);
  std::strcpy(reinterpret_cast<char *>(request.data()), "nobody");
  EXPECT_EQ(o.execute("osi_function_getuser", &length, request.data(), 528, response.data()), -1);
  request.fill('o');  // no terminator: the name is cut to 527 characters and unknown
  EXPECT_EQ(o.execute("osi_function_getuser", &length, request.data(), 528, response.data()), -1);
  EXPECT_EQ(o.execute("no_such_function", &length, nullptr, 0, nullptr), -1);
  EXPECT_EQ(o.execute(nullptr, &length, nullptr, 0, nullptr), -1);
  EXPECT_EQ(o.execute("GetActiveSensors", nullptr, nullptr, 0, nullptr), -1);
}

TEST_F(Store, LogsEventsAndPagesThroughThem) {
  EXPECT_EQ(o.event("first", 0, 0), 0);
  EXPECT_EQ(o.event("second", 1, 2), 0);
  EXPECT_EQ(o.event(nullptr, 0, 0), -1);
  tessera_store_event events[1];
  size_t count = 0;
  ASSERT_EQ(tessera_store_read_events(0, events, 1, &count), 0);
  ASSERT_EQ(tessera_store_read_events(events[0].sequence, events, 1, &count), 0);
  ASSERT_EQ(count, 1U);
  EXPECT_STREQ(events[0].name, "second");
  EXPECT_EQ(events[0].arg2, 2);
  ASSERT_EQ(tessera_store_read_events(events[0].sequence, events, 1, &count), 0);
  EXPECT_EQ(count, 0U);
}

TEST_F(Store, AdministersValuesMappedPropertiesAndReset) {
  // Typed values and their numbers past the 32-bit range: the kit_store_admin fuzzer's corpus.
  char text[16];
  int type = 0;
  EXPECT_EQ(tessera_store_set_value("port", 9, "1"), TESSERA_STORE_ERROR);

  ASSERT_EQ(tessera_store_map_property(TESSERA_STORE_MAPPED, "A/b", "first"), 0);
  ASSERT_EQ(tessera_store_set_mapped(TESSERA_STORE_MAPPED, "A/b", "second"), 0);
  EXPECT_EQ(tessera_store_get_mapped(TESSERA_STORE_DCSGEN, "A/b", text, sizeof text),
            TESSERA_STORE_NOT_FOUND)
      << "the namespaces are apart";
  ASSERT_EQ(tessera_store_get_mapped(TESSERA_STORE_MAPPED, "A/b", text, 4), 0);
  EXPECT_STREQ(text, "sec");
  EXPECT_EQ(tessera_store_map_property(7, "A/b", "x"), TESSERA_STORE_ERROR);

  ASSERT_EQ(tessera_store_begin(), 0);
  EXPECT_EQ(tessera_store_begin(), TESSERA_STORE_ERROR);
  ASSERT_EQ(tessera_store_set_value("gone", TESSERA_STORE_TEXT, "x"), 0);
  ASSERT_EQ(tessera_store_rollback(), 0);
  EXPECT_EQ(tessera_store_get_value("gone", &type, text, sizeof text), TESSERA_STORE_NOT_FOUND);
  ASSERT_EQ(tessera_store_begin(), 0);
  ASSERT_EQ(add_session(session(1, "SSH")), 0) << "a step of its own inside the caller's";
  EXPECT_EQ(add_session(session(2, "SSH", "", "", 9)), TESSERA_STORE_ERROR);
  ASSERT_EQ(tessera_store_commit(), 0);
  EXPECT_EQ(tessera_store_commit(), TESSERA_STORE_ERROR);
  tessera_store_session one{};
  EXPECT_EQ(tessera_store_get_session(1, &one), 0);

  ASSERT_EQ(tessera_store_set_user("root", 1), 0);
  ASSERT_EQ(tessera_store_reset(), 0);
  uint32_t privilege = 0;
  EXPECT_EQ(tessera_store_get_user("root", &privilege), TESSERA_STORE_NOT_FOUND);
  EXPECT_EQ(tessera_store_get_mapped(TESSERA_STORE_MAPPED, "A/b", text, sizeof text),
            TESSERA_STORE_NOT_FOUND);
  char path[4096];
  ASSERT_EQ(tessera_store_path(path, sizeof path), 0);
  EXPECT_EQ(path, scratch.path());
  EXPECT_EQ(tessera_store_path(path, 4), TESSERA_STORE_ERROR);
}

}  // namespace
}  // namespace tessera::kit::test
