// Pattern: a compiled regular expression of the rule language, and its
// compiler.
//
// compile() reads the pattern text in one recursive pass and builds a graph
// of NFANode objects, which the Pattern owns through its node register (the
// graph has cycles). A syntax error is reported on the standard error
// stream (the pattern, a caret line and one of two wordings), and compile
// gives null. matches() tests a whole input against a whole pattern, the one
// way the library matches.
//
// Limits: compiling and matching recurse, the compiler per nesting level of
// groups and per alternative, the matcher per node on the path (a run of a
// one-byte atom under a greedy or possessive quantifier costs no recursion;
// bracket classes are read without recursion, however deeply nested). Both
// watch the stack of the calling thread, less a safety margin of up to
// 512 KB: a compile that may nest deeper than the thread's stack allows runs
// on a private stack sized by the pattern, and a match that needs more stack
// than the thread has left is run again on a private stack sized by the
// input. Past those private stacks (1 GB of address space at most) a pattern
// is refused with one syntax error report, and a match is refused as not
// matching, so that neither a pattern nor an input can overflow the stack.
//
// Pattern::matches keeps the patterns it compiled in a cache of the calling
// thread (see PatternCache), so that a rule testing many records with the
// same pattern compiles it once. Answers and reports are those of compiling
// at every call; setCacheCapacity(0) does exactly that.
//
// Catastrophic backtracking ((a*)*b on a long run of a) is the language's own
// behaviour and is not bounded, unless a thread sets a step limit: then a
// match that visits more nodes than that is refused as not matching.
//
// Several threads may compile and match at once: the only shared state is
// the empty registeredPatterns.

#ifndef QUOREL_PATTERN_PATTERN_H_
#define QUOREL_PATTERN_PATTERN_H_

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "quorel/pattern/byte_set.h"
#include "quorel/pattern/nfa_nodes.h"
#include "quorel/pattern/node_arena.h"
#include "quorel/pattern/pattern_matcher.h"

class Pattern {
 public:
  static constexpr std::int32_t CaseInsensitive = 1;
  static constexpr std::int32_t Literal = 2;
  static constexpr std::int32_t DotAll = 4;
  static constexpr std::int32_t MultiLine = 8;
  static constexpr std::int32_t UnixLines = 16;

  // Patterns that {name} may refer to: name to text and flags. Nothing adds
  // to it, so every {name} is a syntax error.
  static const std::map<std::string, std::pair<std::string, std::int32_t>> registeredPatterns;

  // A new Pattern that the caller owns, or null after a syntax error.
  static Pattern *compile(const char *pattern, std::int32_t flags);
  // Whether the whole input matches the whole pattern; false for a pattern
  // that does not compile.
  static bool matches(const char *pattern, const char *input, std::int32_t flags);

  // Bounds every later match on the calling thread to this many node visits;
  // a match that needs more is answered false. 0, the default, leaves matches
  // unbounded. For hosts that must answer within a time, and for fuzzing.
  static void setStepLimit(std::int64_t steps);
  static std::int64_t getStepLimit();

  // How many compiled patterns matches() keeps for the calling thread, the
  // least recently used going first; 0 compiles at every call. The default
  // is PatternCache::kDefaultCapacity. Lowering it drops what no longer fits.
  // Once the thread's cache is gone (as the thread ends) matches compile at
  // every call, the capacity reads 0, and setting it does nothing.
  static void setCacheCapacity(std::int32_t capacity);
  static std::int32_t getCacheCapacity();

  ~Pattern();
  Pattern(const Pattern &) = delete;
  Pattern &operator=(const Pattern &) = delete;

  NFANode *getHead() const { return head_; }
  PatternMatcher *getMatcher() const { return matcher_.get(); }
  std::int32_t getGroupCount() const { return groupCount_; }
  std::int32_t getNonCapturingCounter() const { return nonCapturingCounter_; }
  std::size_t getNodeCount() const { return nodes_.nodes().size(); }
  // The dump of the node graph on standard output.
  void print() const;

 private:
  Pattern(const char *text, std::int32_t flags);

  // Makes a node that the Pattern owns.
  template <typename T, typename... Args>
  T *make(Args &&...args) {
    return nodes_.make<T>(std::forward<Args>(args)...);
  }
  NFANode *makeCharNode(char c);
  NFANode *makeClassNode(const ByteSet &members, bool inverted);

  bool atEnd() const { return cursor_ >= static_cast<std::int32_t>(text_.size()); }
  char peek(std::int32_t offset = 0) const;
  bool has(std::int32_t flag) const { return (flags_ & flag) != 0; }

  // The compiler.
  // Reads the whole text into the graph; false after a syntax error. Runs
  // on a private stack when the thread's may be too small for the nesting.
  bool parse();
  bool parseWithin(std::uintptr_t stackLimit);
  NFANode *parseSequence(bool inParentheses, bool isAlternative, NFANode **tailOut, std::int32_t groupIndex,
                         bool headed);
  NFANode *applyQuantifier(NFANode *atom);
  NFANode *applyGroupQuantifier(NFANode *head, NFANode *tail, std::int32_t groupIndex);
  bool readQuantifier(std::int32_t *minimum, std::int32_t *maximum, QuantifierKind *kind);
  bool readBounds(std::int32_t *minimum, std::int32_t *maximum);
  NFANode *readBackReference();
  NFANode *readQuotedText();
  NFANode *readLookBehind(bool positive, NFANode **tailOut);
  NFANode *readNamedReference(NFANode **tailOut);
  // Reads inline flags behind "(?" up to ':' or ')'; false after a report.
  bool readFlags();

  // Classes and escapes.
  void reportSyntaxError();
  ByteSet readClass();
  // Reads the range behind lower, with the cursor on the '-'.
  ByteSet readRange(unsigned char lower);
  ByteSet readEscape(bool *inverted, bool *quoted);
  // An escape inside brackets, where \Q has no place: false after its
  // report, with the cursor put at the end of the text.
  bool readClassEscape(ByteSet *members, bool *inverted);
  ByteSet readOctalEscape();
  ByteSet readHexEscape();
  ByteSet readClassName();
  ByteSet invertClass(const ByteSet &members) const;

  NodeArena nodes_;
  std::unique_ptr<PatternMatcher> matcher_;
  NFANode *head_ = nullptr;
  std::string text_;
  bool error_ = false;
  std::int32_t cursor_ = 0;
  std::int32_t groupCount_ = 0;
  std::int32_t nonCapturingCounter_ = 0;
  std::int32_t flags_;
  std::uintptr_t stackLimit_ = 0;
  bool tooDeep_ = false;  // refused for its nesting: reported once, then silent
};

#endif  // QUOREL_PATTERN_PATTERN_H_
