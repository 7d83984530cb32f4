// The shapes the interpreter's program builds handlers of their own for,
// run: they must answer as the plain forms they stand for.

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "lang_test_support.h"

namespace quorel {
namespace lang {
namespace {

using testing::runText;

const std::string kRecord = R"(
MODUL Test
SATZ R
  FELD Name TEXT
  FELD Zahl GANZZAHL
  FELD Betrag KOMMAZAHL
  FELD Datum DATUM MASKE "TT.MM.JJJJ"
  FELD Ja WAHRHEITSWERT
ENDE
)";

// MELDE of a problem with the id.
std::string say(const std::string &id) { return "MELDE HINWEIS \"" + id + "\" GEWICHT 1 TEXT \"x\"\n"; }

TEST(ProgramTest, EveryTestAndItsNegationAgreeAsConditionAndAsValue) {
  // Each condition with its truth on the record below, its operands read
  // from fields, locals, constants and computations. Each is used four
  // ways: WENN c, WENN NICHT c, and the values of c and of NICHT c.
  const std::vector<std::pair<std::string, bool>> conditions = {
      {"GUELTIG(R.Name)", true},
      {"GUELTIG(R.Betrag)", false},
      {"GESETZT(R.Betrag)", true},
      {"BRAUCHBAR(n)", true},
      {"BRAUCHBAR(R.Zahl + 1)", true},
      {"GUELTIG(UNGUELTIG)", false},
      {"PASST(R.Zahl; GANZZAHL)", true},
      {"PASST(n; GANZZAHL)", false},
      {"PASST(R.Datum; DATUM; m)", true},
      {"R.Zahl IN [1 .. 9]", true},
      {"n IN {\"Berta\"; \"Carl\"}", false},
      {"HAT_FORMAT(\"[A-Z][a-z]+\"; R.Name)", true},
      {"HAT_FORMAT(\"[0-9]+\"; n)", false},
      {"R.Ja", true},
      {"WAHR", true},
      {"R.Zahl > 3", true},
      {"WERTLAENGE(n) = 3", false},
      {"R.Zahl > 3 UND R.Ja UND n = \"Anna\"", true},
      {"R.Zahl < 3 ODER NICHT R.Ja ODER n = \"Berta\"", false},
      {"(R.Zahl < 3 ODER R.Ja) UND NICHT (n = \"Anna\" UND R.Zahl = 1)", true},
  };
  std::string body = "SEI n = R.Name\nSEI m = \"TT.MM.JJJJ\"\n";
  std::string expected;
  for (std::size_t i = 0; i < conditions.size(); ++i) {
    const std::string c = "(" + conditions[i].first + ")";
    const std::string id = std::to_string(i);
    body += "WENN " + c + " DANN " + say(id + "a");
    body += "WENN NICHT " + c + " DANN " + say(id + "b");
    body += "SEI w" + id + " = " + c + "\nWENN w" + id + " DANN " + say(id + "c");
    body += "SEI v" + id + " = NICHT " + c + "\nWENN v" + id + " DANN " + say(id + "d");
    expected += conditions[i].second ? id + "a " + id + "c " : id + "b " + id + "d ";
  }
  std::string out = runText(kRecord + "REGEL T\n" + body + "ENDE\n",
                            {{"R.Name", "Anna"}, {"R.Zahl", "5"}, {"R.Ja", "wahr"}, {"R.Datum", "31.12.2024"}});
  std::string ids;  // the first word of each problem's line
  for (std::size_t line = 0, end; line < out.size(); line = end + 1) {
    end = out.find('\n', line);
    if (end == std::string::npos) end = out.size();
    ids += out.substr(line, out.find(' ', line) - line) + " ";
  }
  EXPECT_EQ(ids, expected) << out;
}

}  // namespace
}  // namespace lang
}  // namespace quorel
