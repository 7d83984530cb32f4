// Builtins: every function a rule may call by name, with its arity and
// what it takes: the library's German built-ins, which call Functions
// directly, and the few operations of the language itself (GUELTIG, KODE,
// ANZAHL, PASST, ...). Checker, interpreter, emitter and the reference in
// docs/language.md all read this one table.

#ifndef QUOREL_LANG_BUILTINS_H_
#define QUOREL_LANG_BUILTINS_H_

#include <cstdint>
#include <string>

namespace quorel {

class FieldArray;
class RuntimeContext;
class Value;

namespace lang {

// The operations of the language that are not a Functions call.
enum LanguageOp : std::int32_t {
  kOpNone,
  kOpValid,          // GUELTIG(x): x is not an empty field or invalid
  kOpSet,            // GESETZT(x): x is not nil
  kOpUsable,         // BRAUCHBAR(x): both
  kOpCode,           // KODE(x): the classification of the code x
  kOpCodeOfText,     // KODE_ZU_TEXT(x): the classification of the text x
  kOpCount,          // ANZAHL(array; indices...): the size of a dimension
  kOpFits,           // PASST(x; TYPE[; mask]): Functions::isTypeConform
  kOpRealByMask,     // ZAHL_NACH_MASKE(x; mask): Util::stringToReal
  kOpIntegerByMask,  // GANZZAHL_NACH_MASKE(x; mask): Util::stringToInteger
  kOpDateByMask,     // DATUM_NACH_MASKE(x; mask): a date read under the mask
  kOpParameter,      // PARAMETER(name): the init param, NICHTS when unset
};

// What an argument must be.
enum ArgumentKind : std::int32_t { kArgValue, kArgArray, kArgFieldArray, kArgType };

struct Builtin {
  const char *name;
  std::int32_t minArgs;
  std::int32_t maxArgs;  // -1: any number beyond minArgs
  LanguageOp op;          // kOpNone for a Functions call
  ArgumentKind first;     // the first argument's kind; the others are values (PASST: a type second)
  // One of these, by arity and kind, for a Functions call.
  Value *(*call0)(RuntimeContext *);
  Value *(*call1)(RuntimeContext *, Value *);
  Value *(*call2)(RuntimeContext *, Value *, Value *);
  Value *(*call3)(RuntimeContext *, Value *, Value *, Value *);
  Value *(*callArray)(RuntimeContext *, FieldArray *);
  // For the reference: the arguments, the result, the faults (German
  // library texts quoted as the library throws them).
  const char *arguments;
  const char *result;
  const char *faults;
};

// The built-in of that name, or null.
const Builtin *findBuiltin(const std::string &name);

// Every built-in, ended by an entry with a null name.
const Builtin *allBuiltins();

// The reference of all built-ins as a Markdown table (docs/language.md
// holds it, and a test keeps the two equal).
std::string builtinReference();

}  // namespace lang
}  // namespace quorel

#endif  // QUOREL_LANG_BUILTINS_H_
