/* Fixed-size memory pools, the process-wide manager, memory blocks and lists. */
#ifndef TESSERA_MEMPOOL_H
#define TESSERA_MEMPOOL_H

#include <stdint.h>

#include "tessera/export.h"

TESSERA_BEGIN_DECLS

struct MemPool;

/* The header of one element of a pool; the element's data follows it directly. Elements lie back
 * to back without rounding, so a header may stand at any address: copy it out with memcpy before
 * reading its fields. Headers are the library's to write. */
typedef struct MemPoolElement {
  uint32_t tag;                /* 0x309d7438 */
  void *data;                  /* the element's data, directly behind this header */
  uint32_t size;               /* bytes of data: the pool's elementSize */
  uint8_t inUse;               /* 1 while handed out, 0 when free */
  uint8_t reserved[3];         /* kept by the library */
  struct MemPool *pool;        /* owning pool */
  struct MemPoolElement *next; /* next element, null in the last */
} MemPoolElement;

/* A pool: one heap allocation holding this header and all its elements. */
typedef struct MemPool {
  uint32_t tag;                   /* 0x7c232f81 */
  uint32_t elementCount;          /* elements in the pool */
  uint32_t freeCount;             /* raised by every free, lowered by every claim */
  uint32_t elementSize;           /* bytes of data in each element */
  uint32_t totalBytes;            /* size of the whole allocation */
  MemPoolElement *firstElement;   /* follows this header directly */
  struct MemPool *nextPool;       /* next pool of the manager's chain, null at the end */
} MemPool;

/* The process-wide manager: a chain of pools in order of adding. */
typedef struct MemMgr {
  MemPool *firstPool;      /* head of the pool chain */
  uint32_t allocatedBytes; /* sum of totalBytes of all pools added */
} MemMgr;

/* A bump allocator: one heap allocation holding this header and its data. */
typedef struct MemBlock {
  uint32_t tag;      /* 0x83721409 */
  uint8_t *start;    /* first byte of data */
  uint8_t *current;  /* next byte to give out */
  uint8_t *end;      /* one past the last byte of data */
} MemBlock;

/* A list node: the list handle is a pointer to the first node, null for an empty list. */
typedef struct ListNode {
  void *data;            /* the payload */
  struct ListNode *next; /* next node, null at the end */
} ListNode;

/* The element size of the pool that list nodes come from: add a pool of this size with
 * MemMgrAddPool before using the lists. 8 on 32-bit targets, 16 on 64-bit ones. */
#define LIST_NODE_SIZE (sizeof(ListNode))

/* The manager, null until MemMgrInit and again after MemMgrUninit. */
TESSERA_API extern MemMgr *pMemMgr;

/* A new pool of elementCount free, zeroed elements of elementSize bytes; null when either is 0,
 * the whole pool would not fit in 32 bits, or memory is short. */
TESSERA_API MemPool *MemPoolCreate(uint32_t elementSize, uint32_t elementCount);
/* Frees the pool and all its elements, in use or not. 0; 2 for a null or foreign pool. */
TESSERA_API int32_t MemPoolFree(MemPool *pool);
/* Claims the pool's first free element and returns it (not its data); null when none is free or
 * the pool is null or foreign. */
TESSERA_API MemPoolElement *MemPoolGetElement(MemPool *pool);
/* Zeroes the element's data and marks it free. 0; 2 for a null or foreign element. */
TESSERA_API int32_t MemPoolFreeElement(MemPoolElement *element);
/* The pool's element whose data pointer is data, in use or not; null when there is none. */
TESSERA_API MemPoolElement *MemPoolGetElementByData(MemPool *pool, void *data);

/* A new block of size zeroed bytes to hand out with MemBlockGet; null when memory is short. */
TESSERA_API MemBlock *MemBlockInit(uint32_t size);
/* Frees the block. 0; 1 for a null or foreign block. */
TESSERA_API int32_t MemBlockUninit(MemBlock *block);
/* The next size bytes of the block, unaligned; null when size is 0, the block is null or
 * foreign, or fewer than size bytes are left. */
TESSERA_API void *MemBlockGet(MemBlock *block, uint32_t size);

/* Creates the manager. 0; 1 when one exists already or memory is short. */
TESSERA_API int32_t MemMgrInit(void);
/* Frees every pool, the manager's blocks and the manager, and sets pMemMgr to null. Always 0. */
TESSERA_API int32_t MemMgrUninit(void);
/* Adds a pool of elementCount elements of elementSize bytes at the chain's end. 0; 1 without a
 * manager or when the pool can't be made. */
TESSERA_API int32_t MemMgrAddPool(uint32_t elementSize, uint32_t elementCount);
/* Zeroed data of size bytes from the first pool of exactly that element size with a free
 * element; null when there is none. */
TESSERA_API void *MemMgrAlloc(uint32_t size);
/* Gives back data from MemMgrAlloc, zeroing it. 0; 1 when data is null, there is no manager, or
 * no pool holds that data pointer. */
TESSERA_API int32_t MemMgrFree(void *data);
/* The bytes the pools took from the heap (not what is handed out); 0 without a manager. */
TESSERA_API uint32_t MemMgrGetNumAllocatedBytes(void);
/* Creates a block of size bytes that the manager keeps until MemMgrUninit. 0; 1 when the block
 * can't be made. */
TESSERA_API int32_t MemMgrAddMemoryBlock(uint32_t size);
/* Always null. */
TESSERA_API void *MemMgrAllocStatic(void);

/* Appends a node with a zeroed payload of size bytes to *list (setting *list when the list was
 * empty) and returns the payload; null when list is null, size is 0 or a pool has no room. */
TESSERA_API void *ListAllocateObject(ListNode **list, uint32_t size);
/* Unlinks node and gives back its payload and the node. The handle comes by value: after freeing
 * the first node, take ListGetNext of it (read before the call) as the new handle. 0; 1 when an
 * argument is null or node isn't in the list; otherwise the failing MemMgrFree result. */
TESSERA_API int32_t ListFreeObject(ListNode *list, ListNode *node);
/* Gives back every node with its payload, first to last; the handle is void afterwards. 1 for a
 * null list, otherwise the result of freeing the last node. */
TESSERA_API int32_t ListFreeAll(ListNode *list);
/* The first node: list itself. */
TESSERA_API ListNode *ListGetFirst(ListNode *list);
/* The node behind node; null for the last node or a null node. */
TESSERA_API ListNode *ListGetNext(ListNode *node);
/* The last node of the list; null for an empty list. */
TESSERA_API ListNode *ListGetLast(ListNode *list);
/* The first node whose payload is data; null when there is none or an argument is null. */
TESSERA_API ListNode *ListGetObjectByData(ListNode *list, void *data);
/* Lock nothing (lists belong to one thread at a time) and return 0. */
TESSERA_API int32_t ListLock(void);
TESSERA_API int32_t ListUnlock(void);

TESSERA_END_DECLS

#endif /* TESSERA_MEMPOOL_H */
