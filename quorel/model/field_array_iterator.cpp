#include "quorel/model/field_array_iterator.h"

#include "quorel/masks/util.h"
#include "quorel/model/field_array.h"

namespace quorel {

FieldArrayIterator::FieldArrayIterator(RuntimeContext *context, FieldArray *array)
    : context_(context),
      array_(array),
      dimensionCount_(Util::getSizeOf(array->getDimension())),
      indices_(static_cast<std::size_t>(dimensionCount_) + 1, 0),
      hasNext_(dimensionCount_ > 0) {
  indices_[dimensionCount_] = -1;
  if (!hasNext_) return;
  indices_[dimensionCount_ - 1] = -1;
  incrementIndex(dimensionCount_ - 1);
}

FieldArrayIterator::~FieldArrayIterator() = default;

Field *FieldArrayIterator::next() {
  Field *element = array_->getElement(context_, indices_.data());
  incrementIndex(dimensionCount_ - 1);
  return element;
}

void FieldArrayIterator::incrementIndex(std::int32_t d) {
  // Iterative form of the carry: up through used-up dimensions, then down,
  // entering each inner dimension before its first element.
  while (true) {
    if (d < 0) {
      hasNext_ = false;
      return;
    }
    std::vector<std::int32_t> outer(indices_.begin(), indices_.begin() + d);
    outer.push_back(-1);
    std::int32_t size = array_->getSize(context_, outer.data());
    if (indices_[d] < size - 1) {
      ++indices_[d];
      if (d == dimensionCount_ - 1) return;
      ++d;  // the next dimension stands at -1 and moves to 0
    } else if (d >= 1) {
      indices_[d] = -1;
      --d;
    } else {
      hasNext_ = false;
      return;
    }
  }
}

}  // namespace quorel
