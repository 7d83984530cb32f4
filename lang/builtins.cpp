#include "quorel/lang/builtins.h"

#include <cstring>

#include "quorel/functions/functions.h"
#include "quorel/lang/encoding.h"

namespace quorel {
namespace lang {

namespace {

using F = Functions;

// Conversions of an operand fail as the operand fails: an inconvertible
// value with its own message (type 8), a text that is no number (type 8).
#define QL_CONVERT "a failing conversion of an argument (type 8)"

#define QL_FN0(name, fn, args, result, faults) {name, 0, 0, kOpNone, kArgValue, fn, nullptr, nullptr, nullptr, nullptr, args, result, faults}
#define QL_FN1(name, fn, args, result, faults) {name, 1, 1, kOpNone, kArgValue, nullptr, fn, nullptr, nullptr, nullptr, args, result, faults}
#define QL_FN2(name, fn, args, result, faults) {name, 2, 2, kOpNone, kArgValue, nullptr, nullptr, fn, nullptr, nullptr, args, result, faults}
#define QL_FN3(name, fn, args, result, faults) {name, 3, 3, kOpNone, kArgValue, nullptr, nullptr, nullptr, fn, nullptr, args, result, faults}
#define QL_ARRAY(name, fn, args, result, faults) {name, 1, 1, kOpNone, kArgFieldArray, nullptr, nullptr, nullptr, nullptr, fn, args, result, faults}
#define QL_OP(name, min, max, op, first, args, result, faults) {name, min, max, op, first, nullptr, nullptr, nullptr, nullptr, nullptr, args, result, faults}

const Builtin kBuiltins[] = {
    // Text functions: lengths and positions count bytes.
    QL_FN1("WERTLAENGE", F::WERTLAENGE, "x", "the length of x as text, a number", QL_CONVERT),
    QL_FN3("TEIL", F::TEIL, "text; start; length", "length characters of text from start (counted from 1)", QL_CONVERT),
    QL_FN2("KONKATENIEREN", F::KONKATENIEREN, "a; b", "the text a followed by b (the same as a & b)", QL_CONVERT),
    QL_FN2("BEGINNT_MIT", F::BEGINNT_MIT, "text; start", "whether text begins with start", QL_CONVERT),
    QL_FN2("ENDET_AUF", F::ENDET_AUF, "text; end", "whether text ends with end", QL_CONVERT),
    QL_FN1("GROSSBUCHSTABEN", F::GROSSBUCHSTABEN, "text", "text in capitals (umlauts included); x itself when not usable", QL_CONVERT),
    QL_FN1("KLEINBUCHSTABEN", F::KLEINBUCHSTABEN, "text", "text in small letters; x itself when not usable", QL_CONVERT),
    QL_FN1("NUMERISCH", F::NUMERISCH, "text", "whether text holds digits only", QL_CONVERT),
    QL_FN3("ERSETZEN", F::ERSETZEN, "text; search; replacement", "text with every search replaced", QL_CONVERT),
    // Numbers.
    QL_FN2("EXPONENT", F::EXPONENT, "a; b", "a to the power of b", QL_CONVERT),
    QL_FN2("MODULO", F::MODULO, "a; b", "the remainder of the whole parts, its sign a's",
           "\"Division durch 0.\" (type 11) for a missing or zero divisor"),
    QL_FN1("ABSOLUTWERT", F::ABSOLUTWERT, "x", "the absolute value; x itself when not usable", QL_CONVERT),
    QL_FN2("LOGARITHMUS", F::LOGARITHMUS, "a; base", "the logarithm of a to the base",
           "type 9 unless both are usable and above 0"),
    QL_FN1("NATUERLICHER_LOGARITHMUS", F::NATUERLICHER_LOGARITHMUS, "a", "the natural logarithm",
           "type 9 unless a is usable and above 0"),
    QL_FN0("ZUFALLSZAHL", F::ZUFALLSZAHL, "", "a random number from 0 to 1", "none"),
    QL_ARRAY("ZUFALLSZAHL_AUS_LISTE", F::ZUFALLSZAHL_AUS_LISTE, "array", "a random element of the array; UNGUELTIG when it is empty", "none"),
    QL_FN1("ZUFALLSZAHL_AUS_REIHE", F::ZUFALLSZAHL_AUS_REIHE, "range", "a random element of a range or series", QL_CONVERT),
    QL_FN2("NORMALVERTEILTE_ZUFALLSZAHL", F::NORMALVERTEILTE_ZUFALLSZAHL, "mean; deviation", "a normally distributed random number", QL_CONVERT),
    QL_ARRAY("MAXIMUM_AUS_LISTE", F::MAXIMUM_AUS_LISTE, "array", "the largest element (the first among equals); UNGUELTIG when there is none", QL_CONVERT),
    QL_FN1("MAXIMUM_AUS_REIHE", F::MAXIMUM_AUS_REIHE, "range", "the largest element of a range or series", QL_CONVERT),
    QL_FN1("ALS_GANZZAHL", F::ALS_GANZZAHL, "x", "x + 0,5 cut to a whole number; x itself when not usable", QL_CONVERT),
    QL_FN1("ALS_GANZZAHL_OHNE_RUNDUNG", F::ALS_GANZZAHL_OHNE_RUNDUNG, "x", "x cut to a whole number; x itself when not usable", QL_CONVERT),
    QL_FN1("ALS_KOMMAZAHL", F::ALS_KOMMAZAHL, "x", "x as a real number; x itself when not usable", QL_CONVERT),
    QL_FN1("ALS_ZEICHENKETTE", F::ALS_ZEICHENKETTE, "x", "x as a text; x itself when not usable", QL_CONVERT),
    {"RUNDEN", 1, 2, kOpNone, kArgValue, nullptr, nullptr, F::RUNDEN, nullptr, nullptr, "x[; digits]",
     "x rounded half away from zero to digits places (none when left out); x itself when not usable", QL_CONVERT},
    // Format checks.
    QL_FN2("HAT_FORMAT", F::HAT_FORMAT, "pattern; text", "whether the whole text matches the pattern (docs/patterns.md)",
           "none: a pattern that does not compile answers FALSCH and is reported on standard error"),
    // Dates: an argument is any value with a date (a date field, a date literal, a text under TT.MM.JJJJ).
    QL_FN0("HEUTE", F::HEUTE, "", "today at midnight", "none"),
    QL_FN1("JAHR", F::JAHR, "date", "the year, a number", QL_CONVERT),
    QL_FN1("MONAT", F::MONAT, "date", "the month, a number", QL_CONVERT),
    QL_FN1("TAG", F::TAG, "date", "the day of the month, a number", QL_CONVERT),
    QL_FN1("JAHR_ALS_ZEICHENKETTE", F::JAHR_ALS_ZEICHENKETTE, "date", "the year as text", QL_CONVERT),
    QL_FN1("MONAT_ALS_ZEICHENKETTE", F::MONAT_ALS_ZEICHENKETTE, "date", "the month as text", QL_CONVERT),
    QL_FN1("TAG_ALS_ZEICHENKETTE", F::TAG_ALS_ZEICHENKETTE, "date", "the day as text", QL_CONVERT),
    QL_FN3("DATUM_VERSCHIEBEN", F::DATUM_VERSCHIEBEN, "date; count; unit",
           "date moved by count units: \"J\" years, \"M\" months, \"W\" weeks, \"T\" days, \"A\" working days",
           "\"Die Einheit der Datumsverschiebung ist ung\xFC" "ltig.\" (type 9)"),
    QL_FN3("DATUM_DIFFERENZ", F::DATUM_DIFFERENZ, "first; second; unit",
           "whole \"J\" years, \"W\" weeks or \"T\" days from first to second",
           "\"Die Berechnungseinheit der Datumsdifferenz ist ung\xFC" "ltig.\" (type 9)"),
    // The language's own operations.
    QL_OP("GUELTIG", 1, 1, kOpValid, kArgValue, "x", "FALSCH for an empty field and UNGUELTIG, else WAHR", "none"),
    QL_OP("GESETZT", 1, 1, kOpSet, kArgValue, "x", "FALSCH for NICHTS, else WAHR", "none"),
    QL_OP("BRAUCHBAR", 1, 1, kOpUsable, kArgValue, "x", "WAHR when x is neither NICHTS nor invalid", "none"),
    QL_OP("KODE", 1, 1, kOpCode, kArgValue, "code", "the entry of the code list with that code, else UNGUELTIG", QL_CONVERT),
    QL_OP("KODE_ZU_TEXT", 1, 1, kOpCodeOfText, kArgValue, "text", "the entry of the code list with that text, else UNGUELTIG", QL_CONVERT),
    QL_OP("ANZAHL", 1, -1, kOpCount, kArgArray, "array[; index...]",
          "the size of the array's first dimension, or of the one after the indices given", "type 7 for too many indices"),
    QL_OP("PASST", 2, 3, kOpFits, kArgValue, "x; TYPE[; mask]",
          "whether x fits the type (TEXT, WAHRHEITSWERT, GANZZAHL, KOMMAZAHL, DATUM, FREI) and mask; an empty field fits",
          "type 9 for a mask that means nothing"),
    QL_OP("ZAHL_NACH_MASKE", 2, 2, kOpRealByMask, kArgValue, "text; mask", "the real number the text gives under the number mask",
          "the mask's message (type 8) when the text does not fit"),
    QL_OP("GANZZAHL_NACH_MASKE", 2, 2, kOpIntegerByMask, kArgValue, "text; mask", "the whole number the text gives under the mask",
          "the mask's message (type 8) when the text does not fit"),
    QL_OP("DATUM_NACH_MASKE", 2, 2, kOpDateByMask, kArgValue, "text; mask", "the date the text gives under the date mask",
          "the mask's message (type 8) when the text does not fit"),
    QL_OP("PARAMETER", 1, 1, kOpParameter, kArgValue, "name", "the host's init parameter of that name, NICHTS when it has none", QL_CONVERT),
    {nullptr, 0, 0, kOpNone, kArgValue, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr},
};

}  // namespace

const Builtin *allBuiltins() { return kBuiltins; }

const Builtin *findBuiltin(const std::string &name) {
  for (const Builtin *b = kBuiltins; b->name != nullptr; ++b) {
    if (name == b->name) return b;
  }
  return nullptr;
}

std::string builtinReference() {
  std::string out = "| function | arguments | result | faults |\n|---|---|---|---|\n";
  for (const Builtin *b = kBuiltins; b->name != nullptr; ++b) {
    out += std::string("| `") + b->name + "` | " + (b->arguments[0] != '\0' ? b->arguments : "none") + " | " +
           b->result + " | " + b->faults + " |\n";
  }
  return windows1252ToUtf8(out);
}

}  // namespace lang
}  // namespace quorel
