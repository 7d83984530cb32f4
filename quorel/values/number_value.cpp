#include "quorel/values/number_value.h"

#include <cmath>
#include <limits>

#include "quorel/masks/util.h"
#include "quorel/values/value_messages.h"

namespace quorel {

namespace {

// Util::realToString writes at most 26 characters and the end byte.
constexpr int kNumberTextSize = 27;

}  // namespace

std::int64_t truncateToInteger(double number) {
  if (std::isnan(number)) return 0;
  // 2^63 is exact as a double; everything at or beyond it saturates.
  constexpr double kLimit = 9223372036854775808.0;
  if (number >= kLimit) return std::numeric_limits<std::int64_t>::max();
  if (number <= -kLimit) return std::numeric_limits<std::int64_t>::min();
  return static_cast<std::int64_t>(number);
}

NumberValue::NumberValue(double number) : number_(number), parsed_(true) {}

void NumberValue::renumber(double number) {
  number_ = number;
  text_.clear();
  parsed_ = true;
}

NumberValue::NumberValue(const char *text) : number_(0.0), parsed_(false) {
  text_.set(text != nullptr ? text : "0");
}

void NumberValue::initializeIfNessesary() {
  if (parsed_) return;
  number_ = Util::stringToReal(text_.get(), nullptr);
  parsed_ = true;
}

const char *NumberValue::asString() {
  if (!text_.isSet()) {
    char buffer[kNumberTextSize];
    Util::realToString(buffer, asReal());
    text_.set(buffer);
  }
  return text_.get();
}

std::int64_t NumberValue::asInteger() { return truncateToInteger(asReal()); }

double NumberValue::asReal() {
  initializeIfNessesary();
  return number_;
}

bool NumberValue::asBool() { return asReal() == 1.0; }

std::tm *NumberValue::asDate() { messages::refuseConversion(messages::kNumberToDate); }

OperatorLevel NumberValue::getOperatorLevel() { return NUMBER_LEVEL; }

Value *NumberValue::copy() { return new NumberValue(asReal()); }

bool NumberValue::eqImpl(Value *other) {
  double own = asReal();
  try {
    return Util::compareNumbers(own, other->asReal()) == 0;
  } catch (...) {
    return false;
  }
}

bool NumberValue::neImpl(Value *other) { return !eqImpl(other); }

std::int32_t NumberValue::compareTo(Value *other) {
  double theirs = other->asReal();
  return Util::compareNumbers(asReal(), theirs);
}

bool NumberValue::gtImpl(Value *other) { return compareTo(other) > 0; }
bool NumberValue::geImpl(Value *other) { return compareTo(other) >= 0; }
bool NumberValue::ltImpl(Value *other) { return compareTo(other) < 0; }
bool NumberValue::leImpl(Value *other) { return compareTo(other) <= 0; }

}  // namespace quorel
