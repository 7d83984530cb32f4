// Arena: the memory of the nodes of one Program.
//
// A program is hundreds of small nodes and lists that all die together, and
// a run visits them in the order they were made: so they are carved one
// after the other out of a few large blocks. Only types without a
// destructor go in (checked when compiled), so the arena frees its blocks
// and nothing more. Not copied.

#ifndef QUOREL_LANG_ARENA_H_
#define QUOREL_LANG_ARENA_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <type_traits>
#include <vector>

namespace quorel {
namespace lang {

class Arena {
 public:
  Arena() = default;
  Arena(const Arena &) = delete;
  Arena &operator=(const Arena &) = delete;

  // A new value-initialised T, owned by the arena.
  template <typename T>
  T *make() {
    return array<T>(1);
  }

  // count new value-initialised Ts in a row, owned by the arena.
  template <typename T>
  T *array(std::size_t count) {
    static_assert(std::is_trivially_destructible<T>::value, "the arena runs no destructors");
    T *first = static_cast<T *>(allocate(sizeof(T) * count, alignof(T)));
    for (std::size_t i = 0; i < count; ++i) new (first + i) T();
    return first;
  }

 private:
  static constexpr std::size_t kBlockSize = 8192;

  void *allocate(std::size_t size, std::size_t align) {
    static_assert(kBlockSize % alignof(std::max_align_t) == 0, "blocks keep the largest alignment");
    std::size_t skip = (align - reinterpret_cast<std::uintptr_t>(free_) % align) % align;
    if (free_ == nullptr || skip + size > left_) {
      std::size_t block = size > kBlockSize ? size : kBlockSize;
      blocks_.emplace_back(new std::max_align_t[(block + sizeof(std::max_align_t) - 1) / sizeof(std::max_align_t)]);
      free_ = reinterpret_cast<char *>(blocks_.back().get());
      left_ = block;
      skip = 0;
    }
    void *at = free_ + skip;
    free_ += skip + size;
    left_ -= skip + size;
    return at;
  }

  std::vector<std::unique_ptr<std::max_align_t[]>> blocks_;
  char *free_ = nullptr;
  std::size_t left_ = 0;
};

}  // namespace lang
}  // namespace quorel

#endif  // QUOREL_LANG_ARENA_H_
