#include "quorel/pattern/node_arena.h"

NodeArena::~NodeArena() {
  for (NFANode *node : nodes_) node->~NFANode();
}

void *NodeArena::allocate(std::size_t size) {
  constexpr std::size_t kAlign = alignof(std::max_align_t);
  size = (size + kAlign - 1) & ~(kAlign - 1);
  if (size > left_) {
    // A node larger than a block (none is) gets a block of its own size.
    std::size_t blockSize = size > kBlockSize ? size : kBlockSize;
    blocks_.emplace_back(new char[blockSize]);
    free_ = blocks_.back().get();
    left_ = blockSize;
  }
  void *place = free_;
  free_ += size;
  left_ -= size;
  return place;
}
