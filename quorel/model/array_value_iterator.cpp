#include "quorel/model/array_value_iterator.h"

#include <optional>

#include "quorel/masks/util.h"
#include "quorel/model/field_array.h"
#include "quorel/model/local_array.h"
#include "quorel/model/variable.h"
#include "quorel/rules/plausi_exception.h"
#include "quorel/values/number_value.h"
#include "quorel/values/sequence_range.h"
#include "quorel/values/transient_walk.h"
#include "quorel/values/value_messages.h"

namespace quorel {

// The indices that a restriction walks. A sequence, as every unrestricted
// dimension has, is walked as plain numbers: the indices are used up at
// once, so no value need be made for each of them. Any other restriction is
// walked through its asRange, and what it makes dies with the walk.
class IndexWalk : public Pooled {
 public:

  explicit IndexWalk(Value *restriction) {
    if (auto *sequence = dynamic_cast<SequenceRange *>(restriction)) {
      numbers_.emplace(*sequence);
    } else {
      values_.emplace(restriction);
    }
  }

  bool hasNext() { return numbers_ ? numbers_->hasNext() : values_->hasNext(); }

  // The next index, as asInteger of the next element gives it.
  std::int32_t next() {
    if (!numbers_) return static_cast<std::int32_t>(values_->next()->asInteger());
    if (!numbers_->hasNext()) throw PlausiException(EXCEPTION_ITERATION, messages::kIterationOverflow);
    return static_cast<std::int32_t>(truncateToInteger(numbers_->next()));
  }

 private:
  std::optional<SequenceWalk> numbers_;
  std::optional<TransientWalk> values_;
};

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
  iterators_[d] = std::make_unique<IndexWalk>(restrictions_[d].get());
  indices_[d] = iterators_[d]->next();
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
    IndexWalk *walk = iterators_[d].get();
    if (walk->hasNext()) {
      std::int32_t candidate = walk->next();
      // The size of dimension d under the indices before it.
      outer_.assign(indices_.begin(), indices_.begin() + d);
      outer_.push_back(-1);
      if (candidate < getSize(context_, outer_.data())) {
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
