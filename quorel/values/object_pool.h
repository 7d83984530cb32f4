// ObjectPool: the memory of the small objects that runs make and drop by
// the thousand (values, iterators, sections and their lists), recycled per
// thread instead of going to the heap each time.
//
// A released block goes onto a free list of the releasing thread, one list
// per size class of 16 bytes up to 256 bytes, and the next request of that
// class on the thread takes it back. Each list keeps a bounded number of
// blocks and hands the rest back to the heap; a thread's lists are emptied
// when the thread ends. A block may be released on another thread than the
// one that got it, as when a host deletes a value that performFunction gave
// it. Requests above 256 bytes go to the heap directly. A thread finds its
// lists through a small table keyed by its thread pointer, and through
// thread-local storage where the table has no room for it: the library may
// be loaded by dlopen, where thread-local storage costs a call to reach.
//
// A build with QUOREL_NO_RECYCLING (the AddressSanitizer build) sends every
// request to the heap and every release back, so that the sanitizer sees
// each object's life.
//
// PoolAllocator serves standard containers from the same lists.

#ifndef QUOREL_VALUES_OBJECT_POOL_H_
#define QUOREL_VALUES_OBJECT_POOL_H_

#include <cstddef>

namespace quorel {

class ObjectPool {
 public:
  // The largest request that the lists serve.
  static constexpr std::size_t kLargestBlock = 256;

  ObjectPool() = delete;

  // A block of at least size bytes, aligned for any object; throws
  // std::bad_alloc as operator new does.
  static void *allocate(std::size_t size);
  // Gives back a block from allocate with the same size.
  static void release(void *block, std::size_t size) noexcept;
  // Whether this build recycles blocks.
  static bool isRecycling();
  // From now on the calling thread's requests go to the heap and its
  // releases back to it, as in a build without recycling; blocks it keeps
  // already are freed when it ends. For tests that run the same work both
  // ways and compare.
  static void bypassOnThisThread();
};

// A base for small objects that runs make and drop by the thousand (values
// and iterators through PlausiObject, query parts, walks): each takes its
// memory from the pool of the thread. An object must be deleted as its own
// class or through a virtual destructor, which hands in the right size.
class Pooled {
 public:
  static void *operator new(std::size_t size) { return ObjectPool::allocate(size); }
  static void operator delete(void *block, std::size_t size) noexcept { ObjectPool::release(block, size); }
};

template <typename T>
class PoolAllocator {
 public:
  using value_type = T;

  PoolAllocator() = default;
  template <typename U>
  PoolAllocator(const PoolAllocator<U> &) {}

  T *allocate(std::size_t count) { return static_cast<T *>(ObjectPool::allocate(count * sizeof(T))); }
  void deallocate(T *block, std::size_t count) noexcept { ObjectPool::release(block, count * sizeof(T)); }

  template <typename U>
  bool operator==(const PoolAllocator<U> &) const {
    return true;
  }
  template <typename U>
  bool operator!=(const PoolAllocator<U> &) const {
    return false;
  }
};

}  // namespace quorel

#endif  // QUOREL_VALUES_OBJECT_POOL_H_
