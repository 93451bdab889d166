// Listing sessions under filters and reading one session, its children and its user's privilege,
// against the in-memory store.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <numeric>
#include <string>
#include <vector>

#include "capture_sink.h"
#include "fake_store.h"
#include "store_client/session_record.h"
#include "tessera/session.h"

namespace tessera::test {
namespace {

using ::testing::ElementsAreArray;
constexpr uint32_t k192 = 0x0100A8C0;  // 192.168.0.1
constexpr uint32_t kUnset = 0xEEEEEEEE;

FakeStore &store() {
  return FakeStore::instance();
}

void add(uint32_t id, const SessionFields &fields, std::vector<uint32_t> children = {}) {
  store().add_session(id, make_session_record(fields), std::move(children));
}

// The user function, answering `privilege` at offset 516.
void answer_privilege(uint32_t privilege) {
  store().on_function(
      "osi_function_getuser", [privilege](uint32_t *, const void *, uint32_t, void *output) {
        std::memcpy(static_cast<uint8_t *>(output) + 516, &privilege, sizeof privilege);
        return 0;
      });
}

// The listed ids, checking that the entries behind them are zero.
std::vector<uint32_t> list(const char *user, uint32_t type, uint32_t address, int32_t result = 0) {
  std::array<uint32_t, SSN_MAX_IDS> ids{};
  ids.fill(kUnset);
  uint32_t count = kUnset;
  EXPECT_EQ(ssn_entry_list(user, type, address, ids.data(), &count), result);
  EXPECT_LE(count, SSN_MAX_IDS);
  const auto end = ids.begin() + std::min<uint32_t>(count, SSN_MAX_IDS);
  EXPECT_TRUE(std::all_of(end, ids.end(), [](uint32_t id) { return id == 0; }));
  return {ids.begin(), end};
}

// The thirteen arguments of ssn_entry_getinfo, in exactly sized buffers.
struct Info {
  std::vector<char> user = std::vector<char>(SSN_USER_SIZE, 'X');
  std::vector<char> text = std::vector<char>(SSN_ADDRESS_TEXT_SIZE, 'X');
  uint8_t type = 0xEE;
  // one, address, zero, has_vkvm, has_vmedia, privilege, word, limit, zero2
  std::array<uint32_t, 9> out{kUnset, kUnset, kUnset, kUnset, kUnset,
                              kUnset, kUnset, kUnset, kUnset};
  int32_t read(uint32_t id) {
    return ssn_entry_getinfo(id, user.data(), &out[0], &out[1], text.data(), &type, &out[2],
                             &out[3], &out[4], &out[5], &out[6], &out[7], &out[8]);
  }
  bool operator==(const Info &) const = default;
};

class Sessions : public ::testing::Test {
 protected:
  // Nothing of the session service reports to the diagnostics sink.
  void TearDown() override { EXPECT_TRUE(CaptureSink::instance().reports().empty()); }
};

TEST_F(Sessions, ListingFiltersCombineByAnd) {
  add(1, {"SSH", "alice", "192.168.0.1"});
  add(2, {"SSH", "bob", "192.168.0.1"});
  add(3, {"webgui", "alice", "localhost"});
  add(4, {"SSH", "alice", "10.0.0.5"});
  add(5, {"vKVM", "alice", "fe80::1"});
  add(7, {"Bogus", "", "192.168.0.1"});
  store().set_type_listing("", {1, 2, 3, 4, 5, 6, 7});  // 6 can't be read
  struct Case {
    const char *user;
    uint32_t type, address;
    std::vector<uint32_t> ids;
  };
  // clang-format off
  const Case cases[] = {
      {nullptr, 0, 0, {1, 2, 3, 4, 5, 6, 7}}, {"alice", 0, 0, {1, 3, 4, 5}}, {"", 0, 0, {6, 7}},
      {"ali", 0, 0, {}}, {"Alice", 0, 0, {}}, {nullptr, SSN_TYPE_SSH, 0, {1, 2, 4}},
      {nullptr, SSN_TYPE_VKVM, 0, {5}}, {nullptr, SSN_TYPE_SERIAL_NOAUTH, 0, {}},
      {nullptr, 0, k192, {1, 2, 7}}, {"alice", SSN_TYPE_SSH, k192, {1}},
      {nullptr, 0, 0x0100007F, {}}, {"alice", 99, 0, {}}};
  // clang-format on
  for (const auto &c : cases) {
    EXPECT_EQ(list(c.user, c.type, c.address), c.ids)
        << (c.user ? c.user : "(null)") << " " << c.type << " " << c.address;
  }
  const auto listed = store().calls("orb_session_get_type_info");
  EXPECT_EQ(listed.at(0).name, "");
  EXPECT_EQ(listed.at(0).count_in, 100);
}

TEST_F(Sessions, ListingZeroesIdsFirstAndExaminesAtMostAHundred) {
  std::vector<uint32_t> listed(150);
  std::iota(listed.begin(), listed.end(), 1000U);
  store().set_type_listing("", listed);
  EXPECT_THAT(list(nullptr, 0, 0), ElementsAreArray(listed.data(), 100));
  EXPECT_EQ(store().calls("orb_session_get_info").size(), 100U);

  store().clear_calls();
  std::array<uint32_t, SSN_MAX_IDS> ids{};
  ids.fill(7);
  EXPECT_EQ(ssn_entry_list(nullptr, 0, 0, ids.data(), nullptr), SSN_ERR_NULL_COUNT);
  EXPECT_EQ(ids, decltype(ids){});
  uint32_t count = 5;
  EXPECT_EQ(ssn_entry_list(nullptr, 0, 0, nullptr, &count), SSN_ERR_NULL_COUNT);
  EXPECT_EQ(count, 5U);
  EXPECT_TRUE(store().calls().empty());
  for (int32_t failure : {77, -1}) {
    store().fail("orb_session_get_type_info", failure);
    EXPECT_TRUE(list(nullptr, 0, 0, failure).empty());
  }
  EXPECT_TRUE(store().calls("orb_session_get_info").empty());
}

TEST_F(Sessions, InfoFillsEveryOutput) {
  add(5, {"SSH", "alice", "192.168.0.1", 0xDEADBEEF, 2}, {10, 11});
  add(10, {"vKVM"});
  add(11, {"SOL"});
  answer_privilege(4);
  Info info;
  ASSERT_EQ(info.read(5), 0);
  EXPECT_STREQ(info.user.data(), "alice");
  EXPECT_STREQ(info.text.data(), "192.168.0.1");
  EXPECT_EQ(info.type, SSN_TYPE_SSH);
  EXPECT_THAT(info.out,
              ElementsAreArray<uint32_t>({1, k192, 0, 1, 0, 4, 0xDEADBEEF, 0x7fffffff, 0}));
  const auto request = store().calls("orb_function_execute").at(0);
  EXPECT_EQ(request.length_in, 528U);
  EXPECT_EQ(request.capacity, 528U);
  std::vector<uint8_t> expected(528, 0);
  std::memcpy(expected.data(), "alice", 5);
  EXPECT_EQ(request.input, expected);

  // The address follows the text: "localhost" is the loopback, an IPv6 text has none.
  const std::tuple<const char *, const char *, uint32_t> cases[] = {
      {"localhost", "127.0.0.1", 0x0100007F},    {"fe80::1", "fe80::1", 0},
      {"::ffff:10.0.0.1", "::ffff:10.0.0.1", 0}, {"10.1", "10.1", 0x0000010A},
      {"localhost ", "localhost ", 0},           {"", "", 0}};
  for (const auto &[stored, text, address] : cases) {
    store().reset();
    add(1, {"SSH", "u", stored});
    ASSERT_EQ(info.read(1), 0);
    EXPECT_STREQ(info.text.data(), text);
    EXPECT_EQ(info.out[1], address) << stored;
  }
}

TEST_F(Sessions, InfoFailsOnlyWhenTheSessionCannotBeRead) {
  Info info;
  EXPECT_EQ(info.read(3), SSN_ERR_NO_SESSION);
  EXPECT_EQ(info, Info{});
  EXPECT_EQ(store().calls().size(), 1U);

  add(5, {"SSH", "alice", "10.0.0.1", 0, 1}, {10});
  add(10, {"vMedia"});
  store().fail("orb_session_get_children_info");
  ASSERT_EQ(info.read(5), 0);  // "osi_function_getuser" isn't there either
  EXPECT_THAT(std::vector<uint32_t>(info.out.begin() + 3, info.out.begin() + 6),
              ElementsAreArray<uint32_t>({0, 0, 0}));
  store().clear_calls();
  EXPECT_EQ(ssn_entry_getinfo(5, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                              nullptr, nullptr, nullptr, nullptr, nullptr),
            0);
  EXPECT_EQ(store().calls().size(), 1U);  // no child or privilege query without its output
}

// A broken store's record without terminators: nothing is read or copied past a field.
TEST_F(Sessions, UnterminatedFieldsReadAsTheirLongestText) {
  wire::SessionRecord broken{};
  std::memset(&broken, 'a', sizeof broken);
  broken.children = 0;
  SessionRecord bytes;
  std::memcpy(bytes.data(), &broken, sizeof broken);
  store().add_session(9, bytes);
  store().set_type_listing("", {9});
  answer_privilege(2);
  Info info;
  ASSERT_EQ(info.read(9), 0);
  EXPECT_EQ(std::string(info.user.data()), std::string(320, 'a'));
  EXPECT_EQ(std::string(info.text.data()), std::string(66, 'a'));
  EXPECT_EQ(info.type, 0U);
  EXPECT_EQ(store().calls("orb_function_execute").at(0).input.at(320), 0U);
  EXPECT_EQ(list(std::string(320, 'a').c_str(), 0, 0), std::vector<uint32_t>{9});
  EXPECT_TRUE(list(std::string(321, 'a').c_str(), 0, 0).empty());
}

TEST_F(Sessions, ChildSessionsAnswerByKind) {
  add(1, {"SSH", "a", "", 0, 2}, {10, 11});
  add(2, {"SSH", "a", "", 0, 2}, {11, 12});
  add(3, {"SSH", "a", "", 0, 3}, {20, 21, 10});  // 20 and 21 can't be read
  add(4, {"SSH", "a", "", 0, 1}, {12, 10});      // the record counts one child, the store two
  add(5, {"SSH", "a", "", 0, -4}, {10});
  add(6, {"SSH", "a", "", 0, 500}, {10});
  add(10, {"vKVM"});
  add(11, {"vMedia"});
  add(12, {"vMedia"});
  struct Case {
    uint32_t id, kind;
    bool yes;
    size_t calls;
    int32_t count_in;
  };
  // The record's count goes to the store as it stands (-4 too); only 500 is lowered to 100.
  const Case cases[] = {{1, 0, true, 3, 2},   {1, 1, true, 4, 2},  {2, 0, false, 4, 2},
                        {3, 0, true, 5, 3},   {4, 0, false, 4, 1}, {5, 0, false, 3, -4},
                        {6, 0, true, 3, 100}, {1, 2, false, 2, 2}, {99, 0, false, 1, 0}};
  for (const auto &c : cases) {
    store().clear_calls();
    EXPECT_EQ(ssn_has_subssn(c.id, c.kind) != 0, c.yes) << c.id << " " << c.kind;
    EXPECT_EQ(store().calls().size(), c.calls) << c.id << " " << c.kind;
    const auto children = store().calls("orb_session_get_children_info");
    EXPECT_EQ(children.empty() ? 0 : children[0].count_in, c.count_in);
  }
  // Every child the store returned is looked at, also one beyond the count it was given.
  store().set_fill_past_count(true);
  EXPECT_NE(ssn_has_subssn(4, 0), 0);
  store().fail("orb_session_get_children_info");
  EXPECT_EQ(ssn_has_subssn(1, 0), 0);
}

TEST_F(Sessions, ChildCountCoversTheWholeSystem) {
  add(1, {"vKVM"});
  add(2, {"vKVM"});
  add(3, {"vMedia"});
  EXPECT_EQ(ssn_subssn_count(SSN_CHILD_VKVM), 2U);
  EXPECT_EQ(ssn_subssn_count(SSN_CHILD_VMEDIA), 1U);
  const auto calls = store().calls("orb_session_get_type_info");
  EXPECT_EQ(calls.at(0).name, "vKVM");
  EXPECT_EQ(calls.at(0).count_in, 0);
  store().clear_calls();
  EXPECT_EQ(ssn_subssn_count(2), 0U);
  EXPECT_TRUE(store().calls().empty());
  store().set_reported_count(-3);  // the count the call left, whatever it is
  EXPECT_EQ(ssn_subssn_count(SSN_CHILD_VKVM), 0xFFFFFFFDU);
  store().fail("orb_session_get_type_info");
  EXPECT_EQ(ssn_subssn_count(SSN_CHILD_VKVM), 0U);
}

TEST_F(Sessions, PrivilegeRequestCarriesAtMost527Characters) {
  answer_privilege(0x1FF);
  const std::string long_name(600, 'n');
  EXPECT_EQ(get_privilege(long_name.c_str()), 0x1FFU);
  const auto input = store().calls("orb_function_execute").at(0).input;
  EXPECT_EQ(std::string(reinterpret_cast<const char *>(input.data())), long_name.substr(0, 527));
  store().clear_calls();
  EXPECT_EQ(get_privilege(nullptr), 0U);
  EXPECT_TRUE(store().calls().empty());
  store().fail("orb_function_execute", 5);
  EXPECT_EQ(get_privilege("root"), 0U);
}

}  // namespace
}  // namespace tessera::test
