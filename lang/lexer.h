// Lexer: splits the Windows-1252 text of a rule file into tokens.
//
// Words are letters (umlauts and ß included), digits and '_', starting
// with a letter or '_'; the parser tells keywords from names. A number is
// written with a decimal comma (12,5), a date as TT.MM.JJJJ (31.12.2024), a
// text in double quotes with the escapes \" \\ \n \t. '//' starts a comment
// to the end of the line. Mistakes go to the Diagnostics, and the lexer
// goes on after them.

#ifndef QUOREL_LANG_LEXER_H_
#define QUOREL_LANG_LEXER_H_

#include <string>
#include <vector>

#include "quorel/lang/diagnostics.h"
#include "quorel/lang/position.h"

namespace quorel {
namespace lang {

enum TokenKind { kTokWord, kTokNumber, kTokText, kTokDate, kTokSymbol, kTokEnd };

struct Token {
  TokenKind kind;
  Position pos;
  std::string text;  // the word, the symbol, the text's content, the number or date as written
  double number = 0;
};

// Tokens of text, ended by one kTokEnd.
std::vector<Token> tokenize(const std::string &text, Diagnostics *diagnostics);

}  // namespace lang
}  // namespace quorel

#endif  // QUOREL_LANG_LEXER_H_
