// The allocation-failure seam through which tests reach every out-of-memory path. That zeroed
// blocks are zero shows in the pool tests, and that callers may free() what the library hands
// out in the tokenizer's.
#include <gtest/gtest.h>

#include "heap_seam.h"
#include "memory/heap.h"

namespace tessera::test {
namespace {

TEST(HeapSeam, FailsExactlyTheNthAllocationWhileItLives) {
  void *blocks[4] = {};
  {
    const FailNthAllocation seam(3);
    EXPECT_EQ(allocations_of([&blocks] {
                blocks[0] = heap::allocate(8);
                blocks[1] = heap::allocate_zeroed(8);
                blocks[2] = heap::allocate(8);
                blocks[3] = heap::allocate_zeroed(8);
              }),
              4U);
  }
  EXPECT_EQ(blocks[2], nullptr);
  for (void *block : {blocks[0], blocks[1], blocks[3]}) {
    EXPECT_NE(block, nullptr);
    heap::release(block);
  }
  const auto owned = heap::make_zeroed<int>();  // the seam went with its scope
  ASSERT_TRUE(owned);
  EXPECT_EQ(*owned, 0);
  const FailNthAllocation seam(1);
  EXPECT_FALSE(heap::make_zeroed<int>());
}

}  // namespace
}  // namespace tessera::test
