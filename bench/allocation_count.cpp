#include "allocation_count.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

std::atomic<bool> counting{false};
std::atomic<std::int64_t> allocations{0};

void *allocate(std::size_t size, std::size_t alignment) {
  if (counting.load(std::memory_order_relaxed)) allocations.fetch_add(1, std::memory_order_relaxed);
  if (size == 0) size = 1;  // operator new gives a distinct pointer for 0 bytes too
  void *memory = nullptr;
  if (alignment <= alignof(std::max_align_t)) {
    memory = std::malloc(size);
  } else if (posix_memalign(&memory, alignment, size) != 0) {
    memory = nullptr;
  }
  return memory;
}

void *allocateOrThrow(std::size_t size, std::size_t alignment) {
  void *memory = allocate(size, alignment);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

}  // namespace

// The replaceable global allocation functions. Every form is replaced, so
// that none pairs with the standard library's own.
void *operator new(std::size_t size) { return allocateOrThrow(size, 0); }
void *operator new[](std::size_t size) { return allocateOrThrow(size, 0); }
void *operator new(std::size_t size, std::align_val_t alignment) {
  return allocateOrThrow(size, static_cast<std::size_t>(alignment));
}
void *operator new[](std::size_t size, std::align_val_t alignment) {
  return allocateOrThrow(size, static_cast<std::size_t>(alignment));
}
void *operator new(std::size_t size, const std::nothrow_t &) noexcept { return allocate(size, 0); }
void *operator new[](std::size_t size, const std::nothrow_t &) noexcept { return allocate(size, 0); }
void *operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t &) noexcept {
  return allocate(size, static_cast<std::size_t>(alignment));
}
void *operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t &) noexcept {
  return allocate(size, static_cast<std::size_t>(alignment));
}

void operator delete(void *memory) noexcept { std::free(memory); }
void operator delete[](void *memory) noexcept { std::free(memory); }
void operator delete(void *memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void *memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void *memory, std::align_val_t) noexcept { std::free(memory); }
void operator delete[](void *memory, std::align_val_t) noexcept { std::free(memory); }
void operator delete(void *memory, std::size_t, std::align_val_t) noexcept { std::free(memory); }
void operator delete[](void *memory, std::size_t, std::align_val_t) noexcept { std::free(memory); }
void operator delete(void *memory, const std::nothrow_t &) noexcept { std::free(memory); }
void operator delete[](void *memory, const std::nothrow_t &) noexcept { std::free(memory); }
void operator delete(void *memory, std::align_val_t, const std::nothrow_t &) noexcept { std::free(memory); }
void operator delete[](void *memory, std::align_val_t, const std::nothrow_t &) noexcept { std::free(memory); }

namespace quorel {
namespace bench {

AllocationCount::AllocationCount() {
  allocations.store(0, std::memory_order_relaxed);
  counting.store(true, std::memory_order_relaxed);
}

AllocationCount::~AllocationCount() { counting.store(false, std::memory_order_relaxed); }

std::int64_t AllocationCount::count() const { return allocations.load(std::memory_order_relaxed); }

}  // namespace bench
}  // namespace quorel
