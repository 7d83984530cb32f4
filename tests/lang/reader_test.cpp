// Reading rule files: every mistake of a faulty file reported at once, with
// its place, line and caret (tests/lang/faulty/NAME.qr against
// NAME.expected); the documentation's examples read; the reference of the
// built-ins matches the library and the documentation.

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "quorel/lang/builtins.h"
#include "quorel/lang/rule_set.h"

namespace quorel {
namespace lang {
namespace {

const std::string kSource = QUOREL_SOURCE_DIR;

std::string slurp(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

std::vector<std::string> faultyFiles() {
  std::vector<std::string> names;
  DIR *dir = opendir((kSource + "/tests/lang/faulty").c_str());
  if (dir == nullptr) return names;
  while (dirent *entry = readdir(dir)) {
    std::string name = entry->d_name;
    if (name.size() > 3 && name.compare(name.size() - 3, 3, ".qr") == 0) names.push_back(name.substr(0, name.size() - 3));
  }
  closedir(dir);
  std::sort(names.begin(), names.end());
  return names;
}

TEST(ReaderTest, ReportsEveryMistakeOfAFaultyFileWithItsPlace) {
  std::vector<std::string> names = faultyFiles();
  ASSERT_GE(names.size(), 10u);
  for (const std::string &name : names) {
    std::string dir = kSource + "/tests/lang/faulty/";
    Diagnostics diagnostics;
    std::shared_ptr<const RuleSet> rules = readRuleText(slurp(dir + name + ".qr"), name + ".qr", &diagnostics);
    EXPECT_EQ(rules, nullptr) << name;
    EXPECT_EQ(diagnostics.format(), slurp(dir + name + ".expected")) << name;
  }
}

TEST(ReaderTest, TellsAFileThatCannotBeReadWithTheReasonAndStopsCountingAfterAHundred) {
  auto unreadable = [](const std::string &path) {
    Diagnostics diagnostics;
    EXPECT_EQ(readRuleFile(path, &diagnostics), nullptr) << path;
    return diagnostics.format();
  };
  EXPECT_EQ(unreadable("/nonexistent/regeln.qr"),
            "/nonexistent/regeln.qr: error: cannot read the rule file: No such file or directory\n");
  EXPECT_EQ(unreadable(kSource + "/tests/lang"),
            kSource + "/tests/lang: error: cannot read the rule file: Is a directory\n");
  char locked[] = "/tmp/quorel_lang_lockedXXXXXX";
  int fd = mkstemp(locked);
  ASSERT_GE(fd, 0);
  close(fd);
  chmod(locked, 0);
  if (access(locked, R_OK) != 0) {  // not for a user whom permissions do not stop
    EXPECT_EQ(unreadable(locked), std::string(locked) + ": error: cannot read the rule file: Permission denied\n");
  }
  unlink(locked);
  std::string many = "MODUL M\nSATZ R\n FELD A TEXT\nENDE\nREGEL T\n";
  for (int i = 0; i < 500; ++i) many += "SEI a" + std::to_string(i) + " = unbekannt\n";
  Diagnostics lots;
  EXPECT_EQ(readRuleText(many + "ENDE\n", "viele.qr", &lots), nullptr);
  EXPECT_EQ(lots.size(), 101u);
  EXPECT_EQ(lots.errors().back().message, "too many errors; the rest of the file is not reported");
}

TEST(ReaderTest, ReadsUtf8AndWindows1252AlikeAndTakesAnyBytesWithoutHarm) {
  std::string utf8 = "MODUL M\nSATZ R\n FELD Stra\xC3\x9F" "e TEXT\nENDE\nREGEL T\n MELDE HINWEIS \"\xC3\xA4\" GEWICHT 1\nENDE\n";
  std::string latin = "MODUL M\nSATZ R\n FELD Stra\xDF" "e TEXT\nENDE\nREGEL T\n MELDE HINWEIS \"\xE4\" GEWICHT 1\nENDE\n";
  Diagnostics a, b;
  auto fromUtf8 = readRuleText(utf8, "a.qr", &a);
  auto fromLatin = readRuleText(latin, "b.qr", &b);
  ASSERT_NE(fromUtf8, nullptr) << a.format();
  ASSERT_NE(fromLatin, nullptr) << b.format();
  EXPECT_EQ(fromUtf8->module().record->children[0]->name, "Stra\xDF" "e");
  EXPECT_EQ(fromLatin->module().record->children[0]->name, "Stra\xDF" "e");
  // Every prefix of a good file is read without a crash, and only the whole
  // file without a mistake.
  std::string good = slurp(kSource + "/examples/rules/antrag.qr");
  for (std::size_t cut = 0; cut < good.size(); cut += 97) {
    Diagnostics diagnostics;
    auto rules = readRuleText(good.substr(0, cut), "cut.qr", &diagnostics);
    EXPECT_EQ(rules == nullptr, !diagnostics.empty());
  }
}

TEST(ReaderTest, RefusesTreesTooDeepForTheStackInsteadOfCrashing) {
  const std::string head = "MODUL M\nSATZ R\n FELD A GANZZAHL\nENDE\nREGEL T\n";
  std::string chain = head + " SEI a = 1";
  for (int i = 0; i < 100000; ++i) chain += i % 2 ? " + 1" : " UND 1";
  std::string nested = head + " SEI a = " + std::string(50000, '(') + "1" + std::string(50000, ')');
  std::string stray = head;
  for (int i = 0; i < 100000; ++i) stray += "x SEI a" + std::to_string(i) + " = 1\n";
  for (const std::string *text : {&chain, &nested, &stray}) {
    Diagnostics diagnostics;
    EXPECT_EQ(readRuleText(*text + "\nENDE\n", "tief.qr", &diagnostics), nullptr);
    EXPECT_FALSE(diagnostics.empty());
  }
}

// The blocks of docs/language.md: a whole file (from MODUL) reads as it
// is; declarations and statements read in the module the page gives for
// them.
TEST(ReaderTest, TheDocumentationsExamplesRead) {
  std::string page = slurp(kSource + "/docs/language.md");
  std::regex block("```(qr|text)\n([^`]*)```");
  std::string prelude;
  int checked = 0;
  for (auto it = std::sregex_iterator(page.begin(), page.end(), block); it != std::sregex_iterator(); ++it) {
    std::string kind = (*it)[1], text = (*it)[2];
    if (kind == "text") {
      if (text.rfind("SATZ Person", 0) == 0) prelude = "MODUL Beispiel\n" + text;
      continue;
    }
    std::string file = text;
    bool whole = text.rfind("MODUL", 0) == 0 || text.find("\nMODUL ") != std::string::npos;
    if (!whole) {
      ASSERT_FALSE(prelude.empty()) << "a fragment before the page's record type:\n" << text;
      bool declarations = text.rfind("FUNKTION", 0) == 0 || text.rfind("REGEL", 0) == 0;
      file = declarations ? prelude + text : prelude + "REGEL Beispiel\n" + text + "\nENDE\n";
    }
    Diagnostics diagnostics;
    EXPECT_NE(readRuleText(file, "docs", &diagnostics), nullptr) << text << diagnostics.format();
    ++checked;
  }
  EXPECT_GE(checked, 15);
}

TEST(BuiltinsTest, TheReferenceCoversTheLibrarysFunctionsAndIsTheDocumentations) {
  // Every German built-in that Functions declares has an entry.
  std::string header = slurp(kSource + "/quorel/functions/functions.h");
  std::regex declared("static Value \\*([A-Z][A-Z_]+)\\(");
  std::set<std::string> names;
  for (auto it = std::sregex_iterator(header.begin(), header.end(), declared); it != std::sregex_iterator(); ++it) {
    names.insert((*it)[1]);
  }
  ASSERT_GE(names.size(), 30u);
  for (const std::string &name : names) EXPECT_NE(findBuiltin(name), nullptr) << name;
  std::string page = slurp(kSource + "/docs/language.md");
  std::size_t begin = page.find("<!-- builtins -->\n");
  std::size_t end = page.find("<!-- /builtins -->");
  ASSERT_NE(begin, std::string::npos);
  ASSERT_NE(end, std::string::npos);
  begin += std::string("<!-- builtins -->\n").size();
  EXPECT_EQ(page.substr(begin, end - begin), builtinReference())
      << "docs/language.md: replace the table by the output of quorel-compile --builtins";
}

}  // namespace
}  // namespace lang
}  // namespace quorel
