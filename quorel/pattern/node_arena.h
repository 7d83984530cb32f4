// NodeArena: the memory and the register of the nodes of one Pattern.
//
// A compile makes dozens of small nodes that all die together with their
// Pattern, so they are carved out of a few large blocks instead of being
// allocated one by one. The arena owns every node it made: its destructor
// runs each node's destructor, in the order of making, then frees the
// blocks. The graph's links own nothing (it has cycles through group loops),
// so the arena is the one owner.

#ifndef QUOREL_PATTERN_NODE_ARENA_H_
#define QUOREL_PATTERN_NODE_ARENA_H_

#include <cstddef>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "quorel/pattern/nfa_node.h"

class NodeArena {
 public:
  NodeArena() = default;
  ~NodeArena();
  NodeArena(const NodeArena &) = delete;
  NodeArena &operator=(const NodeArena &) = delete;

  // A new node of type T, owned by the arena.
  template <typename T, typename... Args>
  T *make(Args &&...args) {
    static_assert(alignof(T) <= alignof(std::max_align_t), "nodes need no extended alignment");
    // Room first, so that registering cannot fail after construction.
    if (nodes_.size() == nodes_.capacity()) nodes_.reserve(2 * nodes_.size() + 16);
    T *node = new (allocate(sizeof(T))) T(std::forward<Args>(args)...);
    nodes_.push_back(node);
    return node;
  }

  // The nodes made so far, in the order of making.
  const std::vector<NFANode *> &nodes() const { return nodes_; }

 private:
  static constexpr std::size_t kBlockSize = 4096;

  void *allocate(std::size_t size);

  std::vector<std::unique_ptr<char[]>> blocks_;
  char *free_ = nullptr;
  std::size_t left_ = 0;
  std::vector<NFANode *> nodes_;
};

#endif  // QUOREL_PATTERN_NODE_ARENA_H_
