// PositionAutomaton: a whole-input matcher for the usual shape of format
// patterns: a plain sequence of one-byte atoms (characters, classes, the
// dot), each taken once or under a greedy or reluctant quantifier, with
// anchors for the start and the end of the input at most at the two ends:
// "[0-9]{5}", "[A-Z]{2}[0-9]{2}[A-Z0-9]{12,30}", "^\d+,\d{2}$".
//
// For such a pattern the backtracking matcher of the nodes tries every way
// of sharing the input out among the atoms, so its answer is whether any
// sharing fits. The automaton answers the same question in one pass over the
// input, without recursion: each repetition of an atom is one position (the
// positions of the sequence in Glushkov's construction, bit 0 standing for
// the start), the positions that the bytes read so far may end in are one
// 64-bit word, and one byte costs a table lookup, a shift and a few masks.
//
// build() refuses everything else: possessive quantifiers and atomic groups,
// which give nothing back; groups, alternatives, references, look-around,
// quoted text and anchors inside the sequence; and sequences of more than
// 63 positions (a{64}, [0-9]{1,100}). The automaton knows nothing of the
// step limit of Pattern::setStepLimit: a caller bound by one asks the
// matcher. It copies what it needs from the nodes, so it may outlive them,
// and does not change once built.

#ifndef QUOREL_PATTERN_POSITION_AUTOMATON_H_
#define QUOREL_PATTERN_POSITION_AUTOMATON_H_

#include <cstdint>
#include <memory>

#include "quorel/pattern/byte_set.h"

class NFANode;

class PositionAutomaton {
 public:
  // The automaton of the compiled pattern whose main chain begins at head,
  // or null when the pattern is not of the shape.
  static std::unique_ptr<PositionAutomaton> build(const NFANode *head);

  PositionAutomaton(const PositionAutomaton &) = delete;
  PositionAutomaton &operator=(const PositionAutomaton &) = delete;

  // Whether the whole input matches the whole pattern.
  bool matches(const char *input) const;

 private:
  PositionAutomaton() = default;

  // Per input byte, the positions that take it; bit 0, the start, none.
  // Every position is followed by the one above it (the next repetition,
  // or the first of the next atom that has any), and the position above the
  // last takes nothing: a shift covers all of these followers at once.
  std::uint64_t takers_[256] = {};
  // The positions that may follow themselves (an unbounded repetition).
  std::uint64_t looping_ = 0;
  // The positions with further followers, and those followers: the atoms
  // reached over a repetition left early or an atom that may be skipped.
  std::uint64_t leaping_ = 0;
  std::uint64_t leaps_[64] = {};
  // The positions at which the whole pattern may end.
  std::uint64_t accepting_ = 0;
  // For a repeating position, the bytes (never 0) that leave the state at
  // that position alone: a long run of them, [0-9]+ over a long number, is
  // passed by a plain scan.
  ByteSet stays_[64];
};

#endif  // QUOREL_PATTERN_POSITION_AUTOMATON_H_
