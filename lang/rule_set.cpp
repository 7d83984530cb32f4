#include "quorel/lang/rule_set.h"

#include <cerrno>
#include <cstdio>
#include <memory>
#include <string>
#include <system_error>

#include "quorel/lang/checker.h"
#include "quorel/lang/encoding.h"
#include "quorel/lang/interpreter.h"
#include "quorel/lang/lexer.h"
#include "quorel/lang/parser.h"

namespace quorel {
namespace lang {

RuleSet::RuleSet(Module module) : module_(std::move(module)) {
  for (const FlowDecl &flow : module_.flows) flows_.push_back(flow.name.c_str());
  flows_.push_back(nullptr);
}

std::unique_ptr<Plausi> RuleSet::createPlausi() const {
  return std::make_unique<Interpreter>(shared_from_this());
}

std::shared_ptr<const RuleSet> readRuleText(const std::string &text, const std::string &name,
                                            Diagnostics *diagnostics) {
  diagnostics->setSource(name, text);
  std::string source = text;
  if (isValidUtf8(text)) {
    std::size_t bad = std::string::npos;
    source = utf8ToWindows1252(text, &bad);
    if (bad != std::string::npos) {
      // The place of the character, counted as the lexer counts.
      std::string before = utf8ToWindows1252(text.substr(0, bad));
      Position pos{1, 1};
      for (char c : before) {
        if (c == '\n') {
          ++pos.line;
          pos.column = 1;
        } else {
          ++pos.column;
        }
      }
      diagnostics->error(pos, "a character that Windows-1252 lacks; rule texts are kept in Windows-1252");
    }
  }
  std::vector<Token> tokens = tokenize(source, diagnostics);
  Module module = parse(tokens, diagnostics);
  if (!check(&module, diagnostics)) return nullptr;
  return std::make_shared<RuleSet>(std::move(module));
}

namespace {

// The whole file at path, or false with the system's reason.
bool readWhole(const std::string &path, std::string *text, std::string *reason) {
  std::unique_ptr<std::FILE, int (*)(std::FILE *)> file(std::fopen(path.c_str(), "rb"), &std::fclose);
  if (file == nullptr) {
    *reason = std::generic_category().message(errno);
    return false;
  }
  char buffer[1 << 16];
  std::size_t count;
  while ((count = std::fread(buffer, 1, sizeof buffer, file.get())) > 0) text->append(buffer, count);
  if (std::ferror(file.get()) != 0) {  // a folder, for one, opens but cannot be read
    *reason = std::generic_category().message(errno);
    return false;
  }
  return true;
}

}  // namespace

std::shared_ptr<const RuleSet> readRuleFile(const std::string &path, Diagnostics *diagnostics) {
  std::string text, reason;
  if (!readWhole(path, &text, &reason)) {
    diagnostics->setSource(path, "");
    diagnostics->error(Position{}, "cannot read the rule file: " + reason);
    return nullptr;
  }
  return readRuleText(text, path, diagnostics);
}

std::unique_ptr<Plausi> loadRuleFile(const std::string &path, Diagnostics *diagnostics) {
  std::shared_ptr<const RuleSet> rules = readRuleFile(path, diagnostics);
  return rules != nullptr ? rules->createPlausi() : nullptr;
}

std::unique_ptr<Plausi> loadRuleText(const std::string &text, const std::string &name, Diagnostics *diagnostics) {
  std::shared_ptr<const RuleSet> rules = readRuleText(text, name, diagnostics);
  return rules != nullptr ? rules->createPlausi() : nullptr;
}

}  // namespace lang
}  // namespace quorel
