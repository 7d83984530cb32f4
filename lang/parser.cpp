#include "quorel/lang/parser.h"

#include <set>
#include <string>
#include <utility>

#include "quorel/lang/clauses.h"
#include "quorel/lang/encoding.h"
#include "quorel/material/filter_condition.h"
#include "quorel/values/interval_range.h"

namespace quorel {
namespace lang {

namespace {

const std::set<std::string> &keywords() {
  static const std::set<std::string> kWords = {
      "MODUL",     "SATZ",          "GRUPPE",     "FELD",        "MASKE",      "MATERIAL",   "DATENBESTAND",
      "KODELISTE", "MIT",           "ENDE",       "EXTERN",      "ABLAUF",     "REGEL",      "FUNKTION",
      "FELDPRUEFUNG", "ALS",        "ABSCHNITT",  "WENN",        "DANN",       "SONST",      "SEI",
      "SETZE",     "FUER",          "JEDES",      "IN",          "VON",        "BIS",        "ABBRECHEN",
      "MELDE",     "FEHLER",        "HINWEIS",    "TYP",         "GEWICHT",    "TEXT",       "DETAILS",
      "KORREKTUR", "THEMA",         "AUSNAHME",   "FELDNAME",    "FELDMASKE",  "WERTEBEREICH", "FELDLAENGE",
      "INFOTYP",   "INDIZES",       "PRUEFE",     "VERSUCHE",    "BEI",        "ERGEBNIS",   "UND",
      "ODER",      "NICHT",         "WAHR",       "FALSCH",      "NICHTS",     "UNGUELTIG",  "UNUMWANDELBAR",
      "LIES",      "AUS",           "WO",         "EXISTIERT",   "WAHRHEITSWERT", "GANZZAHL", "KOMMAZAHL",
      "DATUM",     "FREI",          "SPALTE"};
  return kWords;
}

// Words that begin a declaration at the top of a file.
bool startsDeclaration(const std::string &word) {
  static const std::set<std::string> kStarts = {"SATZ",     "MATERIAL", "KODELISTE",   "EXTERN",
                                                "ABLAUF",   "REGEL",    "FUNKTION", "FELDPRUEFUNG"};
  return kStarts.count(word) != 0;
}

bool startsStatement(const std::string &word) {
  static const std::set<std::string> kStarts = {"WENN",   "SEI",    "SETZE",    "ABSCHNITT", "FUER",
                                                "ABBRECHEN", "MELDE", "PRUEFE", "VERSUCHE",  "ERGEBNIS"};
  return kStarts.count(word) != 0;
}

// Nesting beyond this is refused instead of running the stack out: of
// brackets, blocks and prefixes, and of the tree as a whole, where a chain
// of operators (1 + 1 + ...) adds a level per operator.
constexpr int kMaxDepth = 100;
constexpr int kMaxTree = 2000;

struct SyntaxError {};

// A type keyword's FieldType, or -1.
std::int32_t fieldTypeOf(const std::string &word) {
  if (word == "TEXT") return FieldTypeText;
  if (word == "WAHRHEITSWERT") return FieldTypeBool;
  if (word == "GANZZAHL") return FieldTypeInteger;
  if (word == "KOMMAZAHL") return FieldTypeReal;
  if (word == "DATUM") return FieldTypeDate;
  if (word == "FREI") return FieldTypeFree;
  return -1;
}

std::string shown(const Token &token) {
  switch (token.kind) {
    case kTokEnd: return "the end of the file";
    case kTokText: return "a text";
    case kTokNumber: return "the number " + token.text;
    case kTokDate: return "the date " + token.text;
    default: return "'" + windows1252ToUtf8(token.text) + "'";
  }
}

class Parser {
 public:
  Parser(const std::vector<Token> &tokens, Diagnostics *diagnostics)
      : tokens_(tokens), diagnostics_(diagnostics) {}

  Module run() {
    Module module;
    module.file = diagnostics_->file();
    try {
      module.pos = peek().pos;
      expectWord("MODUL");
      module.name = name("the module's name");
    } catch (const SyntaxError &) {
      skipToDeclaration();
    }
    while (peek().kind != kTokEnd) {
      try {
        declaration(&module);
      } catch (const SyntaxError &) {
        skipToDeclaration();
      }
    }
    return module;
  }

 private:
  // --- tokens

  const Token &peek(std::size_t ahead = 0) const {
    std::size_t at = std::min(at_ + ahead, tokens_.size() - 1);
    return tokens_[at];
  }
  const Token &next() {
    const Token &token = tokens_[at_];
    if (at_ + 1 < tokens_.size()) ++at_;
    return token;
  }
  bool isWord(const char *word, std::size_t ahead = 0) const {
    return peek(ahead).kind == kTokWord && peek(ahead).text == word;
  }
  bool isSymbol(const char *symbol, std::size_t ahead = 0) const {
    return peek(ahead).kind == kTokSymbol && peek(ahead).text == symbol;
  }
  bool acceptWord(const char *word) {
    if (!isWord(word)) return false;
    next();
    return true;
  }
  bool acceptSymbol(const char *symbol) {
    if (!isSymbol(symbol)) return false;
    next();
    return true;
  }

  [[noreturn]] void fail(const Token &at, const std::string &message) {
    diagnostics_->error(at.pos, message);
    throw SyntaxError();
  }
  [[noreturn]] void expected(const std::string &what) { fail(peek(), "expected " + what + ", found " + shown(peek())); }

  void expectWord(const char *word) {
    if (!acceptWord(word)) expected(std::string("'") + word + "'");
  }
  void expectSymbol(const char *symbol) {
    if (!acceptSymbol(symbol)) expected(std::string("'") + symbol + "'");
  }

  std::string name(const std::string &what) {
    const Token &token = peek();
    if (token.kind != kTokWord) expected(what);
    next();  // taken either way, so that the parser goes on behind it
    if (isKeyword(token.text)) fail(token, "'" + token.text + "' is a reserved word and cannot be " + what);
    return token.text;
  }

  std::string text(const std::string &what) {
    if (peek().kind != kTokText) expected(what);
    return next().text;
  }

  std::int32_t wholeNumber(const std::string &what) {
    const Token &token = peek();
    bool negative = isSymbol("-") && peek(1).kind == kTokNumber;
    const Token &number = negative ? peek(1) : token;
    if (number.kind != kTokNumber || number.text.find(',') != std::string::npos || number.number > 2147483647.0) {
      expected(what);
    }
    if (negative) next();
    next();
    return static_cast<std::int32_t>(negative ? -number.number : number.number);
  }

  // At the next declaration, or the end of the file: where no body reaches.
  bool atDeclarationOrEnd() const {
    return peek().kind == kTokEnd || (peek().kind == kTokWord && startsDeclaration(peek().text));
  }

  void skipToDeclaration() {
    while (!atDeclarationOrEnd()) next();
  }

  // After a broken statement: on to the next statement, or the word that
  // ends its block.
  void skipToStatement() {
    while (peek().kind != kTokEnd) {
      const Token &token = peek();
      if (token.kind == kTokWord &&
          (startsStatement(token.text) || startsDeclaration(token.text) || token.text == "ENDE" ||
           token.text == "SONST" || token.text == "BEI")) {
        return;
      }
      next();
    }
  }

  struct Deeper {
    Deeper(Parser *parser, const Token &at) : parser_(parser) {
      ++parser_->depth_;
      ++parser_->tree_;
      if (parser_->depth_ > kMaxDepth || parser_->tree_ > kMaxTree) {
        parser_->fail(at, "nested too deeply (more than " + std::to_string(kMaxDepth) + " levels)");
      }
    }
    ~Deeper() {
      --parser_->depth_;
      --parser_->tree_;
    }
    Parser *parser_;
  };

  // The levels a chain of operators adds to the tree, given back at its end.
  struct Chain {
    explicit Chain(Parser *parser) : parser_(parser) {}
    ~Chain() { parser_->tree_ -= links_; }
    void link(const Token &at) {
      ++links_;
      if (++parser_->tree_ > kMaxTree) {
        parser_->fail(at, "an expression too long (more than " + std::to_string(kMaxTree) + " operators deep)");
      }
    }
    Parser *parser_;
    int links_ = 0;
  };

  // --- declarations

  void declaration(Module *module) {
    const Token &start = peek();
    if (start.kind != kTokWord || !startsDeclaration(start.text)) {
      expected("a declaration (SATZ, MATERIAL, KODELISTE, EXTERN, ABLAUF, REGEL, FUNKTION or FELDPRUEFUNG)");
    }
    next();
    const std::string &word = start.text;
    if (word == "SATZ") {
      if (module->record != nullptr) diagnostics_->error(start.pos, "a second SATZ: a module has one record type");
      auto record = group(start);
      if (module->record == nullptr) module->record = std::move(record);
    } else if (word == "MATERIAL") {
      MaterialDecl material;
      material.root = std::make_unique<FieldDecl>();
      material.root->pos = peek().pos;
      material.root->type = FieldTypeTopic;
      material.root->name = name("the material's name");
      material.root->display = peek().kind == kTokText ? next().text : material.root->name;
      if (acceptWord("DATENBESTAND")) {
        material.dataset = text("the data stock's name");
        material.hasDataset = true;
      }
      fields(material.root.get(), start);
      module->materials.push_back(std::move(material));
    } else if (word == "KODELISTE") {
      codes(&module->codes, start);
    } else if (word == "EXTERN") {
      ExternalDecl external;
      external.pos = peek().pos;
      external.name = name("the external function's name");
      expectSymbol("(");
      external.arity = wholeNumber("the number of its arguments");
      expectSymbol(")");
      module->externals.push_back(external);
    } else if (word == "ABLAUF") {
      FlowDecl flow;
      flow.pos = peek().pos;
      flow.name = name("the flow's name");
      expectSymbol(":");
      do {
        flow.rulePos.push_back(peek().pos);
        flow.rules.push_back(name("a rule's name"));
      } while (acceptSymbol(","));
      module->flows.push_back(std::move(flow));
    } else if (word == "REGEL") {
      RuleDecl rule;
      rule.pos = peek().pos;
      rule.name = name("the rule's name");
      rule.section = acceptWord("ABSCHNITT") ? text("the section's name") : rule.name;
      rule.body = body(start);
      module->rules.push_back(std::move(rule));
    } else if (word == "FUNKTION") {
      auto function = std::make_unique<FunctionDecl>();
      function->pos = peek().pos;
      function->name = name("the function's name");
      if (acceptSymbol("(")) {
        if (!isSymbol(")")) {
          do {
            function->params.push_back(name("a parameter's name"));
          } while (acceptSymbol(";"));
        }
        expectSymbol(")");
      }
      function->body = body(start);
      module->functions.push_back(std::move(function));
    } else {  // FELDPRUEFUNG
      FieldCheckDecl check;
      check.pos = peek().pos;
      check.field = path();
      expectWord("ALS");
      check.bound = name("the name of the checked field");
      check.section = acceptWord("ABSCHNITT") ? text("the section's name") : check.bound;
      check.body = body(start);
      module->fieldChecks.push_back(std::move(check));
    }
  }

  void expectEnd(const Token &opener) {
    if (acceptWord("ENDE")) return;
    fail(peek(), "expected 'ENDE' to close the " + opener.text + " of line " + std::to_string(opener.pos.line) +
                     ", found " + shown(peek()));
  }

  // SATZ/GRUPPE Name[dims] ["display"] fields ENDE
  std::unique_ptr<FieldDecl> group(const Token &opener) {
    Deeper deeper(this, opener);
    auto decl = std::make_unique<FieldDecl>();
    decl->pos = peek().pos;
    decl->type = FieldTypeTopic;
    decl->name = name("the group's name");
    dimensions(decl.get());
    decl->display = peek().kind == kTokText ? next().text : decl->name;
    fields(decl.get(), opener);
    return decl;
  }

  void dimensions(FieldDecl *decl) {
    while (acceptSymbol("[")) {
      std::int32_t size = wholeNumber("an array size (a whole number, 0 for a size per record)");
      if (size < 0) diagnostics_->error(decl->pos, "an array size cannot be negative");
      decl->dims.push_back(size < 0 ? 0 : size);
      expectSymbol("]");
    }
  }

  void fields(FieldDecl *parent, const Token &opener) {
    while (!isWord("ENDE")) {
      if (atDeclarationOrEnd()) break;
      try {
        const Token &start = peek();
        if (acceptWord("GRUPPE")) {
          parent->children.push_back(group(start));
        } else if (acceptWord("FELD")) {
          auto decl = std::make_unique<FieldDecl>();
          decl->pos = peek().pos;
          decl->name = name("the field's name");
          dimensions(decl.get());
          decl->display = peek().kind == kTokText ? next().text : decl->name;
          std::int32_t type = peek().kind == kTokWord ? fieldTypeOf(peek().text) : -1;
          if (type < 0) expected("the field's type (TEXT, WAHRHEITSWERT, GANZZAHL, KOMMAZAHL, DATUM or FREI)");
          next();
          decl->type = static_cast<FieldType>(type);
          fieldClauses(decl.get());
          parent->children.push_back(std::move(decl));
        } else {
          expected("FELD, GRUPPE or ENDE");
        }
      } catch (const SyntaxError &) {
        while (!atDeclarationOrEnd() && !isWord("FELD") && !isWord("GRUPPE") && !isWord("ENDE")) {
          next();
        }
      }
    }
    expectEnd(opener);
  }

  // [MASKE "mask"] [SPALTE "name"], in either order, each at most once.
  void fieldClauses(FieldDecl *decl) {
    for (;;) {
      const Token &clause = peek();
      bool mask = isWord("MASKE");
      if (!mask && !isWord("SPALTE")) return;
      next();
      if (mask ? decl->hasMask : decl->hasColumn) diagnostics_->error(clause.pos, "this clause is given twice");
      if (mask) {
        decl->mask = text("the mask");
        decl->hasMask = true;
      } else {
        decl->column = text("the field's name in the data source");
        decl->hasColumn = true;
      }
    }
  }

  // "code" = "text" [MIT ... ENDE] ... ENDE
  void codes(std::vector<std::unique_ptr<CodeDecl>> *into, const Token &opener) {
    Deeper deeper(this, opener);
    while (!isWord("ENDE")) {
      if (atDeclarationOrEnd()) break;
      auto code = std::make_unique<CodeDecl>();
      code->pos = peek().pos;
      code->code = text("a code (a text)");
      expectSymbol("=");
      code->text = text("the code's text");
      const Token &with = peek();
      if (acceptWord("MIT")) codes(&code->children, with);
      into->push_back(std::move(code));
    }
    expectEnd(opener);
  }

  // --- statements

  // A WENN with a statement on DANN's line, and in the long form the line
  // of its ENDE and whether it has a SONST.
  struct OneLine {
    Position pos;
    std::int32_t endLine;
    bool otherwise;
  };

  // The last WENN of the long form closed in a reading, and the token after
  // its ENDE.
  struct WennEnd {
    std::size_t after = static_cast<std::size_t>(-1);
    Position wenn;
  };

  // The statements of a rule, function or field check, and its ENDE.
  //
  // A WENN whose statement begins on DANN's line is a one-line WENN, with
  // no SONST and no ENDE. A file may still give such a WENN the SONST and
  // ENDE of the long form; its ENDEs then no longer fit. So when the body
  // does not fit, it is read again with every one-line WENN in the long
  // form, and when that fits, each one-line WENN is told how to write what
  // the file means. Where a WENN after SONST lets both readings fit (see
  // readEitherWay()), the body reads two ways and is told so. A body that
  // fits neither way and ends early is told about its one-line WENNs.
  Block body(const Token &opener) {
    const std::size_t start = at_;
    const std::size_t errors = diagnostics_->size();
    auto rewind = [&] { rewindTo(start, errors); };
    Block statements;
    Reading told = readEitherWay(opener, true, &statements);
    if (!oneLines_.empty() && (!told.fits || (splitElse_ && !told.chained))) {
      const std::vector<OneLine> oneLines = oneLines_;
      const Position splitElse = splitElsePos_;
      const std::size_t end = at_;
      rewind();
      Block longForm;
      const Reading old = told.fits ? readBody(opener, true, false, &longForm) : readEitherWay(opener, false, &longForm);
      if (old.fits && told.fits) {
        diagnostics_->error(splitElse, "this WENN after SONST reads two ways: as a statement of its own, if the "
                                       "one-line WENNs (" + lines(oneLines) + ") take no ENDE, or continuing the "
                                       "chain, if they do; write SONST WENN on one line to continue the chain, or "
                                       "move their statements to the line after DANN");
        at_ = end;
        return statements;
      }
      if (old.fits) {
        for (const OneLine &wenn : oneLines_) {
          diagnostics_->error(wenn.pos, "a statement on DANN's line makes this a one-line WENN, without SONST and "
                                        "ENDE: to give it " + std::string(wenn.otherwise ? "its SONST and " : "") +
                                        "the ENDE of line " + std::to_string(wenn.endLine) +
                                        ", put the statement on the line after DANN");
        }
        return longForm;
      }
      rewind();
      told = readEitherWay(opener, true, &statements);
    }
    if (!told.threw && !atDeclarationOrEnd() && !oneLines_.empty()) {
      const Token &end = tokens_[at_ - 1];
      fail(peek(), "found " + shown(peek()) + " after the ENDE of line " + std::to_string(end.pos.line) +
                       " that closes the " + opener.text + " of line " + std::to_string(opener.pos.line) +
                       ": a WENN with its statement on DANN's line takes no ENDE (see " + lines(oneLines_) + ")");
    }
    if (told.threw) throw SyntaxError();
    return statements;
  }

  // "line 3" or "lines 3, 5, 8", for the first few of wenns.
  static std::string lines(const std::vector<OneLine> &wenns) {
    constexpr std::size_t kShown = 5;
    std::string text = wenns.size() == 1 ? "line " : "lines ";
    for (std::size_t i = 0; i < wenns.size() && i < kShown; ++i) {
      text += (i == 0 ? "" : ", ") + std::to_string(wenns[i].pos.line);
    }
    if (wenns.size() > kShown) text += " and " + std::to_string(wenns.size() - kShown) + " more";
    return text;
  }

  // Back to the token at, for another reading, forgetting the mistakes after
  // the first errors.
  void rewindTo(std::size_t at, std::size_t errors) {
    at_ = at;
    diagnostics_->forgetAfter(errors);
  }

  // One reading of a body, whose mistakes stay reported.
  struct Reading {
    bool threw = false;    // it ended in a syntax error
    bool fits = false;     // it found no mistake, and after its ENDE the next declaration or the end of the file
    bool chained = false;  // a WENN on the line after SONST continued its chain
    std::size_t mistakes = 0;
  };

  // A WENN on the line after SONST either continues the chain or is a
  // statement of its own in the SONST block, with an ENDE of its own; the
  // ENDEs of the file tell which. The body is read first with every such
  // WENN a statement of its own, then, when that reading does not fit, with
  // every such WENN continuing its chain. Both cannot fit, since they differ
  // in the number of ENDEs they take and no body reaches past a
  // declaration. When neither fits, the reading with fewer mistakes is told
  // (the first, of two alike); when the second failed only by what it left
  // behind and the first lacks the body's ENDE, the body mixes both forms,
  // and the first is told with a hint at SONST WENN on one line.
  Reading readEitherWay(const Token &opener, bool oneLine, Block *statements) {
    const std::size_t start = at_;
    const std::size_t errors = diagnostics_->size();
    splitElse_ = false;
    Reading told = readBody(opener, false, oneLine, statements);
    if (!splitElse_ || told.fits) return told;
    const Reading nested = told;
    auto again = [&] { rewindTo(start, errors); };
    again();
    const Reading chained = readBody(opener, true, oneLine, statements);
    if (chained.fits) return chained;
    // The second reading closes the body early when it finds no mistake
    // and still does not fit; it is never told then.
    bool closedEarly = chained.mistakes == 0;
    again();
    told = readBody(opener, !closedEarly && chained.mistakes < nested.mistakes, oneLine, statements);
    if (closedEarly && nested.threw) {
      diagnostics_->error(splitElsePos_, "this WENN is read as a statement of its own, which needs an ENDE; "
                                         "to continue the chain, write SONST WENN on one line");
    }
    return told;
  }

  Reading readBody(const Token &opener, bool chainSplitElse, bool oneLine, Block *statements) {
    const std::size_t errors = diagnostics_->size();
    chainSplitElse_ = chainSplitElse;
    oneLine_ = oneLine;
    oneLines_.clear();
    wennEnd_ = WennEnd();
    Reading reading;
    reading.chained = chainSplitElse;
    try {
      *statements = block();
      if (!isWord("ENDE") && wennEnd_.after == at_ && !splitElse_) {
        // The body's ENDE, most likely, closed a WENN meant as a one-line one.
        fail(peek(), "expected 'ENDE' to close the " + opener.text + " of line " + std::to_string(opener.pos.line) +
                         ", found " + shown(peek()) + ": the ENDE of line " +
                         std::to_string(tokens_[at_ - 1].pos.line) + " closes the WENN of line " +
                         std::to_string(wennEnd_.wenn.line) + ", which has no statement on DANN's line");
      }
      expectEnd(opener);
      reading.fits = atDeclarationOrEnd();
    } catch (const SyntaxError &) {
      reading.threw = true;
    }
    reading.mistakes = diagnostics_->size() - errors;
    reading.fits = reading.fits && reading.mistakes == 0;
    return reading;
  }

  Block block() {
    Block body;
    for (;;) {
      while (peek().kind == kTokWord && startsStatement(peek().text)) {
        try {
          body.push_back(statement());
        } catch (const SyntaxError &) {
          skipToStatement();
        }
      }
      bool ends = atDeclarationOrEnd() || isWord("ENDE") || isWord("SONST") || isWord("BEI");
      if (ends) return body;
      diagnostics_->error(peek().pos, "expected a statement, found " + shown(peek()));
      next();
      skipToStatement();
    }
  }

  StmtPtr statement() {
    const Token &start = next();
    Deeper deeper(this, start);
    const std::string &word = start.text;
    if (word == "WENN") return condition(start);
    if (word == "SEI" || word == "SETZE") {
      auto stmt = std::make_unique<Stmt>(word == "SEI" ? kLet : kAssign, start.pos);
      stmt->name = name("a variable's name");
      expectSymbol("=");
      stmt->exprs.push_back(expression());
      return stmt;
    }
    if (word == "ABSCHNITT") {
      auto stmt = std::make_unique<Stmt>(kSection, start.pos);
      stmt->section = text("the section's name");
      stmt->hasSection = true;
      stmt->blocks.push_back(block());
      expectEnd(start);
      return stmt;
    }
    if (word == "FUER") {
      bool each = acceptWord("JEDES");
      auto stmt = std::make_unique<Stmt>(each ? kForEach : kForRange, start.pos);
      stmt->name = name("the loop variable's name");
      if (each) {
        expectWord("IN");
        stmt->exprs.push_back(expression());
      } else {
        expectWord("VON");
        stmt->exprs.push_back(expression());
        expectWord("BIS");
        stmt->exprs.push_back(expression());
      }
      if (acceptWord("ABSCHNITT")) {
        stmt->hasSection = true;
        stmt->section = text("the section's name");
      }
      stmt->blocks.push_back(block());
      expectEnd(start);
      return stmt;
    }
    if (word == "ABBRECHEN") return std::make_unique<Stmt>(kBreak, start.pos);
    if (word == "MELDE") return report(start);
    if (word == "PRUEFE") {
      auto stmt = std::make_unique<Stmt>(kCheck, start.pos);
      stmt->path = path();
      return stmt;
    }
    if (word == "VERSUCHE") {
      auto stmt = std::make_unique<Stmt>(kTry, start.pos);
      stmt->blocks.push_back(block());
      expectWord("BEI");
      expectWord("FEHLER");
      stmt->name = name("the name of the error's message");
      stmt->blocks.push_back(block());
      expectEnd(start);
      return stmt;
    }
    auto stmt = std::make_unique<Stmt>(kReturn, start.pos);  // ERGEBNIS
    stmt->exprs.push_back(expression());
    return stmt;
  }

  // WENN c DANN statement, on DANN's line, or
  // WENN c DANN statements [SONST WENN c DANN statements]... [SONST statements] ENDE.
  StmtPtr condition(const Token &start) {
    auto stmt = std::make_unique<Stmt>(kIf, start.pos);
    stmt->exprs.push_back(expression());
    const std::int32_t then = peek().pos.line;
    expectWord("DANN");
    const bool oneLine = peek().kind == kTokWord && startsStatement(peek().text) && peek().pos.line == then;
    const std::size_t counted = oneLines_.size();
    if (oneLine) oneLines_.push_back(OneLine{start.pos, 0, false});
    if (oneLine && oneLine_) {
      Block only;
      only.push_back(statement());
      stmt->blocks.push_back(std::move(only));
      if (!isWord("SONST")) return stmt;
      // Read on in the long form, which the SONST asks for.
      diagnostics_->error(peek().pos, "a WENN with its statement on DANN's line takes no SONST: put the statement "
                                      "on the line after DANN and close the WENN with ENDE");
    } else {
      stmt->blocks.push_back(block());
    }
    const bool otherwise = isWord("SONST");
    while (isWord("SONST")) {
      // SONST WENN on one line continues this statement; for a WENN on
      // a later line, see readEitherWay().
      std::int32_t line = next().pos.line;
      bool split = isWord("WENN") && peek().pos.line != line;
      if (split && !splitElse_) splitElsePos_ = peek().pos;
      splitElse_ = splitElse_ || split;
      if (isWord("WENN") && (!split || chainSplitElse_)) {
        next();
        stmt->exprs.push_back(expression());
        expectWord("DANN");
        stmt->blocks.push_back(block());
      } else {
        stmt->blocks.push_back(block());
        break;
      }
    }
    const std::int32_t end = peek().pos.line;
    expectEnd(start);
    if (oneLine) {
      oneLines_[counted].endLine = end;
      oneLines_[counted].otherwise = otherwise;
    } else {
      wennEnd_ = WennEnd{at_, start.pos};
    }
    return stmt;
  }

  StmtPtr report(const Token &start) {
    auto stmt = std::make_unique<Stmt>(kReport, start.pos);
    stmt->report = std::make_unique<Report>();
    Report *report = stmt->report.get();
    if (acceptWord("FEHLER")) {
      report->type = 1;
    } else if (acceptWord("HINWEIS")) {
      report->type = 2;
    } else if (acceptWord("TYP")) {
      report->type = wholeNumber("the problem's type (a whole number)");
    } else {
      expected("FEHLER, HINWEIS or TYP n");
    }
    report->id = expression();
    expectWord("GEWICHT");
    report->weight = wholeNumber("the problem's weight (a whole number)");
    if (acceptWord("FELD")) report->field = path();
    for (;;) {
      const ClauseInfo *found = nullptr;
      for (const ClauseInfo &clause : allClauses()) {
        if (isWord(clause.keyword)) found = &clause;
      }
      if (found == nullptr) break;
      Clause parsed{found->kind, next().pos, {}};
      parsed.values.push_back(expression());
      while (found->kind == kClauseIndices && acceptSymbol(";")) parsed.values.push_back(expression());
      report->clauses.push_back(std::move(parsed));
    }
    return stmt;
  }

  // --- expressions

  ExprPtr expression() {
    Deeper deeper(this, peek());
    return disjunction();
  }

  ExprPtr binary(ExprKind kind, Position pos, ExprPtr left, ExprPtr right) {
    auto expr = std::make_unique<Expr>(kind, pos);
    expr->args.push_back(std::move(left));
    expr->args.push_back(std::move(right));
    return expr;
  }

  ExprPtr disjunction() {
    static const Operator kOperators[] = {{"ODER", kOr, kEq}};
    return leftAssociative(&Parser::conjunction, kOperators);
  }

  ExprPtr conjunction() {
    static const Operator kOperators[] = {{"UND", kAnd, kEq}};
    return leftAssociative(&Parser::negation, kOperators);
  }

  ExprPtr negation() {
    if (isWord("NICHT")) {
      Deeper deeper(this, peek());
      auto expr = std::make_unique<Expr>(kNot, next().pos);
      expr->args.push_back(negation());
      return expr;
    }
    return comparison();
  }

  ExprPtr comparison() {
    ExprPtr left = concatenation();
    static const std::pair<const char *, BinaryOp> kOps[] = {{"=", kEq}, {"<>", kNe}, {">", kGt},
                                                             {">=", kGe}, {"<", kLt}, {"<=", kLe}};
    for (const auto &op : kOps) {
      if (!isSymbol(op.first)) continue;
      Position pos = next().pos;
      ExprPtr expr = binary(kBinary, pos, std::move(left), concatenation());
      expr->op = op.second;
      return expr;
    }
    if (isWord("IN")) {
      Position pos = next().pos;
      return binary(kIn, pos, std::move(left), concatenation());
    }
    return left;
  }

  // One level of left-associative operators: operands, joined by any of
  // the operators (a symbol, or a word such as UND).
  struct Operator {
    const char *text;
    ExprKind kind;
    BinaryOp op;  // for kBinary
  };
  template <std::size_t N>
  ExprPtr leftAssociative(ExprPtr (Parser::*operand)(), const Operator (&operators)[N]) {
    ExprPtr left = (this->*operand)();
    Chain chain(this);
    for (;;) {
      const Operator *found = nullptr;
      for (const Operator &candidate : operators) {
        if (isSymbol(candidate.text) || isWord(candidate.text)) found = &candidate;
      }
      if (found == nullptr) return left;
      chain.link(peek());
      Position pos = next().pos;
      left = binary(found->kind, pos, std::move(left), (this->*operand)());
      left->op = found->op;
    }
  }

  ExprPtr concatenation() {
    static const Operator kOperators[] = {{"&", kBinary, kConcat}};
    return leftAssociative(&Parser::sum, kOperators);
  }

  ExprPtr sum() {
    static const Operator kOperators[] = {{"+", kBinary, kPlus}, {"-", kBinary, kMinus}};
    return leftAssociative(&Parser::product, kOperators);
  }

  ExprPtr product() {
    static const Operator kOperators[] = {{"*", kBinary, kMult}, {"/", kBinary, kDiv}};
    return leftAssociative(&Parser::unary, kOperators);
  }

  ExprPtr unary() {
    if (isSymbol("-")) {
      Deeper deeper(this, peek());
      auto expr = std::make_unique<Expr>(kNeg, next().pos);
      expr->args.push_back(unary());
      return expr;
    }
    return primary();
  }

  ExprPtr primary() {
    const Token &token = peek();
    switch (token.kind) {
      case kTokNumber: {
        auto expr = std::make_unique<Expr>(kNumber, token.pos);
        expr->number = token.number;
        expr->text = token.text;
        next();
        return expr;
      }
      case kTokText: {
        auto expr = std::make_unique<Expr>(kText, token.pos);
        expr->text = next().text;
        return expr;
      }
      case kTokDate: {
        auto expr = std::make_unique<Expr>(kDate, token.pos);
        expr->text = next().text;
        return expr;
      }
      case kTokSymbol: return bracketed();
      case kTokWord: break;
      case kTokEnd: expected("a value");
    }
    const std::string &word = token.text;
    if (word == "WAHR" || word == "FALSCH") {
      auto expr = std::make_unique<Expr>(kTruth, next().pos);
      expr->truth = word == "WAHR";
      return expr;
    }
    if (word == "NICHTS") return std::make_unique<Expr>(kNil, next().pos);
    if (word == "UNGUELTIG") return std::make_unique<Expr>(kInvalid, next().pos);
    if (word == "UNUMWANDELBAR") {
      auto expr = std::make_unique<Expr>(kInconvertible, next().pos);
      expectSymbol("(");
      expr->text = text("the message (a text)");
      expectSymbol(")");
      return expr;
    }
    if (word == "LIES" || word == "EXISTIERT") return query();
    if (isKeyword(word)) expected("a value");
    if (isSymbol("(", 1)) return call();
    auto expr = std::make_unique<Expr>(kPath, token.pos);
    expr->path = path();
    return expr;
  }

  // Name(arg; arg...): a built-in, a function of the file or of the host.
  ExprPtr call() {
    auto expr = std::make_unique<Expr>(kCall, peek().pos);
    expr->text = next().text;
    expectSymbol("(");
    if (!isSymbol(")")) {
      do {
        if (expr->text == "PASST" && expr->args.size() == 1) {
          // The type argument of PASST is a type word.
          std::int32_t type = peek().kind == kTokWord ? fieldTypeOf(peek().text) : -1;
          if (type < 0) expected("a type (TEXT, WAHRHEITSWERT, GANZZAHL, KOMMAZAHL, DATUM or FREI)");
          auto typeExpr = std::make_unique<Expr>(kText, next().pos);
          typeExpr->fieldType = static_cast<FieldType>(type);
          typeExpr->text = std::to_string(type);
          typeExpr->truth = true;  // marks the type word
          expr->args.push_back(std::move(typeExpr));
          continue;
        }
        expr->args.push_back(expression());
      } while (acceptSymbol(";"));
    }
    expectSymbol(")");
    return expr;
  }

  // ( expr ) | (a .. b) | (a .. b] | [a .. b] | [a .. b) | [a; b .. c] | {a; b; ...}
  ExprPtr bracketed() {
    const Token &open = peek();
    Deeper deeper(this, open);
    if (acceptSymbol("{")) {
      auto expr = std::make_unique<Expr>(kSeries, open.pos);
      if (!isSymbol("}")) {
        do {
          expr->args.push_back(expression());
        } while (acceptSymbol(";"));
      }
      expectSymbol("}");
      return expr;
    }
    bool square = open.text == "[";
    if (!square && open.text != "(") expected("a value");
    next();
    ExprPtr first = expression();
    if (!square && acceptSymbol(")")) return first;
    if (square && acceptSymbol(";")) {
      auto expr = std::make_unique<Expr>(kSequence, open.pos);
      expr->args.push_back(std::move(first));
      expr->args.push_back(expression());
      expectSymbol("..");
      expr->args.push_back(expression());
      expectSymbol("]");
      return expr;
    }
    if (!acceptSymbol("..")) expected(square ? "'..' or ';'" : "')' or '..'");
    auto expr = std::make_unique<Expr>(kInterval, open.pos);
    expr->args.push_back(std::move(first));
    expr->args.push_back(expression());
    bool closedLast = isSymbol("]");
    if (!closedLast && !isSymbol(")")) expected("']' or ')' to end the interval");
    next();
    expr->intervalType = square ? (closedLast ? INCLUDE_BOTH : INCLUDE_FIRST) : (closedLast ? INCLUDE_LAST : INCLUDE_NONE);
    return expr;
  }

  // LIES f, g AUS M [WO cond UND cond...] | EXISTIERT M [WO ...]
  ExprPtr query() {
    const Token &start = next();
    bool exists = start.text == "EXISTIERT";
    auto expr = std::make_unique<Expr>(exists ? kExists : kQuery, start.pos);
    expr->query = std::make_unique<Query>();
    Query *query = expr->query.get();
    if (!exists) {
      do {
        query->fieldPos.push_back(peek().pos);
        query->fields.push_back(name("a field of the material"));
      } while (acceptSymbol(","));
      expectWord("AUS");
    }
    query->materialPos = peek().pos;
    query->material = name("the material's name");
    if (acceptWord("WO")) {
      do {
        Condition condition;
        condition.pos = peek().pos;
        condition.field = name("a field of the material");
        static const std::pair<const char *, OperatorType> kOps[] = {
            {"=", OPERATOR_EQUAL}, {"<>", OPERATOR_NOT_EQUAL}, {">", OPERATOR_GREATER},
            {">=", OPERATOR_GREATER_EQUAL}, {"<", OPERATOR_LESS}, {"<=", OPERATOR_LESS_EQUAL}};
        bool found = false;
        for (const auto &op : kOps) {
          if (acceptSymbol(op.first)) {
            condition.op = op.second;
            found = true;
            break;
          }
        }
        if (!found) expected("a comparison (=, <>, >, >=, <, <=)");
        condition.value = concatenation();
        query->conditions.push_back(std::move(condition));
      } while (acceptWord("UND"));
    }
    return expr;
  }

  // Name (.Name | [expr]...)*
  std::unique_ptr<Path> path() {
    auto result = std::make_unique<Path>();
    result->pos = peek().pos;
    result->head = name("a name");
    auto indices = [&](PathStep *step) {
      while (isSymbol("[")) {
        next();
        step->indices.push_back(expression());
        expectSymbol("]");
      }
    };
    PathStep head;
    head.pos = result->pos;
    indices(&head);
    if (!head.indices.empty()) result->steps.push_back(std::move(head));
    while (isSymbol(".")) {
      next();
      PathStep step;
      step.pos = peek().pos;
      step.name = name("a field's name");
      indices(&step);
      result->steps.push_back(std::move(step));
    }
    return result;
  }

  const std::vector<Token> &tokens_;
  Diagnostics *diagnostics_;
  std::size_t at_ = 0;
  bool splitElse_ = false;       // the body read holds a WENN on the line after SONST
  bool chainSplitElse_ = false;  // such a WENN continues its chain
  Position splitElsePos_;        // the first such WENN
  bool oneLine_ = true;            // a statement on DANN's line makes a one-line WENN
  std::vector<OneLine> oneLines_;  // the WENNs with a statement on DANN's line in the body read
  WennEnd wennEnd_;
  int depth_ = 0;
  int tree_ = 0;
};

}  // namespace

bool isKeyword(const std::string &word) { return keywords().count(word) != 0; }

Module parse(const std::vector<Token> &tokens, Diagnostics *diagnostics) {
  return Parser(tokens, diagnostics).run();
}

}  // namespace lang
}  // namespace quorel
