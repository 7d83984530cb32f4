#include "quorel/values/date_value.h"

#include <cstring>
#include <string>

#include "quorel/masks/mask_messages.h"
#include "quorel/masks/util.h"
#include "quorel/values/value_messages.h"

namespace quorel {

namespace {

// Enough for any text that a mask of kMaxMaskLength characters makes.
constexpr int kDateTextSize = 64;

}  // namespace

DateValue::DateValue(const std::tm *date, const char *mask) : dated_(true) {
  date_.tm_year = date->tm_year;
  date_.tm_mon = date->tm_mon;
  date_.tm_mday = date->tm_mday;
  date_.tm_hour = date->tm_hour;
  date_.tm_min = date->tm_min;
  date_.tm_sec = date->tm_sec;
  setMask(mask);
}

DateValue::DateValue(const char *text, const char *mask) : fromText_(true) {
  text_.set(text != nullptr ? text : "");
  setMask(mask);
}

void DateValue::setMask(const char *mask) {
  if (mask != nullptr) mask_.set(mask, strnlen(mask, kMaxMaskLength));
}

const char *DateValue::asString() {
  if (!text_.isSet()) {
    char buffer[kDateTextSize];
    Util::dateToString(buffer, asDate(), mask_.get());
    text_.set(buffer);
  }
  return text_.get();
}

const char *DateValue::readDate() {
  if (dated_) return nullptr;
  // Parsed aside: a text that is no date leaves the value as it was.
  std::tm parsed{};
  if (const char *fault = Util::readDate(&parsed, text_.get(), mask_.get())) return fault;
  date_ = parsed;
  dated_ = true;
  return nullptr;
}

std::tm *DateValue::asDate() {
  if (const char *fault = readDate()) mask_messages::fail(fault);
  return &date_;
}

bool DateValue::readsTextUnder(const char *mask) const {
  if (!fromText_) return false;
  const char *own = mask_.get();
  return own == nullptr ? mask == nullptr : mask != nullptr && std::strcmp(own, mask) == 0;
}

std::int64_t DateValue::asInteger() { messages::refuseConversion(messages::kDateToInteger); }
double DateValue::asReal() { messages::refuseConversion(messages::kDateToReal); }
bool DateValue::asBool() { messages::refuseConversion(messages::kDateToBool); }
OperatorLevel DateValue::getOperatorLevel() { return DATE_LEVEL; }
Value *DateValue::copy() { return new DateValue(asDate(), mask_.get()); }

std::int32_t DateValue::compareTo(Value *other) {
  std::tm *theirs = other->asDate();
  return Util::compareDate(asDate(), theirs);
}

bool DateValue::eqImpl(Value *other) {
  if (other->isNil() || !other->isValid()) return false;
  return compareTo(other) == 0;
}

bool DateValue::neImpl(Value *other) {
  if (other->isNil() || !other->isValid()) return true;
  return compareTo(other) != 0;
}

bool DateValue::gtImpl(Value *other) { return compareTo(other) > 0; }
bool DateValue::geImpl(Value *other) { return compareTo(other) >= 0; }
bool DateValue::ltImpl(Value *other) { return compareTo(other) < 0; }
bool DateValue::leImpl(Value *other) { return compareTo(other) <= 0; }

}  // namespace quorel
