// The node classes of a compiled pattern. What each matches, and in which
// order it tries its choices, is told at its match; the compiler that builds
// them is Pattern. Every class derives directly from NFANode, but the three
// quantifiers over an atom, which share the run of the minimum.

#ifndef QUOREL_PATTERN_NFA_NODES_H_
#define QUOREL_PATTERN_NFA_NODES_H_

#include <cstdint>
#include <string>

#include "quorel/pattern/byte_set.h"
#include "quorel/pattern/nfa_node.h"

// tolower of a byte taken as a signed char; only A to Z change.
unsigned char foldByte(unsigned char c);

// One exact byte.
class NFACharNode : public NFANode {
 public:
  explicit NFACharNode(char c);
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
  void print(std::int32_t indent) override;
  const ByteSet *acceptedBytes() const override { return &accepted_; }

 private:
  char c_;
  ByteSet accepted_;
};

// One byte whose tolower is the character.
class NFACICharNode : public NFANode {
 public:
  // c is stored through tolower.
  explicit NFACICharNode(char c);
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
  void print(std::int32_t indent) override;
  const ByteSet *acceptedBytes() const override { return &accepted_; }

 private:
  char c_;
  ByteSet accepted_;
};

// One byte that is (or, inverted, is not) a member.
class NFAClassNode : public NFANode {
 public:
  NFAClassNode(const ByteSet &members, bool inverted);
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
  void print(std::int32_t indent) override;
  const ByteSet *acceptedBytes() const override { return &accepted_; }

 private:
  bool inverted_;
  ByteSet members_;
  ByteSet accepted_;  // the members, or the others when inverted
};

// The same, with members and input byte through tolower. Writes no line of
// its own in the dump.
class NFACIClassNode : public NFANode {
 public:
  NFACIClassNode(const ByteSet &members, bool inverted);
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
  void print(std::int32_t indent) override;
  const ByteSet *acceptedBytes() const override { return &accepted_; }

 private:
  // Every byte whose folding is the folding of a member, or of none when
  // inverted. The dump shows nothing of it, so nothing else is kept.
  ByteSet accepted_;
};

// The starts and ends of chains.

class NFAStartNode : public NFANode {
 public:
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
};

class NFAEndNode : public NFANode {
 public:
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
};

class NFAAcceptNode : public NFANode {
 public:
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
};

class NFASubStartNode : public NFANode {
 public:
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
};

// Anchors: none of them moves the position.

class NFAStartOfLineNode : public NFANode {
 public:
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
};

class NFAEndOfLineNode : public NFANode {
 public:
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
};

class NFAStartOfInputNode : public NFANode {
 public:
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
  bool isStartOfInput() override;
};

class NFAEndOfMatchNode : public NFANode {
 public:
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
};

class NFAEndOfInputNode : public NFANode {
 public:
  // term: a final line terminator may stand behind the position.
  explicit NFAEndOfInputNode(bool term) : term_(term) {}
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
  void print(std::int32_t indent) override;

 private:
  bool term_;
};

class NFAWordBoundaryNode : public NFANode {
 public:
  // pos: true for a boundary, false for its absence.
  explicit NFAWordBoundaryNode(bool pos) : pos_(pos) {}
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
  void print(std::int32_t indent) override;

 private:
  bool pos_;
};

// Alternation and look-around.

class NFAOrNode : public NFANode {
 public:
  NFAOrNode(NFANode *one, NFANode *two) : one_(one), two_(two) {}
  void markReachable(std::map<NFANode *, bool> &nodes) override;
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
  void print(std::int32_t indent) override;

 private:
  NFANode *one_;
  NFANode *two_;
};

class NFALookAheadNode : public NFANode {
 public:
  NFALookAheadNode(bool positive, NFANode *inner) : positive_(positive), inner_(inner) {}
  void markReachable(std::map<NFANode *, bool> &nodes) override;
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
  void print(std::int32_t indent) override;

 private:
  bool positive_;
  NFANode *inner_;
};

class NFALookBehindNode : public NFANode {
 public:
  NFALookBehindNode(bool positive, std::string text) : positive_(positive), text_(std::move(text)) {}
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
  void print(std::int32_t indent) override;

 private:
  bool positive_;
  std::string text_;
};

// References and groups, each with its group index.

class NFAReferenceNode : public NFANode {
 public:
  explicit NFAReferenceNode(std::int32_t gi) : gi_(gi) {}
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
  void print(std::int32_t indent) override;

 private:
  std::int32_t gi_;
};

class NFAGroupHeadNode : public NFANode {
 public:
  explicit NFAGroupHeadNode(std::int32_t gi) : gi_(gi) {}
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
  void print(std::int32_t indent) override;
  bool isGroupHead() override;

 private:
  std::int32_t gi_;
};

class NFAGroupTailNode : public NFANode {
 public:
  explicit NFAGroupTailNode(std::int32_t gi) : gi_(gi) {}
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
  void print(std::int32_t indent) override;

 private:
  std::int32_t gi_;
};

class NFAGroupLoopPrologueNode : public NFANode {
 public:
  explicit NFAGroupLoopPrologueNode(std::int32_t gi) : gi_(gi) {}
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
  void print(std::int32_t indent) override;

 private:
  std::int32_t gi_;
};

enum QuantifierKind : std::int32_t { kGreedy = 0, kReluctant = 1, kPossessive = 2 };

class NFAGroupLoopNode : public NFANode {
 public:
  NFAGroupLoopNode(std::int32_t gi, std::int32_t min, std::int32_t max, QuantifierKind kind, NFANode *body)
      : gi_(gi), min_(min), max_(max), kind_(kind), body_(body) {}
  void markReachable(std::map<NFANode *, bool> &nodes) override;
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
  // The body is not printed, which keeps the dump of a loop finite.
  void print(std::int32_t indent) override;

 private:
  // Runs the body as iteration number count + 1, beginning at position.
  std::int32_t iterate(const char *input, PatternMatcher *matcher, std::int32_t position);

  std::int32_t gi_;
  std::int32_t min_;
  std::int32_t max_;
  QuantifierKind kind_;
  NFANode *body_;
};

// Fixed texts.

class NFAQuoteNode : public NFANode {
 public:
  explicit NFAQuoteNode(std::string text) : text_(std::move(text)) {}
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
  void print(std::int32_t indent) override;

 private:
  std::string text_;
};

// Ignores the case of A to Z only.
class NFACIQuoteNode : public NFANode {
 public:
  explicit NFACIQuoteNode(std::string text) : text_(std::move(text)) {}
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
  void print(std::int32_t indent) override;

 private:
  std::string text_;
};

// Quantifiers over an atom. The atom's chain ends in an NFAAcceptNode, so
// that running it gives the position behind one repetition.
class NFAQuantifierNode : public NFANode {
 public:
  // The atom's chain must be complete: an atom of one byte is asked once here.
  NFAQuantifierNode(std::int32_t min, std::int32_t max, NFANode *inner);
  void markReachable(std::map<NFANode *, bool> &nodes) override;
  // Runs the minimum: the position after min runs of the atom, or -1.
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
  void print(std::int32_t indent) override;

  std::int32_t minimum() const { return min_; }
  std::int32_t maximum() const { return max_; }
  // The bytes of a one-byte atom, or null for any other inner chain.
  const ByteSet *repeatedBytes() const { return single_; }

 protected:
  // For an atom of one byte: how many times, up to most, it repeats from
  // position, found by a loop; -1 once the step limit is spent.
  std::int32_t runOfBytes(const char *input, PatternMatcher *matcher, std::int32_t position,
                          std::int32_t most) const;

  std::int32_t min_;
  std::int32_t max_;
  NFANode *inner_;
  const ByteSet *single_;  // the bytes of a one-byte atom, or null
};

class NFAGreedyQuantifierNode : public NFAQuantifierNode {
 public:
  using NFAQuantifierNode::NFAQuantifierNode;
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
  // The longest repetition first, then each shorter one.
  virtual std::int32_t matchRepeat(const char *input, PatternMatcher *matcher, std::int32_t position,
                                   std::int32_t count);
};

class NFALazyQuantifierNode : public NFAQuantifierNode {
 public:
  using NFAQuantifierNode::NFAQuantifierNode;
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
};

class NFAPossessiveQuantifierNode : public NFAQuantifierNode {
 public:
  using NFAQuantifierNode::NFAQuantifierNode;
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
};

#endif  // QUOREL_PATTERN_NFA_NODES_H_
