#include "quorel/pattern/position_automaton.h"

#include <climits>
#include <vector>

#include "quorel/pattern/byte_set.h"
#include "quorel/pattern/nfa_nodes.h"

namespace {

constexpr std::int64_t kMostPositions = 63;

// One atom of the sequence and how often it may stand in a row.
struct Atom {
  const ByteSet *bytes;
  std::int64_t least;
  std::int64_t most;  // at least least; unused when unbounded
  bool unbounded;
};

template <typename T>
bool isA(const NFANode *node) {
  return dynamic_cast<const T *>(node) != nullptr;
}

std::uint64_t bit(std::int64_t position) { return std::uint64_t{1} << position; }

// The atoms of the main chain from head, or false when the chain is not a
// plain sequence of them.
bool readSequence(const NFANode *head, std::vector<Atom> *atoms) {
  if (!isA<NFAStartNode>(head)) return false;
  bool ended = false;  // an end-of-input anchor has been passed
  for (const NFANode *node = head->next; node != nullptr; node = node->next) {
    if (isA<NFAEndNode>(node)) return true;
    // At the front, the start of the input is where a whole match begins
    // anyway; at the back, the end node wants the end of the input as well.
    bool atFront = atoms->empty() && !ended;
    if (atFront && (isA<NFASubStartNode>(node) || isA<NFAStartOfInputNode>(node))) continue;
    if (isA<NFAEndOfInputNode>(node)) {
      ended = true;
      continue;
    }
    if (ended) return false;
    if (const ByteSet *bytes = node->acceptedBytes()) {
      atoms->push_back(Atom{bytes, 1, 1, false});
      continue;
    }
    auto *quantifier = dynamic_cast<const NFAQuantifierNode *>(node);
    if (quantifier == nullptr || quantifier->repeatedBytes() == nullptr || isA<NFAPossessiveQuantifierNode>(node)) {
      return false;
    }
    // The compiler's "no upper bound"; a count beyond the input's length
    // never binds, so INT_MAX itself is the same. A maximum below the minimum
    // repeats the minimum exactly, as the quantifier nodes do.
    std::int64_t least = quantifier->minimum();
    std::int64_t most = quantifier->maximum();
    atoms->push_back(Atom{quantifier->repeatedBytes(), least, most < least ? least : most, most == INT_MAX});
  }
  return false;
}

}  // namespace

std::unique_ptr<PositionAutomaton> PositionAutomaton::build(const NFANode *head) {
  std::vector<Atom> atoms;
  if (head == nullptr || !readSequence(head, &atoms)) return nullptr;

  // Each atom takes its least count of positions, then one that repeats or
  // one for each further repetition allowed.
  const std::size_t n = atoms.size();
  std::vector<std::int64_t> first(n);
  std::vector<std::int64_t> count(n);
  std::int64_t positions = 0;
  for (std::size_t a = 0; a < n; ++a) {
    first[a] = positions + 1;
    count[a] = atoms[a].least + (atoms[a].unbounded ? 1 : atoms[a].most - atoms[a].least);
    positions += count[a];
    if (positions > kMostPositions) return nullptr;
  }

  // Backwards from the end: the positions that entering atom a may lead to
  // (its first, and what follows it if it may be skipped), and whether the
  // pattern may end before atom a.
  std::vector<std::uint64_t> entry(n + 1, 0);
  std::vector<bool> mayEnd(n + 1, true);
  for (std::size_t a = n; a-- > 0;) {
    bool skippable = atoms[a].least == 0;
    entry[a] = (count[a] > 0 ? bit(first[a]) : 0) | (skippable ? entry[a + 1] : 0);
    mayEnd[a] = skippable && mayEnd[a + 1];
  }

  std::unique_ptr<PositionAutomaton> automaton(new PositionAutomaton());
  std::uint64_t followers[kMostPositions + 1] = {entry[0]};
  if (mayEnd[0]) automaton->accepting_ |= bit(0);
  for (std::size_t a = 0; a < n; ++a) {
    std::uint64_t mine = 0;
    for (std::int64_t repetition = 1; repetition <= count[a]; ++repetition) {
      std::int64_t p = first[a] + repetition - 1;
      mine |= bit(p);
      bool last = repetition == count[a];
      if (!last) followers[p] |= bit(p + 1);
      if (last && atoms[a].unbounded) followers[p] |= bit(p);
      if (repetition >= atoms[a].least) {
        followers[p] |= entry[a + 1];
        if (mayEnd[a + 1]) automaton->accepting_ |= bit(p);
      }
    }
    for (unsigned c = 0; c < 256; ++c) {
      if (atoms[a].bytes->contains(static_cast<unsigned char>(c))) automaton->takers_[c] |= mine;
    }
  }

  // Each follower by the cheapest way there: the shift for the position
  // above, a mask for the position itself, a table for the rest.
  for (std::int64_t p = 0; p <= positions; ++p) {
    std::uint64_t above = p < kMostPositions ? bit(p + 1) : 0;
    if (followers[p] & bit(p)) automaton->looping_ |= bit(p);
    automaton->leaps_[p] = followers[p] & ~(above | bit(p));
    if (automaton->leaps_[p] != 0) automaton->leaping_ |= bit(p);
    if ((followers[p] & bit(p)) == 0) continue;
    for (unsigned c = 1; c < 256; ++c) {
      if ((automaton->takers_[c] & followers[p]) == bit(p)) automaton->stays_[p].add(static_cast<unsigned char>(c));
    }
  }
  return automaton;
}

bool PositionAutomaton::matches(const char *input) const {
  std::uint64_t state = bit(0);
  auto *at = reinterpret_cast<const unsigned char *>(input);
  if ((looping_ | leaping_) == 0) {
    // Each byte can only take the position above: the shift alone.
    for (; *at != 0; ++at) {
      state = (state << 1) & takers_[*at];
      if (state == 0) return false;
    }
    return (state & accepting_) != 0;
  }
  while (*at != 0) {
    std::uint64_t next = (state << 1) | (state & looping_);
    for (std::uint64_t leaping = state & leaping_; leaping != 0; leaping &= leaping - 1) {
      next |= leaps_[__builtin_ctzll(leaping)];
    }
    state = next & takers_[*at++];
    if (state == 0) return false;
    if ((state & looping_) != 0 && (state & (state - 1)) == 0) {
      const ByteSet &stays = stays_[__builtin_ctzll(state)];
      while (stays.contains(*at)) ++at;
    }
  }
  return (state & accepting_) != 0;
}
