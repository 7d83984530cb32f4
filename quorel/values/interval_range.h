// IntervalRange: every value from first to last, each end in or out. An
// interval cannot be walked or converted; it is tested with contains, by
// the comparisons of the values' own kinds, so intervals of numbers, dates
// and texts all work. First and last are owned copies.

#ifndef QUOREL_VALUES_INTERVAL_RANGE_H_
#define QUOREL_VALUES_INTERVAL_RANGE_H_

#include <cstdint>
#include <memory>
#include <string>

#include "quorel/values/range.h"

namespace quorel {

// Which ends belong to the interval; the text forms are "++", "+-", "-+",
// "--".
enum IntervalType : std::int32_t {
  INCLUDE_BOTH = 0,
  INCLUDE_FIRST = 1,
  INCLUDE_LAST = 2,
  INCLUDE_NONE = 3,
};

class IntervalRange : public Range {
 public:
  // Tests nothing: an interval whose first lies behind its last is empty.
  IntervalRange(Value *first, Value *last, IntervalType type);
  ~IntervalRange() override;

  Value *getFirst() const { return first_.get(); }
  Value *getLast() const { return last_.get(); }
  IntervalType getType() const { return type_; }

  // "1++10"
  const char *asString() override;
  std::int64_t asInteger() override;
  double asReal() override;
  bool asBool() override;
  ValueIterator *asRange() override;
  Value *copy() override;

 protected:
  bool containsImpl(Value *other) override;

 private:
  std::unique_ptr<Value> first_;
  std::unique_ptr<Value> last_;
  IntervalType type_;
  std::unique_ptr<std::string> text_;
};

}  // namespace quorel

#endif  // QUOREL_VALUES_INTERVAL_RANGE_H_
