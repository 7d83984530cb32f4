// Parser: builds the syntax tree of a rule file from its tokens.
//
// A mistake is reported and the parser skips to the next place where a
// declaration or statement can begin, so that one pass finds every syntax
// error of a file. The tree it gives back is complete only for a file
// without errors; the checker runs on it either way and never trusts it.

#ifndef QUOREL_LANG_PARSER_H_
#define QUOREL_LANG_PARSER_H_

#include <vector>

#include "quorel/lang/ast.h"
#include "quorel/lang/diagnostics.h"
#include "quorel/lang/lexer.h"

namespace quorel {
namespace lang {

// The module of the tokens (ended by kTokEnd).
Module parse(const std::vector<Token> &tokens, Diagnostics *diagnostics);

// Whether word is reserved by the language (no name may be one).
bool isKeyword(const std::string &word);

}  // namespace lang
}  // namespace quorel

#endif  // QUOREL_LANG_PARSER_H_
