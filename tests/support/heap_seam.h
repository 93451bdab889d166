// Makes one of the library's heap allocations fail, for the tests of the static build.
#pragma once

#include <cstdint>

#include "memory/heap.h"

namespace tessera::test {

// While it lives, the n-th allocation of the library from now on fails (1 is the next one).
class FailNthAllocation {
 public:
  explicit FailNthAllocation(std::uint32_t n) { heap::fail_nth(n); }
  ~FailNthAllocation() { heap::fail_nth(0); }
  FailNthAllocation(const FailNthAllocation &) = delete;
  FailNthAllocation &operator=(const FailNthAllocation &) = delete;
};

// How many allocations `operation` asks the library for.
template <class Operation>
std::uint32_t allocations_of(Operation &&operation) {
  const std::uint32_t before = heap::allocation_count();
  operation();
  return heap::allocation_count() - before;
}

}  // namespace tessera::test
