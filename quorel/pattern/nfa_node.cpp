#include "quorel/pattern/nfa_node.h"

#include <cxxabi.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <typeinfo>

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

std::int32_t NFANode::follow(NFANode *node, const char *input, PatternMatcher *matcher, std::int32_t position) {
  if (node == nullptr || !matcher->mayGoOn(__builtin_frame_address(0))) return -1;
  return node->match(input, matcher, position);
}

const char *NFANode::className() const {
  thread_local std::string name;
  int status = 0;
  char *demangled = abi::__cxa_demangle(typeid(*this).name(), nullptr, nullptr, &status);
  name = status == 0 && demangled != nullptr ? demangled : typeid(*this).name();
  std::free(demangled);
  return name.c_str();
}

void NFANode::printIndent(std::int32_t indent) { std::printf("%*c", static_cast<int>(indent * 2), ' '); }

void NFANode::print(std::int32_t indent) {
  printIndent(indent);
  std::printf("%s\n", className());
  if (next != nullptr) next->print(indent);
}
