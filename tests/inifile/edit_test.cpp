// Walking and changing documents: handle checks, the lookups' reports, the order of checks of
// each editing operation, value pointers, removal and memory failures.
#include <gtest/gtest.h>

#include <string>

#include "capture_sink.h"
#include "heap_seam.h"
#include "ini_helpers.h"

namespace tessera::test {
namespace {

constexpr char kStatusFormat[] = "DEBUG: %s [%d]: Status = %d\n";

// The messages of the status reports, in order.
std::string statuses() {
  std::string out;
  for (const Report &report : CaptureSink::instance().reports()) {
    EXPECT_EQ(report.format, kStatusFormat);
    EXPECT_EQ(report.level, 5);
    out += report.message;
  }
  CaptureSink::instance().reset();
  return out;
}

class InifileEdit : public ::testing::Test {
 protected:
  Document doc_ = parse("[a]\nk1=v1\nk2=v2\nk3=v3\n[b]\nk1=b1\n[a]\nk1=second\n");
  InifileSection *a_ = inifileGetSection(doc_.get(), 0);
  InifileSection *b_ = inifileGetSection(doc_.get(), 1);
  InifileKey *k1_ = inifileGetKey(a_, 0);
};

TEST_F(InifileEdit, NullAndWrongTaggedHandlesGiveTheFailureResultSilently) {
  auto *section_as_document = reinterpret_cast<InifileDocument *>(a_);
  auto *key_as_section = reinterpret_cast<InifileSection *>(k1_);
  auto *document_as_key = reinterpret_cast<InifileKey *>(doc_.get());
  for (InifileDocument *document : {static_cast<InifileDocument *>(nullptr), section_as_document}) {
    EXPECT_EQ(inifileGetSection(document, 0), nullptr);
    EXPECT_EQ(inifileGetSectionByName(document, "a"), nullptr);
    EXPECT_EQ(inifileGetKeyValueByName(document, "a", "k1"), nullptr);
    EXPECT_EQ(inifileAddNewSection(document, "n"), nullptr);
    EXPECT_EQ(inifileSave(document, scratch().file("out.ini").c_str()),
              document == nullptr ? 2 : 4);
    EXPECT_EQ(inifileClose(document), document == nullptr ? 2 : 4);
  }
  for (InifileSection *section : {static_cast<InifileSection *>(nullptr), key_as_section}) {
    EXPECT_EQ(inifileGetSectionName(section), nullptr);
    EXPECT_EQ(inifileGetNumKeys(section), 0U);
    EXPECT_EQ(inifileGetSectionLineNumber(section), 0xFFFFFFFFU);
    EXPECT_EQ(inifileGetKey(section, 0), nullptr);
    EXPECT_EQ(inifileGetKeyByName(section, "k1"), nullptr);
    EXPECT_EQ(inifileSetKeyValueByHandle(section, "k", "v"), 4);
    EXPECT_EQ(inifileRemoveKey(section, k1_), 1);
  }
  for (InifileKey *key : {static_cast<InifileKey *>(nullptr), document_as_key}) {
    EXPECT_EQ(inifileGetKeyName(key), nullptr);
    EXPECT_EQ(inifileGetKeyValue(key), nullptr);
    EXPECT_EQ(inifileGetKeyLineNumber(key), 0xFFFFFFFFU);
    EXPECT_EQ(inifileRemoveKey(a_, key), 1);
  }
  EXPECT_EQ(statuses(), "");
  EXPECT_EQ(inifileGetNumKeys(a_), 3U);
}

TEST_F(InifileEdit, SectionLookupsReportAMissOrAnEmptyChainKeyLookupsStaySilent) {
  EXPECT_EQ(inifileGetSectionByName(doc_.get(), "a"), a_);
  EXPECT_EQ(inifileGetKeyByName(a_, "k2"), inifileGetKey(a_, 1));
  EXPECT_STREQ(inifileGetKeyValueByName(doc_.get(), "a", "k1"), "v1");
  EXPECT_EQ(statuses(), "");
  EXPECT_EQ(inifileGetKey(a_, 3), nullptr);
  EXPECT_EQ(inifileGetKeyByName(a_, "K1"), nullptr);
  EXPECT_EQ(inifileGetKeyValueByName(doc_.get(), "a", "nope"), nullptr);
  EXPECT_EQ(statuses(), "");
  EXPECT_EQ(inifileGetSection(doc_.get(), 3), nullptr);
  EXPECT_EQ(inifileGetSectionByName(doc_.get(), "A"), nullptr);
  EXPECT_EQ(inifileGetKeyValueByName(doc_.get(), "c", "k1"), nullptr);
  Document empty(inifileCreate());
  EXPECT_EQ(inifileGetSection(empty.get(), 0), nullptr);
  EXPECT_EQ(statuses(), "Status = 6\nStatus = 6\nStatus = 6\nStatus = 6\n");
}

TEST_F(InifileEdit, AddNewSectionLooksUpThenAppendsEvenARepeatedName) {
  EXPECT_EQ(inifileAddNewSection(doc_.get(), std::string(256, 'x').c_str()), nullptr);
  InifileSection *longest = inifileAddNewSection(doc_.get(), std::string(255, 'x').c_str());
  EXPECT_EQ(statuses(), "Status = 6\nStatus = 1\n");
  InifileSection *again = inifileAddNewSection(doc_.get(), "b");
  EXPECT_EQ(statuses(), "Status = 1\n");
  InifileSection *unnamed = inifileAddNewSection(doc_.get(), "");
  ASSERT_NE(unnamed, nullptr);
  EXPECT_NE(again, b_);
  EXPECT_EQ(inifileGetSection(doc_.get(), 3), longest);
  EXPECT_EQ(inifileGetSection(doc_.get(), 4), again);
  EXPECT_EQ(inifileGetSectionByName(doc_.get(), "b"), b_);
  EXPECT_EQ(inifileGetSectionLineNumber(again), 0U);
  EXPECT_EQ(inifileGetNumKeys(again), 0U);
  {
    FailNthAllocation fail(1);
    EXPECT_EQ(inifileAddNewSection(doc_.get(), "b"), b_);  // the one found stands in
  }
}

TEST_F(InifileEdit, SetKeyValueByHandleAddsAndNeverChanges) {
  const auto set = inifileSetKeyValueByHandle;
  EXPECT_EQ(set(nullptr, nullptr, nullptr), 4);
  EXPECT_EQ(set(a_, nullptr, "v"), 2);
  EXPECT_EQ(set(a_, "k", nullptr), 2);
  EXPECT_EQ(set(a_, std::string(256, 'k').c_str(), "v"), 9);
  EXPECT_EQ(set(a_, "k2", "new"), 1);
  EXPECT_EQ(set(a_, std::string(255, 'k').c_str(), std::string(1500, 'v').c_str()), 0);
  EXPECT_EQ(set(a_, "", ""), 0);
  EXPECT_EQ(inifileGetNumKeys(a_), 5U);
  EXPECT_STREQ(inifileGetKeyValue(inifileGetKey(a_, 1)), "v2");
  InifileKey *added = inifileGetKey(a_, 3);
  EXPECT_EQ(std::string(inifileGetKeyName(added)), std::string(255, 'k'));
  EXPECT_EQ(std::string(inifileGetKeyValue(added)), std::string(1023, 'v'));
  EXPECT_STREQ(inifileGetKeyName(inifileGetKey(a_, 4)), "");
  EXPECT_EQ(inifileGetKeyLineNumber(inifileGetKey(a_, 4)), 0U);
}

TEST_F(InifileEdit, SetKeyValueByNameChecksLengthsBeforeTheTag) {
  const auto set = [&](InifileDocument *d, const char *s, const char *k) {
    return inifileSetKeyValueByName(d, s, k, "v");
  };
  auto *wrong = reinterpret_cast<InifileDocument *>(a_);
  const std::string long_name(256, 'n');
  EXPECT_EQ(set(nullptr, long_name.c_str(), "k"), 2);
  EXPECT_EQ(set(doc_.get(), nullptr, "k"), 2);
  EXPECT_EQ(set(wrong, long_name.c_str(), long_name.c_str()), 8);
  EXPECT_EQ(set(wrong, "a", long_name.c_str()), 9);
  EXPECT_EQ(set(wrong, "a", "k"), 4);
  EXPECT_EQ(statuses(), "");
}

TEST_F(InifileEdit, SetKeyValueByNameOverwritesInPlaceOrCreates) {
  const char *value = inifileGetKeyValue(k1_);
  EXPECT_EQ(inifileSetKeyValueByName(doc_.get(), "a", "k1", "changed; and\nlonger"), 0);
  EXPECT_STREQ(value, "changed; and\nlonger");  // the same pointer shows the new value
  EXPECT_EQ(inifileGetKeyValue(k1_), value);
  EXPECT_EQ(inifileGetKeyLineNumber(k1_), 2U);
  EXPECT_EQ(inifileSetKeyValueByName(doc_.get(), "a", "k1", std::string(2000, 'x').c_str()), 0);
  EXPECT_EQ(std::string(value), std::string(1023, 'x'));
  EXPECT_EQ(statuses(), "");

  EXPECT_EQ(inifileSetKeyValueByName(doc_.get(), "c", "k", "1"), 0);
  EXPECT_EQ(inifileSetKeyValueByName(doc_.get(), "c", "k", "2"), 0);
  EXPECT_EQ(statuses(), "Status = 6\n");
  const std::string tail = dump(doc_.get());
  EXPECT_EQ(tail.substr(tail.find("[b]")),
            "[b]@5\nk1=b1@6\n[a]@7\nk1=second@8\n[c]@0\nk=2@0\n");
}

TEST_F(InifileEdit, RemoveKeyUnlinksOnlyAKeyOfTheSection) {
  InifileKey *other = inifileGetKey(b_, 0);
  EXPECT_EQ(inifileRemoveKey(a_, other), 1);
  EXPECT_EQ(inifileGetNumKeys(b_), 1U);
  EXPECT_EQ(inifileSetKeyValueByHandle(a_, "k4", "v4"), 0);
  InifileKey *edited = inifileGetKey(a_, 3);
  EXPECT_EQ(inifileRemoveKey(a_, inifileGetKey(a_, 1)), 0);  // middle
  EXPECT_EQ(inifileRemoveKey(a_, k1_), 0);                   // first
  EXPECT_EQ(inifileGetKeyName(k1_), nullptr);                // its handle is void now
  EXPECT_EQ(inifileRemoveKey(a_, k1_), 1);
  EXPECT_EQ(inifileRemoveKey(a_, edited), 0);  // last
  EXPECT_EQ(dump(doc_.get()).substr(0, 18), "[a]@1\nk3=v3@4\n[b]@");
  EXPECT_EQ(inifileGetNumKeys(a_), 1U);
  EXPECT_EQ(inifileRemoveKey(a_, inifileGetKey(a_, 0)), 0);
  EXPECT_EQ(inifileGetNumKeys(a_), 0U);
  EXPECT_EQ(inifileRemoveKey(a_, other), 1);  // no keys left
  EXPECT_EQ(inifileGetSectionByName(doc_.get(), "a"), a_);
}

TEST(InifileCreate, GivesAnEmptyDocument) {
  Document document(inifileCreate());
  ASSERT_NE(document, nullptr);
  EXPECT_EQ(dump(document.get()), "");
}

}  // namespace
}  // namespace tessera::test
