// The pattern language at the edges of its counts and byte ranges: the
// maximum of every kind of quantifier, the last letter of the alphabet at
// word boundaries and under case folding, the last hexadecimal digit, and
// both bytes that end a line.

#include <gtest/gtest.h>

#include "pattern/pattern_cases.h"
#include "quorel/pattern/pattern.h"

namespace {

using Case = PatternCase;

TEST(PatternBoundariesTest, EveryQuantifierStopsAtItsMaximum) {
  const Case cases[] = {
      {"(ab){2}", "abab", true, 0},       {"(ab){2}", "ababab", false, 0},
      {"(ab){1,2}", "ababab", false, 0},  {"(ab){1,2}?", "ababab", false, 0},
      {"(ab){1,2}+", "ababab", false, 0}, {"(ab)?", "abab", false, 0},
      {"a{1,2}?", "aa", true, 0},         {"a{1,2}?", "aaa", false, 0},
      {"a{2}?", "aaa", false, 0},         {"a{0,1}?b", "aab", false, 0},
      {"a{1,2}+", "aaa", false, 0},       {"(a|b){2}", "abb", false, 0},
      {"a?", "aa", false, 0},             {"[ab]?", "ab", false, 0},
      {"[ab]{2}", "aba", false, 0},       {"(?:ab){2}", "ababab", false, 0},
  };
  expectCases(cases);
}

TEST(PatternBoundariesTest, TheLettersAtBothEndsOfTheAlphabet) {
  const Case cases[] = {
      // Word boundaries: z and Z are letters like a and A; digits are not.
      {"z\\b ", "z ", true, 0},   {"Z\\b ", "Z ", true, 0},    {"a\\Bz", "az", true, 0},
      {"z\\BA", "zA", true, 0},   {"a\\bz", "az", false, 0},   {"1\\B ", "1 ", true, 0},
      // Quoted text under case folding folds every letter, Z and z included.
      {"\\QZz\\E", "zZ", true, Pattern::CaseInsensitive},
      {"\\QAZ\\E", "az", true, Pattern::CaseInsensitive},
      {"\\Qaz\\E", "AZ", true, Pattern::CaseInsensitive},
      {"\\QZ[\\E", "z{", false, Pattern::CaseInsensitive},
      {"\\QZ\\E", "z", false, 0},
  };
  expectCases(cases);
}

TEST(PatternBoundariesTest, HexadecimalEscapesReadEveryDigitInBothCases) {
  const Case cases[] = {
      {"\\x0f", "\x0f", true, 0}, {"\\x0F", "\x0f", true, 0}, {"\\xfa", "\xfa", true, 0},
      {"\\xFA", "\xfa", true, 0}, {"\\x9a", "\x9a", true, 0}, {"\\x0g", " 0g", true, 0},
      {"[\\x61-\\x7a]+", "az", true, 0},
  };
  expectCases(cases);
}

TEST(PatternBoundariesTest, ClassRangesHoldBothEnds) {
  const Case cases[] = {
      {"[a-c]", "a", true, 0},  {"[a-c]", "c", true, 0},  {"[a-c]", "d", false, 0},
      {"[a-c]", "`", false, 0}, {"[0-9]+", "09", true, 0}, {"[^a-c]", "c", false, 0},
      {"[a-a]", "a", true, 0},  {"[\\x00-\\x7f]", "\x7f", true, 0},
  };
  expectCases(cases);
}

TEST(PatternBoundariesTest, ACarriageReturnEndsALineLikeALineFeed) {
  const Case cases[] = {
      {"(?m)a$\r", "a\r", true, 0},   {"(?m)a$\n", "a\n", true, 0},   {"(?m)a\r^b", "a\rb", true, 0},
      {"(?m)a\n^b", "a\nb", true, 0}, {"a\\Z\r", "a\r", true, 0},    {"a\\Z\n", "a\n", true, 0},
      {"(?m)a$b", "ab", false, 0},    {"a\\Zb", "ab", false, 0},
  };
  expectCases(cases);
}

}  // namespace
