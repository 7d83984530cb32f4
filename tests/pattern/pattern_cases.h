// Table-driven pattern tests: a pattern, an input, the expected answer of
// Pattern::matches and the flags.

#ifndef QUOREL_TESTS_PATTERN_PATTERN_CASES_H_
#define QUOREL_TESTS_PATTERN_PATTERN_CASES_H_

#include <cstdint>
#include <iterator>

#include <gtest/gtest.h>

#include "quorel/pattern/pattern.h"

struct PatternCase {
  const char *pattern;
  const char *input;
  bool expected;
  std::int32_t flags;
};

template <std::size_t N>
void expectCases(const PatternCase (&cases)[N]) {
  for (const PatternCase &c : cases) {
    EXPECT_EQ(c.expected, Pattern::matches(c.pattern, c.input, c.flags))
        << "pattern " << c.pattern << " on \"" << c.input << "\" flags " << c.flags;
  }
}

#endif  // QUOREL_TESTS_PATTERN_PATTERN_CASES_H_
