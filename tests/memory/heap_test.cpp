// The allocation-failure seam through which tests reach every out-of-memory path.
#include <gtest/gtest.h>

#include <cstdlib>

#include "heap_seam.h"
#include "memory/heap.h"

namespace tessera::test {
namespace {

TEST(HeapSeam, FailsExactlyTheNthAllocationThenDisarms) {
  FailNthAllocation seam(3);
  void *first = heap::allocate(8);
  void *second = heap::allocate_zeroed(8);
  void *third = heap::allocate(8);
  void *fourth = heap::allocate_zeroed(8);
  EXPECT_NE(first, nullptr);
  EXPECT_NE(second, nullptr);
  EXPECT_EQ(third, nullptr);
  EXPECT_NE(fourth, nullptr);
  for (void *block : {first, second, fourth}) {
    heap::release(block);
  }
}

TEST(HeapSeam, DisarmsWhenItsScopeEnds) {
  { FailNthAllocation seam(2); }
  void *a = heap::allocate(1);
  void *b = heap::allocate(1);
  EXPECT_NE(a, nullptr);
  EXPECT_NE(b, nullptr);
  heap::release(a);
  heap::release(b);
}

TEST(HeapSeam, CountsTheAllocationsOfAnOperation) {
  const auto n = allocations_of([] {
    heap::release(heap::allocate(4));
    heap::release(heap::allocate_zeroed(4));
  });
  EXPECT_EQ(n, 2U);
}

TEST(Heap, ZeroedBlocksAreZeroAndPlainBlocksGoBackThroughFree) {
  auto *bytes = static_cast<unsigned char *>(heap::allocate_zeroed(64));
  ASSERT_NE(bytes, nullptr);
  for (int i = 0; i < 64; ++i) {
    ASSERT_EQ(bytes[i], 0);
  }
  heap::release(bytes);
  std::free(heap::allocate(16));  // callers may free what the library hands out
}

TEST(Heap, OwnedReleasesOnScopeExit) {
  struct Record {
    int tag;
    char name[32];
  };
  auto record = heap::make_zeroed<Record>();
  ASSERT_TRUE(record);
  EXPECT_EQ(record->tag, 0);
  FailNthAllocation seam(1);
  EXPECT_FALSE(heap::make_zeroed<Record>());
}

}  // namespace
}  // namespace tessera::test
