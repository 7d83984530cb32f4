// The text functions of the language. They work on asString() of their
// operands, so every kind of value serves as a text.

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "quorel/functions/functions.h"
#include "quorel/masks/util.h"
#include "quorel/rules/plausi_exception.h"
#include "quorel/rules/runtime_context.h"
#include "quorel/values/value.h"

namespace quorel {

namespace {

const char *textOrEmpty(Value *v) { return v != nullptr ? v->asString() : ""; }

// The case pairs of the language: a-z and the three umlauts. Every other
// byte, the sharp s included, has no other case here.
constexpr unsigned char toUpper(unsigned char c) {
  if (c >= 'a' && c <= 'z') return static_cast<unsigned char>(c - 'a' + 'A');
  switch (c) {
    case 0xE4: return 0xC4;
    case 0xF6: return 0xD6;
    case 0xFC: return 0xDC;
    default: return c;
  }
}

constexpr unsigned char toLower(unsigned char c) {
  if (c >= 'A' && c <= 'Z') return static_cast<unsigned char>(c - 'A' + 'a');
  switch (c) {
    case 0xC4: return 0xE4;
    case 0xD6: return 0xF6;
    case 0xDC: return 0xFC;
    default: return c;
  }
}

// One of the two mappings for every byte, worked out by the compiler, so
// that a text changes case at a lookup per byte.
struct CaseMap {
  unsigned char of[256];
};

constexpr CaseMap caseMap(unsigned char (*map)(unsigned char)) {
  CaseMap table{};
  for (unsigned c = 0; c < 256; ++c) table.of[c] = map(static_cast<unsigned char>(c));
  return table;
}

constexpr CaseMap kUpper = caseMap(toUpper);
constexpr CaseMap kLower = caseMap(toLower);

Value *mapCase(RuntimeContext *runtime, Value *v, const CaseMap &map) {
  if (v == nullptr || !v->isUsable()) return v;
  return runtime->createStringValue(v->asString(), map.of);
}

// Whether the text of a has the text of b at its front (atEnd false) or at
// its end (atEnd true). False when either is null.
bool hasAffix(Value *a, Value *b, bool atEnd) {
  if (a == nullptr || b == nullptr) return false;
  const char *text = a->asString();
  const char *affix = b->asString();
  std::size_t textLength = std::strlen(text);
  std::size_t affixLength = std::strlen(affix);
  if (affixLength > textLength) return false;
  std::size_t offset = atEnd ? textLength - affixLength : 0;
  return std::memcmp(text + offset, affix, affixLength) == 0;
}

}  // namespace

Value *Functions::WERTLAENGE(RuntimeContext *runtime, Value *v) {
  return runtime->createNumberValue(static_cast<double>(std::strlen(textOrEmpty(v))));
}

Value *Functions::TEIL(RuntimeContext *runtime, Value *text, Value *start, Value *length) {
  if (text == nullptr) {
    throw PlausiException(EXCEPTION_CONVERSION,
                          "Die Zeichenkette kann nur aus einer Zeichenkette ausgelesen werden.");
  }
  if (start == nullptr) {
    throw PlausiException(EXCEPTION_ILLEGAL_ARGUMENT, "Der Startindex ist ung\xFC" "ltig.");
  }
  if (length == nullptr) {
    throw PlausiException(EXCEPTION_ILLEGAL_ARGUMENT, "Die L\xE4" "nge ist ung\xFC" "ltig.");
  }
  auto count = static_cast<std::int32_t>(length->asInteger());
  // Unsigned, so that the least start wraps to its low 32 bits as the rest
  // do instead of overflowing.
  auto first = static_cast<std::int32_t>(static_cast<std::uint64_t>(start->asInteger()) - 1u);
  const char *source = text->asString();
  std::vector<char> target(std::strlen(source) + 1);
  Util::substring(target.data(), source, first, count);
  return runtime->createStringValue(target.data());
}

Value *Functions::KONKATENIEREN(RuntimeContext *runtime, Value *a, Value *b) {
  std::string joined = textOrEmpty(a);
  joined += textOrEmpty(b);
  return runtime->createStringValue(std::move(joined));
}

Value *Functions::BEGINNT_MIT(RuntimeContext *runtime, Value *a, Value *b) {
  return runtime->createBoolValue(hasAffix(a, b, false));
}

Value *Functions::ENDET_AUF(RuntimeContext *runtime, Value *a, Value *b) {
  return runtime->createBoolValue(hasAffix(a, b, true));
}

Value *Functions::GROSSBUCHSTABEN(RuntimeContext *runtime, Value *v) { return mapCase(runtime, v, kUpper); }

Value *Functions::KLEINBUCHSTABEN(RuntimeContext *runtime, Value *v) { return mapCase(runtime, v, kLower); }

Value *Functions::NUMERISCH(RuntimeContext *runtime, Value *v) {
  bool digits = true;
  for (const char *p = textOrEmpty(v); *p != '\0' && digits; ++p) digits = *p >= '0' && *p <= '9';
  return runtime->createBoolValue(digits);
}

Value *Functions::ERSETZEN(RuntimeContext *runtime, Value *text, Value *search, Value *replacement) {
  std::string source = textOrEmpty(text);
  if (source.empty()) return runtime->createStringValue("");
  std::string pattern = textOrEmpty(search);
  if (pattern.empty()) return runtime->createStringValue(source.c_str());
  std::string insert = textOrEmpty(replacement);
  std::string result;
  std::size_t position = 0;
  for (std::size_t found; (found = source.find(pattern, position)) != std::string::npos;
       position = found + pattern.size()) {
    result.append(source, position, found - position).append(insert);
  }
  result.append(source, position, std::string::npos);
  return runtime->createStringValue(std::move(result));
}

}  // namespace quorel
