// Pools, manager and lists as a tool reaches them: through libtessera.so.1's C interface.
#include <gtest/gtest.h>

#include "tessera/mempool.h"

namespace {

TEST(MemorySharedLibrary, ToolSetsUpPoolsAndBuildsAList) {
  EXPECT_EQ(pMemMgr, nullptr);
  ASSERT_EQ(MemMgrInit(), 0);
  ASSERT_EQ(MemMgrAddPool(8, 10), 0);
  ASSERT_EQ(MemMgrAddPool(16, 2), 0);
  if (sizeof(void *) == 4) {
    EXPECT_EQ(MemMgrGetNumAllocatedBytes(), 456U);  // element header 24, pool header 28
  } else {
    EXPECT_EQ(MemMgrGetNumAllocatedBytes(), (8 + 40) * 10 + 40 + (16 + 40) * 2 + 40U);
  }
  EXPECT_EQ(LIST_NODE_SIZE, 2 * sizeof(void *));
  ASSERT_EQ(MemMgrAddPool(LIST_NODE_SIZE, 4), 0);  // 64-bit nodes share the 16-byte elements
  ListNode *list = nullptr;
  void *first = ListAllocateObject(&list, 8);
  void *second = ListAllocateObject(&list, 8);
  EXPECT_EQ(list->data, first);
  EXPECT_EQ(ListGetLast(list)->data, second);
  EXPECT_EQ(ListFreeAll(list), 0);
  EXPECT_EQ(MemMgrUninit(), 0);
  EXPECT_EQ(pMemMgr, nullptr);
}

}  // namespace
