#include "quorel/values/range_series.h"

#include <cstdarg>

#include "quorel/values/iterator_iterator.h"
#include "quorel/values/transient_walk.h"

namespace quorel {

RangeSeries::RangeSeries() = default;

RangeSeries::RangeSeries(std::int64_t count, ...) {
  va_list args;
  va_start(args, count);
  std::vector<Value *> members;
  for (std::int64_t i = 0; i < count; ++i) members.push_back(va_arg(args, Value *));
  va_end(args);
  for (Value *member : members) addRange(member);
}

RangeSeries::~RangeSeries() = default;

void RangeSeries::addRange(Value *value) { members_.emplace_back(value->copy()); }

const char *RangeSeries::asString() {
  text_.clear();
  TransientWalk walk(this);
  while (walk.hasNext()) text_.append("[").append(walk.next()->asString()).append("]");
  if (text_.empty()) text_ = "'lehre Wertebereichs-Reihe'";
  return text_.c_str();
}

std::int64_t RangeSeries::asInteger() {
  // Unsigned addition wraps instead of overflowing.
  std::uint64_t sum = 0;
  TransientWalk walk(this);
  while (walk.hasNext()) sum += static_cast<std::uint64_t>(walk.next()->asInteger());
  return static_cast<std::int64_t>(sum);
}

double RangeSeries::asReal() {
  double sum = 0.0;
  TransientWalk walk(this);
  while (walk.hasNext()) sum += walk.next()->asReal();
  return sum;
}

bool RangeSeries::asBool() {
  TransientWalk walk(this);
  while (walk.hasNext()) {
    if (walk.next()->asBool()) return true;
  }
  return false;
}

ValueIterator *RangeSeries::asRange() {
  auto walk = std::make_unique<IteratorIterator>();
  for (const auto &member : members_) walk->addIterator(member->asRange());
  return walk.release();
}

Value *RangeSeries::copy() {
  auto result = std::make_unique<RangeSeries>();
  for (const auto &member : members_) result->addRange(member.get());
  return result.release();
}

bool RangeSeries::containsImpl(Value *other) {
  for (const auto &member : members_) {
    if (member->contains(other)) return true;
  }
  return false;
}

}  // namespace quorel
