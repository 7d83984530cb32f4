// The node classes of a compiled pattern. What each matches, and in which
// order it tries its choices, is told at its match; the compiler that builds
// them is Pattern.

#ifndef QUOREL_PATTERN_NFA_NODES_H_
#define QUOREL_PATTERN_NFA_NODES_H_

#include <bitset>
#include <cstdint>
#include <string>

#include "quorel/pattern/nfa_node.h"

// A set of byte values, built from a class text.
class ByteSet {
 public:
  ByteSet() = default;
  // foldCase: each byte through tolower before it is stored.
  ByteSet(const std::string &classText, bool foldCase);
  bool contains(unsigned char c) const { return bits_.test(c); }
  std::int32_t size() const { return static_cast<std::int32_t>(bits_.count()); }

 private:
  std::bitset<256> bits_;
};

// tolower of a byte taken as a signed char; only A to Z change.
unsigned char foldByte(unsigned char c);

class NFACharNode : public NFANode {
 public:
  explicit NFACharNode(char c) : c_(c) {}
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
  void print(std::int32_t indent) override;
  char character() const { return c_; }

 protected:
  char c_;
};

class NFACICharNode : public NFACharNode {
 public:
  explicit NFACICharNode(char c) : NFACharNode(static_cast<char>(foldByte(static_cast<unsigned char>(c)))) {}
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
};

class NFAClassNode : public NFANode {
 public:
  NFAClassNode(const std::string &classText, bool inverted) : NFAClassNode(classText, inverted, false) {}
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
  void print(std::int32_t indent) override;
  // Whether the byte at position is taken by this class.
  bool takes(unsigned char c) const;

 protected:
  NFAClassNode(const std::string &classText, bool inverted, bool foldCase)
      : inverted_(inverted), set_(classText, foldCase), foldCase_(foldCase) {}

 private:
  bool inverted_;
  ByteSet set_;
  bool foldCase_;
};

class NFACIClassNode : public NFAClassNode {
 public:
  NFACIClassNode(const std::string &classText, bool inverted) : NFAClassNode(classText, inverted, true) {}
  // Writes no line of its own.
  void print(std::int32_t indent) override;
};

// A node that only marks a place: the starts and ends of chains.
class NFAMarkNode : public NFANode {
 public:
  void print(std::int32_t indent) override;
};

class NFAStartNode : public NFAMarkNode {
 public:
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
};

class NFAEndNode : public NFAMarkNode {
 public:
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
};

class NFAAcceptNode : public NFAMarkNode {
 public:
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
};

class NFASubStartNode : public NFAMarkNode {
 public:
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
};

class NFAStartOfLineNode : public NFAMarkNode {
 public:
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
};

class NFAEndOfLineNode : public NFAMarkNode {
 public:
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
};

class NFAStartOfInputNode : public NFAMarkNode {
 public:
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
  bool isStartOfInput() override;
};

class NFAEndOfMatchNode : public NFAMarkNode {
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

// References and the nodes of groups carry a group index.
class NFAGroupIndexNode : public NFANode {
 public:
  explicit NFAGroupIndexNode(std::int32_t gi) : gi_(gi) {}
  void print(std::int32_t indent) override;

 protected:
  std::int32_t gi_;
};

class NFAReferenceNode : public NFAGroupIndexNode {
 public:
  using NFAGroupIndexNode::NFAGroupIndexNode;
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
};

class NFAGroupHeadNode : public NFAGroupIndexNode {
 public:
  using NFAGroupIndexNode::NFAGroupIndexNode;
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
  bool isGroupHead() override;
};

class NFAGroupTailNode : public NFAGroupIndexNode {
 public:
  using NFAGroupIndexNode::NFAGroupIndexNode;
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
};

class NFAGroupLoopPrologueNode : public NFAGroupIndexNode {
 public:
  using NFAGroupIndexNode::NFAGroupIndexNode;
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
};

enum QuantifierKind : std::int32_t { kGreedy = 0, kReluctant = 1, kPossessive = 2 };

class NFAGroupLoopNode : public NFAGroupIndexNode {
 public:
  NFAGroupLoopNode(std::int32_t gi, std::int32_t min, std::int32_t max, QuantifierKind kind, NFANode *body)
      : NFAGroupIndexNode(gi), min_(min), max_(max), kind_(kind), body_(body) {}
  void markReachable(std::map<NFANode *, bool> &nodes) override;
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
  // The body is not printed, which keeps the dump of a loop finite.
  void print(std::int32_t indent) override;

 private:
  // Runs the body as iteration number count + 1, beginning at position.
  std::int32_t iterate(const char *input, PatternMatcher *matcher, std::int32_t position);

  std::int32_t min_;
  std::int32_t max_;
  QuantifierKind kind_;
  NFANode *body_;
};

class NFAQuoteNode : public NFANode {
 public:
  explicit NFAQuoteNode(std::string text) : text_(std::move(text)) {}
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
  void print(std::int32_t indent) override;

 protected:
  // Whether the bytes at input + position are the text.
  virtual bool same(const char *at) const;
  std::string text_;
};

class NFACIQuoteNode : public NFAQuoteNode {
 public:
  using NFAQuoteNode::NFAQuoteNode;

 protected:
  // Ignores the case of A to Z only.
  bool same(const char *at) const override;
};

class NFAQuantifierNode : public NFANode {
 public:
  NFAQuantifierNode(std::int32_t min, std::int32_t max, NFANode *inner) : min_(min), max_(max), inner_(inner) {}
  void markReachable(std::map<NFANode *, bool> &nodes) override;
  // Runs the minimum: the position after min runs of the atom, or -1.
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
  void print(std::int32_t indent) override;

 protected:
  std::int32_t min_;
  std::int32_t max_;
  NFANode *inner_;
};

class NFAGreedyQuantifierNode : public NFAQuantifierNode {
 public:
  using NFAQuantifierNode::NFAQuantifierNode;
  std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) override;
  // The longest repetition first, then each shorter one.
  virtual std::int32_t matchRepeat(const char *input, PatternMatcher *matcher, std::int32_t position,
                                   std::int32_t count);

 private:
  // The same for an atom of one byte, by a loop instead of a recursion per
  // repetition, so that long runs need no stack.
  std::int32_t matchRepeatSingle(const char *input, PatternMatcher *matcher, std::int32_t position,
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
