// The reentrant codecs under threads: lookups share one parsed record, while each thread parses,
// cuts tags and codes entities in its own buffers. Run under ThreadSanitizer too.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "tessera/http.h"
#include "tessera/objpath.h"
#include "tessera/xml.h"

namespace {

TEST(CodecsThreads, ShareAParsedRecordAndKeepNoStateOfTheirOwn) {
  union {
    ObjectPath record;
    char bytes[256];
  } shared;
  ASSERT_EQ(ObjectPathInit(&shared.record, sizeof shared, "//h/root/x:C.A=1,B=2,C=3"), 0);
  std::vector<int> failures(4, 0);
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < failures.size(); ++t) {
    threads.emplace_back([&shared, &failure = failures[t], t] {
      const std::string id = std::to_string(t);
      for (int round = 0; round < 500; ++round) {
        union {
          ObjectPath record;
          char bytes[128];
        } own;
        char value[32];
        char coded[64];
        char decoded[64];
        failure += std::string(ObjectPathGetPropertyValue(&shared.record, "B")) != "2";
        failure += ObjectPathInit(&own.record, sizeof own, ("C.K=" + id).c_str()) != 0 ||
                   ObjectPathGetPropertyValue(&own.record, "K") != id;
        failure += XmlParseTag("t", ("<t><" + id + "></t>").c_str(), value, sizeof value) != 1;
        failure += HttpEncodeSpecialCharacters(value, coded, sizeof coded) != 1 ||
                   HttpDecodeSpecialCharacters(coded, decoded, sizeof decoded - 1) != 1 ||
                   std::string(decoded) != "<" + id + ">";
      }
    });
  }
  for (auto &thread : threads) thread.join();
  EXPECT_EQ(failures, std::vector<int>(4, 0));
}

}  // namespace
