// Singly linked lists whose nodes and payloads both come from the manager's pools. A list is the
// pointer to its first node; new nodes go to the end, so a list keeps the order of allocation.
#include <cstdint>

#include "tessera/mempool.h"

void *ListAllocateObject(ListNode **list, std::uint32_t size) {
  if (list == nullptr || size == 0) {
    return nullptr;
  }
  auto *node = static_cast<ListNode *>(MemMgrAlloc(LIST_NODE_SIZE));
  if (node == nullptr) {
    return nullptr;
  }
  void *payload = MemMgrAlloc(size);
  if (payload == nullptr) {
    MemMgrFree(node);  // the list stays as it was
    return nullptr;
  }
  node->data = payload;
  if (*list == nullptr) {
    *list = node;
  } else {
    ListGetLast(*list)->next = node;
  }
  return payload;
}

// The handle comes by value, so freeing the first node leaves the caller's handle on the freed
// (zeroed) element; the caller takes the next node as its new handle.
int32_t ListFreeObject(ListNode *list, ListNode *node) {
  if (list == nullptr || node == nullptr) {
    return 1;
  }
  ListNode *previous = nullptr;
  ListNode *at = list;
  while (at != nullptr && at != node) {
    previous = at;
    at = at->next;
  }
  if (at == nullptr) {
    return 1;
  }
  if (previous != nullptr) {
    previous->next = node->next;
  }
  const int32_t payload = MemMgrFree(node->data);
  if (payload != 0) {
    return payload;  // the node has left the chain but stays taken
  }
  return MemMgrFree(node);
}

// Every node and payload goes back even when one fails; the result is the last node's.
int32_t ListFreeAll(ListNode *list) {
  if (list == nullptr) {
    return 1;
  }
  int32_t result = 0;
  for (ListNode *node = list; node != nullptr;) {
    ListNode *next = node->next;  // freeing zeroes the node
    const int32_t payload = MemMgrFree(node->data);
    const int32_t own = MemMgrFree(node);
    result = payload != 0 ? payload : own;
    node = next;
  }
  return result;
}

ListNode *ListGetFirst(ListNode *list) {
  return list;
}

ListNode *ListGetNext(ListNode *node) {
  return node == nullptr ? nullptr : node->next;
}

ListNode *ListGetLast(ListNode *list) {
  ListNode *last = list;
  while (last != nullptr && last->next != nullptr) {
    last = last->next;
  }
  return last;
}

ListNode *ListGetObjectByData(ListNode *list, void *data) {
  if (data == nullptr) {
    return nullptr;
  }
  ListNode *node = list;
  while (node != nullptr && node->data != data) {
    node = node->next;
  }
  return node;
}

int32_t ListLock() {
  return 0;
}

int32_t ListUnlock() {
  return 0;
}
