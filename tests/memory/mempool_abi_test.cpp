// Pools, manager and lists as a tool reaches them: through libtessera.so.1's C interface.
#include <gtest/gtest.h>

#include "tessera/mempool.h"

namespace {

TEST(MemorySharedLibrary, ToolSetsUpPoolsAndBuildsAList) {
  EXPECT_EQ(pMemMgr, nullptr);
  ASSERT_EQ(MemMgrInit(), 0);
  ASSERT_EQ(MemMgrAddPool(8, 10), 0);
  EXPECT_GT(MemMgrGetNumAllocatedBytes(), 80U);
  EXPECT_EQ(LIST_NODE_SIZE, 2 * sizeof(void *));
  ASSERT_EQ(MemMgrAddPool(LIST_NODE_SIZE, 4), 0);
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
