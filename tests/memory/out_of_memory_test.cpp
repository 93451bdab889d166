// Every exported operation that takes heap memory, run once as is and then with each of its
// allocations failing in turn: the result is the one for running out of memory, nothing leaks
// (LeakSanitizer and valgrind watch the program), and what existed before still works.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "capture_sink.h"
#include "fake_daemon.h"
#include "heap_seam.h"
#include "scratch.h"
#include "store_client/daemon_message.h"
#include "tessera/inifile.h"
#include "tessera/mempool.h"
#include "tessera/orb_cfg.h"
#include "tessera/session.h"
#include "tessera/strlib.h"
#include "tessera/sync.h"
#include "tessera/system.h"
#include "tessera/trace.h"

namespace tessera::test {
namespace {

// Runs one operation with the given allocation failing (0: none) and counts what it asked for.
struct Probe {
  std::uint32_t failing = 0;
  std::uint32_t taken = 0;

  template <class Operation>
  auto operator()(Operation &&operation) {
    const std::uint32_t before = heap::allocation_count();
    heap::fail_nth(failing);
    auto result = operation();
    heap::fail_nth(0);
    taken = heap::allocation_count() - before;
    return result;
  }
  [[nodiscard]] bool fails() const { return failing != 0; }
};

// One row: the allocations the operation takes when memory is plenty, and a body that builds what
// exists before, runs the operation through the probe, checks its result and then what existed.
constexpr std::uint32_t kCounted = 0xFFFFFFFF;  // as many as it takes on this target, more than 3
struct Row {
  const char *name;
  std::uint32_t allocations;
  std::function<void(Probe &)> body;
};

const ScratchDir &scratch() {
  static const ScratchDir dir;
  return dir;
}

// The normal form of a document, as inifileSave writes it.
std::string saved(InifileDocument *document) {
  const std::string path = scratch().file("saved.ini");
  EXPECT_EQ(inifileSave(document, path.c_str()), 0);
  return read_file(path);
}

// Its sections and keys, "[name]" and "key=value" a line each.
std::string records(InifileDocument *document) {
  std::string out;
  for (uint32_t s = 0; InifileSection *section = inifileGetSection(document, s); ++s) {
    out += "[" + std::string(inifileGetSectionName(section)) + "]\n";
    for (uint32_t k = 0; InifileKey *key = inifileGetKey(section, k); ++k) {
      out += std::string(inifileGetKeyName(key)) + "=" + inifileGetKeyValue(key) + "\n";
    }
  }
  return out;
}

constexpr char kIniText[] = "[a]\nk=v\n[b]\nk1=1\nk2=2\n";
constexpr char kIniSaved[] = "[a]\nk=v\n\n[b]\nk1=1\nk2=2\n";

// Runs `edit` on a document read from kIniText; the document still saves what it held and takes
// a later edit.
void edit_ini(Probe &probe, const std::function<int32_t(InifileDocument *)> &edit,
              int32_t status_without_memory, const char *saved_after_success) {
  write_file(scratch().file("edit.ini"), kIniText);
  InifileDocument *document = nullptr;
  ASSERT_EQ(inifileOpen(scratch().file("edit.ini").c_str(), &document), 0);
  const int32_t status = probe([&] { return edit(document); });
  if (probe.fails()) {
    EXPECT_EQ(status, status_without_memory);
    EXPECT_EQ(saved(document).rfind(kIniSaved, 0), 0U);  // what it held, maybe an empty section
  } else {
    EXPECT_EQ(saved(document), saved_after_success);
  }
  EXPECT_EQ(inifileSetKeyValueByName(document, "a", "later", "x"), 0);
  EXPECT_EQ(inifileClose(document), 0);
}

// The property operations that carry a daemon message: 1 when it can't be had, before anything is
// sent; only Cfgmgr_Get_Property empties `out` first.
struct PropertyOperation {
  const char *name;
  std::function<int32_t(char *out)> run;
  bool empties_out;
};

std::vector<Row> rows() {
  std::vector<Row> table = {
      {"inifileOpen", kCounted,  // the line buffer, the document, then blocks of records
       [](Probe &probe) {
         std::string text;
         for (int s = 0; s < 200; ++s) {
           text += "[section " + std::to_string(s) + "]\nkey=value " + std::to_string(s) + "\n";
         }
         write_file(scratch().file("open.ini"), text);
         auto *document = reinterpret_cast<InifileDocument *>(&text);  // set to null on failure
         const int32_t status =
             probe([&] { return inifileOpen(scratch().file("open.ini").c_str(), &document); });
         if (probe.failing == 1 || probe.failing == 2) {
           EXPECT_EQ(status, 3);
           EXPECT_EQ(document, nullptr);
           return;
         }
         EXPECT_EQ(status, 0);  // a record lost ends the reading: the lines before it are kept
         const std::string read = records(document);
         EXPECT_EQ(read.size() < text.size(), probe.fails());
         EXPECT_EQ(text.compare(0, read.size(), read), 0);
         EXPECT_EQ(inifileClose(document), 0);
       }},
      {"inifileCreate", 1,
       [](Probe &probe) {
         InifileDocument *document = probe([] { return inifileCreate(); });
         EXPECT_EQ(document == nullptr, probe.fails());
         inifileClose(document);
       }},
      {"inifileAddNewSection", 1,
       [](Probe &probe) {
         edit_ini(
             probe,
             [](InifileDocument *d) {
               return inifileAddNewSection(d, "c") != nullptr ? 0 : 3;
             },
             3, "[a]\nk=v\n\n[b]\nk1=1\nk2=2\n\n[c]\n");
       }},
      {"inifileSetKeyValueByHandle", 1,
       [](Probe &probe) {
         edit_ini(
             probe,
             [](InifileDocument *d) {
               return inifileSetKeyValueByHandle(inifileGetSection(d, 0), "k2", "w");
             },
             3, "[a]\nk=v\nk2=w\n\n[b]\nk1=1\nk2=2\n");
       }},
      {"inifileSetKeyValueByName", 2,  // the section, then the key
       [](Probe &probe) {
         edit_ini(
             probe, [](InifileDocument *d) { return inifileSetKeyValueByName(d, "c", "k", "v"); },
             3, "[a]\nk=v\n\n[b]\nk1=1\nk2=2\n\n[c]\nk=v\n");
       }},
      {"inifileSave", 0,
       [](Probe &probe) {
         edit_ini(
             probe,
             [](InifileDocument *d) {
               return inifileSave(d, scratch().file("again.ini").c_str());
             },
             0, kIniSaved);
       }},
      {"OSLockInit", 1,
       [](Probe &probe) {
         OSLock *before = OSLockInit(nullptr);
         ASSERT_NE(before, nullptr);
         CaptureSink::instance().reset();
         OSLock *lock = probe([] { return OSLockInit("lock"); });
         EXPECT_EQ(lock == nullptr, probe.fails());
         EXPECT_EQ(CaptureSink::instance().assertions(), probe.fails() ? 1U : 0U);
         EXPECT_EQ(OSLockAcquire(before), 1);
         EXPECT_EQ(OSLockRelease(before), 1);
         EXPECT_EQ(OSLockUninit(before), 1);
         if (lock != nullptr) {
           EXPECT_EQ(OSLockUninit(lock), 1);
         }
       }},
      {"TraceLogMessage", 1,
       [](Probe &probe) {
         const std::string log = scratch().file("trace.log");
         std::remove(log.c_str());
         TraceLogSetLevel(1);
         TraceLogEnableTimestamps(0);
         TraceLogSetTarget(2);
         TraceLogSetLogFile(log.c_str());
         TraceLogMessage(1, "before\n");
         probe([] {
           TraceLogMessage(1, "message %d\n", 1);
           return 0;
         });
         TraceLogMessage(1, "after\n");
         EXPECT_EQ(read_file(log), probe.fails() ? "before\nafter\n" : "before\nmessage 1\nafter\n");
         TraceLogSetLevel(0);
         TraceLogSetTarget(1);
         TraceLogEnableTimestamps(1);
         TraceLogSetLogFile("/tmp/tracelog.txt");
       }},
      {"StrTokenize", 4,  // the vector, then one block per token
       [](Probe &probe) {
         char **argv = probe([] { return StrTokenize("one two three"); });
         if (probe.failing == 1) {
           EXPECT_EQ(argv, nullptr);
           return;
         }
         ASSERT_NE(argv, nullptr);
         std::vector<std::string> tokens;
         for (char **at = argv; *at != nullptr; ++at) tokens.emplace_back(*at);
         std::vector<std::string> expected = {"one", "two", "three"};
         if (probe.fails()) expected.erase(expected.begin() + (probe.failing - 2));  // that one lost
         EXPECT_EQ(tokens, expected);
         std::free(static_cast<void *>(argv));
       }},
      {"OSProcessRunning", 1,
       [](Probe &probe) {
         CaptureSink::instance().reset();
         const int32_t running = probe([] { return OSProcessRunning("no-such-process-here"); });
         EXPECT_EQ(running, 0);
         EXPECT_EQ(CaptureSink::instance().count("ERROR: %s [%d]: Unable to allocate memory\n"),
                   probe.fails() ? 1U : 0U);
         EXPECT_EQ(CaptureSink::instance().assertions(), probe.fails() ? 1U : 0U);
       }},
      {"ssn_close and ssn_orb_close", 2,
       [](Probe &probe) {
         FakeDaemon daemon(wire::kSessionSocketPath);
         CaptureSink::instance().reset();
         const std::pair<int32_t, int32_t> closed =
             probe([] { return std::pair<int32_t, int32_t>{ssn_close(3), ssn_orb_close(3)}; });
         const int32_t failed = probe.fails() ? 1 : 0;  // the one whose message was lost
         EXPECT_EQ((closed.first == SSN_ERR_NO_RESOURCES) + (closed.second == SSN_ERR_NO_RESOURCES),
                   failed);
         EXPECT_EQ(CaptureSink::instance().os_info_lines(),
                   std::vector<std::string>(failed == 0 ? 0 : 1, "ssn_close: No Resources\n"));
         EXPECT_EQ(daemon.request_count(), probe.fails() ? 1U : 2U);
       }},
      {"MemPoolCreate", 1,
       [](Probe &probe) {
         MemPool *pool = probe([] { return MemPoolCreate(8, 4); });
         EXPECT_EQ(pool == nullptr, probe.fails());
         if (pool != nullptr) {
           EXPECT_EQ(MemPoolFree(pool), 0);
         }
       }},
      {"MemBlockInit", 1,
       [](Probe &probe) {
         MemBlock *block = probe([] { return MemBlockInit(10); });
         EXPECT_EQ(block == nullptr, probe.fails());
         if (block != nullptr) {
           EXPECT_EQ(MemBlockUninit(block), 0);
         }
       }},
      {"MemMgrInit", 1,
       [](Probe &probe) {
         EXPECT_EQ(probe([] { return MemMgrInit(); }), probe.fails() ? 1 : 0);
         EXPECT_EQ(pMemMgr == nullptr, probe.fails());
         MemMgrUninit();
       }},
      {"MemMgrAddPool, MemMgrAddMemoryBlock", 2,
       [](Probe &probe) {
         ASSERT_EQ(MemMgrInit(), 0);
         ASSERT_EQ(MemMgrAddPool(16, 2), 0);
         const uint32_t held = MemMgrGetNumAllocatedBytes();
         const std::pair<int32_t, int32_t> added =
             probe([] { return std::pair<int32_t, int32_t>{MemMgrAddPool(8, 2), MemMgrAddMemoryBlock(10)}; });
         EXPECT_EQ(added.first, probe.failing == 1 ? 1 : 0);
         EXPECT_EQ(added.second, probe.failing == 2 ? 1 : 0);
         if (probe.failing == 1) {
           EXPECT_EQ(MemMgrGetNumAllocatedBytes(), held);
         }
         void *kept = MemMgrAlloc(16);  // the pool from before still serves
         EXPECT_NE(kept, nullptr);
         EXPECT_EQ(MemMgrFree(kept), 0);
         EXPECT_EQ(MemMgrUninit(), 0);
       }},
      {"MemMgrAlloc, MemMgrFree, lists", 0,  // served from the pools alone
       [](Probe &probe) {
         ASSERT_EQ(MemMgrInit(), 0);
         ASSERT_EQ(MemMgrAddPool(16, 4), 0);
         ASSERT_EQ(MemMgrAddPool(sizeof(ListNode), 4), 0);
         const int32_t freed = probe([] {
           ListNode *list = nullptr;
           void *object = ListAllocateObject(&list, 16);
           EXPECT_NE(object, nullptr);
           EXPECT_EQ(MemMgrFree(MemMgrAlloc(16)), 0);
           return ListFreeAll(list);
         });
         EXPECT_EQ(freed, 0);
         EXPECT_EQ(MemMgrUninit(), 0);
       }},
  };

  const std::vector<PropertyOperation> properties = {
      {"DM_ORB_Get_Property", [](char *out) { return DM_ORB_Get_Property("n", out, 8); }, false},
      {"DM_DCSGEN_Get_Property", [](char *out) { return DM_DCSGEN_Get_Property("n", out, 8); },
       false},
      {"DM_ORB_Set_Property", [](char *) { return DM_ORB_Set_Property("n", "v"); }, false},
      {"DM_DCSGEN_Set_Property", [](char *) { return DM_DCSGEN_Set_Property("n", "v"); }, false},
      {"Cfgmgr_Get_Property", [](char *out) { return Cfgmgr_Get_Property("n", out, 8); }, true},
      {"Cfgmgr_Set_Property", [](char *) { return Cfgmgr_Set_Property("n", "v"); }, false},
  };
  for (const PropertyOperation &operation : properties) {
    table.push_back({operation.name, 1, [operation](Probe &probe) {
                       FakeDaemon mapping(wire::kMappingSocketPath);
                       mapping.reply(daemon_message::success("v"));
                       std::string out(TESSERA_PROPERTY_VALUE_SIZE, 'x');
                       const int32_t status = probe([&] { return operation.run(out.data()); });
                       if (!probe.fails()) {
                         EXPECT_EQ(status, 0);
                         EXPECT_EQ(mapping.request_count(), 1U);
                         return;
                       }
                       EXPECT_EQ(status, 1);
                       EXPECT_EQ(mapping.request_count(), 0U);
                       EXPECT_EQ(out[0], operation.empties_out ? '\0' : 'x');
                       EXPECT_EQ(out.find_first_not_of('x', 1), std::string::npos);
                     }});
  }
  return table;
}

TEST(OutOfMemory, EachAllocationOfEachOperationFailsInTurn) {
  TESSERA_REQUIRE_PRIVATE_NAMESPACE();
  for (const Row &row : rows()) {
    SCOPED_TRACE(row.name);
    Probe plenty;
    row.body(plenty);
    if (row.allocations == kCounted) {
      EXPECT_GT(plenty.taken, 3U);
    } else {
      EXPECT_EQ(plenty.taken, row.allocations);
    }
    for (std::uint32_t n = 1; n <= plenty.taken; ++n) {
      SCOPED_TRACE("allocation " + std::to_string(n) + " of " + std::to_string(plenty.taken));
      Probe failing{n};
      row.body(failing);
      EXPECT_GE(failing.taken, n) << "the failing allocation was never asked for";
    }
  }
}

}  // namespace
}  // namespace tessera::test
