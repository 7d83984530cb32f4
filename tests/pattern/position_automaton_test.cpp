// The position automaton against the matcher of the nodes: for every pattern
// of its shape the same answer on every input, and for every other pattern
// no automaton at all.

#include "quorel/pattern/position_automaton.h"

#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "quorel/pattern/pattern.h"

namespace {

// The matcher's answer, as Pattern::matches gives it without a cache.
bool matcherSays(Pattern *pattern, const std::string &input) {
  pattern->getMatcher()->setInput(input.c_str());
  return pattern->getMatcher()->matches();
}

// Every text of up to four bytes over a few bytes that the atoms below take,
// fold or refuse.
std::vector<std::string> allShortTexts() {
  const std::string alphabet = std::string("aAb\n1\xE4", 6);
  std::vector<std::string> texts = {""};
  for (std::size_t from = 0, length = 1; length <= 4; ++length) {
    std::size_t to = texts.size();
    for (std::size_t i = from; i < to; ++i) {
      for (char c : alphabet) texts.push_back(texts[i] + c);
    }
    from = to;
  }
  return texts;
}

// A random sequence of one to four atoms with counts of every kind, and
// sometimes anchors at its ends.
std::string randomSequence(std::mt19937 &random) {
  static const char *const kAtoms[] = {"a", "b", "[ab]", ".", "[^a]", "\\d", "\xE4", "\\n", "[a-b&&[^b]]"};
  static const char *const kCounts[] = {"",    "*",     "+",     "?",     "{0}",   "{2}",  "{1,3}",
                                        "{2,}", "{3,1}", "*?",    "+?",    "??",    "{1,2}?", "{,2}"};
  std::string text = random() % 4 == 0 ? "^" : "";
  for (std::uint32_t atoms = 1 + random() % 4; atoms > 0; --atoms) {
    text += kAtoms[random() % (sizeof(kAtoms) / sizeof(kAtoms[0]))];
    text += kCounts[random() % (sizeof(kCounts) / sizeof(kCounts[0]))];
  }
  if (random() % 4 == 0) text += random() % 2 == 0 ? "$" : "\\z";
  return text;
}

TEST(PositionAutomatonTest, AnswersAsTheMatcherForEveryPatternOfItsShape) {
  const std::vector<std::string> texts = allShortTexts();
  const std::int32_t kFlags[] = {0, Pattern::CaseInsensitive, Pattern::DotAll, Pattern::UnixLines};
  std::mt19937 random(20240611);
  for (int round = 0; round < 400; ++round) {
    std::string text = randomSequence(random);
    std::int32_t flags = kFlags[random() % 4];
    std::unique_ptr<Pattern> pattern(Pattern::compile(text.c_str(), flags));
    ASSERT_NE(nullptr, pattern) << text;
    std::unique_ptr<PositionAutomaton> automaton = PositionAutomaton::build(pattern->getHead());
    ASSERT_NE(nullptr, automaton) << text;
    for (const std::string &input : texts) {
      ASSERT_EQ(matcherSays(pattern.get(), input), automaton->matches(input.c_str()))
          << text << " flags " << flags << " on \"" << input << "\"";
    }
  }
}

TEST(PositionAutomatonTest, TakesSixtyThreePositionsAtMost) {
  struct Case {
    const char *pattern;
    bool built;
  };
  const Case cases[] = {
      {"a{63}", true},        {"a{64}", false},       {"a{62}b", true},        {"a{62}b+", false},
      {"a{60,62}b*", true},   {"[0-9]{1,100}", false}, {"a{2147483647}", false}, {"a{0,2147483647}", true},
      {"a{0,2147483646}", false}, {"a{4294967295}", true},
  };
  for (const Case &c : cases) {
    std::unique_ptr<Pattern> pattern(Pattern::compile(c.pattern, 0));
    ASSERT_NE(nullptr, pattern) << c.pattern;
    std::unique_ptr<PositionAutomaton> automaton = PositionAutomaton::build(pattern->getHead());
    EXPECT_EQ(c.built, automaton != nullptr) << c.pattern;
    if (automaton == nullptr) continue;
    for (std::size_t length : {0, 1, 61, 62, 63, 64, 65}) {
      std::string input(length, 'a');
      if (length > 0 && std::string(c.pattern).find('b') != std::string::npos) input.back() = 'b';
      EXPECT_EQ(matcherSays(pattern.get(), input), automaton->matches(input.c_str())) << c.pattern << " " << length;
    }
  }
}

TEST(PositionAutomatonTest, LeavesEveryOtherShapeToTheMatcher) {
  struct Case {
    const char *pattern;
    std::int32_t flags;
  };
  const Case others[] = {
      {"a*+", 0},      {"a{1,2}+", 0}, {"(?>a)", 0},   {"(a)", 0},     {"(?:a)b", 0},   {"a|b", 0},
      {"(a)\\1", 0},   {"a(?=b)", 0},  {"a(?<=a)", 0}, {"(?i)a", 0},   {"\\Qab\\E", 0}, {"a^b", 0},
      {"a$b", 0},      {"a?^b", 0},    {"^*a", 0},     {"\\ba", 0},   {"a\\Gb", 0},   {"a\\Z\\b", 0},
      {"[ab]*(c)", 0}, {"(?i:a)", 0},  {"^a", Pattern::MultiLine},     {"a$", Pattern::MultiLine},
      {"a", Pattern::Literal},
  };
  for (const Case &c : others) {
    std::unique_ptr<Pattern> pattern(Pattern::compile(c.pattern, c.flags));
    ASSERT_NE(nullptr, pattern) << c.pattern;
    EXPECT_EQ(nullptr, PositionAutomaton::build(pattern->getHead())) << c.pattern;
  }
  EXPECT_EQ(nullptr, PositionAutomaton::build(nullptr));
  // Chains that no compile makes: one without its start, one without its end.
  NFAStartNode start;
  NFACharNode atom('a');
  start.next = &atom;
  EXPECT_EQ(nullptr, PositionAutomaton::build(&atom));
  EXPECT_EQ(nullptr, PositionAutomaton::build(&start));
}

// A kept pattern of the automaton's shape is run by the matcher when the
// thread counts steps, so that the limit refuses it as it refuses a new one.
TEST(PositionAutomatonTest, AStepLimitSendsKeptPatternsToTheMatcher) {
  EXPECT_TRUE(Pattern::matches("[0-9]{5}", "12345", 0));
  Pattern::setStepLimit(3);
  EXPECT_FALSE(Pattern::matches("[0-9]{5}", "12345", 0));
  Pattern::setStepLimit(100);
  EXPECT_TRUE(Pattern::matches("[0-9]{5}", "12345", 0));
  Pattern::setStepLimit(0);
  EXPECT_TRUE(Pattern::matches("[0-9]{5}", "12345", 0));
}

}  // namespace
