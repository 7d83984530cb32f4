// The numeric and random functions of the language.

#include <cmath>
#include <memory>
#include <vector>

#include "quorel/functions/divisor.h"
#include "quorel/functions/functions.h"
#include "quorel/model/array_value_iterator.h"
#include "quorel/model/field_array.h"
#include "quorel/model/local_array.h"
#include "quorel/platform/random.h"
#include "quorel/rules/plausi_exception.h"
#include "quorel/rules/runtime_context.h"
#include "quorel/values/number_value.h"
#include "quorel/values/value.h"
#include "quorel/values/value_iterator.h"

namespace quorel {

namespace {

// One drawing of the generator as a number from 0.0 to 1.0, both included.
double draw() { return platform::nextRandom() / static_cast<double>(platform::kRandomMax); }

// An index from 0 to count - 1, drawn; a drawing of exactly 1.0 would name
// the place behind the last and is given the last.
std::int64_t drawIndex(std::int64_t count) {
  auto index = static_cast<std::int64_t>(draw() * static_cast<double>(count));
  return index < count ? index : count - 1;
}

void requirePositive(Value *v, const char *message) {
  if (!v->isUsable() || v->asReal() <= 0.0) throw PlausiException(EXCEPTION_ILLEGAL_ARGUMENT, message);
}

const char kLogarithm[] = "Der Logarithmus kann nur f\xFC" "r Zahlen > 0 berechnet werden.";
const char kNaturalLogarithm[] =
    "Der nat\xFC" "rliche Logarithmus kann nur f\xFC" "r Zahlen > 0 berechnet werden.";

}  // namespace

Value *Functions::EXPONENT(RuntimeContext *runtime, Value *a, Value *b) {
  if (!a->isUsable() || !b->isUsable()) return runtime->createInvalidValue();
  double base = a->asReal();
  return runtime->createNumberValue(std::pow(base, b->asReal()));
}

Value *Functions::MODULO(RuntimeContext *runtime, Value *a, Value *b) {
  checkDivisor(b);
  if (!a->isUsable()) return runtime->createInvalidValue();
  std::int64_t dividend = a->asInteger();
  std::int64_t divisor = b->asInteger();
  if (divisor == 0) throwDivisionByZero();
  // The remainder of a division by -1 is 0; computing it could overflow.
  std::int64_t remainder = divisor == -1 ? 0 : dividend % divisor;
  return runtime->createNumberValue(static_cast<double>(remainder));
}

Value *Functions::ABSOLUTWERT(RuntimeContext *runtime, Value *v) {
  if (v == nullptr || !v->isUsable()) return v;
  return runtime->createNumberValue(std::fabs(v->asReal()));
}

Value *Functions::LOGARITHMUS(RuntimeContext *runtime, Value *a, Value *b) {
  requirePositive(a, kLogarithm);
  requirePositive(b, kLogarithm);
  double number = a->asReal();
  return runtime->createNumberValue(std::log(number) / std::log(b->asReal()));
}

Value *Functions::NATUERLICHER_LOGARITHMUS(RuntimeContext *runtime, Value *a) {
  requirePositive(a, kNaturalLogarithm);
  return runtime->createNumberValue(std::log(a->asReal()));
}

Value *Functions::ZUFALLSZAHL(RuntimeContext *runtime) { return runtime->createNumberValue(draw()); }

Value *Functions::ZUFALLSZAHL_AUS_LISTE(RuntimeContext *runtime, FieldArray *array) {
  std::int32_t size = array->getSize(runtime, nullptr);
  if (size <= 0) return runtime->createInvalidValue();
  auto index = static_cast<std::int32_t>(draw() * size);
  return array->getElement(runtime, 1, index)->get(runtime, runtime->getDataRecord());
}

Value *Functions::ZUFALLSZAHL_AUS_LISTE(RuntimeContext *runtime, LocalArray *array) {
  std::int32_t size = array->getSize(runtime, nullptr);
  if (size <= 0) return runtime->createInvalidValue();
  auto index = static_cast<std::int32_t>(draw() * size);
  return array->getElement(runtime, 1, index)->get(runtime);
}

Value *Functions::ZUFALLSZAHL_AUS_REIHE(RuntimeContext *runtime, Value *v) {
  if (!v->isUsable()) return runtime->createInvalidValue();
  std::vector<Value *> elements;
  // The walk belongs to the current section, and so does what it delivers.
  ValueIterator *walk = runtime->createIterator(v);
  while (walk->hasNext()) elements.push_back(walk->next());
  if (elements.empty()) return runtime->createInvalidValue();
  return elements[static_cast<std::size_t>(drawIndex(static_cast<std::int64_t>(elements.size())))];
}

Value *Functions::NORMALVERTEILTE_ZUFALLSZAHL(RuntimeContext *runtime, Value *mean, Value *deviation) {
  // The polar method; of its two results one is used.
  double p, q, s;
  do {
    p = 2.0 * draw() - 1.0;
    q = 2.0 * draw() - 1.0;
    s = p * p + q * q;
  } while (s >= 1.0 || s == 0.0);
  double d = deviation->asReal();
  double m = mean->asReal();
  return runtime->createNumberValue(m + std::fabs(d) * p * std::sqrt(-2.0 * std::log(s) / s));
}

Value *Functions::MAXIMUM_AUS_LISTE(RuntimeContext *runtime, ValueIterator *iterator) {
  if (!iterator->hasNext()) return runtime->createInvalidValue();
  Value *best = iterator->next();
  while (iterator->hasNext()) {
    Value *candidate = iterator->next();
    double value = candidate->asReal();
    if (value > best->asReal()) best = candidate;
  }
  return best;
}

Value *Functions::MAXIMUM_AUS_LISTE(RuntimeContext *runtime, FieldArray *array) {
  FieldArrayValueIterator walk(runtime, array);
  return MAXIMUM_AUS_LISTE(runtime, &walk);
}

Value *Functions::MAXIMUM_AUS_LISTE(RuntimeContext *runtime, LocalArray *array) {
  LocalArrayValueIterator walk(runtime, array);
  return MAXIMUM_AUS_LISTE(runtime, &walk);
}

Value *Functions::MAXIMUM_AUS_REIHE(RuntimeContext *runtime, Value *v) {
  if (!v->isUsable()) return runtime->createInvalidValue();
  return MAXIMUM_AUS_LISTE(runtime, runtime->createIterator(v));
}

Value *Functions::ALS_GANZZAHL(RuntimeContext *runtime, Value *v) {
  if (!v->isUsable()) return v;
  return runtime->createNumberValue(static_cast<double>(truncateToInteger(v->asReal() + 0.5)));
}

Value *Functions::ALS_GANZZAHL_OHNE_RUNDUNG(RuntimeContext *runtime, Value *v) {
  if (!v->isUsable()) return v;
  return runtime->createNumberValue(static_cast<double>(v->asInteger()));
}

Value *Functions::ALS_KOMMAZAHL(RuntimeContext *runtime, Value *v) {
  if (!v->isUsable()) return v;
  return runtime->createNumberValue(v->asReal());
}

Value *Functions::ALS_ZEICHENKETTE(RuntimeContext *runtime, Value *v) {
  if (!v->isUsable()) return v;
  return runtime->createStringValue(v->asString());
}

Value *Functions::RUNDEN(RuntimeContext *runtime, Value *v, Value *digits) {
  if (v == nullptr || !v->isUsable()) return v;
  double factor = 1.0;
  if (digits != nullptr && digits->isValid()) {
    factor = static_cast<double>(truncateToInteger(std::pow(10.0, static_cast<double>(digits->asInteger()))));
  }
  double half = v->asReal() < 0.0 ? -0.5 : 0.5;
  double scaled = v->asReal() * factor + half;
  return runtime->createNumberValue(static_cast<double>(truncateToInteger(scaled)) / factor);
}

}  // namespace quorel
