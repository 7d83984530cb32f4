// ElementTable: the elements of an array, made on first access and owned by
// the table. Keyed by the whole index list, so that no two index lists share
// an element, however large the dimensions.

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
    auto it = elements_.find(wanted);
    if (it != elements_.end()) return it->second.get();
    std::unique_ptr<T> element = make();
    T *result = element.get();
    elements_.emplace(std::vector<std::int32_t>(indices, indices + wanted.count), std::move(element));
    return result;
  }

 private:
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
};

}  // namespace quorel

#endif  // QUOREL_MODEL_ELEMENT_TABLE_H_
