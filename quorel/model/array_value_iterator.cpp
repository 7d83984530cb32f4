#include "quorel/model/array_value_iterator.h"

#include <limits>
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
  walks_.resize(static_cast<std::size_t>(dimensionCount_));
  for (std::int32_t d = 0; d < dimensionCount_; ++d) restart(d);
  initialized_ = true;
}

void ArrayValueIterator::restart(std::int32_t d) {
  Walk &walk = walks_[static_cast<std::size_t>(d)];
  auto restriction = restrictions_.find(d);
  std::int32_t &first = indices_[static_cast<std::size_t>(d)];
  if (restriction == restrictions_.end()) {
    first = 0;
    walk.next = 1;
  } else {
    walk.restricted = std::make_unique<IndexWalk>(restriction->second.get());
    first = walk.restricted->next();
  }
}

bool ArrayValueIterator::step(std::int32_t d, std::int32_t *index) {
  Walk &walk = walks_[static_cast<std::size_t>(d)];
  if (walk.restricted) {
    if (!walk.restricted->hasNext()) return false;
    *index = walk.restricted->next();
    return true;
  }
  // Counting ends where an index ends.
  if (walk.next > std::numeric_limits<std::int32_t>::max()) return false;
  *index = static_cast<std::int32_t>(walk.next++);
  return true;
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
    std::int32_t candidate;
    if (step(d, &candidate)) {
      // The size of dimension d under the indices before it.
      outer_.assign(indices_.begin(), indices_.begin() + d);
      outer_.push_back(-1);
      if (candidate < getSize(context_, outer_.data())) {
        indices_[static_cast<std::size_t>(d)] = candidate;
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
