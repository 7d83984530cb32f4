// InlineList: a list of small plain entries (pointers) whose first N entries
// live inside the list itself, and the rest in a vector from the thread's
// ObjectPool. A section keeps its values and reads in two of them, so that
// a typical rule opens and leaves a section without asking for memory for
// its lists.

#ifndef QUOREL_RULES_INLINE_LIST_H_
#define QUOREL_RULES_INLINE_LIST_H_

#include <cstddef>
#include <vector>

#include "quorel/values/object_pool.h"

namespace quorel {

template <typename T, std::size_t N>
class InlineList {
 public:
  InlineList() = default;
  InlineList(const InlineList &) = delete;
  InlineList &operator=(const InlineList &) = delete;

  std::size_t size() const { return size_; }
  T &operator[](std::size_t index) { return index < N ? first_[index] : rest_[index - N]; }
  const T &operator[](std::size_t index) const { return index < N ? first_[index] : rest_[index - N]; }

  void push_back(T entry) {
    if (size_ < N) {
      first_[size_] = entry;
    } else {
      pushBeyond(entry);
    }
    ++size_;
  }

  // Removes the entry at index; the later ones move up.
  void erase(std::size_t index) {
    for (std::size_t i = index; i + 1 < size_; ++i) (*this)[i] = (*this)[i + 1];
    if (size_ > N) rest_.pop_back();
    --size_;
  }

 private:
  // Out of line, so that the common case inlines into its callers (every
  // value made, every field read) without the vector's growth.
  [[gnu::noinline]] void pushBeyond(T entry) { rest_.push_back(entry); }

  T first_[N];
  std::size_t size_ = 0;
  std::vector<T, PoolAllocator<T>> rest_;
};

}  // namespace quorel

#endif  // QUOREL_RULES_INLINE_LIST_H_
