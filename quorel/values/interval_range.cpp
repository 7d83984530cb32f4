#include "quorel/values/interval_range.h"

#include "quorel/values/value_messages.h"

namespace quorel {

namespace {

const char *typeText(IntervalType type) {
  switch (type) {
    case INCLUDE_BOTH: return "++";
    case INCLUDE_FIRST: return "+-";
    case INCLUDE_LAST: return "-+";
    default: return "--";
  }
}

bool includesFirst(IntervalType type) { return type == INCLUDE_BOTH || type == INCLUDE_FIRST; }
bool includesLast(IntervalType type) { return type == INCLUDE_BOTH || type == INCLUDE_LAST; }

}  // namespace

IntervalRange::IntervalRange(Value *first, Value *last, IntervalType type)
    : first_(first->copy()), last_(last->copy()), type_(type) {}

IntervalRange::~IntervalRange() = default;

const char *IntervalRange::asString() {
  if (!text_) {
    text_ = std::make_unique<std::string>(std::string(first_->asString()) + typeText(type_) + last_->asString());
  }
  return text_->c_str();
}

std::int64_t IntervalRange::asInteger() { messages::refuseConversion(messages::kIntervalToInteger); }
double IntervalRange::asReal() { messages::refuseConversion(messages::kIntervalToReal); }
bool IntervalRange::asBool() { messages::refuseConversion(messages::kIntervalToBool); }
ValueIterator *IntervalRange::asRange() { messages::refuseConversion(messages::kIntervalNotIterable); }

Value *IntervalRange::copy() { return new IntervalRange(first_.get(), last_.get(), type_); }

bool IntervalRange::containsImpl(Value *x) {
  bool afterFirst = includesFirst(type_) ? x->ge(first_.get()) : x->gt(first_.get());
  if (!afterFirst) return false;
  return includesLast(type_) ? x->le(last_.get()) : x->lt(last_.get());
}

}  // namespace quorel
