// Functions: the operators and built-in functions that rule code calls.
//
// Every operation is static and takes the RuntimeContext of the running rule
// first, then its operands. Operands are only read. A new result is made
// through the context's factory and so belongs to the current section; where
// a function hands an operand through, the result is that same pointer. No
// result is ever destroyed by the caller. Failures of the operands'
// conversions pass through unchanged as PlausiException.
//
// An operand is usable when it is neither nil nor invalid; the three
// non-values are not.

#ifndef QUOREL_FUNCTIONS_FUNCTIONS_H_
#define QUOREL_FUNCTIONS_FUNCTIONS_H_

#include "quorel/model/field_type.h"

namespace quorel {

class FieldArray;
class LocalArray;
class RuntimeContext;
class Value;
class ValueIterator;

class Functions {
 public:
  Functions() = delete;

  // Comparisons and containment: a truth value of a.eq(b) and so on, with
  // the level rule of the values. Operands are not null.
  static Value *eq(RuntimeContext *runtime, Value *a, Value *b);
  static Value *ne(RuntimeContext *runtime, Value *a, Value *b);
  static Value *gt(RuntimeContext *runtime, Value *a, Value *b);
  static Value *ge(RuntimeContext *runtime, Value *a, Value *b);
  static Value *lt(RuntimeContext *runtime, Value *a, Value *b);
  static Value *le(RuntimeContext *runtime, Value *a, Value *b);
  static Value *contains(RuntimeContext *runtime, Value *a, Value *b);
  // The negation "not" of the language.
  static Value *not_(RuntimeContext *runtime, Value *a);

  // Arithmetic on asReal(). In a sum or difference a missing operand counts
  // as nothing and the present one is handed through; in a product it spoils
  // the result; a missing or zero divisor is "Division durch 0." (type 11).
  static Value *plus(RuntimeContext *runtime, Value *a, Value *b);
  static Value *minus(RuntimeContext *runtime, Value *a, Value *b);
  static Value *mult(RuntimeContext *runtime, Value *a, Value *b);
  static Value *div(RuntimeContext *runtime, Value *a, Value *b);
  static Value *neg(RuntimeContext *runtime, Value *a);

  // Text functions on asString(); lengths and positions count bytes.
  // Operands may be null, with the meaning told for each.
  static Value *WERTLAENGE(RuntimeContext *runtime, Value *v);
  // start is 1-based; no bound raises a failure.
  static Value *TEIL(RuntimeContext *runtime, Value *text, Value *start, Value *length);
  static Value *KONKATENIEREN(RuntimeContext *runtime, Value *a, Value *b);
  static Value *BEGINNT_MIT(RuntimeContext *runtime, Value *a, Value *b);
  static Value *ENDET_AUF(RuntimeContext *runtime, Value *a, Value *b);
  // Map a-z and the umlauts; a null or unusable v is handed back.
  static Value *GROSSBUCHSTABEN(RuntimeContext *runtime, Value *v);
  static Value *KLEINBUCHSTABEN(RuntimeContext *runtime, Value *v);
  static Value *NUMERISCH(RuntimeContext *runtime, Value *v);
  static Value *ERSETZEN(RuntimeContext *runtime, Value *text, Value *search, Value *replacement);

  // Numeric functions, on asReal() or asInteger() of their operands.
  static Value *EXPONENT(RuntimeContext *runtime, Value *a, Value *b);
  // Remainder of the truncated integers, its sign following a; the divisor
  // is tested as by div, and one truncating to 0 fails the same way.
  static Value *MODULO(RuntimeContext *runtime, Value *a, Value *b);
  static Value *ABSOLUTWERT(RuntimeContext *runtime, Value *v);
  // Logarithm of a to the base b; type 9 unless both are usable and above 0.
  static Value *LOGARITHMUS(RuntimeContext *runtime, Value *a, Value *b);
  static Value *NATUERLICHER_LOGARITHMUS(RuntimeContext *runtime, Value *a);
  // Random numbers from the process-wide generator, drawn as r / 32767.
  static Value *ZUFALLSZAHL(RuntimeContext *runtime);
  static Value *ZUFALLSZAHL_AUS_LISTE(RuntimeContext *runtime, FieldArray *array);
  static Value *ZUFALLSZAHL_AUS_LISTE(RuntimeContext *runtime, LocalArray *array);
  static Value *ZUFALLSZAHL_AUS_REIHE(RuntimeContext *runtime, Value *v);
  static Value *NORMALVERTEILTE_ZUFALLSZAHL(RuntimeContext *runtime, Value *mean, Value *deviation);
  // The largest element itself (the first among equals), by asReal().
  static Value *MAXIMUM_AUS_LISTE(RuntimeContext *runtime, FieldArray *array);
  static Value *MAXIMUM_AUS_LISTE(RuntimeContext *runtime, LocalArray *array);
  static Value *MAXIMUM_AUS_LISTE(RuntimeContext *runtime, ValueIterator *iterator);
  static Value *MAXIMUM_AUS_REIHE(RuntimeContext *runtime, Value *v);
  // Conversions; an operand that is not usable is handed back.
  static Value *ALS_GANZZAHL(RuntimeContext *runtime, Value *v);
  static Value *ALS_GANZZAHL_OHNE_RUNDUNG(RuntimeContext *runtime, Value *v);
  static Value *ALS_KOMMAZAHL(RuntimeContext *runtime, Value *v);
  static Value *ALS_ZEICHENKETTE(RuntimeContext *runtime, Value *v);
  // Rounds half away from zero to digits places (none when digits is null
  // or invalid).
  static Value *RUNDEN(RuntimeContext *runtime, Value *v, Value *digits);

  // Format checks; neither fails on a value of the wrong shape.
  // Whether the value fits the type and mask: an invalid value (an empty
  // field) fits every type, nil and inconvertible values fit none. Only
  // failures that are not about the value, such as a meaningless mask
  // (type 9), leave as exceptions.
  static Value *isTypeConform(RuntimeContext *runtime, Value *value, FieldType type, const char *mask);
  // Whether the whole text matches the regular expression; false for a
  // missing argument or a pattern that does not compile.
  static Value *HAT_FORMAT(RuntimeContext *runtime, Value *pattern, Value *text);

  // Date functions. A date argument is any value with a working asDate().
  // Today at midnight, local time, without a mask.
  static Value *HEUTE(RuntimeContext *runtime);
  static Value *JAHR(RuntimeContext *runtime, Value *date);
  static Value *MONAT(RuntimeContext *runtime, Value *date);
  static Value *TAG(RuntimeContext *runtime, Value *date);
  static Value *JAHR_ALS_ZEICHENKETTE(RuntimeContext *runtime, Value *date);
  static Value *MONAT_ALS_ZEICHENKETTE(RuntimeContext *runtime, Value *date);
  static Value *TAG_ALS_ZEICHENKETTE(RuntimeContext *runtime, Value *date);
  // Shifts by count units: "J" years, "M" months (the day limited to the
  // month reached), "W" weeks, "T" days, "A" working days (Monday to
  // Friday). The unit is checked first (type 9). The result keeps the mask
  // of a DateValue argument, else "TT.MM.JJJJ".
  static Value *DATUM_VERSCHIEBEN(RuntimeContext *runtime, Value *date, Value *count, Value *unit);
  // Whole "J" years, "W" weeks or "T" days from the first to the second
  // date; negative when the second is earlier.
  static Value *DATUM_DIFFERENZ(RuntimeContext *runtime, Value *first, Value *second, Value *unit);
};

}  // namespace quorel

#endif  // QUOREL_FUNCTIONS_FUNCTIONS_H_
