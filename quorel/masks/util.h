// Util: stateless helpers that every subsystem leans on: the name hash,
// index lists, the tolerant comparison of numbers, the comparison of dates,
// the German case tests, substrings, and the conversion of text through
// text, number and date masks.
//
// Every operation is static and allocates nothing. Output buffers belong to
// the caller and must have the sizes given below. All conversion failures
// are PlausiException of type 8 (EXCEPTION_CONVERSION) with one German
// message per kind of fault; getStringAsIndices also throws type 9.
//
// Texts are 8-bit Windows-1252. Numbers in text are German: the point
// separates thousands, the comma is the decimal separator.

#ifndef QUOREL_MASKS_UTIL_H_
#define QUOREL_MASKS_UTIL_H_

#include <cstdint>
#include <ctime>

namespace quorel {

class Util {
 public:
  Util() = delete;

  // Bytes that integerToString, realToString and dateToString write at most,
  // the terminating NUL included.
  static constexpr int kIntegerTextSize = 26;
  static constexpr int kRealTextSize = 27;
  static constexpr int kDateTextSize = 64;

  // hash = hash * 31 + byte over the text, each byte taken as signed 8-bit,
  // wrapping at 32 bits. Null and "" give 0. Every name-keyed map of the
  // library keys on this code alone.
  static std::int32_t getHashCode(const char *text);
  // The same recurrence over the entries of an index list.
  static std::int32_t getHashCode(const std::int32_t *indices);

  // Entries before the first negative one; null gives 0.
  static std::int32_t getSizeOf(const std::int32_t *indices);
  // Whether indices leave at least one dimension open (by counts only).
  static bool isValidArrayAccess(const std::int32_t *dimension, const std::int32_t *indices);
  // Whether indices select one element: as many as there are dimensions.
  static bool isValidElementAccess(const std::int32_t *dimension, const std::int32_t *indices);
  // "[2][0]" for the list 2, 0; the target holds 13 bytes per entry and 1.
  static void getIndicesAsString(char *target, const std::int32_t *indices);
  // The inverse, strict: "Fehlerhafte Indexangabe." (type 9) for anything
  // but [n][m]... and for an index beyond 32 bits, the messages of
  // stringToInteger for a bad number. The target holds one entry per "[" in
  // the text and the terminator.
  static void getStringAsIndices(std::int32_t *target, const char *text);

  // -1, 0 or 1, equal within a relative tolerance of 4e-16 (capped just
  // below one half); numbers below 4e-16 in size equal each other and 0.
  // A NaN equals nothing and compares as less.
  static std::int32_t compareNumbers(double a, double b);
  // -1, 0 or 1 by year, month, day, hour, minute, second.
  static std::int32_t compareDate(const std::tm *a, const std::tm *b);

  // False for A-Z and the upper-case umlauts, true for every other byte.
  static bool isLowerCase(char c);
  // False for a-z, the lower-case umlauts and sharp s, true for every other.
  static bool isUpperCase(char c);

  // The bytes from start (below 0: 0) for length (below 1: to the end),
  // cut at the end of source. The target holds the source's length and 1.
  static void substring(char *target, const char *source, std::int32_t start, std::int32_t length);
  // The source up to, not including, the first stop byte.
  static void substring(char *target, const char *source, char stop);

  // Tests a text against a text mask; returns when it fits.
  static void stringToString(const char *value, const char *mask);

  // German number text to number, tested against an optional number mask.
  static std::int64_t stringToInteger(const char *value, const char *mask);
  static double stringToReal(const char *value, const char *mask);
  // The same without throwing: the message that stringToInteger or
  // stringToReal would throw, or null with the number set. For the many
  // faulty values of a check, where a throw costs far more than the reading.
  static const char *readInteger(const char *value, const char *mask, std::int64_t *number);
  static const char *readReal(const char *value, const char *mask, double *number);
  // Plain decimal, no separators.
  static void integerToString(char *target, std::int64_t number);
  // 18 significant digits, decimal comma, no trailing zeros.
  static void realToString(char *target, double number);

  // Date text under a mask (null: "TT.MM.JJJJ") into the six date and time
  // fields of target; the other fields are left alone.
  static void stringToDate(std::tm *target, const char *value, const char *mask);
  // The same without throwing: the message that stringToDate would throw,
  // or null. Target is written as stringToDate writes it.
  static const char *readDate(std::tm *target, const char *value, const char *mask);
  // A date under a mask; output beyond kDateTextSize - 1 bytes is cut.
  static void dateToString(char *target, const std::tm *date, const char *mask);
};

}  // namespace quorel

#endif  // QUOREL_MASKS_UTIL_H_
