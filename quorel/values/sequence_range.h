// SequenceRange: first, second, up to last, in steps of second - first.
//
// Construction validates the direction and the step by the comparisons of
// the values' own kinds; walking and containment work on asReal. The walk
// adds the step again and again and compares exactly, while containment
// accepts a value on the grid within the tolerance of numbers. The three
// values are owned copies. The numbers a walk delivers belong to a keeper
// that the sequence shares with its iterators, and live as long as either of
// them, unless the iterator's owner gives it a keeper of its own
// (ValueIterator::keepDeliveredIn), as the sections of a run do.

#ifndef QUOREL_VALUES_SEQUENCE_RANGE_H_
#define QUOREL_VALUES_SEQUENCE_RANGE_H_

#include <memory>
#include <string>
#include <vector>

#include "quorel/values/range.h"
#include "quorel/values/value_iterator.h"
#include "quorel/values/value_keeper.h"

namespace quorel {

class SequenceRange : public Range {
 public:
  // Throws type 9 for a sequence that runs the wrong way or does not move.
  SequenceRange(Value *first, Value *second, Value *last);
  ~SequenceRange() override;

  Value *getFirst() const { return first_.get(); }
  Value *getSecond() const { return second_.get(); }
  Value *getLast() const { return last_.get(); }

  // "1, 3..9"
  const char *asString() override;
  // Sums over the elements.
  std::int64_t asInteger() override;
  double asReal() override;
  bool asBool() override;
  ValueIterator *asRange() override;
  Value *copy() override;

 protected:
  bool containsImpl(Value *other) override;

 private:
  friend class SequenceIterator;
  friend class SequenceWalk;

  std::unique_ptr<Value> first_;
  std::unique_ptr<Value> second_;
  std::unique_ptr<Value> last_;
  std::unique_ptr<std::string> text_;
  // The keeper of what walks deliver, made at the first walk.
  std::shared_ptr<ValueKeeper> delivered_;
};

// The numbers of a sequence: current, current + step, ... while not past
// last, compared exactly. A walk whose step no longer moves the running
// value (it is lost in rounding) or that meets a NaN ends there.
class SequenceWalk {
 public:
  // Throws type 9 when the step comes to 0 as numbers, and the conversion
  // failures of the three values.
  explicit SequenceWalk(const SequenceRange &range);

  bool hasNext() const;
  double next();

 private:
  double current_;
  double last_;
  double step_;
  bool stalled_ = false;
};

// Walks a sequence, delivering each element as a new NumberValue.
class SequenceIterator : public ValueIterator {
 public:
  explicit SequenceIterator(SequenceRange *range);

  bool hasNext() override;
  Value *next() override;
  void keepDeliveredIn(ValueKeeper *keeper) override;

 private:
  SequenceWalk walk_;
  std::shared_ptr<ValueKeeper> shared_;  // the sequence's keeper, until another is given
  ValueKeeper *keeper_;
};

}  // namespace quorel

#endif  // QUOREL_VALUES_SEQUENCE_RANGE_H_
