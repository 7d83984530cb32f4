// The small members of Util: hashing, index lists, comparisons, case tests
// and substrings.

#include "quorel/masks/util.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>

#include "quorel/masks/mask_messages.h"
#include "quorel/masks/text_hash.h"
#include "quorel/rules/plausi_exception.h"

namespace quorel {

namespace mask_messages {

void fail(const char *message) { throw PlausiException(EXCEPTION_CONVERSION, message); }

}  // namespace mask_messages

namespace {

// Unsigned arithmetic gives the 32-bit wrap without undefined behaviour.
std::uint32_t step(std::uint32_t hash, std::int32_t item) {
  return hash * 31u + static_cast<std::uint32_t>(item);
}

[[noreturn]] void badIndexText() {
  throw PlausiException(EXCEPTION_ILLEGAL_ARGUMENT, "Fehlerhafte Indexangabe.");
}

}  // namespace

std::int32_t Util::getHashCode(const char *text) {
  TextHash hash;
  hash.append(text);
  return hash.get();
}

std::int32_t Util::getHashCode(const std::int32_t *indices) {
  std::uint32_t hash = 0;
  for (std::int32_t i = 0; i < getSizeOf(indices); ++i) hash = step(hash, indices[i]);
  return static_cast<std::int32_t>(hash);
}

std::int32_t Util::getSizeOf(const std::int32_t *indices) {
  std::int32_t count = 0;
  if (indices != nullptr) {
    while (indices[count] >= 0) ++count;
  }
  return count;
}

bool Util::isValidArrayAccess(const std::int32_t *dimension, const std::int32_t *indices) {
  std::int32_t dimensions = getSizeOf(dimension);
  return dimensions > 0 && getSizeOf(indices) < dimensions;
}

bool Util::isValidElementAccess(const std::int32_t *dimension, const std::int32_t *indices) {
  return getSizeOf(indices) == getSizeOf(dimension);
}

void Util::getIndicesAsString(char *target, const std::int32_t *indices) {
  *target = '\0';
  for (std::int32_t i = 0; i < getSizeOf(indices); ++i) {
    target += std::sprintf(target, "[%d]", static_cast<int>(indices[i]));
  }
}

void Util::getStringAsIndices(std::int32_t *target, const char *text) {
  target[0] = -1;
  if (text == nullptr) return;
  std::size_t length = std::strlen(text);
  std::size_t p = 0;
  std::int32_t count = 0;
  // Room for the digits of any 64-bit number; a longer text is refused by
  // stringToInteger as too long.
  char number[32];
  while (p < length) {
    if (text[p] != '[' || p + 1 >= length || text[p + 1] == ']') badIndexText();
    const char *start = text + p + 1;
    const char *close = std::strchr(start, ']');
    std::size_t digits = close != nullptr ? static_cast<std::size_t>(close - start) : std::strlen(start);
    if (digits >= sizeof number) mask_messages::fail(mask_messages::kMaximalLength);
    std::memcpy(number, start, digits);
    number[digits] = '\0';
    std::int64_t index = stringToInteger(number, nullptr);
    if (index < std::numeric_limits<std::int32_t>::min() || index > std::numeric_limits<std::int32_t>::max()) {
      badIndexText();
    }
    target[count++] = static_cast<std::int32_t>(index);
    target[count] = -1;
    p += 1 + digits;
    if (p >= length || text[p] != ']') badIndexText();
    ++p;
  }
}

std::int32_t Util::compareNumbers(double a, double b) {
  double m = std::fmax(std::fabs(a), std::fabs(b));
  if (m < 4e-16) return 0;
  double tolerance = 4e-16 * m;
  if (tolerance >= 0.5) tolerance = 0.4999999999;
  double d = a - b;
  if (std::fabs(d) < tolerance) return 0;
  return d > 0 ? 1 : -1;
}

std::int32_t Util::compareDate(const std::tm *a, const std::tm *b) {
  const int left[] = {a->tm_year, a->tm_mon, a->tm_mday, a->tm_hour, a->tm_min, a->tm_sec};
  const int right[] = {b->tm_year, b->tm_mon, b->tm_mday, b->tm_hour, b->tm_min, b->tm_sec};
  for (int i = 0; i < 6; ++i) {
    if (left[i] != right[i]) return left[i] > right[i] ? 1 : -1;
  }
  return 0;
}

bool Util::isLowerCase(char c) {
  auto u = static_cast<unsigned char>(c);
  return !((u >= 'A' && u <= 'Z') || u == 0xC4 || u == 0xD6 || u == 0xDC);
}

bool Util::isUpperCase(char c) {
  auto u = static_cast<unsigned char>(c);
  return !((u >= 'a' && u <= 'z') || u == 0xE4 || u == 0xF6 || u == 0xFC || u == 0xDF);
}

void Util::substring(char *target, const char *source, std::int32_t start, std::int32_t length) {
  *target = '\0';
  if (source == nullptr) return;
  auto size = static_cast<std::int64_t>(std::strlen(source));
  std::int64_t from = start < 0 ? 0 : start;
  std::int64_t end = length < 1 ? size : from + length;
  if (end > size) end = size;
  if (from >= end) return;
  std::memcpy(target, source + from, static_cast<std::size_t>(end - from));
  target[end - from] = '\0';
}

void Util::substring(char *target, const char *source, char stop) {
  std::size_t length = 0;
  if (source != nullptr) {
    while (source[length] != '\0' && source[length] != stop) ++length;
    std::memcpy(target, source, length);
  }
  target[length] = '\0';
}

}  // namespace quorel
