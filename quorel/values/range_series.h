// RangeSeries: ranges (or single values) strung together. It walks its
// members one after the other; its text is "[e1][e2]..." per element,
// rebuilt at every call, which ends the life of the previous text. The
// members are owned copies.

#ifndef QUOREL_VALUES_RANGE_SERIES_H_
#define QUOREL_VALUES_RANGE_SERIES_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "quorel/values/range.h"

namespace quorel {

class RangeSeries : public Range {
 public:
  RangeSeries();
  // Followed by count Value * members, each stored as a copy.
  explicit RangeSeries(std::int64_t count, ...);
  ~RangeSeries() override;

  // Appends value->copy(); the series must not be in use yet.
  void addRange(Value *value);

  // "'lehre Wertebereichs-Reihe'" when there is no element.
  const char *asString() override;
  // Sums over the elements.
  std::int64_t asInteger() override;
  double asReal() override;
  // Whether any element is true.
  bool asBool() override;
  ValueIterator *asRange() override;
  Value *copy() override;

 protected:
  // Whether any member contains the value.
  bool containsImpl(Value *other) override;

 private:
  std::vector<std::unique_ptr<Value>> members_;
  std::string text_;
};

}  // namespace quorel

#endif  // QUOREL_VALUES_RANGE_SERIES_H_
