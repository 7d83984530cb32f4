// NFANode: one node of a compiled pattern, and the program that matches.
//
// Matching is backtracking by recursion: a node tests its piece of the input
// at a position and calls the match of the node behind it; a success carries
// the end position of the whole path back up, -1 is a failure. The order of
// trial of the node classes decides what a pattern matches. Nodes hold no
// state of a match: match changes only the PatternMatcher. Nodes are owned
// by the NodeArena of their Pattern; the links between them own nothing
// (the graph has cycles through group loops).
//
// Every step into a further node goes through follow(), which refuses (-1,
// and the matcher remembers why) when the stack of the thread runs low or
// the thread's step limit is spent, so that no input overflows the stack.

#ifndef QUOREL_PATTERN_NFA_NODE_H_
#define QUOREL_PATTERN_NFA_NODE_H_

#include <cstdint>
#include <map>
#include <string>

class ByteSet;
class PatternMatcher;

class NFANode {
 public:
  NFANode() = default;
  NFANode(const NFANode &) = delete;
  NFANode &operator=(const NFANode &) = delete;
  virtual ~NFANode();

  // Marks every node reachable from here that is a key of nodes, stopping at
  // nodes that are no key or already marked.
  virtual void markReachable(std::map<NFANode *, bool> &nodes);
  // The end position of the path from here, or -1.
  virtual std::int32_t match(const char *input, PatternMatcher *matcher, std::int32_t position) = 0;
  // Writes the node's line of the dump, then goes on to next.
  virtual void print(std::int32_t indent);
  virtual bool isGroupHead();
  virtual bool isStartOfInput();
  // For a node that takes exactly one byte of input and does nothing else:
  // the bytes it takes. Null for every other node. Quantifiers ask it to
  // repeat such an atom by a tight loop instead of a call per byte.
  virtual const ByteSet *acceptedBytes() const;

  NFANode *next = nullptr;

 protected:
  // Runs node at position, unless the stack is running out.
  static std::int32_t follow(NFANode *node, const char *input, PatternMatcher *matcher, std::int32_t position);
  // Runs next at position.
  std::int32_t goOn(const char *input, PatternMatcher *matcher, std::int32_t position) {
    return follow(next, input, matcher, position);
  }
  // Takes the byte at position if it is one of accepted, and goes on behind it.
  std::int32_t matchByte(const ByteSet &accepted, const char *input, PatternMatcher *matcher,
                         std::int32_t position);
  // The dump line "%*c%s" of this node, then the details (a printf format and
  // its arguments, or null) and a line end.
  void printLine(std::int32_t indent, const char *details, ...) const __attribute__((format(printf, 3, 4)));
  // The lines of next, if there is one, at the same indent.
  void printNext(std::int32_t indent) const {
    if (next != nullptr) next->print(indent);
  }
  // The class name for the dump.
  std::string className() const;
  // Writes "%*c" for indent: a blank in a field of twice the indent.
  static void printIndent(std::int32_t indent);
};

#endif  // QUOREL_PATTERN_NFA_NODE_H_
