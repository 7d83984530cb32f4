#include "quorel/values/object_pool.h"

#include <atomic>
#include <cstdint>
#include <initializer_list>
#include <new>

#include "quorel/platform/thread_pointer.h"

namespace quorel {

#ifdef QUOREL_NO_RECYCLING


void *ObjectPool::allocate(std::size_t size) { return ::operator new(size); }

void ObjectPool::release(void *block, std::size_t) noexcept { ::operator delete(block); }

bool ObjectPool::isRecycling() { return false; }

void ObjectPool::bypassOnThisThread() {}

#else

namespace {

constexpr std::size_t kGranule = 16;
constexpr std::size_t kLargest = ObjectPool::kLargestBlock;
constexpr std::size_t kClasses = kLargest / kGranule;
// Blocks a list keeps at most: enough for the objects of a deep run, and
// at most some 2 MB over all lists of a thread.
constexpr std::uint32_t kMostBlocks = 1024;

// Class c holds blocks of (c + 1) * kGranule bytes; requests of 0 bytes
// share class 0.
std::size_t classOf(std::size_t size) { return size == 0 ? 0 : (size - 1) / kGranule; }
// The same for the common case, in two instructions: a request of 0 bytes
// comes out beyond the classes and so takes the way past the lists.
std::size_t listedClassOf(std::size_t size) { return (size - 1) / kGranule; }
std::size_t blockSize(std::size_t sizeClass) { return (sizeClass + 1) * kGranule; }

struct FreeBlock {
  FreeBlock *next;
};

// The free lists of one thread, made at the thread's first request. Its
// destructor runs as the thread ends and hands every block back to the heap.
class FreeLists {
 public:
  constexpr FreeLists() = default;
  ~FreeLists();

  FreeLists(const FreeLists &) = delete;
  FreeLists &operator=(const FreeLists &) = delete;

  // A kept block of the class, or null.
  void *take(std::size_t sizeClass) {
    FreeBlock *block = heads_[sizeClass];
    if (block == nullptr) return nullptr;
    heads_[sizeClass] = block->next;
    --counts_[sizeClass];
    return block;
  }

  // Keeps the block unless its list is full.
  bool keep(void *block, std::size_t sizeClass) {
    if (counts_[sizeClass] >= kMostBlocks) return false;
    auto *free = static_cast<FreeBlock *>(block);
    free->next = heads_[sizeClass];
    heads_[sizeClass] = free;
    ++counts_[sizeClass];
    return true;
  }

 private:
  FreeBlock *heads_[kClasses] = {};
  std::uint32_t counts_[kClasses] = {};
};

// The lists of the calling thread. A plain pointer is found at once, where
// the lists themselves (with a destructor) would cost a call to a wrapper
// first. No initial-exec model: a library loaded by dlopen after others used
// up the static TLS block must still load.
thread_local FreeLists *currentLists = nullptr;
// Set once the thread's lists are gone: what is released after that (objects
// that static or thread-local objects hold) goes to the heap directly.
thread_local bool listsClosed = false;

// Every request needs the thread's lists, and thread-local storage that dlopen
// may place anywhere costs a call to reach. So a thread that makes its lists
// also claims a slot, found by its thread pointer, and finds them there in a
// few instructions: the front slot, which the first such thread takes and
// which is found without hashing, or else a slot of the table picked by a
// hash of the pointer. A thread whose slots others hold uses thread-local
// storage alone. Only the thread whose pointer a slot holds ever reads that
// slot's lists, and no two living threads share a pointer, so the slots need
// no lock; a thread frees its slot before its lists go.
struct Slot {
  std::atomic<std::uintptr_t> thread{0};
  FreeLists *lists = nullptr;

  bool holds(std::uintptr_t pointer) const { return thread.load(std::memory_order_relaxed) == pointer; }
};
constexpr int kTableBits = 6;
Slot frontSlot;
Slot table[1 << kTableBits];

Slot &tableSlotOf(std::uintptr_t thread) { return table[(thread * 0x9E3779B97F4A7C15u) >> (64 - kTableBits)]; }

// The lists of a thread that does not hold the front slot. Out of line, so
// that the requests which the front slot answers stay small enough to be
// inlined where objects are made.
[[gnu::noinline]] FreeLists *listsBeyondFrontSlot(std::uintptr_t thread) {
  if (platform::kHasThreadPointer) {
    Slot &slot = tableSlotOf(thread);
    if (slot.holds(thread)) return slot.lists;
  }
  return currentLists;
}

FreeLists *listsOfThisThread() {
  std::uintptr_t thread = platform::threadPointer();
  if (platform::kHasThreadPointer && frontSlot.holds(thread)) return frontSlot.lists;
  return listsBeyondFrontSlot(thread);
}

void claimSlot(FreeLists *lists) {
  if (!platform::kHasThreadPointer) return;
  std::uintptr_t thread = platform::threadPointer();
  for (Slot *slot : {&frontSlot, &tableSlotOf(thread)}) {
    std::uintptr_t free = 0;
    if (slot->thread.compare_exchange_strong(free, thread, std::memory_order_acquire)) {
      slot->lists = lists;
      return;
    }
  }
}

// From now on the thread's requests and releases go to the heap.
void closeLists() {
  if (platform::kHasThreadPointer) {
    std::uintptr_t thread = platform::threadPointer();
    for (Slot *slot : {&frontSlot, &tableSlotOf(thread)}) {
      if (slot->holds(thread)) {
        slot->lists = nullptr;
        slot->thread.store(0, std::memory_order_release);
      }
    }
  }
  currentLists = nullptr;
  listsClosed = true;
}

FreeLists::~FreeLists() {
  closeLists();
  for (std::size_t c = 0; c < kClasses; ++c) {
    while (void *block = take(c)) ::operator delete(block);
  }
}

// The thread's lists, made on first use; null once they are gone.
FreeLists *openLists() {
  if (currentLists == nullptr && !listsClosed) {
    thread_local FreeLists lists;
    currentLists = &lists;
    claimSlot(&lists);
  }
  return currentLists;
}

// The ways past the lists: large blocks, a thread's first request, a full
// list, a thread whose lists are gone. Kept out of line so that the common
// case stays a few instructions.
[[gnu::noinline]] void *allocateFromHeap(std::size_t size) {
  if (size > kLargest) return ::operator new(size);
  openLists();
  // Always a whole block of the class, so that any thread may keep it.
  return ::operator new(blockSize(classOf(size)));
}

[[gnu::noinline]] void releaseToHeap(void *block, std::size_t size) noexcept {
  if (block == nullptr) return;
  if (size <= kLargest) {
    FreeLists *lists = openLists();
    if (lists != nullptr && lists->keep(block, classOf(size))) return;
  }
  ::operator delete(block);
}

}  // namespace

void *ObjectPool::allocate(std::size_t size) {
  FreeLists *lists = listsOfThisThread();
  std::size_t sizeClass = listedClassOf(size);
  if (lists != nullptr && sizeClass < kClasses) {
    if (void *block = lists->take(sizeClass)) return block;
  }
  return allocateFromHeap(size);
}

void ObjectPool::release(void *block, std::size_t size) noexcept {
  FreeLists *lists = listsOfThisThread();
  std::size_t sizeClass = listedClassOf(size);
  if (lists != nullptr && sizeClass < kClasses && block != nullptr && lists->keep(block, sizeClass)) return;
  releaseToHeap(block, size);
}

bool ObjectPool::isRecycling() { return true; }

void ObjectPool::bypassOnThisThread() { closeLists(); }

#endif

}  // namespace quorel
