#include <memory>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "quorel/pattern/pattern.h"

namespace {

const char kMeta[] = "Syntax Error near here. Possible unescaped meta character.\n";
const char kPlain[] = "Syntax Error near here. \n";

// What compiling the pattern writes on the standard error stream; the
// pattern must not compile.
std::string report(const char *pattern) {
  testing::internal::CaptureStderr();
  std::unique_ptr<Pattern> compiled(Pattern::compile(pattern, 0));
  std::string written = testing::internal::GetCapturedStderr();
  EXPECT_EQ(nullptr, compiled) << pattern;
  return written;
}

int count(const std::string &text, const std::string &part) {
  int n = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++n;
  return n;
}

TEST(PatternCompileTest, ReportsPointAtTheFault) {
  EXPECT_EQ(std::string("a)\n ^\n") + kMeta, report("a)"));
  EXPECT_EQ(2, count(report("(a"), kPlain));
  EXPECT_EQ(4, count(report("((a"), kPlain));
  EXPECT_EQ(std::string("a**\n  ^\n") + kMeta, report("a**"));
  EXPECT_EQ(std::string("a+++\n   ^\n") + kMeta, report("a+++"));
  EXPECT_EQ(std::string("*a\n ^\n") + kMeta, report("*a"));
  for (const char *bad : {"a+*", "a{2}*", "+", "?", "]", "}", "(?=a)*", "(?i)*"}) {
    EXPECT_EQ(1, count(report(bad), kMeta)) << bad;
  }
  EXPECT_NE(std::string::npos, report("a{2}{3}").find(kPlain));
  for (const char *bad : {"a{1,x}", "a{x}", "(a){x}", "a{", "a{1", "\\", "\\Qab", "(?<=", "(?<a>b)", "(?ix-i-s)",
                          "(?q)", "[a&&b]", "[a-]", "[a--]", "[a-\\d]", "\\p{lower}", "\\pL", "\\p", "\\0",
                          "\\07", "\\08", "[]a]", "{name}", "a{ab}", "[\\Q]\\E]", "[a-\\Qb\\E]",
                          "[a-\\D]", "[\\", "\\p{Lower", "(?d-m-s)", "(?i"}) {
    EXPECT_FALSE(report(bad).empty()) << bad;
  }
}

TEST(PatternCompileTest, GroupsAndCountsCompile) {
  std::unique_ptr<Pattern> twoGroups(Pattern::compile("(a)(b)\\2", 0));
  ASSERT_NE(nullptr, twoGroups);
  EXPECT_EQ(3, twoGroups->getGroupCount());
  std::unique_ptr<Pattern> far(Pattern::compile("(a)(b)\\10", 0));
  ASSERT_NE(nullptr, far);
  std::unique_ptr<Pattern> alternatives(Pattern::compile("(a)|(b)", 0));
  EXPECT_EQ(4, alternatives->getGroupCount());  // each top-level alternative takes an index
  std::unique_ptr<Pattern> nonCapturing(Pattern::compile("(?:a)(?i:b)", 0));
  EXPECT_EQ(-2, nonCapturing->getNonCapturingCounter());
  for (const char *good : {"", "a|", "|a", "()", "(|a)", "a{3,2}", "a{}", "\\Q\\E", "(?)", "(?-)", "[z-a]",
                           "[^]", "[]", "^*", "\\E", "(?<=\\))x", "a{,}", "\\x", "\\xg"}) {
    testing::internal::CaptureStderr();
    std::unique_ptr<Pattern> compiled(Pattern::compile(good, 0));
    EXPECT_EQ("", testing::internal::GetCapturedStderr()) << good;
    EXPECT_NE(nullptr, compiled) << good;
  }
}

TEST(PatternCompileTest, DumpsTheGraphAndMarksReachableNodes) {
  std::unique_ptr<Pattern> compiled(Pattern::compile("(ab)+c|[xy]", 0));
  ASSERT_NE(nullptr, compiled);
  testing::internal::CaptureStdout();
  compiled->print();
  std::string dump = testing::internal::GetCapturedStdout();
  EXPECT_EQ(0u, dump.find("Pattern((ab)+c|[xy]):\n NFAStartNode\n"));
  EXPECT_NE(std::string::npos, dump.find("NFAGroupLoopNode(gi=1, min=1, max=2147483647, type=greedy)"));
  EXPECT_NE(std::string::npos, dump.find("NFAClassNode(2 vals, inv=false)"));
  std::map<NFANode *, bool> nodes;
  nodes[compiled->getHead()] = false;
  compiled->getHead()->markReachable(nodes);  // ends although the loop is a cycle
  EXPECT_TRUE(nodes[compiled->getHead()]);
}

// The dump of a pattern holding every kind of node, line by line.
TEST(PatternCompileTest, DumpsEveryKindOfNode) {
  std::unique_ptr<Pattern> compiled(
      Pattern::compile("\\A(?=a)(?<!x)\\b\\B\\Qq\\E(?i:[ab]c)x*?y{2}+z?(u)\\1^$\\Z\\z\\G(v|w)*?\xE4", 8));
  ASSERT_NE(nullptr, compiled);
  testing::internal::CaptureStdout();
  compiled->print();
  EXPECT_EQ(
      "Pattern(\\A(?=a)(?<!x)\\b\\B\\Qq\\E(?i:[ab]c)x*?y{2}+z?(u)\\1^$\\Z\\z\\G(v|w)*?\xE4):\n"
      " NFAStartNode\n NFASubStartNode\n NFAStartOfInputNode\n"
      " NFALookAheadNode(pos=true)\n  NFASubStartNode\n  NFACharNode(0x61)\n  NFAAcceptNode\n"
      " NFALookBehindNode(str=x, pos=false)\n NFAWordBoundaryNode(pos=true)\n NFAWordBoundaryNode(pos=false)\n"
      " NFAQuoteNode(q)\n NFAGroupHeadNode(gi=-1)\n NFACICharNode(0x63)\n NFAGroupTailNode(gi=-1)\n"
      " NFALazyQuantifierNode(min=0, max=2147483647)\n inner\n    NFACharNode(0x78)\n    NFAAcceptNode\n"
      " NFAPossessiveQuantifierNode(min=2, max=2)\n inner\n    NFACharNode(0x79)\n    NFAAcceptNode\n"
      " NFAGreedyQuantifierNode(min=0, max=1)\n inner\n    NFACharNode(0x7A)\n    NFAAcceptNode\n"
      " NFAGroupHeadNode(gi=1)\n NFACharNode(0x75)\n NFAGroupTailNode(gi=1)\n NFAReferenceNode(gi=1)\n"
      " NFAStartOfLineNode\n NFAEndOfLineNode\n NFAEndOfInputNode(term=true)\n NFAEndOfInputNode(term=false)\n"
      " NFAEndOfMatchNode\n NFAGroupLoopPrologueNode(gi=2)\n"
      " NFAGroupLoopNode(gi=2, min=0, max=2147483647, type=reluctant)\n NFACharNode(0xFFFFFFE4)\n NFAEndNode\n",
      testing::internal::GetCapturedStdout());

  // Alternatives print as "one" and "two" without going on; a flag group
  // leaves an empty look-behind; a case-blind class has no line.
  std::unique_ptr<Pattern> alternatives(Pattern::compile("a|(?i)[^b]C", 0));
  ASSERT_NE(nullptr, alternatives);
  testing::internal::CaptureStdout();
  alternatives->print();
  EXPECT_EQ(
      "Pattern(a|(?i)[^b]C):\n NFAStartNode\n NFAOrNode\n one\n    NFASubStartNode\n    NFACharNode(0x61)\n"
      "    NFAAcceptNode\n two\n    NFASubStartNode\n    NFALookBehindNode(str=, pos=true)\n"
      "    NFACICharNode(0x63)\n    NFAAcceptNode\n",
      testing::internal::GetCapturedStdout());
}

}  // namespace

namespace {

// A counted quantifier that is no count reports with the cursor on its
// brace: the character before the brace decides caret and wording.
TEST(PatternCompileTest, CountReportsPointAtTheCharacterBeforeTheBrace) {
  EXPECT_EQ(std::string("ab{1,x}\n ^\n") + kPlain, report("ab{1,x}"));
  EXPECT_EQ(std::string("(a){1,x}\n  ^\n") + kMeta, report("(a){1,x}"));
  EXPECT_EQ(std::string("((a){\n   ^\n") + kMeta + "((a){\n    ^\n" + kPlain, report("((a){"));
  EXPECT_EQ(std::string("(a{1,x})\n ^\n") + kPlain + "(a{1,x})\n  ^\n" + kPlain, report("(a{1,x})"));
  EXPECT_EQ(std::string("a{1\n ^\n") + kPlain, report("a{1"));
}

}  // namespace

namespace {

// Hosts and tools walk graphs by the node classes: the case-blind classes
// are no kind of their exact sisters, and only the three quantifiers over an
// atom share a base below NFANode.
TEST(PatternCompileTest, NodeClassesStandDirectlyBelowNFANode) {
  static_assert(!std::is_base_of<NFACharNode, NFACICharNode>::value, "");
  static_assert(!std::is_base_of<NFAClassNode, NFACIClassNode>::value, "");
  static_assert(!std::is_base_of<NFAQuoteNode, NFACIQuoteNode>::value, "");
  static_assert(std::is_base_of<NFAQuantifierNode, NFAPossessiveQuantifierNode>::value, "");
  std::unique_ptr<Pattern> compiled(Pattern::compile("(?i)a[b]\\Qc\\E", 0));
  ASSERT_NE(nullptr, compiled);
  EXPECT_TRUE(Pattern::matches("(?i)a[b]\\Qc\\E", "ABC", 0));
}

}  // namespace
