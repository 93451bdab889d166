// The library's one route to the heap. Every allocation of the library goes through here, so that
// a test can make any one of them fail and check the failure path that follows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace tessera::heap {

// malloc and calloc(1, size): null when memory is short or when the test seam says so.
[[nodiscard]] void *allocate(std::size_t size) noexcept;
[[nodiscard]] void *allocate_zeroed(std::size_t size) noexcept;
// free: blocks from allocate may also be released by the caller's own free().
void release(void *block) noexcept;

struct Releaser {
  void operator()(void *block) const noexcept { release(block); }
};

// Owner of a heap block made by allocate or allocate_zeroed.
template <class T>
using Owned = std::unique_ptr<T, Releaser>;

// A zero-filled T on the heap, or an empty owner.
template <class T>
Owned<T> make_zeroed() noexcept {
  return Owned<T>(static_cast<T *>(allocate_zeroed(sizeof(T))));
}

// Test seam. After fail_nth(n), the n-th allocation from then on fails (1 is the next one) and
// the seam disarms itself; fail_nth(0) disarms it. allocation_count() counts every request made
// since the process started, failed ones included.
void fail_nth(std::uint32_t n) noexcept;
[[nodiscard]] std::uint32_t allocation_count() noexcept;

}  // namespace tessera::heap
