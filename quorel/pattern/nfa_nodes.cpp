#include "quorel/pattern/nfa_nodes.h"

#include <cctype>
#include <cstdio>
#include <cstring>

#include "quorel/pattern/pattern_matcher.h"

namespace {

const char *truth(bool value) { return value ? "true" : "false"; }

bool isLineTerminator(char c) { return c == '\n' || c == '\r'; }

bool isLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

}  // namespace

unsigned char foldByte(unsigned char c) {
  return static_cast<unsigned char>(std::tolower(static_cast<signed char>(c)));
}

ByteSet::ByteSet(const std::string &classText, bool foldCase) {
  for (char c : classText) {
    auto byte = static_cast<unsigned char>(c);
    bits_.set(foldCase ? foldByte(byte) : byte);
  }
}

// Single bytes.

std::int32_t NFACharNode::match(const char *input, PatternMatcher *matcher, std::int32_t position) {
  if (position >= matcher->inputLength() || input[position] != c_) return -1;
  return goOn(input, matcher, position + 1);
}

void NFACharNode::print(std::int32_t indent) {
  printIndent(indent);
  std::printf("%s(0x%02X)\n", className(), static_cast<int>(static_cast<signed char>(c_)));
  if (next != nullptr) next->print(indent);
}

std::int32_t NFACICharNode::match(const char *input, PatternMatcher *matcher, std::int32_t position) {
  if (position >= matcher->inputLength() || foldByte(static_cast<unsigned char>(input[position])) !=
                                                static_cast<unsigned char>(c_)) {
    return -1;
  }
  return goOn(input, matcher, position + 1);
}

bool NFAClassNode::takes(unsigned char c) const {
  bool found = set_.contains(foldCase_ ? foldByte(c) : c);
  return found != inverted_;
}

std::int32_t NFAClassNode::match(const char *input, PatternMatcher *matcher, std::int32_t position) {
  if (position >= matcher->inputLength() || !takes(static_cast<unsigned char>(input[position]))) return -1;
  return goOn(input, matcher, position + 1);
}

void NFAClassNode::print(std::int32_t indent) {
  printIndent(indent);
  std::printf("%s(%d vals, inv=%s)\n", className(), static_cast<int>(set_.size()), truth(inverted_));
  if (next != nullptr) next->print(indent);
}

void NFACIClassNode::print(std::int32_t indent) {
  if (next != nullptr) next->print(indent);
}

// Marks and anchors.

void NFAMarkNode::print(std::int32_t indent) { NFANode::print(indent); }

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
  printIndent(indent);
  std::printf("%s(term=%s)\n", className(), truth(term_));
  if (next != nullptr) next->print(indent);
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
  printIndent(indent);
  std::printf("%s(pos=%s)\n", className(), truth(pos_));
  if (next != nullptr) next->print(indent);
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
  printIndent(indent);
  std::printf("%s\n", className());
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
  printIndent(indent);
  std::printf("%s(pos=%s)\n", className(), truth(positive_));
  if (inner_ != nullptr) inner_->print(indent + 1);
  if (next != nullptr) next->print(indent);
}

std::int32_t NFALookBehindNode::match(const char *input, PatternMatcher *matcher, std::int32_t position) {
  auto length = static_cast<std::int32_t>(text_.size());
  bool fits = position >= length && std::memcmp(input + position - length, text_.data(), text_.size()) == 0;
  if (fits != positive_) return -1;
  return goOn(input, matcher, position);
}

void NFALookBehindNode::print(std::int32_t indent) {
  printIndent(indent);
  std::printf("%s(str=%s, pos=%s)\n", className(), text_.c_str(), truth(positive_));
  if (next != nullptr) next->print(indent);
}

// Groups.

void NFAGroupIndexNode::print(std::int32_t indent) {
  printIndent(indent);
  std::printf("%s(gi=%d)\n", className(), static_cast<int>(gi_));
  if (next != nullptr) next->print(indent);
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
  printIndent(indent);
  std::printf("%s(gi=%d, min=%d, max=%d, type=%s)\n", className(), static_cast<int>(gi_), static_cast<int>(min_),
              static_cast<int>(max_), kKinds[kind_]);
  if (next != nullptr) next->print(indent);
}

// Fixed texts.

bool NFAQuoteNode::same(const char *at) const { return std::memcmp(at, text_.data(), text_.size()) == 0; }

bool NFACIQuoteNode::same(const char *at) const {
  for (std::size_t i = 0; i < text_.size(); ++i) {
    auto a = static_cast<unsigned char>(at[i]);
    auto b = static_cast<unsigned char>(text_[i]);
    if (a >= 'A' && a <= 'Z') a = static_cast<unsigned char>(a - 'A' + 'a');
    if (b >= 'A' && b <= 'Z') b = static_cast<unsigned char>(b - 'A' + 'a');
    if (a != b) return false;
  }
  return true;
}

std::int32_t NFAQuoteNode::match(const char *input, PatternMatcher *matcher, std::int32_t position) {
  auto length = static_cast<std::int32_t>(text_.size());
  if (position + length > matcher->inputLength() || !same(input + position)) return -1;
  return goOn(input, matcher, position + length);
}

void NFAQuoteNode::print(std::int32_t indent) {
  printIndent(indent);
  std::printf("%s(%s)\n", className(), text_.c_str());
  if (next != nullptr) next->print(indent);
}

// Quantifiers over an atom.

void NFAQuantifierNode::markReachable(std::map<NFANode *, bool> &nodes) {
  if (inner_ != nullptr) inner_->markReachable(nodes);
  NFANode::markReachable(nodes);
}

std::int32_t NFAQuantifierNode::match(const char *input, PatternMatcher *matcher, std::int32_t position) {
  if (min_ < 1) return position;
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
  printIndent(indent);
  std::printf("%s(min=%d, max=%d)\n", className(), static_cast<int>(min_), static_cast<int>(max_));
  std::printf("%*cinner\n", static_cast<int>(indent * 2 + 1), ' ');
  if (inner_ != nullptr) inner_->print(indent + 2);
  if (next != nullptr) next->print(indent);
}

std::int32_t NFAGreedyQuantifierNode::match(const char *input, PatternMatcher *matcher, std::int32_t position) {
  std::int32_t p = NFAQuantifierNode::match(input, matcher, position);
  if (p == -1) return -1;
  return matchRepeat(input, matcher, p, min_);
}

std::int32_t NFAGreedyQuantifierNode::matchRepeat(const char *input, PatternMatcher *matcher,
                                                  std::int32_t position, std::int32_t count) {
  auto *single = dynamic_cast<NFAClassNode *>(inner_);
  auto *character = dynamic_cast<NFACharNode *>(inner_);
  if ((single != nullptr || character != nullptr) && dynamic_cast<NFAAcceptNode *>(inner_->next) != nullptr) {
    return matchRepeatSingle(input, matcher, position, count);
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

std::int32_t NFAGreedyQuantifierNode::matchRepeatSingle(const char *input, PatternMatcher *matcher,
                                                        std::int32_t position, std::int32_t count) {
  // How far the atom repeats, one byte at a time; then the rest of the path
  // from the longest run back to the shortest, as the recursion would try.
  std::int32_t end = position;
  std::int32_t length = matcher->inputLength();
  while (count < max_ && end < length && follow(inner_, input, matcher, end) == end + 1) {
    ++end;
    ++count;
  }
  for (std::int32_t p = end;; --p) {
    std::int32_t result = goOn(input, matcher, p);
    if (result != -1 || p == position || matcher->stopped()) return result;
  }
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
  for (std::int32_t count = min_; count < max_; ++count) {
    std::int32_t r = follow(inner_, input, matcher, p);
    if (r <= p) break;
    p = r;
  }
  return goOn(input, matcher, p);
}
