#include "quorel/model/array_value_iterator.h"

#include "quorel/masks/util.h"
#include "quorel/model/field_array.h"
#include "quorel/model/local_array.h"
#include "quorel/model/variable.h"
#include "quorel/values/number_value.h"
#include "quorel/values/sequence_range.h"

namespace quorel {

ArrayValueIterator::ArrayValueIterator(RuntimeContext *context) : context_(context) {}

ArrayValueIterator::~ArrayValueIterator() = default;

void ArrayValueIterator::setRestriction(std::int32_t dimension, Value *value) {
  restrictions_[dimension].reset(value->copy());
}

// Set up only when every restriction walks: after a failure here the next
// call tries again and meets the same failure.
void ArrayValueIterator::initialize() {
  dimensionCount_ = Util::getSizeOf(getDimension());
  indices_.assign(static_cast<std::size_t>(dimensionCount_) + 1, -1);
  for (std::int32_t d = 0; d < dimensionCount_; ++d) {
    std::unique_ptr<Value> &restriction = restrictions_[d];
    if (!restriction) {
      // Counts from 0 in steps of 1; the end comes from the size.
      NumberValue first(0.0), second(1.0), last(2147483647.0);
      restriction = std::make_unique<SequenceRange>(&first, &second, &last);
    }
    restart(d);
  }
  initialized_ = true;
}

void ArrayValueIterator::restart(std::int32_t d) {
  iterators_[d].reset(restrictions_[d]->asRange());
  indices_[d] = static_cast<std::int32_t>(iterators_[d]->next()->asInteger());
}

bool ArrayValueIterator::hasNext() {
  if (!initialized_) initialize();
  return more_;
}

Value *ArrayValueIterator::next() {
  if (!initialized_) initialize();
  Value *value = getElement(context_, indices_.data())->get(context_);
  advance();
  return value;
}

void ArrayValueIterator::advance() {
  for (std::int32_t d = dimensionCount_ - 1; d >= 0; --d) {
    ValueIterator *walk = iterators_[d].get();
    if (walk->hasNext()) {
      auto candidate = static_cast<std::int32_t>(walk->next()->asInteger());
      // The size of dimension d under the indices before it.
      std::vector<std::int32_t> outer(indices_.begin(), indices_.begin() + d);
      outer.push_back(-1);
      if (candidate < getSize(context_, outer.data())) {
        indices_[d] = candidate;
        return;
      }
    }
    if (d == 0) {
      more_ = false;
      return;
    }
    restart(d);
  }
}

FieldArrayValueIterator::FieldArrayValueIterator(RuntimeContext *context, FieldArray *array)
    : ArrayValueIterator(context), array_(array) {}

std::int32_t *FieldArrayValueIterator::getDimension() { return array_->getDimension(); }

std::int32_t FieldArrayValueIterator::getSize(RuntimeContext *context, std::int32_t *indices) {
  return array_->getSize(context, indices);
}

Variable *FieldArrayValueIterator::getElement(RuntimeContext *context, std::int32_t *indices) {
  return array_->getElement(context, indices);
}

LocalArrayValueIterator::LocalArrayValueIterator(RuntimeContext *context, LocalArray *array)
    : ArrayValueIterator(context), array_(array) {}

std::int32_t *LocalArrayValueIterator::getDimension() { return array_->getDimension(); }

std::int32_t LocalArrayValueIterator::getSize(RuntimeContext *context, std::int32_t *indices) {
  return array_->getSize(context, indices);
}

Variable *LocalArrayValueIterator::getElement(RuntimeContext *context, std::int32_t *indices) {
  return array_->getElement(context, indices);
}

}  // namespace quorel
