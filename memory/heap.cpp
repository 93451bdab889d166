#include "memory/heap.h"

#include <atomic>
#include <cstdlib>

namespace tessera::heap {
namespace {

std::atomic<std::uint32_t> g_countdown{0};  // 0: disarmed
std::atomic<std::uint32_t> g_requests{0};

// True when the seam makes this request fail.
bool seam_fails() noexcept {
  g_requests.fetch_add(1, std::memory_order_relaxed);
  std::uint32_t left = g_countdown.load(std::memory_order_relaxed);
  while (left != 0) {
    if (g_countdown.compare_exchange_weak(left, left - 1, std::memory_order_relaxed)) {
      return left == 1;
    }
  }
  return false;
}

}  // namespace

void *allocate(std::size_t size) noexcept { return seam_fails() ? nullptr : std::malloc(size); }

void *allocate_zeroed(std::size_t size) noexcept {
  return seam_fails() ? nullptr : std::calloc(1, size);
}

void release(void *block) noexcept { std::free(block); }

void fail_nth(std::uint32_t n) noexcept { g_countdown.store(n, std::memory_order_relaxed); }

std::uint32_t allocation_count() noexcept { return g_requests.load(std::memory_order_relaxed); }

}  // namespace tessera::heap
