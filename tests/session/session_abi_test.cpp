// The session service as a tool reaches it: through libtessera.so.1's C interface.
#include <gtest/gtest.h>

#include "fake_store.h"
#include "tessera/session.h"

namespace tessera::test {
namespace {

TEST(SessionSharedLibrary, ToolFindsItsSessionAndShowsIt) {
  FakeStore::instance().add_session(7, make_session_record({"webgui", "admin", "localhost", 3}));
  FakeStore::instance().add_session(8, make_session_record({"SSH", "admin", "10.0.0.2"}));
  uint32_t ids[SSN_MAX_IDS], count = 0;
  ASSERT_EQ(ssn_entry_list("admin", str2ssntype("webgui"), 0, ids, &count), 0);
  ASSERT_EQ(count, 1U);
  char user[SSN_USER_SIZE], text[SSN_ADDRESS_TEXT_SIZE], dotted[SSN_IP_TEXT_SIZE];
  uint32_t address = 0;
  uint8_t type = 0;
  ASSERT_EQ(ssn_entry_getinfo(ids[0], user, nullptr, &address, text, &type, nullptr, nullptr,
                              nullptr, nullptr, nullptr, nullptr, nullptr),
            0);
  EXPECT_STREQ(ssn_iptostr(dotted, address), "127.0.0.1");
  EXPECT_STREQ(SsnTypeString[type], "GUI");

  // The entry points kept for older tools do no work.
  FakeStore::instance().clear_calls();
  EXPECT_EQ(ssn_open(), 100);
  uint32_t state = 0, limit = 0;
  EXPECT_EQ(ssn_check(nullptr, "x", &state, &state, &limit), 0);
  EXPECT_EQ(state, 1U);
  EXPECT_EQ(limit, 0xFFFFFFFFU);
  EXPECT_EQ(ssn_check(nullptr, nullptr, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(ssn_unlock() + sc_ssn_open() + sc_ssn_unlock(), 0);
  EXPECT_TRUE(FakeStore::instance().calls().empty());
}

}  // namespace
}  // namespace tessera::test
