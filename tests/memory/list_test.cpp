// Lists whose nodes and payloads come from the manager's pools.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "heap_seam.h"
#include "tessera/mempool.h"

namespace tessera::test {
namespace {

// A manager with four nodes and three 12-byte payloads to give out.
class List : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(MemMgrInit(), 0);
    ASSERT_EQ(MemMgrAddPool(LIST_NODE_SIZE, 4), 0);
    ASSERT_EQ(MemMgrAddPool(12, 3), 0);
  }
  void TearDown() override { MemMgrUninit(); }

  static std::uint32_t free_nodes() { return pMemMgr->firstPool->freeCount; }
  static std::uint32_t free_payloads() { return pMemMgr->firstPool->nextPool->freeCount; }

  // Appends `count` payloads to list_ and returns them all, first to last.
  std::vector<void *> append(int count) {
    for (int i = 0; i < count; ++i) {
      EXPECT_NE(ListAllocateObject(&list_, 12), nullptr);
    }
    std::vector<void *> found;
    for (ListNode *node = ListGetFirst(list_); node != nullptr; node = ListGetNext(node)) {
      found.push_back(node->data);
    }
    return found;
  }

  ListNode *list_ = nullptr;
};

TEST_F(List, AppendsInOrderAndSetsOnlyAnEmptyHandle) {
  std::vector<void *> given;
  EXPECT_EQ(allocations_of([&] { given = append(3); }), 0U);
  ASSERT_EQ(given.size(), 3U);
  EXPECT_EQ(list_->data, given[0]);  // later appends left the handle alone
  EXPECT_EQ(ListGetLast(list_)->data, given[2]);
  EXPECT_EQ(ListGetObjectByData(list_, given[1]), list_->next);
  EXPECT_EQ(ListGetObjectByData(list_, this), nullptr);
  EXPECT_EQ(ListGetLast(nullptr), nullptr);
}

TEST_F(List, GivesTheNodeBackWhenThePayloadCantBeHad) {
  EXPECT_EQ(ListAllocateObject(nullptr, 12), nullptr);
  EXPECT_EQ(ListAllocateObject(&list_, 0), nullptr);
  EXPECT_EQ(ListAllocateObject(&list_, 20), nullptr);  // no pool of that size
  EXPECT_EQ(list_, nullptr);
  append(3);
  EXPECT_EQ(ListAllocateObject(&list_, 12), nullptr);  // payload pool full
  EXPECT_EQ(free_nodes(), 1U);
  EXPECT_EQ(append(0).size(), 3U);
  // Without a pool of node-sized elements nothing can be appended.
  MemMgrUninit();
  ASSERT_EQ(MemMgrInit(), 0);
  ASSERT_EQ(MemMgrAddPool(12, 3), 0);
  list_ = nullptr;
  EXPECT_EQ(ListAllocateObject(&list_, 12), nullptr);
  EXPECT_EQ(pMemMgr->firstPool->freeCount, 3U);
}

TEST_F(List, FreeObjectUnlinksOnlyNodesOfItsOwnList) {
  ListNode *other = nullptr;
  ASSERT_EQ(MemMgrAddPool(20, 1), 0);
  ASSERT_NE(ListAllocateObject(&other, 20), nullptr);
  const auto given = append(3);
  EXPECT_EQ(ListFreeObject(list_, other), 1);
  EXPECT_EQ(ListFreeObject(nullptr, list_), 1);
  EXPECT_EQ(ListFreeObject(list_, nullptr), 1);
  EXPECT_EQ(append(0), given);
  EXPECT_EQ(ListFreeObject(list_, ListGetObjectByData(list_, given[1])), 0);
  EXPECT_EQ(append(0), (std::vector<void *>{given[0], given[2]}));
  ListNode *rest = ListGetNext(list_);  // read before freeing the first node, as a caller must
  ASSERT_EQ(ListFreeObject(list_, list_), 0);
  EXPECT_EQ(list_->data, nullptr);  // the handle came by value: it names a zeroed free element
  EXPECT_EQ(list_->next, nullptr);
  list_ = rest;
  EXPECT_EQ(append(0), std::vector<void *>{given[2]});
  EXPECT_EQ(free_nodes(), 2U);
  EXPECT_EQ(free_payloads(), 2U);
}

TEST_F(List, FreeAllGivesBackEveryElementSoAllocationsSucceedAgain) {
  EXPECT_EQ(ListFreeAll(nullptr), 1);
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(append(3).size(), 3U);
    EXPECT_EQ(ListFreeAll(list_), 0);
    list_ = nullptr;
    EXPECT_EQ(free_nodes(), 4U);
    EXPECT_EQ(free_payloads(), 3U);
  }
}

TEST_F(List, AForeignPayloadKeepsItsNodeInFreeObjectButNotInFreeAll) {
  int local = 0;
  append(3);
  ListNode *second = list_->next;
  second->data = &local;
  EXPECT_EQ(ListFreeObject(list_, second), 1);
  EXPECT_EQ(append(0).size(), 2U);  // out of the chain
  EXPECT_EQ(free_nodes(), 1U);      // but not given back
  ListGetLast(list_)->data = &local;
  EXPECT_EQ(ListFreeAll(list_), 1);  // the last node's result
  EXPECT_EQ(free_nodes(), 3U);       // all but the node kept above
  EXPECT_EQ(free_payloads(), 1U);    // the first; the tool overwrote the others' pointers
}

}  // namespace
}  // namespace tessera::test
