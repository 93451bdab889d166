// Pool allocation against the C heap, and list appends, at the sizes a tool uses. Pools are
// filled from the front to the given occupancy; the pool's search hint takes each allocation
// straight to the first free element, so its time should not grow with the occupancy.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <vector>

#include "tessera/mempool.h"

namespace {

constexpr std::uint32_t kSize = 32;

// args: pool elements, occupancy in percent.
void BM_MemMgrAllocFree(benchmark::State &state) {
  const auto elements = static_cast<std::uint32_t>(state.range(0));
  MemMgrInit();
  MemMgrAddPool(kSize, elements);
  for (std::int64_t i = 0; i < elements * state.range(1) / 100; ++i) {
    MemMgrAlloc(kSize);
  }
  for (auto _ : state) {
    void *data = MemMgrAlloc(kSize);
    benchmark::DoNotOptimize(data);
    MemMgrFree(data);
  }
  MemMgrUninit();
}

// The peer: the C heap with as many blocks of the same size held.
void BM_MallocFree(benchmark::State &state) {
  std::vector<void *> held(static_cast<std::size_t>(state.range(0) * state.range(1) / 100));
  for (auto &block : held) {
    block = std::malloc(kSize);
  }
  for (auto _ : state) {
    void *data = std::malloc(kSize);
    benchmark::DoNotOptimize(data);
    std::free(data);
  }
  for (void *block : held) {
    std::free(block);
  }
}

// args: list length. Each round appends one node to a list of that length and takes it off
// again without a walk, so the time is the append's.
void BM_ListAllocateObject(benchmark::State &state) {
  const auto length = static_cast<std::uint32_t>(state.range(0));
  MemMgrInit();
  MemMgrAddPool(LIST_NODE_SIZE, length + 1);
  MemMgrAddPool(kSize, length + 1);
  ListNode *list = nullptr;
  for (std::uint32_t i = 0; i < length; ++i) {
    ListAllocateObject(&list, kSize);
  }
  ListNode *last = ListGetLast(list);
  for (auto _ : state) {
    benchmark::DoNotOptimize(ListAllocateObject(&list, kSize));
    ListNode *added = last->next;
    last->next = nullptr;
    MemMgrFree(added->data);
    MemMgrFree(added);
  }
  MemMgrUninit();
}

// The peer: the same append to a singly linked list on the C heap.
void BM_MallocListAppend(benchmark::State &state) {
  std::vector<ListNode> nodes(static_cast<std::size_t>(state.range(0)));
  for (std::size_t i = 0; i + 1 < nodes.size(); ++i) {
    nodes[i].next = &nodes[i + 1];
  }
  for (auto _ : state) {
    auto *node = static_cast<ListNode *>(std::calloc(1, sizeof(ListNode)));
    node->data = std::calloc(1, kSize);
    ListNode *last = nodes.data();
    while (last->next != nullptr) {
      last = last->next;
    }
    last->next = node;
    benchmark::DoNotOptimize(node->data);
    last->next = nullptr;
    std::free(node->data);
    std::free(node);
  }
}

void PoolArgs(benchmark::internal::Benchmark *bench) {
  for (std::int64_t elements : {100, 10000}) {
    for (std::int64_t occupancy : {10, 90}) {
      bench->Args({elements, occupancy});
    }
  }
}

BENCHMARK(BM_MemMgrAllocFree)->Apply(PoolArgs);
BENCHMARK(BM_MallocFree)->Apply(PoolArgs);
BENCHMARK(BM_ListAllocateObject)->Arg(10)->Arg(1000);
BENCHMARK(BM_MallocListAppend)->Arg(10)->Arg(1000);

}  // namespace
