#include "quorel/values/sequence_range.h"

#include "quorel/masks/util.h"
#include "quorel/rules/plausi_exception.h"
#include "quorel/values/number_value.h"
#include "quorel/values/value_messages.h"

namespace quorel {

namespace {

[[noreturn]] void invalidSequence(const char *message) {
  throw PlausiException(EXCEPTION_ILLEGAL_ARGUMENT, message);
}

}  // namespace

SequenceRange::SequenceRange(Value *first, Value *second, Value *last) {
  if (second->gt(first) && last->lt(second)) {
    invalidSequence("Ung\xFC" "ltige Sequenz: Der letzte Wert ist kleiner als der zweite.");
  }
  if (second->lt(first) && last->gt(second)) {
    invalidSequence("Ung\xFC" "ltige Sequenz: Der letzte Wert ist gr\xF6" "sser als der zweite.");
  }
  if (second->eq(first)) invalidSequence("Ung\xFC" "ltige Sequenz: Die Schrittweite ist 0.");
  first_.reset(first->copy());
  second_.reset(second->copy());
  last_.reset(last->copy());
}

SequenceRange::~SequenceRange() = default;

const char *SequenceRange::asString() {
  if (!text_) {
    text_ = std::make_unique<std::string>(std::string(first_->asString()) + ", " + second_->asString() + ".." +
                                          last_->asString());
  }
  return text_->c_str();
}

std::int64_t SequenceRange::asInteger() {
  // Unsigned addition wraps instead of overflowing.
  std::uint64_t sum = 0;
  SequenceWalk walk(*this);
  while (walk.hasNext()) sum += static_cast<std::uint64_t>(truncateToInteger(walk.next()));
  return static_cast<std::int64_t>(sum);
}

double SequenceRange::asReal() {
  double sum = 0.0;
  SequenceWalk walk(*this);
  while (walk.hasNext()) sum += walk.next();
  return sum;
}

bool SequenceRange::asBool() { messages::refuseConversion(messages::kSequenceToBool); }

ValueIterator *SequenceRange::asRange() { return new SequenceIterator(this); }

Value *SequenceRange::copy() { return new SequenceRange(first_.get(), second_.get(), last_.get()); }

bool SequenceRange::containsImpl(Value *x) {
  Value *first = first_.get();
  Value *second = second_.get();
  Value *last = last_.get();
  bool rising = first->lt(second) && first->le(x) && last->ge(x);
  if (!rising) {
    if (!first->gt(second)) return false;
    if (!first->ge(x) || !last->le(x)) return false;
  }
  double start = first->asReal();
  double q = (x->asReal() - start) / (second->asReal() - start);
  auto r = static_cast<double>(truncateToInteger(q + 0.5));
  return Util::compareNumbers(q, r) == 0;
}

SequenceWalk::SequenceWalk(const SequenceRange &range)
    : current_(range.first_->asReal()),
      last_(range.last_->asReal()),
      step_(range.second_->asReal() - current_) {
  if (step_ == 0.0) throw PlausiException(EXCEPTION_ILLEGAL_ARGUMENT, "Schrittweite der Sequenz ist 0.");
}

bool SequenceWalk::hasNext() const {
  if (stalled_) return false;
  return step_ > 0.0 ? current_ <= last_ : current_ >= last_;
}

double SequenceWalk::next() {
  double value = current_;
  current_ += step_;
  stalled_ = current_ == value;
  return value;
}

SequenceIterator::SequenceIterator(SequenceRange *range) : walk_(*range) {
  if (!range->delivered_) range->delivered_ = std::make_shared<ValueKeeper>();
  shared_ = range->delivered_;
  keeper_ = shared_.get();
}

bool SequenceIterator::hasNext() { return walk_.hasNext(); }

Value *SequenceIterator::next() {
  if (!hasNext()) throw PlausiException(EXCEPTION_ITERATION, messages::kIterationOverflow);
  return keeper_->keep(std::make_unique<NumberValue>(walk_.next()));
}

void SequenceIterator::keepDeliveredIn(ValueKeeper *keeper) {
  keeper_ = keeper;
  shared_.reset();
}

}  // namespace quorel
