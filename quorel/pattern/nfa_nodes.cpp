#include "quorel/pattern/nfa_nodes.h"

#include <cctype>
#include <cstdio>
#include <cstring>

#include "quorel/pattern/pattern_matcher.h"
#include "quorel/platform/case_compare.h"

namespace {

const char *truth(bool value) { return value ? "true" : "false"; }

bool isLineTerminator(char c) { return c == '\n' || c == '\r'; }

bool isLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

}  // namespace

unsigned char foldByte(unsigned char c) {
  return static_cast<unsigned char>(std::tolower(static_cast<signed char>(c)));
}

namespace {

// Every byte whose folding is in folded.
ByteSet unfold(const ByteSet &folded) {
  ByteSet bytes;
  for (unsigned c = 0; c < 256; ++c) {
    if (folded.contains(foldByte(static_cast<unsigned char>(c)))) bytes.add(static_cast<unsigned char>(c));
  }
  return bytes;
}

ByteSet foldAll(const ByteSet &members) {
  ByteSet folded;
  for (unsigned c = 0; c < 256; ++c) {
    if (members.contains(static_cast<unsigned char>(c))) folded.add(foldByte(static_cast<unsigned char>(c)));
  }
  return folded;
}

ByteSet single(char c) {
  ByteSet set;
  set.add(static_cast<unsigned char>(c));
  return set;
}

}  // namespace

// Single bytes. Each node knows the bytes it takes, folding and inversion
// worked out when it is made.

NFACharNode::NFACharNode(char c) : c_(c), accepted_(single(c)) {}

std::int32_t NFACharNode::match(const char *input, PatternMatcher *matcher, std::int32_t position) {
  return matchByte(accepted_, input, matcher, position);
}

void NFACharNode::print(std::int32_t indent) {
  printLine(indent, "(0x%02X)", static_cast<int>(static_cast<signed char>(c_)));
  printNext(indent);
}

NFACICharNode::NFACICharNode(char c)
    : c_(static_cast<char>(foldByte(static_cast<unsigned char>(c)))), accepted_(unfold(single(c_))) {}

std::int32_t NFACICharNode::match(const char *input, PatternMatcher *matcher, std::int32_t position) {
  return matchByte(accepted_, input, matcher, position);
}

void NFACICharNode::print(std::int32_t indent) {
  printLine(indent, "(0x%02X)", static_cast<int>(static_cast<signed char>(c_)));
  printNext(indent);
}

NFAClassNode::NFAClassNode(const ByteSet &members, bool inverted)
    : inverted_(inverted), members_(members), accepted_(inverted ? ~members : members) {}

std::int32_t NFAClassNode::match(const char *input, PatternMatcher *matcher, std::int32_t position) {
  return matchByte(accepted_, input, matcher, position);
}

void NFAClassNode::print(std::int32_t indent) {
  printLine(indent, "(%d vals, inv=%s)", static_cast<int>(members_.count()), truth(inverted_));
  printNext(indent);
}

NFACIClassNode::NFACIClassNode(const ByteSet &members, bool inverted)
    : inverted_(inverted), members_(foldAll(members)) {
  ByteSet taken = unfold(members_);
  accepted_ = inverted ? ~taken : taken;
}

std::int32_t NFACIClassNode::match(const char *input, PatternMatcher *matcher, std::int32_t position) {
  return matchByte(accepted_, input, matcher, position);
}

void NFACIClassNode::print(std::int32_t indent) { printNext(indent); }

// Marks and anchors.

std::int32_t NFAStartNode::match(const char *input, PatternMatcher *matcher, std::int32_t position) {
  matcher->setStart(0, position);
  if (matcher->getMode() & PatternMatcher::MatchWhole) {
    if (position != 0) {
      matcher->setStart(0, -1);
      return -1;
    }
    return goOn(input, matcher, 0);
  }
  // A search: each later position in turn, the end of the input included.
  for (std::int32_t p = position;; ++p) {
    std::int32_t result = goOn(input, matcher, p);
    if (result != -1) return result;
    if (p >= matcher->inputLength() || matcher->stopped()) break;
    matcher->resetGroups();
    matcher->setStart(0, p + 1);
  }
  matcher->setStart(0, -1);
  return -1;
}

std::int32_t NFAEndNode::match(const char *, PatternMatcher *matcher, std::int32_t position) {
  matcher->setEnd(0, position);
  if ((matcher->getMode() & PatternMatcher::MatchWhole) && position != matcher->inputLength()) {
    matcher->setEnd(0, -1);
    return -1;
  }
  return position;
}

std::int32_t NFAAcceptNode::match(const char *, PatternMatcher *, std::int32_t position) { return position; }

std::int32_t NFASubStartNode::match(const char *input, PatternMatcher *matcher, std::int32_t position) {
  return goOn(input, matcher, position);
}

std::int32_t NFAStartOfLineNode::match(const char *input, PatternMatcher *matcher, std::int32_t position) {
  if (position != 0 && !isLineTerminator(input[position - 1])) return -1;
  return goOn(input, matcher, position);
}

std::int32_t NFAEndOfLineNode::match(const char *input, PatternMatcher *matcher, std::int32_t position) {
  if (position < matcher->inputLength() && !isLineTerminator(input[position])) return -1;
  return goOn(input, matcher, position);
}

std::int32_t NFAStartOfInputNode::match(const char *input, PatternMatcher *matcher, std::int32_t position) {
  if (position != 0) return -1;
  return goOn(input, matcher, position);
}

bool NFAStartOfInputNode::isStartOfInput() { return true; }

std::int32_t NFAEndOfMatchNode::match(const char *input, PatternMatcher *matcher, std::int32_t position) {
  if (position != matcher->getLastMatchEnd()) return -1;
  return goOn(input, matcher, position);
}

std::int32_t NFAEndOfInputNode::match(const char *input, PatternMatcher *matcher, std::int32_t position) {
  std::int32_t length = matcher->inputLength();
  bool atEnd = position == length;
  if (!atEnd && term_) {
    atEnd = (position == length - 1 && isLineTerminator(input[length - 1])) ||
            (position == length - 2 && input[length - 2] == '\r' && input[length - 1] == '\n');
  }
  if (!atEnd) return -1;
  return goOn(input, matcher, position);
}

void NFAEndOfInputNode::print(std::int32_t indent) {
  printLine(indent, "(term=%s)", truth(term_));
  printNext(indent);
}

std::int32_t NFAWordBoundaryNode::match(const char *input, PatternMatcher *matcher, std::int32_t position) {
  if (position < matcher->inputLength()) {
    bool before = position > 0 && isLetter(input[position - 1]);
    bool at = isLetter(input[position]);
    if ((before != at) != pos_) return -1;
  }
  return goOn(input, matcher, position);
}

void NFAWordBoundaryNode::print(std::int32_t indent) {
  printLine(indent, "(pos=%s)", truth(pos_));
  printNext(indent);
}

// Alternation and look-around.

void NFAOrNode::markReachable(std::map<NFANode *, bool> &nodes) {
  if (one_ != nullptr) one_->markReachable(nodes);
  if (two_ != nullptr) two_->markReachable(nodes);
  NFANode::markReachable(nodes);
}

std::int32_t NFAOrNode::match(const char *input, PatternMatcher *matcher, std::int32_t position) {
  for (NFANode *branch : {one_, two_}) {
    std::int32_t end = follow(branch, input, matcher, position);
    if (end != -1) {
      std::int32_t result = goOn(input, matcher, end);
      if (result != -1) return result;
    }
  }
  return -1;
}

void NFAOrNode::print(std::int32_t indent) {
  printLine(indent, nullptr);
  std::printf("%*cone\n", static_cast<int>(indent * 2 + 1), ' ');
  if (one_ != nullptr) one_->print(indent + 2);
  std::printf("%*ctwo\n", static_cast<int>(indent * 2 + 1), ' ');
  if (two_ != nullptr) two_->print(indent + 2);
}

void NFALookAheadNode::markReachable(std::map<NFANode *, bool> &nodes) {
  if (inner_ != nullptr) inner_->markReachable(nodes);
  NFANode::markReachable(nodes);
}

std::int32_t NFALookAheadNode::match(const char *input, PatternMatcher *matcher, std::int32_t position) {
  bool found = follow(inner_, input, matcher, position) != -1;
  if (found != positive_) return -1;
  return goOn(input, matcher, position);
}

void NFALookAheadNode::print(std::int32_t indent) {
  printLine(indent, "(pos=%s)", truth(positive_));
  if (inner_ != nullptr) inner_->print(indent + 1);
  printNext(indent);
}

std::int32_t NFALookBehindNode::match(const char *input, PatternMatcher *matcher, std::int32_t position) {
  auto length = static_cast<std::int32_t>(text_.size());
  bool fits = position >= length && std::memcmp(input + position - length, text_.data(), text_.size()) == 0;
  if (fits != positive_) return -1;
  return goOn(input, matcher, position);
}

void NFALookBehindNode::print(std::int32_t indent) {
  printLine(indent, "(str=%s, pos=%s)", text_.c_str(), truth(positive_));
  printNext(indent);
}

// Groups.

void NFAReferenceNode::print(std::int32_t indent) {
  printLine(indent, "(gi=%d)", static_cast<int>(gi_));
  printNext(indent);
}

void NFAGroupHeadNode::print(std::int32_t indent) {
  printLine(indent, "(gi=%d)", static_cast<int>(gi_));
  printNext(indent);
}

void NFAGroupTailNode::print(std::int32_t indent) {
  printLine(indent, "(gi=%d)", static_cast<int>(gi_));
  printNext(indent);
}

void NFAGroupLoopPrologueNode::print(std::int32_t indent) {
  printLine(indent, "(gi=%d)", static_cast<int>(gi_));
  printNext(indent);
}

std::int32_t NFAReferenceNode::match(const char *input, PatternMatcher *matcher, std::int32_t position) {
  std::int32_t start = matcher->start(gi_);
  std::int32_t end = matcher->end(gi_);
  // An unset, open or empty group, or one the pattern does not have, passes
  // as empty.
  if (gi_ < 1 || start < 0 || end <= start) return goOn(input, matcher, position);
  std::int32_t length = end - start;
  if (position + length > matcher->inputLength()) return -1;
  if (std::memcmp(input + position, input + start, static_cast<std::size_t>(length)) != 0) return -1;
  return goOn(input, matcher, position + length);
}

std::int32_t NFAGroupHeadNode::match(const char *input, PatternMatcher *matcher, std::int32_t position) {
  std::int32_t saved = matcher->start(gi_);
  matcher->setStart(gi_, position);
  std::int32_t result = goOn(input, matcher, position);
  if (result == -1) matcher->setStart(gi_, saved);
  return result;
}

bool NFAGroupHeadNode::isGroupHead() { return true; }

std::int32_t NFAGroupTailNode::match(const char *input, PatternMatcher *matcher, std::int32_t position) {
  std::int32_t saved = matcher->end(gi_);
  matcher->setEnd(gi_, position);
  std::int32_t result = goOn(input, matcher, position);
  if (result == -1) matcher->setEnd(gi_, saved);
  return result;
}

std::int32_t NFAGroupLoopPrologueNode::match(const char *input, PatternMatcher *matcher, std::int32_t position) {
  std::int32_t count = matcher->loopCount(gi_);
  std::int32_t savedCount = matcher->loopSavedCount(gi_);
  std::int32_t loopPosition = matcher->loopPosition(gi_);
  matcher->setLoopCount(gi_, 0);
  matcher->setLoopSavedCount(gi_, 0);
  matcher->setLoopPosition(gi_, -1);
  std::int32_t result = goOn(input, matcher, position);
  if (result == -1) {
    matcher->setLoopCount(gi_, count);
    matcher->setLoopSavedCount(gi_, savedCount);
    matcher->setLoopPosition(gi_, loopPosition);
  }
  return result;
}

void NFAGroupLoopNode::markReachable(std::map<NFANode *, bool> &nodes) {
  auto it = nodes.find(this);
  if (it == nodes.end() || it->second) return;
  // Marked before the body is visited: the body leads back here.
  it->second = true;
  if (body_ != nullptr) body_->markReachable(nodes);
  if (next != nullptr) next->markReachable(nodes);
}

std::int32_t NFAGroupLoopNode::iterate(const char *input, PatternMatcher *matcher, std::int32_t position) {
  std::int32_t saved = matcher->loopPosition(gi_);
  matcher->setLoopPosition(gi_, position);
  matcher->setLoopCount(gi_, matcher->loopCount(gi_) + 1);
  std::int32_t result = follow(body_, input, matcher, position);
  if (result < 0) {
    matcher->setLoopCount(gi_, matcher->loopCount(gi_) - 1);
    matcher->setLoopPosition(gi_, saved);
  }
  return result;
}

std::int32_t NFAGroupLoopNode::match(const char *input, PatternMatcher *matcher, std::int32_t position) {
  // An iteration that consumed nothing ends the loop, whatever the count.
  if (position <= matcher->loopPosition(gi_)) return goOn(input, matcher, position);
  std::int32_t count = matcher->loopCount(gi_);
  if (count < min_) return iterate(input, matcher, position);
  if (count >= max_) return goOn(input, matcher, position);
  switch (kind_) {
    case kGreedy: {
      std::int32_t result = iterate(input, matcher, position);
      return result >= 0 ? result : goOn(input, matcher, position);
    }
    case kReluctant: {
      std::int32_t result = goOn(input, matcher, position);
      return result != -1 ? result : iterate(input, matcher, position);
    }
    default: {
      // Only the last iteration may fall through to what follows: a further
      // iteration overwrites the noted count.
      matcher->setLoopSavedCount(gi_, count);
      std::int32_t result = iterate(input, matcher, position);
      if (result >= 0) return result;
      if (matcher->loopCount(gi_) == matcher->loopSavedCount(gi_)) return goOn(input, matcher, position);
      return -1;
    }
  }
}

void NFAGroupLoopNode::print(std::int32_t indent) {
  static const char *const kKinds[] = {"greedy", "reluctant", "possessive"};
  printLine(indent, "(gi=%d, min=%d, max=%d, type=%s)", static_cast<int>(gi_), static_cast<int>(min_),
            static_cast<int>(max_), kKinds[kind_]);
  printNext(indent);
}

// Fixed texts.

namespace {

// Whether the text stands in input at position, ignoring the case of A to Z
// if asked, as the case-blind comparison of the platform does.
bool textAt(const std::string &text, bool ignoreCase, const char *input, PatternMatcher *matcher,
            std::int32_t position) {
  auto length = static_cast<std::int32_t>(text.size());
  if (position + length > matcher->inputLength()) return false;
  if (!ignoreCase) return std::memcmp(input + position, text.data(), text.size()) == 0;
  return quorel::platform::compareIgnoringCase(input + position, text.data(), text.size()) == 0;
}

}  // namespace

std::int32_t NFAQuoteNode::match(const char *input, PatternMatcher *matcher, std::int32_t position) {
  if (!textAt(text_, false, input, matcher, position)) return -1;
  return goOn(input, matcher, position + static_cast<std::int32_t>(text_.size()));
}

void NFAQuoteNode::print(std::int32_t indent) {
  printLine(indent, "(%s)", text_.c_str());
  printNext(indent);
}

std::int32_t NFACIQuoteNode::match(const char *input, PatternMatcher *matcher, std::int32_t position) {
  if (!textAt(text_, true, input, matcher, position)) return -1;
  return goOn(input, matcher, position + static_cast<std::int32_t>(text_.size()));
}

void NFACIQuoteNode::print(std::int32_t indent) {
  printLine(indent, "(%s)", text_.c_str());
  printNext(indent);
}

// Quantifiers over an atom.

NFAQuantifierNode::NFAQuantifierNode(std::int32_t min, std::int32_t max, NFANode *inner)
    : min_(min), max_(max), inner_(inner), single_(inner != nullptr ? inner->acceptedBytes() : nullptr) {}

void NFAQuantifierNode::markReachable(std::map<NFANode *, bool> &nodes) {
  if (inner_ != nullptr) inner_->markReachable(nodes);
  NFANode::markReachable(nodes);
}

std::int32_t NFAQuantifierNode::runOfBytes(const char *input, PatternMatcher *matcher, std::int32_t position,
                                           std::int32_t most) const {
  const ByteSet set = *single_;
  std::int32_t available = matcher->inputLength() - position;
  std::int32_t limit = most < available ? most : available;
  const char *at = input + position;
  std::int32_t n = 0;
  while (n < limit && set.contains(static_cast<unsigned char>(at[n]))) ++n;
  // As many node visits as one run of the atom per repetition, and the try
  // that ended the run.
  if (!matcher->spendSteps(static_cast<std::int64_t>(n) + 1)) return -1;
  return n;
}

std::int32_t NFAQuantifierNode::match(const char *input, PatternMatcher *matcher, std::int32_t position) {
  if (min_ < 1) return position;
  if (single_ != nullptr) {
    std::int32_t n = runOfBytes(input, matcher, position, min_);
    return n == min_ ? position + n : -1;
  }
  std::int32_t p = position;
  for (std::int32_t run = 0; run < min_; ++run) {
    std::int32_t result = follow(inner_, input, matcher, p);
    // An atom that consumed nothing has met the rest of the minimum.
    if (result <= p) return result;
    p = result;
  }
  return p;
}

void NFAQuantifierNode::print(std::int32_t indent) {
  printLine(indent, "(min=%d, max=%d)", static_cast<int>(min_), static_cast<int>(max_));
  std::printf("%*cinner\n", static_cast<int>(indent * 2 + 1), ' ');
  if (inner_ != nullptr) inner_->print(indent + 2);
  printNext(indent);
}

std::int32_t NFAGreedyQuantifierNode::match(const char *input, PatternMatcher *matcher, std::int32_t position) {
  std::int32_t p = NFAQuantifierNode::match(input, matcher, position);
  if (p == -1) return -1;
  return matchRepeat(input, matcher, p, min_);
}

std::int32_t NFAGreedyQuantifierNode::matchRepeat(const char *input, PatternMatcher *matcher,
                                                  std::int32_t position, std::int32_t count) {
  if (single_ != nullptr) {
    // How far the atom repeats; then the rest of the path from the longest
    // run back to the shortest, as the recursion below would try them, but
    // without a level of recursion per byte.
    std::int32_t n = count < max_ ? runOfBytes(input, matcher, position, max_ - count) : 0;
    if (n < 0) return -1;
    for (std::int32_t p = position + n;; --p) {
      std::int32_t result = goOn(input, matcher, p);
      if (result != -1 || p == position || matcher->stopped()) return result;
    }
  }
  if (count >= max_) return goOn(input, matcher, position);
  std::int32_t r = follow(inner_, input, matcher, position);
  // An atom that matches without consuming ends the repetition.
  if (r != -1 && r > position) {
    std::int32_t result = matchRepeat(input, matcher, r, count + 1);
    if (result != -1) return result;
  }
  return goOn(input, matcher, position);
}

std::int32_t NFALazyQuantifierNode::match(const char *input, PatternMatcher *matcher, std::int32_t position) {
  std::int32_t p = NFAQuantifierNode::match(input, matcher, position);
  if (p == -1) return -1;
  for (std::int32_t count = min_; count < max_; ++count) {
    std::int32_t result = goOn(input, matcher, p);
    if (result != -1) return result;
    std::int32_t r = follow(inner_, input, matcher, p);
    if (r <= p) return -1;
    p = r;
  }
  return goOn(input, matcher, p);
}

std::int32_t NFAPossessiveQuantifierNode::match(const char *input, PatternMatcher *matcher,
                                                std::int32_t position) {
  std::int32_t p = NFAQuantifierNode::match(input, matcher, position);
  if (p == -1) return -1;
  if (single_ != nullptr) {
    std::int32_t n = min_ < max_ ? runOfBytes(input, matcher, p, max_ - min_) : 0;
    return n < 0 ? -1 : goOn(input, matcher, p + n);
  }
  for (std::int32_t count = min_; count < max_; ++count) {
    std::int32_t r = follow(inner_, input, matcher, p);
    if (r <= p) break;
    p = r;
  }
  return goOn(input, matcher, p);
}
