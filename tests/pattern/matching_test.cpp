#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "pattern/pattern_cases.h"
#include "quorel/pattern/pattern.h"

namespace {

using Case = PatternCase;

TEST(PatternMatchingTest, AlternationTriesBranchesInOrderAndSettlesThem) {
  const Case cases[] = {
      {"a|ab", "ab", true, 0},        {"(a|ab)c", "abc", true, 0},   {"(a|b)c", "bc", true, 0},
      {"(a|b)*c", "abac", true, 0},   {"(ab|a)(bc)?", "abc", true, 0}, {"(a+|b)a", "aaa", false, 0},
      {"a|", "", true, 0},            {"|a", "a", true, 0},          {"(|a)", "a", true, 0},
      {"()", "", true, 0},            {"", "", true, 0},             {"", "a", false, 0},
      {"abc", "abcd", false, 0},      {"abc", "ab", false, 0},       {"b", "abc", false, 0},
  };
  expectCases(cases);
}

TEST(PatternMatchingTest, QuantifiersGreedyLazyPossessiveAndAtomic) {
  const Case cases[] = {
      {"a*a", "aaa", true, 0},      {"a*+a", "aaa", false, 0},   {"a*?a", "aaa", true, 0},
      {"a{2,3}", "aa", true, 0},    {"a{2,3}", "aaa", true, 0},  {"a{2,3}", "a", false, 0},
      {"a{2,3}", "aaaa", false, 0}, {"(?>a*)a", "aaa", false, 0}, {"(?>a|ab)c", "abc", false, 0},
      {"(a*)*", "aaa", true, 0},    {"(a?){3}", "", true, 0},    {"(a)*+a", "aaa", false, 0},
      {"(a)*?", "aaa", true, 0},    {"(a)*", "aaa", true, 0},    {"(ab){2}", "abab", true, 0},
      {"(ab){2}", "ab", false, 0},  {"a{3,2}", "aaa", true, 0},  {"a{3,2}", "aa", false, 0},
      {"a{}", "", true, 0},         {"a{,2}", "aa", true, 0},    {"a{2,}", "aaaa", true, 0},
      {"\\Qa.b\\E+", "a.ba.b", true, 0}, {"\\Qa.b\\E+", "axb", false, 0}, {"^*a", "a", true, 0},
      {"\\b+a", "a", true, 0},      {"(a)?\\1*b", "b", true, 0},
  };
  expectCases(cases);
}

TEST(PatternMatchingTest, ReferencesAndLookAround) {
  const Case cases[] = {
      {"(a)\\1", "aa", true, 0},       {"(a)\\1", "ab", false, 0},        {"(a)?\\1b", "b", true, 0},
      {"\\1(a)", "a", true, 0},        {"(?i)(a)\\1", "aA", false, 0},    {"(a)|(b)\\3", "bb", true, 0},
      {"(a)|(b)\\2", "b", true, 0},    {"(a)(b)\\5", "ab", true, 0},      {"(?=ab)a.", "ab", true, 0},
      {"(?!ab)a.", "ab", false, 0},    {"a(?<=a)b", "ab", true, 0},       {"a(?<!x)b", "ab", true, 0},
      {"a(?<!a)b", "ab", false, 0},    {"(?<!ab)c", "c", true, 0},        {"(?<=a|b)c", "c", false, 0},
  };
  expectCases(cases);
}

TEST(PatternMatchingTest, AnchorsBoundariesAndLineTerminators) {
  const Case cases[] = {
      {"a$", "a\n", false, 0},          {"a\\Z", "a\n", false, 0},   {"a\\Z\n", "a\n", true, 0},
      {"a\\Z\r\n", "a\r\n", true, 0},   {"(?m)a$\n", "a\n", true, 0}, {"(?m)a\n^b", "a\nb", true, 0},
      {"1\\ba", "1a", true, 0},         {"_\\ba", "_a", true, 0},     {"1\\b2", "12", false, 0},
      {"a\\B", "a", true, 0},           {"a\\Bb", "ab", true, 0},     {"a\\B1", "a1", false, 0},
      {"a[^a]", "a", false, 0},         {"a.", "a", false, 0},        {".", "\n", false, 0},
      {".", "\r", false, 0},            {".", "\r", true, Pattern::UnixLines}, {".", "\n", true, Pattern::DotAll},
      {"\\Aa\\z", "a", true, 0},        {"\\Ga", "a", true, 0},
  };
  expectCases(cases);
}

TEST(PatternMatchingTest, CaseAndBytesAboveAscii) {
  const Case cases[] = {
      {"(?i)\xE4", "\xE4", true, 0},  {"(?i)\xE4", "\xC4", false, 0}, {"[\xE4]", "\xC4", false, Pattern::CaseInsensitive},
      {"(?i)[a]", "A", true, 0},      {"(?i)[^a]", "A", false, 0},    {"(?i)[^a]", "a", false, 0},
      {"(?i)\\p{Upper}", "a", true, 0}, {"(?i)\\x41", "a", false, 0}, {"(?i)[\\x41]", "a", true, 0},
      {"(?i)a(?-i)b", "Ab", true, 0}, {"(?i)a(?-i)b", "AB", false, 0}, {"(?i:a)b", "Ab", true, 0},
      {"(?i:a)b", "AB", false, 0},    {"(a(?i)b)c", "aBc", true, 0},  {"(a(?i)b)c", "aBC", false, 0},
      {"a(?i)b|c", "C", true, 0},     {"a(?i)b|c", "AB", false, 0},   {"\xFC+", "\xFC\xFC", true, 0},
      {"a.c", "a.c", true, Pattern::Literal}, {"a.c", "abc", false, Pattern::Literal},
      {"a.c", "A.C", true, Pattern::Literal | Pattern::CaseInsensitive},
  };
  expectCases(cases);
}

TEST(PatternMatchingTest, ClassesWorkedOutAtCompileTime) {
  const Case cases[] = {
      {"[a-c&&[b-d]]+", "bc", true, 0},   {"[a-c&&[b-d]]", "a", false, 0},  {"[a-z&&[^aeiou]]+", "bcd", true, 0},
      {"[a-z&&[^aeiou]]", "e", false, 0}, {"[ab[cd]]+", "abcd", true, 0},   {"[[ab]&&[b]c]+", "bc", true, 0},
      {"[c[ab]&&[b]]", "c", false, 0},    {"[c[ab]&&[b]]", "b", true, 0},   {"[]", "a", false, 0},
      {"[^]", "\x7F", true, 0},           {"[-a]+", "-a", true, 0},         {"[a\\-]+", "a-", true, 0},
      {"[--a]", "0", true, 0},            {"[\\d-x]+", "1-x", true, 0},     {"[a-\\x7A]+", "az", true, 0},
      {"[\\x41-\\x43]+", "ABC", true, 0}, {"[\\D]", "a", true, 0},          {"[\\d\\D]", "\x01", true, 0},
      {"[z-a]", "\xFF", true, 0},         {"[z-a]", "m", false, 0},         {"[a-a]", "a", true, 0},
      {"\\p{Print}", " ", false, 0},      {"\\s", "\x0B", false, 0},        {"\\p{Space}", "\x0B", true, 0},
      {"\\P{Lower}", "A", true, 0},       {"\\012", "\n", true, 0},         {"\\0101", "A", true, 0},
      {"\\0377", "\xFF", true, 0},        {"\\0477", "'7", true, 0},        {"\\x4", " 4", true, 0},
      {"\\x", " ", true, 0},              {"\\e", "\r", true, 0},           {"\\w+", "a_1", true, 0},
      {"[\\b]", "b", true, 0},            {"\\E", "E", true, 0},            {"\\Q\\E", "", true, 0},
      {"[\\a\\f\\n\\t\\e]+", "\a\f\n\t\r", true, 0},         {"[\\t-\\r]+", "\t\n\x0B\f\r", true, 0},
      {"\\p{ASCII}+", "\x01\x7F", true, 0},                 {"[\\p{ASCII}]", "\x80", false, 0},
      {"\\P{ASCII}", "\x80", true, 0},                      {"[^\\P{Digit}]+", "09", true, 0},
  };
  expectCases(cases);
}

TEST(PatternMatchingTest, LongInputsMatchWithoutExhaustingTheStack) {
  std::string digits(1 << 20, '7');
  EXPECT_TRUE(Pattern::matches("[0-9]+", digits.c_str(), 0));
  std::string xs(1 << 20, 'y');
  xs.back() = 'x';
  EXPECT_TRUE(Pattern::matches(".*x", xs.c_str(), 0));
  digits.back() = 'a';
  EXPECT_FALSE(Pattern::matches("[0-9]+", digits.c_str(), 0));
  std::string pairs;
  for (int i = 0; i < (1 << 19); ++i) pairs += "ab";
  EXPECT_TRUE(Pattern::matches("(ab)*", pairs.c_str(), 0));
}

TEST(PatternMatchingTest, AStepLimitBoundsCatastrophicBacktracking) {
  std::string as(40, 'a');
  Pattern::setStepLimit(100000);
  EXPECT_FALSE(Pattern::matches("(((a*)*)*)*b", as.c_str(), 0));  // refused, not hours later
  EXPECT_TRUE(Pattern::matches("(((a*)*)*)*", as.c_str(), 0));
  EXPECT_TRUE(Pattern::matches("([0-9]+,)*[0-9]+", "1,22,333", 0));
  std::string pairs;
  for (int i = 0; i < (1 << 19); ++i) pairs += "ab";
  EXPECT_FALSE(Pattern::matches("(ab)*", pairs.c_str(), 0));  // every visit counts
  std::int64_t otherThreads = -1;
  std::thread([&] { otherThreads = Pattern::getStepLimit(); }).join();
  EXPECT_EQ(0, otherThreads);
  Pattern::setStepLimit(0);
  EXPECT_TRUE(Pattern::matches("(ab)*", pairs.c_str(), 0));
}

TEST(PatternMatchingTest, NoInputCrashesTheProcess) {
  // Each repetition of a group costs recursion; where the stack ends the
  // match is refused as failed instead of overflowing.
  std::string huge(16 << 20, 'a');
  Pattern::matches("(a|b)*", huge.c_str(), 0);
  EXPECT_TRUE(Pattern::matches("a*", huge.c_str(), 0));
}

}  // namespace
