// The format checks of the language: conformity to a declared type and mask,
// and a whole-text match against a regular expression.

#include <cmath>
#include <ctime>
#include <string>

#include "quorel/functions/functions.h"
#include "quorel/masks/util.h"
#include "quorel/pattern/pattern.h"
#include "quorel/platform/exact_class.h"
#include "quorel/rules/plausi_exception.h"
#include "quorel/rules/runtime_context.h"
#include "quorel/values/date_value.h"
#include "quorel/values/number_value.h"
#include "quorel/values/value.h"

namespace quorel {

namespace {

// A number built from a double whose text form is not made yet, under no
// mask: where that text would be plain digits with at most a comma (no
// exponent, as the text of a magnitude from 1e-4 to below 1e17 is), the
// default mask reads it back, so it need not be made to be read. Anywhere
// else, near the limits included, the text is made and read.
bool readsBackPlainly(Value *value, bool integral) {
  if (!isOfExactClass<NumberValue>(*value) || static_cast<NumberValue *>(value)->hasText()) return false;
  double number = value->asReal();
  if (integral && number != std::trunc(number)) return false;
  double magnitude = std::fabs(number);
  return number == 0.0 || (magnitude >= 1e-4 && magnitude < 1e17);
}

// Tries the conversion of the type: whether it succeeds, or what it throws.
bool convertsTo(Value *value, FieldType type, const char *mask) {
  switch (type) {
    case FieldTypeText:
      Util::stringToString(value->asString(), mask);
      return true;
    case FieldTypeBool:
      value->asBool();
      return true;
    // Numbers and dates are read without a throw: checks meet many faults.
    case FieldTypeInteger: {
      if (mask == nullptr && readsBackPlainly(value, true)) return true;
      std::int64_t number;
      return Util::readInteger(value->asString(), mask, &number) == nullptr;
    }
    case FieldTypeReal: {
      if (mask == nullptr && readsBackPlainly(value, false)) return true;
      double number;
      return Util::readReal(value->asString(), mask, &number) == nullptr;
    }
    case FieldTypeDate: {
      // The exact class is asked, which costs a fraction of a cast's search
      // through the hierarchy; a class derived from DateValue takes the
      // other way to the same answer.
      if (isOfExactClass<DateValue>(*value) && static_cast<DateValue *>(value)->readsTextUnder(mask)) {
        return static_cast<DateValue *>(value)->readDate() == nullptr;
      }
      std::tm date{};
      return Util::readDate(&date, value->asString(), mask) == nullptr;
    }
    case FieldTypeFree:
      value->asString();
      return true;
    default:
      return false;
  }
}

}  // namespace

Value *Functions::isTypeConform(RuntimeContext *runtime, Value *value, FieldType type, const char *mask) {
  if (!value->isValid()) return runtime->createBoolValue(!value->isNil());
  bool conform;
  try {
    conform = convertsTo(value, type, mask);
  } catch (const PlausiException &e) {
    if (e.getType() != EXCEPTION_CONVERSION) throw;
    conform = false;
  }
  return runtime->createBoolValue(conform);
}

Value *Functions::HAT_FORMAT(RuntimeContext *runtime, Value *pattern, Value *text) {
  if (!pattern->isUsable() || !text->isUsable()) return runtime->createBoolValue(false);
  // Each text belongs to its value and stays put while the other is asked
  // (a value asked twice gives the same text), so neither is copied. The
  // text is asked first: its failure is the one reported.
  const char *input = text->asString();
  const char *expression = pattern->asString();
  return runtime->createBoolValue(Pattern::matches(expression, input, 0));
}

}  // namespace quorel
