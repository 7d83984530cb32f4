// ElementTable: the elements of an array, made on first access and owned by
// the table. Keyed by the whole index list, so that no two index lists share
// an element, however large the dimensions. The elements of a list of one
// small index, as rules walk most arrays, are also found by that index
// directly, without a search through the keys.

#ifndef QUOREL_MODEL_ELEMENT_TABLE_H_
#define QUOREL_MODEL_ELEMENT_TABLE_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "quorel/masks/util.h"

namespace quorel {

template <typename T>
class ElementTable {
 public:
  // The element of indices, made by make() (giving a std::unique_ptr<T>)
  // when there is none yet.
  template <typename Make>
  T *getOrMake(const std::int32_t *indices, Make make) {
    // An element that exists is found without a key of its own, since rules
    // reach the same elements run after run.
    Indices wanted{indices, static_cast<std::size_t>(Util::getSizeOf(indices))};
    bool direct = wanted.count == 1 && indices[0] >= 0 && indices[0] < kDirectIndices;
    auto slot = static_cast<std::size_t>(direct ? indices[0] : 0);
    if (direct && slot < byIndex_.size() && byIndex_[slot] != nullptr) return byIndex_[slot];
    T *result;
    auto it = elements_.find(wanted);
    if (it != elements_.end()) {
      result = it->second.get();
    } else {
      std::unique_ptr<T> element = make();
      result = element.get();
      elements_.emplace(std::vector<std::int32_t>(indices, indices + wanted.count), std::move(element));
    }
    if (direct) {
      if (slot >= byIndex_.size()) byIndex_.resize(slot + 1, nullptr);
      byIndex_[slot] = result;
    }
    return result;
  }

 private:
  // The single indices found directly: enough for the rows of most arrays,
  // few enough that the list stays small however far a rule reaches.
  static constexpr std::int32_t kDirectIndices = 256;

  struct Indices {
    const std::int32_t *first;
    std::size_t count;
  };

  // Orders keys and index lists alike, lexicographically.
  struct Order {
    using is_transparent = void;
    static Indices view(const std::vector<std::int32_t> &key) { return {key.data(), key.size()}; }
    static Indices view(const Indices &indices) { return indices; }
    template <typename A, typename B>
    bool operator()(const A &a, const B &b) const {
      Indices left = view(a);
      Indices right = view(b);
      return std::lexicographical_compare(left.first, left.first + left.count, right.first,
                                          right.first + right.count);
    }
  };

  std::map<std::vector<std::int32_t>, std::unique_ptr<T>, Order> elements_;
  std::vector<T *> byIndex_;  // elements_'s of the single indices below kDirectIndices, or null
};

}  // namespace quorel

#endif  // QUOREL_MODEL_ELEMENT_TABLE_H_
