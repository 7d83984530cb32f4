#include "quorel/pattern/nfa_node.h"

#include <cxxabi.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <typeinfo>

#include "quorel/pattern/byte_set.h"
#include "quorel/pattern/pattern_matcher.h"

NFANode::~NFANode() = default;

void NFANode::markReachable(std::map<NFANode *, bool> &nodes) {
  auto it = nodes.find(this);
  // Unknown or already seen: the graph has cycles through group loops.
  if (it == nodes.end() || it->second) return;
  it->second = true;
  if (next != nullptr) next->markReachable(nodes);
}

bool NFANode::isGroupHead() { return false; }

bool NFANode::isStartOfInput() { return false; }

const ByteSet *NFANode::acceptedBytes() const { return nullptr; }

std::int32_t NFANode::follow(NFANode *node, const char *input, PatternMatcher *matcher, std::int32_t position) {
  if (node == nullptr || !matcher->mayGoOn(__builtin_frame_address(0))) return -1;
  return node->match(input, matcher, position);
}

std::int32_t NFANode::matchByte(const ByteSet &accepted, const char *input, PatternMatcher *matcher,
                                std::int32_t position) {
  if (position >= matcher->inputLength() || !accepted.contains(static_cast<unsigned char>(input[position]))) {
    return -1;
  }
  // follow() rather than goOn(): one frame less per byte where nothing is
  // inlined, as under ThreadSanitizer, whose call history is bounded.
  return follow(next, input, matcher, position + 1);
}

std::string NFANode::className() const {
  int status = 0;
  char *demangled = abi::__cxa_demangle(typeid(*this).name(), nullptr, nullptr, &status);
  std::string name = status == 0 && demangled != nullptr ? demangled : typeid(*this).name();
  std::free(demangled);
  return name;
}

void NFANode::printIndent(std::int32_t indent) { std::printf("%*c", static_cast<int>(indent * 2), ' '); }

void NFANode::printLine(std::int32_t indent, const char *details, ...) const {
  printIndent(indent);
  std::fputs(className().c_str(), stdout);
  if (details != nullptr) {
    va_list arguments;
    va_start(arguments, details);
    std::vprintf(details, arguments);
    va_end(arguments);
  }
  std::fputc('\n', stdout);
}

void NFANode::print(std::int32_t indent) {
  printLine(indent, nullptr);
  printNext(indent);
}
