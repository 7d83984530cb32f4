#include "quorel/lang/lexer.h"

#include <cstdlib>

#include "quorel/lang/encoding.h"

namespace quorel {
namespace lang {

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Letters of Windows-1252 that names may hold: A-Z, a-z, and the letters
// from 0xC0 on except the two signs × and ÷.
bool isLetter(char c) {
  auto b = static_cast<unsigned char>(c);
  return (b >= 'a' && b <= 'z') || (b >= 'A' && b <= 'Z') || b == '_' || (b >= 0xC0 && b != 0xD7 && b != 0xF7);
}

class Lexer {
 public:
  Lexer(const std::string &text, Diagnostics *diagnostics) : text_(text), diagnostics_(diagnostics) {}

  std::vector<Token> run() {
    std::vector<Token> tokens;
    for (;;) {
      skipSpaceAndComments();
      Position pos = here();
      if (at_ >= text_.size()) break;
      char c = text_[at_];
      if (isLetter(c)) {
        std::size_t start = at_;
        while (at_ < text_.size() && (isLetter(text_[at_]) || isDigit(text_[at_]))) advance();
        tokens.push_back({kTokWord, pos, text_.substr(start, at_ - start)});
      } else if (isDigit(c)) {
        tokens.push_back(number(pos));
      } else if (c == '"') {
        tokens.push_back(quoted(pos));
      } else {
        symbol(pos, &tokens);
      }
    }
    tokens.push_back({kTokEnd, here(), ""});
    return tokens;
  }

 private:
  Position here() const { return {line_, column_}; }

  void advance() {
    if (text_[at_] == '\n') {
      ++line_;
      column_ = 1;
    } else {
      ++column_;
    }
    ++at_;
  }

  bool peekIs(std::size_t ahead, char c) const { return at_ + ahead < text_.size() && text_[at_ + ahead] == c; }

  void skipSpaceAndComments() {
    while (at_ < text_.size()) {
      char c = text_[at_];
      if (c == ' ' || c == '\t' || c == '\r' || c == '\n') {
        advance();
      } else if (c == '/' && peekIs(1, '/')) {
        while (at_ < text_.size() && text_[at_] != '\n') advance();
      } else {
        break;
      }
    }
  }

  std::size_t digits() {
    std::size_t start = at_;
    while (at_ < text_.size() && isDigit(text_[at_])) advance();
    return at_ - start;
  }

  // 12, 12,5 or a date 01.02.2024.
  Token number(Position pos) {
    std::size_t start = at_;
    std::size_t first = digits();
    if (peekIs(0, ',') && at_ + 1 < text_.size() && isDigit(text_[at_ + 1])) {
      advance();
      digits();
      std::string written = text_.substr(start, at_ - start);
      std::string c = written;
      c[c.find(',')] = '.';
      return {kTokNumber, pos, written, std::strtod(c.c_str(), nullptr)};
    }
    if (peekIs(0, '.') && at_ + 1 < text_.size() && isDigit(text_[at_ + 1])) {
      advance();
      std::size_t second = digits();
      std::size_t third = 0;
      bool date = false;
      if (peekIs(0, '.') && at_ + 1 < text_.size() && isDigit(text_[at_ + 1])) {
        advance();
        third = digits();
        date = first == 2 && second == 2 && third == 4;
      }
      std::string written = text_.substr(start, at_ - start);
      if (date) return {kTokDate, pos, written};
      diagnostics_->error(pos, "'" + written +
                                   "' is neither a number nor a date: numbers take a decimal comma (12,5), "
                                   "dates are written TT.MM.JJJJ (31.01.2024)");
      return {kTokNumber, pos, written, 0.0};
    }
    std::string written = text_.substr(start, at_ - start);
    return {kTokNumber, pos, written, std::strtod(written.c_str(), nullptr)};
  }

  Token quoted(Position pos) {
    advance();  // the opening quote
    std::string content;
    for (;;) {
      if (at_ >= text_.size() || text_[at_] == '\n') {
        diagnostics_->error(pos, "text without its closing '\"'");
        break;
      }
      char c = text_[at_];
      if (c == '"') {
        advance();
        break;
      }
      if (c == '\\') {
        Position escape = here();
        advance();
        char next = at_ < text_.size() ? text_[at_] : '\0';
        switch (next) {
          case '"': content += '"'; break;
          case '\\': content += '\\'; break;
          case 'n': content += '\n'; break;
          case 't': content += '\t'; break;
          default:
            diagnostics_->error(escape, "unknown escape in a text (known: \\\" \\\\ \\n \\t)");
            continue;
        }
        advance();
        continue;
      }
      content += c;
      advance();
    }
    return {kTokText, pos, content};
  }

  void symbol(Position pos, std::vector<Token> *tokens) {
    static const char *const kTwo[] = {"..", "<>", "<=", ">="};
    for (const char *two : kTwo) {
      if (peekIs(0, two[0]) && peekIs(1, two[1])) {
        advance();
        advance();
        tokens->push_back({kTokSymbol, pos, two});
        return;
      }
    }
    char c = text_[at_];
    static const std::string kOne = "()[]{};,.:=<>+-*/&";
    if (kOne.find(c) != std::string::npos) {
      advance();
      tokens->push_back({kTokSymbol, pos, std::string(1, c)});
      return;
    }
    std::string shown = windows1252ToUtf8(std::string(1, c));
    if (static_cast<unsigned char>(c) < 0x20) shown = "\\x" + std::to_string(static_cast<unsigned char>(c));
    diagnostics_->error(pos, "unexpected character '" + shown + "'");
    advance();
  }

  const std::string &text_;
  Diagnostics *diagnostics_;
  std::size_t at_ = 0;
  std::int32_t line_ = 1;
  std::int32_t column_ = 1;
};

}  // namespace

std::vector<Token> tokenize(const std::string &text, Diagnostics *diagnostics) {
  return Lexer(text, diagnostics).run();
}

}  // namespace lang
}  // namespace quorel
