// Fixed-size pools, the process-wide manager and memory blocks: a tool sets its pools up once and
// then allocates and frees without heap traffic.
#include "tessera/mempool.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>
#include <type_traits>

#include "memory/heap.h"

MemMgr *pMemMgr = nullptr;

namespace {

constexpr std::uint32_t kPoolTag = 0x7c232f81U;
constexpr std::uint32_t kElementTag = 0x309d7438U;
constexpr std::uint32_t kBlockTag = 0x83721409U;

// The records that tools read. Their sizes show in totalBytes and MemMgrGetNumAllocatedBytes, so
// they are fixed here for both targets: 32-bit pointers on the controller, 64-bit on workstations.
#if UINTPTR_MAX == 0xFFFFFFFFU
static_assert(sizeof(MemPool) == 28 && sizeof(MemPoolElement) == 24);
static_assert(offsetof(MemPool, firstElement) == 20 && offsetof(MemPool, nextPool) == 24);
static_assert(offsetof(MemPoolElement, data) == 4 && offsetof(MemPoolElement, size) == 8);
static_assert(offsetof(MemPoolElement, inUse) == 12 && offsetof(MemPoolElement, pool) == 16);
static_assert(offsetof(MemPoolElement, next) == 20);
static_assert(sizeof(MemMgr) == 8 && sizeof(MemBlock) == 16 && sizeof(ListNode) == 8);
#else
static_assert(sizeof(MemPool) == 40 && sizeof(MemPoolElement) == 40);
static_assert(offsetof(MemPool, firstElement) == 24 && offsetof(MemPool, nextPool) == 32);
static_assert(offsetof(MemPoolElement, data) == 8 && offsetof(MemPoolElement, size) == 16);
static_assert(offsetof(MemPoolElement, inUse) == 20 && offsetof(MemPoolElement, pool) == 24);
static_assert(offsetof(MemPoolElement, next) == 32);
static_assert(sizeof(MemMgr) == 16 && sizeof(MemBlock) == 32 && sizeof(ListNode) == 16);
#endif
static_assert(offsetof(MemPool, elementCount) == 4 && offsetof(MemPool, freeCount) == 8);
static_assert(offsetof(MemPool, elementSize) == 12 && offsetof(MemPool, totalBytes) == 16);
static_assert(offsetof(MemPoolElement, tag) == 0 && offsetof(MemBlock, tag) == 0);
static_assert(offsetof(MemPoolElement, reserved) == offsetof(MemPoolElement, inUse) + 1);

constexpr std::size_t kPoolHeader = sizeof(MemPool);
constexpr std::size_t kElementHeader = sizeof(MemPoolElement);
constexpr std::uint32_t kHintLimit = 0xFFFFFFU;  // what the three reserved bytes hold

// List nodes come from a pool of LIST_NODE_SIZE elements, whose headers and nodes all keep the
// node's alignment, so the lists may use plain member access.
static_assert(kPoolHeader % alignof(ListNode) == 0);
static_assert((kElementHeader + sizeof(ListNode)) % alignof(ListNode) == 0);

// The address as bytes. Going through an integer keeps the compiler from assuming the alignment
// of the record type, which element headers at odd offsets don't have.
unsigned char *bytes_at(const void *address) noexcept {
  return reinterpret_cast<unsigned char *>(reinterpret_cast<std::uintptr_t>(address));
}

// The handle of the element header at `header`, which needn't be aligned for the record.
MemPoolElement *element_at(const unsigned char *header) noexcept {
  return reinterpret_cast<MemPoolElement *>(reinterpret_cast<std::uintptr_t>(header));
}

// An element header at any address, read and written byte-wise: a member access at an odd
// offset is undefined, and some ARM loads fault on it.
class Element {
 public:
  explicit Element(unsigned char *header) noexcept : header_(header) {}
  explicit Element(const MemPoolElement *element) noexcept : header_(bytes_at(element)) {}

  [[nodiscard]] MemPoolElement *handle() const noexcept { return element_at(header_); }
  [[nodiscard]] unsigned char *data_bytes() const noexcept { return header_ + kElementHeader; }

  [[nodiscard]] std::uint32_t tag() const noexcept {
    return load<std::uint32_t>(offsetof(MemPoolElement, tag));
  }
  [[nodiscard]] void *data() const noexcept { return load<void *>(offsetof(MemPoolElement, data)); }
  [[nodiscard]] MemPool *pool() const noexcept {
    return load<MemPool *>(offsetof(MemPoolElement, pool));
  }
  [[nodiscard]] bool in_use() const noexcept {
    return header_[offsetof(MemPoolElement, inUse)] != 0;
  }

  // The search hint, kept in the first element's reserved bytes: every element before this
  // index is in use. It lets a claim start at the first element that may be free, and comes to
  // the same element as a scan from the start. A lower value is always true, so it saturates.
  [[nodiscard]] std::uint32_t hint() const noexcept {
    const unsigned char *hint = header_ + offsetof(MemPoolElement, reserved);
    return hint[0] | (std::uint32_t{hint[1]} << 8) | (std::uint32_t{hint[2]} << 16);
  }
  void set_hint(std::uint32_t index) const noexcept {
    index = std::min<std::uint32_t>(index, kHintLimit);
    unsigned char *hint = header_ + offsetof(MemPoolElement, reserved);
    hint[0] = static_cast<unsigned char>(index);
    hint[1] = static_cast<unsigned char>(index >> 8);
    hint[2] = static_cast<unsigned char>(index >> 16);
  }

  void set_in_use(bool in_use) const noexcept {
    header_[offsetof(MemPoolElement, inUse)] = in_use ? 1 : 0;
  }
  // A fresh element of `pool`; its inUse and next stay zero.
  void set_up(MemPool *pool, std::uint32_t size) const noexcept {
    store(offsetof(MemPoolElement, tag), kElementTag);
    store(offsetof(MemPoolElement, data), static_cast<void *>(data_bytes()));
    store(offsetof(MemPoolElement, size), size);
    store(offsetof(MemPoolElement, pool), pool);
  }
  void set_next(MemPoolElement *next) const noexcept {
    store(offsetof(MemPoolElement, next), next);
  }

 private:
  template <class T>
  [[nodiscard]] T load(std::size_t offset) const noexcept {
    T value;
    std::memcpy(&value, header_ + offset, sizeof value);
    return value;
  }
  template <class T>
  void store(std::size_t offset, T value) const noexcept {
    std::memcpy(header_ + offset, &value, sizeof value);
  }

  unsigned char *header_;
};

// A pool header is the start of a heap block, so a pointer that isn't aligned for it is foreign.
bool is_pool(const MemPool *pool) noexcept {
  return pool != nullptr && reinterpret_cast<std::uintptr_t>(pool) % alignof(MemPool) == 0 &&
         pool->tag == kPoolTag;
}

bool is_block(const MemBlock *block) noexcept {
  return block != nullptr && reinterpret_cast<std::uintptr_t>(block) % alignof(MemBlock) == 0 &&
         block->tag == kBlockTag;
}

std::size_t stride_of(const MemPool *pool) noexcept {
  return pool->elementSize + kElementHeader;
}

unsigned char *first_header(MemPool *pool) noexcept {
  return bytes_at(pool) + kPoolHeader;
}

// The index of the pool's element whose header lies at address `header`; none when no element's
// header does.
std::optional<std::uint32_t> element_index(MemPool *pool, std::uintptr_t header) noexcept {
  const auto first = reinterpret_cast<std::uintptr_t>(first_header(pool));
  const std::size_t stride = stride_of(pool);
  if (header < first || (header - first) % stride != 0 ||
      (header - first) / stride >= pool->elementCount) {
    return std::nullopt;
  }
  return static_cast<std::uint32_t>((header - first) / stride);
}

// A block and the link by which the manager holds the blocks of MemMgrAddMemoryBlock; its data
// follows directly.
struct HeldBlock {
  MemBlock block;
  HeldBlock *next;
};

// The manager as allocated: the public record first, so that pMemMgr points at both.
struct Manager {
  MemMgr shared;
  HeldBlock *blocks;
};
static_assert(std::is_standard_layout_v<Manager> && offsetof(Manager, shared) == 0);
static_assert(std::is_standard_layout_v<HeldBlock> && offsetof(HeldBlock, block) == 0);

Manager *manager() noexcept {
  return reinterpret_cast<Manager *>(pMemMgr);
}

}  // namespace

MemPool *MemPoolCreate(std::uint32_t elementSize, std::uint32_t elementCount) {
  if (elementSize == 0 || elementCount == 0) {
    return nullptr;
  }
  // The whole pool must fit in 32 bits: refuse, rather than allocate a pool that has wrapped.
  const std::uint64_t stride = std::uint64_t{elementSize} + kElementHeader;
  const std::uint64_t room =
      (std::numeric_limits<std::uint32_t>::max() - kPoolHeader) / elementCount;
  if (stride > room) {
    return nullptr;
  }
  const auto total = static_cast<std::uint32_t>(stride * elementCount + kPoolHeader);
  auto *pool = static_cast<MemPool *>(tessera::heap::allocate_zeroed(total));
  if (pool == nullptr) {
    return nullptr;
  }
  pool->tag = kPoolTag;
  pool->elementCount = elementCount;
  pool->freeCount = elementCount;
  pool->elementSize = elementSize;
  pool->totalBytes = total;
  pool->firstElement = element_at(first_header(pool));
  unsigned char *header = first_header(pool);
  for (std::uint32_t i = 0; i < elementCount; ++i, header += stride) {
    const Element element(header);
    element.set_up(pool, elementSize);
    if (i + 1 < elementCount) {
      element.set_next(element_at(header + stride));
    }
  }
  return pool;
}

int32_t MemPoolFree(MemPool *pool) {
  if (!is_pool(pool)) {
    return 2;
  }
  pool->tag = 0;  // a stale handle to the freed pool no longer passes for one
  tessera::heap::release(pool);
  return 0;
}

// The elements lie in chain order in memory, so the scan steps over them by address and reads
// only each one's inUse byte, starting where the hint says the first free one may be.
MemPoolElement *MemPoolGetElement(MemPool *pool) {
  if (!is_pool(pool)) {
    return nullptr;
  }
  const std::size_t stride = stride_of(pool);
  const Element first(first_header(pool));
  std::uint32_t i = std::min(first.hint(), pool->elementCount);
  for (unsigned char *header = first_header(pool) + i * stride; i < pool->elementCount;
       ++i, header += stride) {
    const Element element(header);
    if (!element.in_use()) {
      element.set_in_use(true);
      first.set_hint(i + 1);
      --pool->freeCount;
      return element.handle();
    }
  }
  first.set_hint(pool->elementCount);
  return nullptr;
}

int32_t MemPoolFreeElement(MemPoolElement *element) {
  if (element == nullptr) {
    return 2;
  }
  const Element view(element);
  MemPool *pool = view.tag() == kElementTag ? view.pool() : nullptr;
  if (!is_pool(pool)) {
    return 2;
  }
  // Its place in the pool, which must be an element's.
  const std::optional<std::uint32_t> index =
      element_index(pool, reinterpret_cast<std::uintptr_t>(element));
  if (!index) {
    return 2;
  }
  std::memset(view.data_bytes(), 0, pool->elementSize);
  view.set_in_use(false);
  const Element first(first_header(pool));
  first.set_hint(std::min(first.hint(), *index));
  ++pool->freeCount;  // also for an element that was free already: nothing decides by it
  return 0;
}

// The element is found by arithmetic over the pool's layout, then confirmed by its own header.
MemPoolElement *MemPoolGetElementByData(MemPool *pool, void *data) {
  if (!is_pool(pool) || data == nullptr) {
    return nullptr;
  }
  if (!element_index(pool, reinterpret_cast<std::uintptr_t>(data) - kElementHeader)) {
    return nullptr;
  }
  const Element element(bytes_at(data) - kElementHeader);
  if (element.tag() != kElementTag || element.data() != data) {
    return nullptr;
  }
  return element.handle();
}

MemBlock *MemBlockInit(std::uint32_t size) {
  if constexpr (sizeof(std::size_t) == sizeof(std::uint32_t)) {  // header and data must fit
    if (size > std::numeric_limits<std::size_t>::max() - sizeof(HeldBlock)) {
      return nullptr;
    }
  }
  auto *held = static_cast<HeldBlock *>(tessera::heap::allocate_zeroed(sizeof(HeldBlock) + size));
  if (held == nullptr) {
    return nullptr;
  }
  MemBlock &block = held->block;
  block.tag = kBlockTag;
  block.start = bytes_at(held) + sizeof(HeldBlock);
  block.current = block.start;
  block.end = block.start + size;
  return &block;
}

int32_t MemBlockUninit(MemBlock *block) {
  if (!is_block(block)) {
    return 1;
  }
  block->tag = 0;
  tessera::heap::release(block);
  return 0;
}

// Compares what is left with the request, so that a request near the top of the address space
// can't wrap past `end`.
void *MemBlockGet(MemBlock *block, std::uint32_t size) {
  if (!is_block(block) || size == 0) {
    return nullptr;
  }
  const auto current = reinterpret_cast<std::uintptr_t>(block->current);
  const auto end = reinterpret_cast<std::uintptr_t>(block->end);
  if (current > end || size > end - current) {
    return nullptr;
  }
  unsigned char *given = block->current;
  block->current += size;
  return given;
}

int32_t MemMgrInit() {
  if (pMemMgr != nullptr) {
    return 1;
  }
  auto *created = static_cast<Manager *>(tessera::heap::allocate_zeroed(sizeof(Manager)));
  if (created == nullptr) {
    return 1;
  }
  pMemMgr = &created->shared;
  return 0;
}

int32_t MemMgrUninit() {
  Manager *owner = manager();
  if (owner == nullptr) {
    return 0;
  }
  for (MemPool *pool = owner->shared.firstPool; pool != nullptr;) {
    MemPool *next = pool->nextPool;
    MemPoolFree(pool);
    pool = next;
  }
  for (HeldBlock *held = owner->blocks; held != nullptr;) {
    HeldBlock *next = held->next;
    MemBlockUninit(&held->block);
    held = next;
  }
  tessera::heap::release(owner);
  pMemMgr = nullptr;
  return 0;
}

int32_t MemMgrAddPool(std::uint32_t elementSize, std::uint32_t elementCount) {
  if (pMemMgr == nullptr) {
    return 1;
  }
  MemPool *pool = MemPoolCreate(elementSize, elementCount);
  if (pool == nullptr) {
    return 1;
  }
  MemPool **link = &pMemMgr->firstPool;
  while (*link != nullptr) {
    link = &(*link)->nextPool;
  }
  *link = pool;
  // Only 64-bit workstations can hold more than 32 bits of pools: the count stops at the top.
  const std::uint32_t before = pMemMgr->allocatedBytes;
  pMemMgr->allocatedBytes = before + pool->totalBytes < before
                                ? std::numeric_limits<std::uint32_t>::max()
                                : before + pool->totalBytes;
  return 0;
}

void *MemMgrAlloc(std::uint32_t size) {
  if (pMemMgr == nullptr) {
    return nullptr;
  }
  for (MemPool *pool = pMemMgr->firstPool; is_pool(pool); pool = pool->nextPool) {
    if (pool->elementSize != size) {
      continue;
    }
    MemPoolElement *element = MemPoolGetElement(pool);
    if (element != nullptr) {
      unsigned char *data = Element(element).data_bytes();
      std::memset(data, 0, size);  // also if the tool wrote to it while it was free
      return data;
    }
  }
  return nullptr;
}

int32_t MemMgrFree(void *data) {
  if (pMemMgr == nullptr || data == nullptr) {
    return 1;
  }
  for (MemPool *pool = pMemMgr->firstPool; is_pool(pool); pool = pool->nextPool) {
    MemPoolElement *element = MemPoolGetElementByData(pool, data);
    if (element != nullptr) {
      return MemPoolFreeElement(element);
    }
  }
  return 1;
}

uint32_t MemMgrGetNumAllocatedBytes() {
  return pMemMgr == nullptr ? 0 : pMemMgr->allocatedBytes;
}

// Nothing hands the block out, so the manager holds it until MemMgrUninit; without a manager
// there is nobody to hold it, and it goes back at once.
int32_t MemMgrAddMemoryBlock(std::uint32_t size) {
  MemBlock *block = MemBlockInit(size);
  if (block == nullptr) {
    return 1;
  }
  Manager *owner = manager();
  if (owner == nullptr) {
    MemBlockUninit(block);
    return 0;
  }
  auto *held = reinterpret_cast<HeldBlock *>(block);
  held->next = owner->blocks;
  owner->blocks = held;
  return 0;
}

void *MemMgrAllocStatic() {
  return nullptr;
}
