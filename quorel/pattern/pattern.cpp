// The compiler of the pattern language: one recursive pass over the text
// that builds each construct's nodes the moment it is read.

#include "quorel/pattern/pattern.h"

#include <climits>
#include <cstdio>
#include <exception>

#include "quorel/pattern/deep_call.h"
#include "quorel/pattern/pattern_cache.h"
#include "quorel/pattern/stack_guard.h"

const std::map<std::string, std::pair<std::string, std::int32_t>> Pattern::registeredPatterns;

namespace {

constexpr std::int32_t kUnlimited = INT_MAX;

// Stack room asked for each level of the compiler's recursion when it runs
// on a private stack: well above a frame of parseSequence, sanitizer builds
// included. Only the pages used are committed.
constexpr std::size_t kCompileBytesPerLevel = 2048;
constexpr std::size_t kMaxCompileStack = std::size_t{1} << 30;

enum class FrameKind { kGroup, kLookAhead, kNegativeLookAhead, kAtomic };

bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool isNameStart(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_'; }

}  // namespace

Pattern::Pattern(const char *text, std::int32_t flags) : text_(text != nullptr ? text : ""), flags_(flags) {}

Pattern::~Pattern() {
  // The matcher goes first, then the nodes with the arena.
  matcher_.reset();
}

char Pattern::peek(std::int32_t offset) const {
  auto at = static_cast<std::size_t>(cursor_ + offset);
  return at < text_.size() ? text_[at] : '\0';
}

Pattern *Pattern::compile(const char *pattern, std::int32_t flags) {
  std::unique_ptr<Pattern> compiled(new Pattern(pattern, flags));
  Pattern &p = *compiled;
  if (p.has(Literal)) {
    NFANode *quote = p.has(CaseInsensitive) ? static_cast<NFANode *>(p.make<NFACIQuoteNode>(p.text_))
                                            : p.make<NFAQuoteNode>(p.text_);
    p.head_ = p.make<NFAStartNode>();
    p.head_->next = quote;
    quote->next = p.make<NFAEndNode>();
    p.groupCount_ = 1;
  } else if (!p.parse()) {
    return nullptr;
  }
  p.matcher_ = std::make_unique<PatternMatcher>(compiled.get(), "");
  return compiled.release();
}

bool Pattern::parse() {
  // Each level of the compiler's recursion is entered at a '(' or a '|', so
  // their count bounds the depth. A thread whose stack may be too small for
  // that compiles on a private stack instead of refusing the pattern.
  std::size_t levels = 1;
  for (char c : text_) levels += c == '(' || c == '|';
  std::size_t needed = levels * kCompileBytesPerLevel;
  auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
  std::uintptr_t lowest = pattern_stack::lowestFrameAddress();
  if (here > lowest && here - lowest >= needed) return parseWithin(lowest);
  if (needed > kMaxCompileStack) needed = kMaxCompileStack;
  bool parsed = false;
  std::exception_ptr failure;
  bool ran = pattern_stack::callOnPrivateStack(needed, [&](std::uintptr_t privateLowest) {
    try {
      parsed = parseWithin(privateLowest);
    } catch (...) {
      failure = std::current_exception();  // cannot unwind across the stack switch
    }
  });
  if (!ran) return parseWithin(lowest);  // no private stack: the guard refuses what does not fit
  if (failure) std::rethrow_exception(failure);
  return parsed;
}

bool Pattern::parseWithin(std::uintptr_t stackLimit) {
  stackLimit_ = stackLimit;
  NFANode *tail = nullptr;
  NFANode *first = parseSequence(false, false, &tail, 0, false);
  if (first == nullptr) return false;
  if (!first->isStartOfInput()) {
    NFANode *start = make<NFAStartNode>();
    start->next = first;
    first = start;
  }
  head_ = first;
  tail->next = make<NFAEndNode>();
  return true;
}

bool Pattern::matches(const char *pattern, const char *input, std::int32_t flags) {
  return PatternCache::matchesOnThisThread(pattern, input, flags);
}

void Pattern::setCacheCapacity(std::int32_t capacity) {
  if (PatternCache *cache = PatternCache::forThisThread()) cache->setCapacity(capacity);
}

std::int32_t Pattern::getCacheCapacity() {
  PatternCache *cache = PatternCache::forThisThread();
  return cache != nullptr ? cache->capacity() : 0;
}

namespace {

// A plain word of static thread storage, read at every match.
thread_local std::int64_t stepLimit = 0;

}  // namespace

void Pattern::setStepLimit(std::int64_t steps) { stepLimit = steps < 0 ? 0 : steps; }

std::int64_t Pattern::getStepLimit() { return stepLimit; }

void Pattern::print() const {
  std::printf("Pattern(%s):\n", text_.c_str());
  if (head_ != nullptr) head_->print(0);
}

NFANode *Pattern::makeCharNode(char c) {
  if (has(CaseInsensitive)) return make<NFACICharNode>(c);
  return make<NFACharNode>(c);
}

NFANode *Pattern::makeClassNode(const ByteSet &members, bool inverted) {
  if (has(CaseInsensitive)) return make<NFACIClassNode>(members, inverted);
  return make<NFAClassNode>(members, inverted);
}

bool Pattern::readFlags() {
  bool off = false;
  while (!atEnd()) {
    char c = text_[static_cast<std::size_t>(cursor_++)];
    std::int32_t flag = 0;
    switch (c) {
      case 'i': flag = CaseInsensitive; break;
      case 'd': flag = UnixLines; break;
      case 'm': flag = MultiLine; break;
      case 's': flag = DotAll; break;
      case '-':
        if (off) {
          reportSyntaxError();
          return false;
        }
        off = true;
        continue;
      case ':':
      case ')':
        --cursor_;  // the caller decides by the closing character
        return true;
      default:
        reportSyntaxError();
        return false;
    }
    flags_ = off ? flags_ & ~flag : flags_ | flag;
  }
  reportSyntaxError();
  return false;
}

NFANode *Pattern::parseSequence(bool inParentheses, bool isAlternative, NFANode **tailOut, std::int32_t groupIndex,
                                bool headed) {
  if (reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)) < stackLimit_) {
    // Nested too deeply even for a private stack: one report, however many
    // levels give up behind it.
    reportSyntaxError();
    tooDeep_ = true;
    return nullptr;
  }
  const std::int32_t savedFlags = flags_;
  std::int32_t index = groupCount_++;
  FrameKind kind = FrameKind::kGroup;
  NFANode *first = nullptr;

  if (!inParentheses) first = make<NFASubStartNode>();
  if (isAlternative && inParentheses) {
    --groupCount_;
    index = groupIndex;
    first = headed ? static_cast<NFANode *>(make<NFAGroupHeadNode>(index)) : make<NFASubStartNode>();
  } else if (inParentheses) {
    if (peek() != '?') {
      first = make<NFAGroupHeadNode>(index);
    } else {
      --groupCount_;
      char c = peek(1);
      char d = peek(2);
      if (c == ':') {
        cursor_ += 2;
        index = --nonCapturingCounter_;
        first = make<NFAGroupHeadNode>(index);
      } else if (c == '=' || c == '!') {
        cursor_ += 2;
        kind = c == '=' ? FrameKind::kLookAhead : FrameKind::kNegativeLookAhead;
        first = make<NFASubStartNode>();
      } else if (c == '<' && (d == '=' || d == '!')) {
        cursor_ += 3;
        return readLookBehind(d == '=', tailOut);
      } else if (c == '>') {
        cursor_ += 2;
        kind = FrameKind::kAtomic;
        first = make<NFASubStartNode>();
      } else {
        ++cursor_;
        if (!readFlags()) return nullptr;
        if (text_[static_cast<std::size_t>(cursor_++)] == ')') {
          // A flag group: the flags stay changed for the rest of the frame.
          NFANode *node = make<NFALookBehindNode>(true, std::string());
          if (tailOut != nullptr) *tailOut = node;
          return node;
        }
        index = --nonCapturingCounter_;
        first = make<NFAGroupHeadNode>(index);
      }
    }
  }
  NFANode *tail = first;

  while (!atEnd()) {
    char c = text_[static_cast<std::size_t>(cursor_++)];
    NFANode *atom = nullptr;
    if (error_) return nullptr;
    switch (c) {
      case '^':
        atom = has(MultiLine) ? static_cast<NFANode *>(make<NFAStartOfLineNode>()) : make<NFAStartOfInputNode>();
        break;
      case '$':
        atom = has(MultiLine) ? static_cast<NFANode *>(make<NFAEndOfLineNode>()) : make<NFAEndOfInputNode>(false);
        break;
      case '.':
        atom = make<NFAClassNode>(has(DotAll) ? ByteSet() : ByteSet::of("\n\r", has(UnixLines) ? 1 : 2), true);
        break;
      case '[':
        atom = makeClassNode(readClass(), false);
        break;
      case '\\': {
        if (atEnd()) {
          reportSyntaxError();
          break;
        }
        char e = peek();
        if (e >= '1' && e <= '9') {
          atom = readBackReference();
          break;
        }
        switch (e) {
          case 'A': atom = make<NFAStartOfInputNode>(); break;
          case 'z': atom = make<NFAEndOfInputNode>(false); break;
          case 'Z': atom = make<NFAEndOfInputNode>(true); break;
          case 'b': atom = make<NFAWordBoundaryNode>(true); break;
          case 'B': atom = make<NFAWordBoundaryNode>(false); break;
          case 'G': atom = make<NFAEndOfMatchNode>(); break;
          default: break;
        }
        if (atom != nullptr) {
          ++cursor_;
          break;
        }
        bool inverted = false;
        bool quoted = false;
        ByteSet members = readEscape(&inverted, &quoted);
        if (quoted) {
          atom = readQuotedText();
        } else if (members.count() <= 1 && !inverted) {
          // One exact character, even under CaseInsensitive.
          atom = make<NFACharNode>(static_cast<char>(members.empty() ? 0 : members.first()));
        } else {
          atom = makeClassNode(members, inverted);
        }
        break;
      }
      case '(': {
        NFANode *groupTail = nullptr;
        NFANode *group = parseSequence(true, false, &groupTail, 0, false);
        if (group == nullptr) {
          reportSyntaxError();
        } else {
          tail->next = group;
          tail = groupTail;
        }
        break;
      }
      case ')':
        if (!inParentheses) {
          reportSyntaxError();
          break;
        }
        if (isAlternative) {
          --cursor_;  // the group's own frame closes at this parenthesis
          tail->next = make<NFAAcceptNode>();
          flags_ = savedFlags;
          return first;
        }
        if (kind != FrameKind::kGroup) {
          tail->next = make<NFAAcceptNode>();
          flags_ = savedFlags;
          NFANode *node = kind == FrameKind::kAtomic
                              ? static_cast<NFANode *>(make<NFAPossessiveQuantifierNode>(1, 1, first))
                              : make<NFALookAheadNode>(kind == FrameKind::kLookAhead, first);
          if (tailOut != nullptr) *tailOut = node;
          return node;
        } else {
          NFANode *groupTail = make<NFAGroupTailNode>(index);
          tail->next = groupTail;
          if (tailOut != nullptr) *tailOut = groupTail;
          NFANode *result = first;
          if (NFANode *prologue = applyGroupQuantifier(first, groupTail, index)) {
            result = prologue;
            if (tailOut != nullptr) *tailOut = prologue->next;
          }
          flags_ = savedFlags;
          return result;
        }
      case '*':
      case '+':
      case '?':
      case ']':
      case '}':
        reportSyntaxError();
        break;
      case '{': {
        NFANode *referenceTail = nullptr;
        NFANode *reference = readNamedReference(&referenceTail);
        if (reference != nullptr) {
          tail->next = reference;
          tail = referenceTail;
        }
        break;
      }
      case '|': {
        tail->next = make<NFAAcceptNode>();
        NFANode *rest = parseSequence(inParentheses, true, nullptr, index, first->isGroupHead());
        first = make<NFAOrNode>(first, rest);
        tail = first;
        break;
      }
      default:
        atom = makeCharNode(c);
        break;
    }
    if (atom != nullptr) {
      tail->next = applyQuantifier(atom);
      tail = tail->next;
    }
  }

  if (inParentheses) {
    reportSyntaxError();  // once by each open frame
  } else if (isAlternative) {
    tail->next = make<NFAAcceptNode>();
  }
  if (tailOut != nullptr) *tailOut = tail;
  flags_ = savedFlags;
  return error_ ? nullptr : first;
}

bool Pattern::readQuantifier(std::int32_t *minimum, std::int32_t *maximum, QuantifierKind *kind) {
  if (atEnd()) return false;
  switch (peek()) {
    case '*': *minimum = 0; *maximum = kUnlimited; ++cursor_; break;
    case '+': *minimum = 1; *maximum = kUnlimited; ++cursor_; break;
    case '?': *minimum = 0; *maximum = 1; ++cursor_; break;
    case '{':
      if (!readBounds(minimum, maximum)) return false;
      break;
    default:
      return false;
  }
  *kind = kGreedy;
  if (peek() == '?' && !atEnd()) {
    *kind = kReluctant;
    ++cursor_;
  } else if (peek() == '+' && !atEnd()) {
    *kind = kPossessive;
    ++cursor_;
  }
  return true;
}

NFANode *Pattern::applyQuantifier(NFANode *atom) {
  std::int32_t minimum, maximum;
  QuantifierKind kind;
  if (!readQuantifier(&minimum, &maximum, &kind)) return atom;
  atom->next = make<NFAAcceptNode>();
  switch (kind) {
    case kReluctant: return make<NFALazyQuantifierNode>(minimum, maximum, atom);
    case kPossessive: return make<NFAPossessiveQuantifierNode>(minimum, maximum, atom);
    default: return make<NFAGreedyQuantifierNode>(minimum, maximum, atom);
  }
}

NFANode *Pattern::applyGroupQuantifier(NFANode *head, NFANode *tail, std::int32_t groupIndex) {
  std::int32_t minimum, maximum;
  QuantifierKind kind;
  if (!readQuantifier(&minimum, &maximum, &kind)) return nullptr;
  NFANode *prologue = make<NFAGroupLoopPrologueNode>(groupIndex);
  NFANode *loop = make<NFAGroupLoopNode>(groupIndex, minimum, maximum, kind, head);
  prologue->next = loop;
  tail->next = loop;
  return prologue;
}

// Every report leaves the cursor on the '{', so that the character before
// it decides the caret and the wording.
bool Pattern::readBounds(std::int32_t *minimum, std::int32_t *maximum) {
  if (cursor_ + 1 >= static_cast<std::int32_t>(text_.size())) {
    reportSyntaxError();
    return false;
  }
  std::size_t open = static_cast<std::size_t>(cursor_);
  std::size_t close = text_.find('}', open + 1);
  if (close == std::string::npos) {
    reportSyntaxError();
    return false;
  }
  std::size_t comma = text_.find(',', open + 1);
  if (comma > close) comma = std::string::npos;
  for (std::size_t i = open + 1; i < close; ++i) {
    if (i != comma && !isDigit(text_[i])) {
      if (comma != std::string::npos) reportSyntaxError();
      return false;
    }
  }
  // 32-bit arithmetic without a test for overflow, as the counts are read.
  auto number = [this](std::size_t from, std::size_t to) {
    std::uint32_t value = 0;
    for (std::size_t i = from; i < to; ++i) value = value * 10u + static_cast<std::uint32_t>(text_[i] - '0');
    return static_cast<std::int32_t>(value);
  };
  if (comma == std::string::npos) {
    *minimum = *maximum = number(open + 1, close);
  } else {
    *minimum = number(open + 1, comma);
    *maximum = comma + 1 == close ? kUnlimited : number(comma + 1, close);
  }
  if (*minimum < 0) *minimum = 0;
  cursor_ = static_cast<std::int32_t>(close) + 1;
  return true;
}

NFANode *Pattern::readBackReference() {
  std::int32_t index = peek() - '0';
  ++cursor_;
  while (!atEnd() && isDigit(peek()) && (index < 10 || index < groupCount_)) {
    index = index * 10 + (peek() - '0');
    ++cursor_;
  }
  return make<NFAReferenceNode>(index);
}

NFANode *Pattern::readQuotedText() {
  std::string quoted;
  while (!atEnd()) {
    char c = text_[static_cast<std::size_t>(cursor_++)];
    if (c == '\\' && !atEnd()) {
      char e = text_[static_cast<std::size_t>(cursor_++)];
      if (e == 'E') {
        if (has(CaseInsensitive)) return make<NFACIQuoteNode>(quoted);
        return make<NFAQuoteNode>(quoted);
      }
      quoted += e;
    } else {
      quoted += c;
    }
  }
  reportSyntaxError();
  return nullptr;
}

NFANode *Pattern::readLookBehind(bool positive, NFANode **tailOut) {
  std::string fixed;
  while (!atEnd()) {
    char c = text_[static_cast<std::size_t>(cursor_++)];
    if (c == ')') {
      NFANode *node = make<NFALookBehindNode>(positive, fixed);
      if (tailOut != nullptr) *tailOut = node;
      return node;
    }
    if (c == '\\') {
      if (cursor_ + 1 >= static_cast<std::int32_t>(text_.size())) break;
      c = text_[static_cast<std::size_t>(cursor_++)];
    }
    fixed += c;
  }
  reportSyntaxError();
  return nullptr;
}

NFANode *Pattern::readNamedReference(NFANode **tailOut) {
  std::size_t close = text_.find('}', static_cast<std::size_t>(cursor_));
  if (close == std::string::npos) {
    reportSyntaxError();
    return nullptr;
  }
  std::string name = text_.substr(static_cast<std::size_t>(cursor_), close - static_cast<std::size_t>(cursor_));
  bool valid = name.size() != 1 && !name.empty() && isNameStart(name[0]);
  for (char c : name) valid = valid && (isNameStart(c) || isDigit(c));
  auto entry = valid ? registeredPatterns.find(name) : registeredPatterns.end();
  if (entry == registeredPatterns.end()) {
    reportSyntaxError();
    return nullptr;
  }
  // The registered text stands in the place of the reference.
  std::string text = std::move(text_);
  std::int32_t flags = flags_;
  text_ = entry->second.first;
  flags_ = entry->second.second;
  cursor_ = 0;
  --groupCount_;
  NFANode *first = parseSequence(false, false, tailOut, 0, false);
  text_ = std::move(text);
  flags_ = flags;
  cursor_ = static_cast<std::int32_t>(close) + 1;
  if (error_) {
    if (tailOut != nullptr) *tailOut = nullptr;
    return nullptr;
  }
  return first;
}
