// ElementTable: the elements of an array, made on first access and owned by
// the table. Keyed by the whole index list, so that no two index lists share
// an element, however large the dimensions.

#ifndef QUOREL_MODEL_ELEMENT_TABLE_H_
#define QUOREL_MODEL_ELEMENT_TABLE_H_

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
    std::vector<std::int32_t> key(indices, indices + Util::getSizeOf(indices));
    auto it = elements_.find(key);
    if (it != elements_.end()) return it->second.get();
    std::unique_ptr<T> element = make();
    T *result = element.get();
    elements_.emplace(std::move(key), std::move(element));
    return result;
  }

 private:
  std::map<std::vector<std::int32_t>, std::unique_ptr<T>> elements_;
};

}  // namespace quorel

#endif  // QUOREL_MODEL_ELEMENT_TABLE_H_
