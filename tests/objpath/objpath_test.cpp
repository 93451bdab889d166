// ObjectPathInit's record and text area, its results, and the key lookup. The record is read back
// with memcpy, as a tool on a strict-alignment target would: the pair table is unaligned.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "capture_sink.h"
#include "tessera/objpath.h"

namespace tessera::test {
namespace {

constexpr std::size_t kRecord = sizeof(ObjectPath);
constexpr std::size_t kPair = sizeof(ObjectPathPair);
constexpr const char kInvalidFormat[] = "ERROR: %s [%d]: Invalid parameter\n";

using Pairs = std::vector<std::pair<std::string, std::string>>;

template <class T>
T field(const unsigned char *at) {
  T value;
  std::memcpy(&value, at, sizeof value);
  return value;
}

struct Parsed {
  uint32_t magic;
  const char *host;
  const char *name_space;
  const char *class_name;
  const unsigned char *table;
  Pairs pairs;
};

Parsed view(const unsigned char *record) {
  Parsed p{field<uint32_t>(record),
           field<char *>(record + offsetof(ObjectPath, host)),
           field<char *>(record + offsetof(ObjectPath, nameSpace)),
           field<char *>(record + offsetof(ObjectPath, className)),
           field<unsigned char *>(record + offsetof(ObjectPath, pairs)),
           {}};
  // Only a parsed record's table has meaning.
  const auto count = p.magic == OBJECTPATH_MAGIC
                         ? field<uint16_t>(record + offsetof(ObjectPath, pairCount))
                         : uint16_t{0};
  for (std::size_t i = 0; i < count; ++i) {
    const unsigned char *entry = p.table + i * kPair;
    p.pairs.emplace_back(field<char *>(entry + offsetof(ObjectPathPair, name)),
                         field<char *>(entry + offsetof(ObjectPathPair, value)));
  }
  return p;
}

// A buffer of `size` bytes at `offset` from an aligned start, with a canary of 16 bytes behind.
struct Buffer {
  explicit Buffer(std::size_t bytes_given, std::size_t at = 0)
      : bytes(at + bytes_given + 16, 0xA5), size(bytes_given), offset(at) {}
  // Through an integer: the buffer need not be aligned for the record, and the library doesn't
  // ask it to be.
  ObjectPath *path() {
    return reinterpret_cast<ObjectPath *>(reinterpret_cast<std::uintptr_t>(record()));
  }
  unsigned char *record() { return bytes.data() + offset; }
  int32_t init(const std::string &text) {
    const int32_t result = ObjectPathInit(path(), static_cast<int32_t>(size), text.c_str());
    for (std::size_t i = offset + size; i < bytes.size(); ++i) {
      EXPECT_EQ(bytes[i], 0xA5) << "wrote past size " << size << " for " << text;
    }
    return result;
  }
  std::vector<unsigned char> bytes;
  std::size_t size;
  std::size_t offset;
};

TEST(ObjectPathInit, SplitsHostNamespaceClassAndKeys) {
  struct Case {
    const char *text;
    const char *host;
    const char *name_space;
    const char *class_name;
    Pairs pairs;
  };
  const Case cases[] = {
      {"CIM_Foo.Key=1,Other=2", "", "root/cimv2", "CIM_Foo", {{"Key", "1"}, {"Other", "2"}}},
      {"root/cimv2:CIM_Foo.Key=1", "", "root/cimv2", "CIM_Foo", {{"Key", "1"}}},
      {"//host/root/cimv2:CIM_Foo.Key=1", "//host", "root/cimv2", "CIM_Foo", {{"Key", "1"}}},
      {"host:CIM_Foo.Key=1", "", "root/cimv2", "CIM_Foo", {{"Key", "1"}}},
      {"a:b:Class.K=1", "", "root/cimv2", "Class", {{"K", "1"}}},
      {"rootish:Class.K=1", "", "rootish", "Class", {{"K", "1"}}},
      {"xroot/y:Class.K=1", "", "root/y", "Class", {{"K", "1"}}},
      {"//rootserver/root/cimv2:Class.K=1", "/", "rootserver/root/cimv2", "Class", {{"K", "1"}}},
      {"C.K=1:root.x", "", "root/cimv2", "root", {}},  // "root" only in the tail
      {".K=1", "", "root/cimv2", "", {{"K", "1"}}},
      {"Class.", "", "root/cimv2", "Class", {}},
      {"Class.K", "", "root/cimv2", "Class", {}},
      {"Class.K=1,L", "", "root/cimv2", "Class", {{"K", "1"}}},
      {"Class.K=", "", "root/cimv2", "Class", {{"K", ""}}},
      {"Class.K=,L=2", "", "root/cimv2", "Class", {{"K", ""}, {"L", "2"}}},
      {"Class.=v", "", "root/cimv2", "Class", {{"", "v"}}},
      {"A.B.C=1", "", "root/cimv2", "A", {{"B.C", "1"}}},
      {"Class.K=1,,L=2", "", "root/cimv2", "Class", {{"K", "1"}, {",L", "2"}}},
      {"C.K=\"a,b\",L=2", "", "root/cimv2", "C", {{"K", "\"a"}, {"b\",L", "2"}}},
      {"Class.url=a:b.c", "", "root/cimv2", "b", {}},
      {"Class.K=a b", "", "root/cimv2", "Class", {{"K", "a b"}}},
      // A value holding '=' is kept whole; the entries left over take the empty name and value.
      {"Class.K=a=b", "", "root/cimv2", "Class", {{"K", "a=b"}, {"", ""}}},
      {"Class.K=a=b,L", "", "root/cimv2", "Class", {{"K", "a=b"}, {"L", ""}}},
  };
  for (const auto &c : cases) {
    Buffer buffer(512);
    ASSERT_EQ(buffer.init(c.text), 0) << c.text;
    const Parsed p = view(buffer.record());
    EXPECT_EQ(p.magic, OBJECTPATH_MAGIC) << c.text;
    EXPECT_STREQ(p.host, c.host) << c.text;
    EXPECT_STREQ(p.name_space, c.name_space) << c.text;
    EXPECT_STREQ(p.class_name, c.class_name) << c.text;
    EXPECT_EQ(p.pairs, c.pairs) << c.text;
  }
}

TEST(ObjectPathInit, RefusesPathsWithoutDotInTheTailAndBlanksInKeyNames) {
  for (const char *text :
       {"Class", "", ":", "a:", "Class.url=a:b", "Class.A B=1", "Class.K=1, L=2", "Class.A\tB=1"}) {
    Buffer buffer(512);
    EXPECT_EQ(buffer.init("C.K=1"), 0);
    EXPECT_EQ(buffer.init(text), 4) << text;
    EXPECT_EQ(view(buffer.record()).magic, 0U) << text;  // an old magic does not survive
  }
}

TEST(ObjectPathInit, RefusesBadArgumentsWithoutTouchingTheBuffer) {
  Buffer buffer(64);
  EXPECT_EQ(ObjectPathInit(nullptr, 64, "C.K=1"), 4);
  EXPECT_EQ(ObjectPathInit(buffer.path(), 64, nullptr), 4);
  EXPECT_EQ(ObjectPathInit(buffer.path(), 0, "C.K=1"), 4);
  EXPECT_EQ(ObjectPathInit(buffer.path(), -1, "C.K=1"), 4);
  EXPECT_EQ(buffer.bytes, std::vector<unsigned char>(buffer.bytes.size(), 0xA5));
}

TEST(ObjectPathInit, LaysTheTextAreaOutPieceByPieceWithoutPadding) {
  struct Case {
    const char *text;
    std::size_t host, name_space, class_name, table;  // offsets behind the record
    std::size_t need;                                 // bytes behind the record
  };
  const Case cases[] = {
      // empty string, "//h" + 2, "root/x" + 2, "C" + 1, table, "K" "v" "L" "w" each + 1
      {"//h/root/x:C.K=v,L=w", 1, 6, 14, 16, 16 + 2 * kPair + 8},
      {"C.K=v", 0, 1, 12, 14, 14 + kPair + 4},
      {"xroot/y:C.K=1", 1, 3, 11, 13, 13 + kPair + 4},  // empty host, still laid out
  };
  for (const auto &c : cases) {
    for (const std::size_t offset : {0, 1, 3}) {
      Buffer buffer(kRecord + c.need, offset);
      ASSERT_EQ(buffer.init(c.text), 0) << c.text;
      const unsigned char *area = buffer.record() + kRecord;
      const Parsed p = view(buffer.record());
      EXPECT_EQ(p.host, reinterpret_cast<const char *>(area + c.host)) << c.text;
      EXPECT_EQ(p.name_space, reinterpret_cast<const char *>(area + c.name_space)) << c.text;
      EXPECT_EQ(p.class_name, reinterpret_cast<const char *>(area + c.class_name)) << c.text;
      EXPECT_EQ(p.table, area + c.table) << c.text;
      // The last value is the last piece: one character and its terminator.
      const unsigned char *last = p.table + (p.pairs.size() - 1) * kPair;
      EXPECT_EQ(field<char *>(last + offsetof(ObjectPathPair, value)),
                reinterpret_cast<const char *>(area + c.need - 2))
          << c.text;
    }
    // Every smaller buffer is too small, and all of it is zeroed however far the parse got.
    for (std::size_t size = 1; size < kRecord + c.need; ++size) {
      Buffer buffer(size, size % 2);
      EXPECT_EQ(buffer.init(c.text), 504) << c.text << " in " << size;
      const unsigned char *record = buffer.record();
      if (size <= kRecord) {
        EXPECT_TRUE(std::all_of(record, record + size, [](unsigned char b) { return b == 0; }));
      } else {
        EXPECT_EQ(view(record).magic, 0U);
      }
    }
  }
}

TEST(ObjectPathInit, CountsPairsIn16Bits) {
  Buffer buffer(70000);
  ASSERT_EQ(buffer.init("C.K=" + std::string(65536, '=')), 0);  // 65537 '=' count as 1
  const Parsed p = view(buffer.record());
  ASSERT_EQ(p.pairs.size(), 1U);
  EXPECT_EQ(p.pairs[0].second, std::string(65536, '='));
}

TEST(ObjectPathGetPropertyValue, FindsTheFirstExactlyEqualName) {
  Buffer buffer(256, 1);
  ASSERT_EQ(buffer.init("//h/root/cimv2:CIM_Foo.Key=1,Other=2,Key=3,=e"), 0);
  const char *value = ObjectPathGetPropertyValue(buffer.path(), "Key");
  EXPECT_STREQ(value, "1");
  EXPECT_GT(value, reinterpret_cast<const char *>(buffer.record()));
  EXPECT_LT(value, reinterpret_cast<const char *>(buffer.record()) + 256);
  EXPECT_STREQ(ObjectPathGetPropertyValue(buffer.path(), "Other"), "2");
  EXPECT_STREQ(ObjectPathGetPropertyValue(buffer.path(), ""), "e");
  for (const char *missing : {"key", "Ke", "Keys", "Other2"}) {
    EXPECT_EQ(ObjectPathGetPropertyValue(buffer.path(), missing), nullptr) << missing;
  }
  ASSERT_EQ(buffer.init("Class."), 0);
  EXPECT_EQ(ObjectPathGetPropertyValue(buffer.path(), "K"), nullptr);
  EXPECT_TRUE(CaptureSink::instance().reports().empty());
}

TEST(ObjectPathGetPropertyValue, ReportsNullArgumentsAndUnparsedRecords) {
  Buffer buffer(256);
  ASSERT_EQ(buffer.init("C.K=1"), 0);
  EXPECT_EQ(ObjectPathGetPropertyValue(nullptr, "K"), nullptr);
  EXPECT_EQ(ObjectPathGetPropertyValue(buffer.path(), nullptr), nullptr);
  EXPECT_EQ(buffer.init("C"), 4);
  EXPECT_EQ(ObjectPathGetPropertyValue(buffer.path(), "K"), nullptr);
  EXPECT_EQ(CaptureSink::instance().count(kInvalidFormat), 3U);
  EXPECT_EQ(CaptureSink::instance().reports().size(), 3U);
  EXPECT_EQ(CaptureSink::instance().reports()[0].level, 2);
}

}  // namespace
}  // namespace tessera::test
