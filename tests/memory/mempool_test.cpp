// Pools, memory blocks and the process-wide manager, through the static build so that each heap
// allocation can be made to fail.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <set>
#include <vector>

#include "heap_seam.h"
#include "tessera/mempool.h"

namespace tessera::test {
namespace {

constexpr std::uint32_t kHeader = sizeof(MemPoolElement);
constexpr std::uint32_t kPoolHeader = sizeof(MemPool);
constexpr std::uint32_t kMax = std::numeric_limits<std::uint32_t>::max();

// Element headers lie at odd offsets: copy them out before reading a field.
MemPoolElement header_of(const MemPoolElement *element) {
  MemPoolElement copy;
  std::memcpy(&copy, static_cast<const void *>(element), sizeof copy);
  return copy;
}

bool all_zero(const void *data, std::size_t size) {
  const auto *bytes = static_cast<const unsigned char *>(data);
  return std::all_of(bytes, bytes + size, [](unsigned char b) { return b == 0; });
}

// Runs `operation` with the next library allocation failing.
template <class Operation>
auto with_heap_failing(Operation &&operation) {
  FailNthAllocation fail(1);
  return operation();
}

// Each test leaves the process without a manager, as it found it.
class Memory : public ::testing::Test {
 protected:
  void TearDown() override {
    EXPECT_EQ(MemMgrUninit(), 0);
    EXPECT_EQ(pMemMgr, nullptr);
  }
};

TEST_F(Memory, PoolLaysOutElementsBackToBackInChainOrder) {
  MemPool *pool = MemPoolCreate(5, 4);  // 5-byte data puts later headers at odd offsets
  ASSERT_NE(pool, nullptr);
  EXPECT_EQ(pool->totalBytes, (5 + kHeader) * 4 + kPoolHeader);
  EXPECT_EQ(pool->freeCount, 4U);
  const MemPoolElement *element = pool->firstElement;
  for (std::uint32_t i = 0; i < 4; ++i, element = header_of(element).next) {
    auto *at = reinterpret_cast<const unsigned char *>(element);
    ASSERT_EQ(at, reinterpret_cast<const unsigned char *>(pool) + kPoolHeader + i * (5 + kHeader));
    const MemPoolElement h = header_of(element);
    EXPECT_TRUE(h.tag == 0x309d7438U && h.data == at + kHeader && h.size == 5 && h.inUse == 0);
    EXPECT_EQ(h.pool, pool);
    EXPECT_TRUE(all_zero(h.data, 5));
  }
  EXPECT_EQ(element, nullptr);
  EXPECT_EQ(MemPoolFree(pool), 0);
}

// Claims start where the pool remembers its first free element may be; whatever the order of
// frees, they must come to the element that a scan from the first would find.
TEST_F(Memory, ClaimsMatchAScanFromTheFirstElement) {
  constexpr std::uint32_t kCount = 70000;  // indexes above 65535 as well
  MemPool *pool = MemPoolCreate(1, kCount);
  std::vector<MemPoolElement *> elements;
  for (std::uint32_t i = 0; i < kCount; ++i) {
    elements.push_back(MemPoolGetElement(pool));
  }
  EXPECT_EQ(elements.back(), header_of(elements[kCount - 2]).next);
  EXPECT_EQ(MemPoolGetElement(pool), nullptr);
  EXPECT_EQ(pool->freeCount, 0U);
  std::set<std::uint32_t> free_ones;
  std::mt19937 random(9);
  for (std::uint32_t round = 0; round < 3000; ++round) {
    const std::uint32_t index = round < 2 ? 66000 - round * 65700 : random() % kCount;
    if (round < 2 || random() % 3 != 0) {
      ASSERT_EQ(MemPoolFreeElement(elements[index]), 0);
      free_ones.insert(index);
    } else if (free_ones.empty()) {
      ASSERT_EQ(MemPoolGetElement(pool), nullptr);
    } else {
      ASSERT_EQ(MemPoolGetElement(pool), elements[*free_ones.begin()]) << round;
      free_ones.erase(free_ones.begin());
    }
  }
  EXPECT_EQ(MemPoolFree(pool), 0);
}

TEST_F(Memory, ForeignHandlesAndPointersAreRefused) {
  MemPool fake_pool{};
  MemBlock fake_block{};
  alignas(MemPoolElement) unsigned char bytes[64] = {};
  auto *fake_element = static_cast<MemPoolElement *>(static_cast<void *>(bytes));
  MemPool *pool = MemPoolCreate(7, 2);
  auto *element_as_pool = reinterpret_cast<MemPool *>(pool->firstElement);
  for (MemPool *foreign : {static_cast<MemPool *>(nullptr), &fake_pool, element_as_pool}) {
    EXPECT_EQ(MemPoolFree(foreign), 2);
    EXPECT_EQ(MemPoolGetElement(foreign), nullptr);
    EXPECT_EQ(MemPoolGetElementByData(foreign, bytes), nullptr);
  }
  EXPECT_EQ(MemPoolFreeElement(nullptr), 2);
  EXPECT_EQ(MemPoolFreeElement(fake_element), 2);
  std::memcpy(bytes, static_cast<void *>(pool->firstElement), kHeader);
  EXPECT_EQ(MemPoolFreeElement(fake_element), 2);  // right tag and pool, but not in the pool
  EXPECT_EQ(MemBlockUninit(nullptr), 1);
  EXPECT_EQ(MemBlockUninit(&fake_block), 1);
  EXPECT_EQ(MemBlockGet(&fake_block, 1), nullptr);
  // Elements are found by their exact data pointer only, free ones too.
  MemPoolElement *second = header_of(pool->firstElement).next;
  auto *data = static_cast<unsigned char *>(header_of(second).data);
  EXPECT_EQ(MemPoolGetElementByData(pool, data), second);
  for (void *wrong :
       {static_cast<void *>(data + 1), static_cast<void *>(data - 1), static_cast<void *>(second),
        static_cast<void *>(data + 7 + kHeader), static_cast<void *>(nullptr)}) {
    EXPECT_EQ(MemPoolGetElementByData(pool, wrong), nullptr);
  }
  EXPECT_EQ(pool->freeCount, 2U);
  MemPoolFree(pool);
}

TEST_F(Memory, PoolsThatWouldNotFitIn32BitsAreRefusedWithoutTouchingTheHeap) {
  const std::uint32_t exact = kMax - kHeader - kPoolHeader;  // a one-element pool of kMax bytes
  const std::uint32_t most_of_8 = (kMax - kPoolHeader) / (8 + kHeader);
  const struct {
    std::uint32_t size, count, allocations;
  } cases[] = {{0, 1, 0},
               {1, 0, 0},
               {exact, 1, 1},
               {exact + 1, 1, 0},
               {kMax, 1, 0},
               {(1U << 31) - kHeader, 2, 0},  // 2^32 bytes: would wrap to the header alone
               {1, kMax, 0},
               {8, most_of_8, 1},
               {8, most_of_8 + 1, 0}};
  for (const auto &c : cases) {
    // A pool that fits is refused by the failing heap instead.
    const auto asked = allocations_of([&] {
      EXPECT_EQ(with_heap_failing([&] { return MemPoolCreate(c.size, c.count); }), nullptr);
    });
    EXPECT_EQ(asked, c.allocations) << c.size << " x " << c.count;
  }
}

TEST_F(Memory, BlockHandsOutConsecutiveBytesUpToItsEnd) {
  MemBlock *block = MemBlockInit(100);
  ASSERT_NE(block, nullptr);
  EXPECT_TRUE(all_zero(block->start, 100));
  EXPECT_EQ(MemBlockGet(block, 0), nullptr);
  EXPECT_EQ(MemBlockGet(block, 60), block->start);
  EXPECT_EQ(MemBlockGet(block, kMax), nullptr);  // current + size would wrap on 32 bits
  EXPECT_EQ(MemBlockGet(block, 41), nullptr);
  EXPECT_EQ(MemBlockGet(block, 40), block->start + 60);  // ends exactly at end
  EXPECT_EQ(MemBlockGet(block, 1), nullptr);
  EXPECT_EQ(MemBlockUninit(block), 0);
  if (sizeof(void *) == 4) {  // header and data can't both fit in the address space
    EXPECT_EQ(allocations_of([] { EXPECT_EQ(MemBlockInit(kMax), nullptr); }), 0U);
  }
}

TEST_F(Memory, ManagerNeedsInitAndCountsWhatThePoolsTookFromTheHeap) {
  EXPECT_EQ(MemMgrUninit(), 0);
  EXPECT_EQ(MemMgrAddPool(8, 1), 1);
  EXPECT_EQ(MemMgrAlloc(8), nullptr);
  EXPECT_EQ(MemMgrFree(this), 1);
  ASSERT_EQ(MemMgrInit(), 0);
  MemMgr *first = pMemMgr;
  EXPECT_EQ(MemMgrInit(), 1);
  EXPECT_EQ(pMemMgr, first);
  EXPECT_EQ(MemMgrFree(this), 1);  // no pools yet
  EXPECT_EQ(MemMgrAllocStatic(), nullptr);
  ASSERT_EQ(MemMgrAddPool(8, 10), 0);
  ASSERT_EQ(MemMgrAddPool(16, 2), 0);
  const std::uint32_t expected = (8 + kHeader) * 10 + (16 + kHeader) * 2 + 2 * kPoolHeader;
  EXPECT_EQ(MemMgrGetNumAllocatedBytes(), sizeof(void *) == 4 ? 456U : expected);
  EXPECT_EQ(MemMgrFree(MemMgrAlloc(16)), 0);
  EXPECT_EQ(MemMgrGetNumAllocatedBytes(), expected);          // never falls
  EXPECT_EQ(pMemMgr->firstPool->nextPool->elementSize, 16U);  // chain in order of adding
  EXPECT_EQ(MemMgrUninit(), 0);
  EXPECT_EQ(MemMgrGetNumAllocatedBytes(), 0U);
  EXPECT_EQ(MemMgrInit(), 0);  // anew after MemMgrUninit
}

TEST_F(Memory, AllocServesExactSizesAndOverflowsIntoLaterPools) {
  ASSERT_EQ(MemMgrInit(), 0);
  for (std::uint32_t size : {8U, 16U, 16U}) {
    ASSERT_EQ(MemMgrAddPool(size, 1), 0);
  }
  MemPool *second = pMemMgr->firstPool->nextPool;
  EXPECT_EQ(MemMgrAlloc(12), nullptr);  // no fallback to larger elements
  void *a = MemMgrAlloc(16);
  void *b = MemMgrAlloc(16);
  EXPECT_NE(MemPoolGetElementByData(second, a), nullptr);
  EXPECT_NE(MemPoolGetElementByData(second->nextPool, b), nullptr);
  EXPECT_EQ(MemMgrAlloc(16), nullptr);
  EXPECT_EQ(MemMgrFree(a), 0);
  EXPECT_EQ(MemMgrAlloc(16), a);  // back to the first pool once it has room
  EXPECT_NE(MemPoolGetElementByData(pMemMgr->firstPool, MemMgrAlloc(8)), nullptr);
}

// Freed data is zeroed, and zeroed again when handed out; a double free counts twice.
TEST_F(Memory, FreeZeroesTakesExactPointersAndCountsDoubleFrees) {
  ASSERT_EQ(MemMgrInit(), 0);
  ASSERT_EQ(MemMgrAddPool(9, 2), 0);
  auto *data = static_cast<unsigned char *>(MemMgrAlloc(9));
  std::memset(data, 0xFF, 9);
  EXPECT_EQ(MemMgrFree(nullptr), 1);
  EXPECT_EQ(MemMgrFree(data + 1), 1);
  EXPECT_EQ(MemMgrFree(data), 0);
  EXPECT_TRUE(all_zero(data, 9));
  EXPECT_EQ(MemMgrFree(data), 0);
  EXPECT_EQ(pMemMgr->firstPool->freeCount, 3U);
  std::memset(data, 0xFF, 9);  // a tool writing to data it gave back
  EXPECT_EQ(MemMgrAlloc(9), data);
  EXPECT_TRUE(all_zero(data, 9));
}

// Under the leak checker: pools with elements in use and the manager's blocks all go back.
TEST_F(Memory, UninitGivesBackPoolsInUseAndTheManagersBlocks) {
  EXPECT_EQ(MemMgrAddMemoryBlock(32), 0);  // no manager to hold it: released at once
  ASSERT_EQ(MemMgrInit(), 0);
  ASSERT_EQ(MemMgrAddPool(24, 2), 0);
  EXPECT_NE(MemMgrAlloc(24), nullptr);
  EXPECT_EQ(MemMgrAddMemoryBlock(64), 0);
  EXPECT_EQ(MemMgrAddMemoryBlock(0), 0);
}

}  // namespace
}  // namespace tessera::test
