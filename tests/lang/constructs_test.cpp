// The constructs of the rule language, run: each test reads a small rule
// file over one record type and checks what the runs report.

#include <cstdarg>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <quorel/quorel.h>

#include "lang_test_support.h"
#include "quorel/host/table_material_access.h"

namespace quorel {
namespace lang {
namespace {

using testing::Cells;
using testing::readOk;
using testing::run;
using testing::runText;

const std::string kRecord = R"(
MODUL Test
SATZ R
  FELD Name TEXT
  FELD Zahl GANZZAHL
  FELD Betrag "Betrag in Euro" KOMMAZAHL MASKE "####.##0"
  FELD Datum DATUM MASKE "TT.MM.JJJJ"
  FELD Ja WAHRHEITSWERT
  GRUPPE Adresse "Anschrift"
    FELD Ort TEXT
  ENDE
  GRUPPE Kinder[0]
    FELD Vorname TEXT
  ENDE
  FELD Werte[3] GANZZAHL
  FELD Tabelle[2][0] GANZZAHL
ENDE
)";

// A rule file of the record type and one rule "T" with body.
std::string rule(const std::string &body, const std::string &more = "") {
  return kRecord + more + "REGEL T ABSCHNITT \"Regel T\"\n" + body + "\nENDE\n";
}

// MELDE of a problem with the id and text, on no field.
std::string say(const std::string &id, const std::string &text = "\"x\"") {
  return "MELDE HINWEIS \"" + id + "\" GEWICHT 1 TEXT " + text + "\n";
}

TEST(RecordTypeTest, DeclaresFieldsGroupsAndArraysAsTheLibraryDescribesThem) {
  auto rules = readOk(kRecord);
  ASSERT_NE(rules, nullptr);
  std::unique_ptr<Plausi> plausi = rules->createPlausi();
  Topic *root = plausi->getRootTopic();
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(root->getHierarchyText(), "R");
  TypeDescriptor *betrag = root->getField(nullptr, "Betrag")->getTypeDescriptor();
  EXPECT_STREQ(betrag->getFieldNameDisplay(), "Betrag in Euro");
  EXPECT_EQ(betrag->getFieldType(), FieldTypeReal);
  EXPECT_STREQ(betrag->getMask(), "####.##0");
  EXPECT_EQ(root->getField(nullptr, "Name")->getTypeDescriptor()->getMask(), nullptr);
  EXPECT_STREQ(root->getField(nullptr, "Adresse")->getTypeDescriptor()->getFieldNameDisplay(), "Anschrift");
  EXPECT_EQ(root->getField(nullptr, "Adresse.Ort")->getHierarchyText(), "R.Adresse.Ort");
  EXPECT_EQ(root->getField(nullptr, "Kinder[1].Vorname")->getHierarchyText(), "R.Kinder[1].Vorname");
  std::int32_t *dims = root->getField(nullptr, "Tabelle")->getTypeDescriptor()->getDimension();
  ASSERT_NE(dims, nullptr);
  EXPECT_EQ(dims[0], 2);
  EXPECT_EQ(dims[1], 0);
  EXPECT_LT(dims[2], 0);
}

TEST(RecordTypeTest, GivesFieldsTheirNamesInTheDataSource) {
  auto rules = readOk(R"(
MODUL Test
SATZ R
  FELD Name TEXT SPALTE "NAME"
  FELD Betrag KOMMAZAHL SPALTE "BETRAG" MASKE "####.##0"
  FELD Frei TEXT
  GRUPPE Kinder[0]
    FELD Vorname TEXT SPALTE "KIND_VORNAME"
  ENDE
  FELD Werte[3] GANZZAHL SPALTE "WERT"
ENDE
MATERIAL Orte DATENBESTAND "ORTE"
  FELD PLZ TEXT SPALTE "plz"
ENDE
MATERIAL Laender
  FELD Name TEXT
ENDE
)");
  ASSERT_NE(rules, nullptr);
  std::unique_ptr<Plausi> plausi = rules->createPlausi();
  Topic *root = plausi->getRootTopic();
  auto dataset = [](FieldDescriptor *field) {
    const char *name = field->getTypeDescriptor()->getFieldNameDataset();
    return std::string(name != nullptr ? name : "-");
  };
  EXPECT_EQ(dataset(root->getField(nullptr, "Name")), "NAME");
  EXPECT_EQ(dataset(root->getField(nullptr, "Betrag")), "BETRAG");
  EXPECT_STREQ(root->getField(nullptr, "Betrag")->getTypeDescriptor()->getMask(), "####.##0");
  EXPECT_EQ(dataset(root->getField(nullptr, "Frei")), "-");
  EXPECT_EQ(dataset(root->getField(nullptr, "Kinder[1].Vorname")), "KIND_VORNAME");
  EXPECT_EQ(dataset(root->getField(nullptr, "Werte[2]")), "WERT");
  auto *orte = dynamic_cast<Topic *>(plausi->getMaterial("Orte"));
  ASSERT_NE(orte, nullptr);
  EXPECT_EQ(dataset(orte->getField(nullptr, "PLZ")), "plz");
  EXPECT_NE(orte->getTypeDescriptor()->getMapping(), root->getTypeDescriptor()->getMapping());
  // A tree without names has no mapping at all, as a module that declares none.
  auto *laender = dynamic_cast<Topic *>(plausi->getMaterial("Laender"));
  ASSERT_NE(laender, nullptr);
  EXPECT_EQ(laender->getField(nullptr, "Name")->getTypeDescriptor()->getMapping(), nullptr);
  auto plain = readOk(kRecord);
  ASSERT_NE(plain, nullptr);
  EXPECT_EQ(plain->createPlausi()->getRootTopic()->getTypeDescriptor()->getMapping(), nullptr);
}

TEST(FlowTest, RunsTheRulesOfTheFlowInItsOrderAndRefusesOthers) {
  std::string text = kRecord + R"(
ABLAUF Voll: B, A
ABLAUF Kurz: A
REGEL A
  MELDE HINWEIS "A" GEWICHT 1
ENDE
REGEL B ABSCHNITT "Regel B"
  MELDE HINWEIS "B" GEWICHT 1
ENDE
)";
  auto rules = readOk(text);
  ASSERT_NE(rules, nullptr);
  std::unique_ptr<Plausi> plausi = rules->createPlausi();
  EXPECT_TRUE(plausi->isKnownFlow("Kurz"));
  EXPECT_FALSE(plausi->isKnownFlow("Pruefung"));
  EXPECT_STREQ(plausi->getFlows()[0], "Voll");
  EXPECT_EQ(run(plausi.get(), {}, "Voll"), "B 2 1: - | - | - | read | trail Regel B < Plausi\n"
                                            "A 2 1: - | - | - | read | trail A < Plausi\n");
  EXPECT_EQ(run(plausi.get(), {}, "Kurz"), "A 2 1: - | - | - | read | trail A < Plausi\n");
  EXPECT_EQ(run(plausi.get(), {}, "Anders"), "");

  // Without ABLAUF, the one flow Pruefung runs every rule in the order of the file.
  auto all = readOk(kRecord + "REGEL A\n" + say("A") + "ENDE\nREGEL B\n" + say("B") + "ENDE\n");
  ASSERT_NE(all, nullptr);
  plausi = all->createPlausi();
  ASSERT_NE(plausi->getFlows(), nullptr);
  EXPECT_STREQ(plausi->getFlows()[0], "Pruefung");
  EXPECT_EQ(plausi->getFlows()[1], nullptr);
  EXPECT_FALSE(plausi->isKnownFlow("Anders"));
  EXPECT_EQ(run(plausi.get(), {}, "Pruefung"), "A 2 1: x | - | - | read | trail A < Plausi\n"
                                                "B 2 1: x | - | - | read | trail B < Plausi\n");
}

TEST(ConditionTest, BranchesAndShortCircuitsAsWrittenAndReadsOnlyWhatItEvaluates) {
  std::string body = R"(
WENN R.Zahl < 0 DANN
  )" + say("negativ") + R"(
SONST WENN R.Zahl = 0 ODER R.Name = "null" DANN
  )" + say("null") + R"(
SONST WENN NICHT (R.Zahl > 10 UND R.Ja) DANN
  )" + say("klein") + R"(
SONST
  )" + say("sonst") + R"(
ENDE)";
  std::string text = rule(body);
  EXPECT_EQ(runText(text, {{"R.Zahl", "-1"}}), "negativ 2 1: x | - | - | read R.Zahl | trail Regel T < Plausi\n");
  // ODER stops at its first true operand: R.Name is not read.
  EXPECT_EQ(runText(text, {{"R.Zahl", "0"}}), "null 2 1: x | - | - | read R.Zahl | trail Regel T < Plausi\n");
  EXPECT_EQ(runText(text, {{"R.Zahl", "5"}, {"R.Name", "null"}}),
            "null 2 1: x | - | - | read R.Zahl, R.Name | trail Regel T < Plausi\n");
  // UND stops at its first false operand: R.Ja is not read.
  EXPECT_EQ(runText(text, {{"R.Zahl", "5"}}), "klein 2 1: x | - | - | read R.Zahl, R.Name | trail Regel T < Plausi\n");
  EXPECT_EQ(runText(text, {{"R.Zahl", "11"}, {"R.Ja", "wahr"}}),
            "sonst 2 1: x | - | - | read R.Zahl, R.Name, R.Ja | trail Regel T < Plausi\n");
}

TEST(ConditionTest, SonstWennContinuesTheChainUnlessTheWennHasAnEndeOfItsOwn) {
  // SONST WENN on one line, or on two lines with one ENDE for the chain: one
  // statement. A WENN on the line after SONST with an ENDE of its own: a
  // statement inside the SONST block, with statements after it.
  std::string chained = "WENN R.Zahl = 1 DANN\n" + say("eins") + "SONST WENN R.Zahl = 2 DANN " + say("zwei") + "ENDE";
  std::string ladder = "WENN R.Zahl = 1 DANN\n" + say("eins") + "SONST\nWENN R.Zahl = 2 DANN\n" + say("zwei") +
                       "SONST\n  WENN R.Zahl = 3 DANN\n" + say("drei") + "SONST\n" + say("sonst") + "ENDE\n" +
                       say("danach");
  std::string nested = "WENN R.Zahl = 1 DANN\n" + say("eins") + "SONST\nWENN R.Zahl = 2 DANN\n" + say("zwei") +
                       "ENDE\n" + say("sonst") + "ENDE";
  const std::string zwei = "zwei 2 1: x | - | - | read R.Zahl | trail Regel T < Plausi\n";
  const std::string danach = "danach 2 1: x | - | - | read R.Zahl | trail Regel T < Plausi\n";
  EXPECT_EQ(runText(rule(chained), {{"R.Zahl", "2"}}), zwei);
  EXPECT_EQ(runText(rule(ladder), {{"R.Zahl", "2"}}), zwei + danach);
  EXPECT_EQ(runText(rule(ladder), {{"R.Zahl", "3"}}), "drei 2 1: x | - | - | read R.Zahl | trail Regel T < Plausi\n" + danach);
  EXPECT_EQ(runText(rule(ladder), {{"R.Zahl", "4"}}), "sonst 2 1: x | - | - | read R.Zahl | trail Regel T < Plausi\n" + danach);
  EXPECT_EQ(runText(rule(nested), {{"R.Zahl", "2"}}), zwei + "sonst 2 1: x | - | - | read R.Zahl | trail Regel T < Plausi\n");
  EXPECT_EQ(runText(rule(nested), {{"R.Zahl", "1"}}), "eins 2 1: x | - | - | read R.Zahl | trail Regel T < Plausi\n");
  // A rule reads all its split SONSTs one way: mixed, neither reading fits,
  // and the first split WENN is told how to write a chain.
  std::string mixed = ladder + "\n" + nested;
  EXPECT_EQ(testing::mistakes(rule(mixed) + "REGEL U\nENDE\n"),
            "test.qr:22:1: error: this WENN is read as a statement of its own, which needs an ENDE; to continue the "
            "chain, write SONST WENN on one line\n"
            "WENN R.Zahl = 2 DANN\n"
            "^\n"
            "test.qr:41:1: error: expected 'ENDE' to close the WENN of line 19, found 'REGEL'\n"
            "REGEL U\n"
            "^\n"
            "test.qr:41:1: error: expected 'ENDE' to close the REGEL of line 18, found 'REGEL'\n"
            "REGEL U\n"
            "^\n");
  // A mistake elsewhere is told alone, in either form.
  EXPECT_EQ(testing::mistakes(rule(ladder + "\nSEI = 1") + "REGEL U\nENDE\n"),
            "test.qr:32:5: error: expected a variable's name, found '='\n"
            "SEI = 1\n"
            "    ^\n");
  EXPECT_EQ(testing::mistakes(rule(nested + "\nSEI = 1") + "REGEL U\nENDE\n"),
            "test.qr:27:5: error: expected a variable's name, found '='\n"
            "SEI = 1\n"
            "    ^\n");
}

TEST(ConditionTest, AStatementOnDannsLineIsTheWholeBodyOfAWennWithoutEnde) {
  // The same checks in the long form and the one-line form: a MELDE going
  // on over lines, a one-line WENN in a loop, one whose statement is a WENN
  // of either form, and a statement after it, which runs whatever the
  // condition.
  std::string longForm = R"(
FUER i VON 1 BIS 2
  WENN R.Zahl > i DANN
    MELDE FEHLER "gross" GEWICHT 2 FELD R.Zahl
      TEXT "mehr als " & i
  ENDE
ENDE
WENN R.Zahl < 5 DANN
  WENN R.Ja DANN
    )" + say("ja") + R"(
  ENDE
ENDE
WENN R.Zahl < 5 DANN
  WENN NICHT R.Ja DANN
    )" + say("nein") + R"(
  ENDE
ENDE
)" + say("immer");
  std::string oneLine = R"(
FUER i VON 1 BIS 2
  WENN R.Zahl > i DANN MELDE FEHLER "gross" GEWICHT 2 FELD R.Zahl
    TEXT "mehr als " & i
ENDE
WENN R.Zahl < 5 DANN WENN R.Ja DANN )" + say("ja") + R"(
WENN R.Zahl < 5 DANN WENN NICHT R.Ja DANN
  )" + say("nein") + R"(
ENDE
)" + say("immer");
  const std::string immer = "immer 2 1: x | - | - | read R.Zahl, R.Ja | trail Regel T < Plausi\n";
  EXPECT_EQ(runText(rule(oneLine), {{"R.Zahl", "2"}, {"R.Ja", "wahr"}}),
            "gross 1 2: mehr als 1 | - | R.Zahl | read R.Zahl | trail Regel T < Plausi\n"
            "ja 2 1: x | - | - | read R.Zahl, R.Ja | trail Regel T < Plausi\n" + immer);
  for (const Cells &cells : {Cells{{"R.Zahl", "7"}}, Cells{{"R.Zahl", "0"}, {"R.Ja", "falsch"}}, Cells{}}) {
    EXPECT_EQ(runText(rule(oneLine), cells), runText(rule(longForm), cells));
  }
}

TEST(ValueTest, LiteralsOperatorsAndRangesAnswerAsTheLibrary) {
  std::string body = R"(
SEI a = 12,5
WENN a * 2 = 25 UND a - 0,5 = 12 UND -a < 0 UND 10 / 4 = 2,5 DANN )" + say("rechnen") + R"(
WENN "ab" & 1 & WAHR & 2,5 & 31.12.2024 = "ab1WAHR2,531.12.2024" DANN )" + say("text") + R"(
WENN 31.12.2024 > 01.01.2024 UND DATUM_VERSCHIEBEN(31.01.2024; 1; "M") = 29.02.2024 DANN )" + say("datum") + R"(
WENN 10 IN [0 .. 10] UND NICHT 10 IN [0 .. 10) UND NICHT 0 IN (0 .. 10] UND 5 IN (0 .. 10) DANN )" + say("intervall") + R"(
WENN 7 IN [1; 3 .. 9] UND NICHT 4 IN [1; 3 .. 9] DANN )" + say("folge") + R"(
WENN "B" IN {"A"; "B"} UND 15 IN {1; [10 .. 20]} UND NICHT 5 IN {1; [10 .. 20]} DANN )" + say("reihe") + R"(
SEI z = R.Zahl
WENN z + 1 = 1 UND NICHT GUELTIG(z * 2) UND GESETZT(z) UND NICHT BRAUCHBAR(z) DANN )" + say("leer") + R"(
WENN NICHT GESETZT(NICHTS) UND NICHT GUELTIG(UNGUELTIG) DANN )" + say("nichts") + R"()";
  EXPECT_EQ(runText(rule(body), {}),
            "rechnen 2 1: x | - | - | read | trail Regel T < Plausi\n"
            "text 2 1: x | - | - | read | trail Regel T < Plausi\n"
            "datum 2 1: x | - | - | read | trail Regel T < Plausi\n"
            "intervall 2 1: x | - | - | read | trail Regel T < Plausi\n"
            "folge 2 1: x | - | - | read | trail Regel T < Plausi\n"
            "reihe 2 1: x | - | - | read | trail Regel T < Plausi\n"
            "leer 2 1: x | - | - | read R.Zahl | trail Regel T < Plausi\n"
            "nichts 2 1: x | - | - | read R.Zahl | trail Regel T < Plausi\n");
  // An inconvertible value fails when it is used, with its message.
  EXPECT_EQ(runText(rule("SEI u = UNUMWANDELBAR(\"kaputt\")\nSEI v = WERTLAENGE(u)"), {}),
            "Ausnahme 8: Dieser Wert ist nicht verf\xFC" "gbar: kaputt\n");
  EXPECT_EQ(runText(rule("SEI v = 1 / R.Zahl"), {}), "Ausnahme 11: Division durch 0.\n");
}

TEST(VariableTest, KeepsValuesMadeInInnerSectionsAndLoops) {
  std::string body = R"(
SEI letzter = "keiner"
SEI summe = 0
FUER i VON 0 BIS 2 ABSCHNITT "Runde"
  SETZE summe = summe + R.Werte[i]
  SETZE letzter = "Wert " & R.Werte[i]
ENDE
ABSCHNITT "Innen"
  SETZE summe = summe * 2
ENDE
MELDE HINWEIS "V" GEWICHT 1 TEXT letzter & " Summe " & summe)";
  EXPECT_EQ(runText(rule(body), {{"R.Werte[0]", "1"}, {"R.Werte[1]", "2"}, {"R.Werte[2]", "4"}}),
            "V 2 1: Wert 4 Summe 14 | - | - | read | trail Regel T < Plausi\n");
}

TEST(LoopTest, WalksArraysRangesAndCountsAndBreaks) {
  std::string body = R"(
FUER JEDES kind IN R.Kinder ABSCHNITT "Kind"
  WENN NICHT GUELTIG(kind.Vorname) DANN
    MELDE HINWEIS "K" GEWICHT 1 FELD kind.Vorname TEXT "fehlt" INDIZES ANZAHL(R.Kinder)
  ENDE
ENDE
FUER JEDES wert IN R.Werte
  WENN wert > 1 DANN
    MELDE HINWEIS "W" GEWICHT 1 FELD wert TEXT "gross " & wert
    ABBRECHEN
  ENDE
ENDE
FUER JEDES n IN {3; 4}
  FUER z VON 0 BIS ANZAHL(R.Tabelle; 1) - 1
    WENN R.Tabelle[1][z] = n DANN )" + say("T", "\"Tabelle \" & n & \" bei \" & z") + R"(
  ENDE
ENDE)";
  Cells cells = {{"R.Kinder#", "3"},   {"R.Kinder[0].Vorname", "Anna"}, {"R.Werte[0]", "1"}, {"R.Werte[1]", "2"},
                 {"R.Werte[2]", "3"},  {"R.Tabelle[1]#", "2"},          {"R.Tabelle[1][1]", "4"}};
  EXPECT_EQ(runText(rule(body), cells),
            "K 2 1: fehlt | - | R.Kinder[1].Vorname | read R.Kinder[1].Vorname | trail Kind < Regel T < Plausi\n"
            "K 2 1: fehlt | - | R.Kinder[2].Vorname | read R.Kinder[2].Vorname | trail Kind < Regel T < Plausi\n"
            "W 2 1: gross 2 | - | R.Werte[1] | read R.Werte[0], R.Werte[1] | trail Regel T < Plausi\n"
            "T 2 1: Tabelle 4 bei 1 | - | - | read R.Werte[0], R.Werte[1], R.Tabelle[1][0], R.Tabelle[1][1] | "
            "trail Regel T < Plausi\n");
}

TEST(ProblemTest, FillsEveryPartAndKeepsBelowTheWeightLevelSilent) {
  std::string body = R"(
MELDE TYP 7 "P-" & 1 GEWICHT 3 FELD R.Betrag
  TEXT "kurz" DETAILS "lang" KORREKTUR "so" THEMA "Thema" AUSNAHME "Grund"
  FELDNAME "Anderer Name" WERTEBEREICH "0-9" FELDLAENGE 12 INFOTYP 4 INDIZES 1; 2
MELDE FEHLER "Q" GEWICHT 2 FELD R.Adresse.Ort TEXT R.Name)";
  auto rules = readOk(rule(body));
  ASSERT_NE(rules, nullptr);
  std::unique_ptr<Plausi> plausi = rules->createPlausi();
  SimpleDataRecord record;
  PlausiContext context(&record);
  context.setFlow("Pruefung");
  plausi->perform(&context);
  ASSERT_EQ(context.getNumOfProblems(), 2);
  PlausiProblem *p = context.getProblem(0);
  EXPECT_EQ(p->getType(), 7);
  EXPECT_STREQ(p->getId(), "P-1");
  EXPECT_STREQ(p->getCorrectionInfo(), "so");
  EXPECT_STREQ(p->getReferenceTopic(), "Thema");
  EXPECT_STREQ(p->getException(), "Grund");
  EXPECT_STREQ(p->getFieldDisplayName(), "Anderer Name");
  EXPECT_STREQ(p->getFieldMask(), "####.##0");
  EXPECT_EQ(p->getFieldType(), FieldTypeReal);
  EXPECT_STREQ(p->getFieldValueSpace(), "0-9");
  EXPECT_EQ(p->getFieldLength(), 12);
  EXPECT_EQ(p->getInfoType(), 4);
  ASSERT_NE(p->getReferenceFieldIndices(), nullptr);
  EXPECT_EQ(p->getReferenceFieldIndices()[1], 2);
  EXPECT_TRUE(context.isOk() == false);
  EXPECT_STREQ(context.getProblem(1)->getFieldDisplayName(), "Ort");
  // Below the level nothing is reported, and the texts are not even read.
  SimpleDataRecord other;
  EXPECT_EQ(run(plausi.get(), {}, "Pruefung", nullptr, 4), "");
}

TEST(ProblemTest, AFaultInItsTextsLeavesNoHalfFilledProblem) {
  std::string body = say("vorher") + "MELDE FEHLER \"P\" GEWICHT 1 TEXT \"Länge \" & WERTLAENGE(UNUMWANDELBAR(\"weg\"))";
  EXPECT_EQ(runText(rule(body), {}), "vorher 2 1: x | - | - | read | trail Regel T < Plausi\n"
                                     "Ausnahme 8: Dieser Wert ist nicht verf\xFC" "gbar: weg\n");
}

TEST(FunctionTest, CallsWithParametersReturnsFromSectionsAndServesTheHost) {
  std::string more = R"(
FUNKTION Doppelt(x)
  ABSCHNITT "Rechnen"
    ERGEBNIS x * 2
  ENDE
ENDE
FUNKTION Summe
  ERGEBNIS Doppelt(R.Zahl) + 1
ENDE
FUNKTION Leer
ENDE
)";
  auto rules = readOk(rule(say("F", "\"\" & Summe()"), more));
  ASSERT_NE(rules, nullptr);
  std::unique_ptr<Plausi> plausi = rules->createPlausi();
  EXPECT_EQ(run(plausi.get(), {{"R.Zahl", "20"}}), "F 2 1: 41 | - | - | read R.Zahl | trail Regel T < Plausi\n");
  SimpleDataRecord record;
  record.setValue("R.Zahl", "4");
  PlausiContext context(&record);
  std::unique_ptr<Value> summe(plausi->performFunction("Summe", &context));
  EXPECT_EQ(summe->asInteger(), 9);
  std::unique_ptr<Value> leer(plausi->performFunction("Leer", &context));
  EXPECT_FALSE(leer->isValid());
  std::unique_ptr<Value> unbekannt(plausi->performFunction("Doppelt", &context));  // takes a parameter
  EXPECT_FALSE(unbekannt->isValid());
}

TEST(FieldCheckTest, RunsForEachElementFromTheHostAndFromRules) {
  std::string more = R"(
FELDPRUEFUNG R.Werte ALS wert ABSCHNITT "Pruefung Wert"
  WENN wert < 0 DANN
    MELDE FEHLER "FP" GEWICHT 1 FELD wert TEXT "negativ"
  ENDE
ENDE
)";
  auto rules = readOk(rule("PRUEFE R.Werte[2]", more));
  ASSERT_NE(rules, nullptr);
  std::unique_ptr<Plausi> plausi = rules->createPlausi();
  EXPECT_EQ(run(plausi.get(), {{"R.Werte[2]", "-1"}}),
            "FP 1 1: negativ | - | R.Werte[2] | read R.Werte[2] | trail Pruefung Wert < Regel T < Plausi\n");
  SimpleDataRecord record;
  record.setValue("R.Werte[1]", "-5");
  PlausiContext context(&record);
  plausi->performFieldCheck("Werte[1]", &context);
  EXPECT_EQ(testing::describe(context),
            "FP 1 1: negativ | - | R.Werte[1] | read R.Werte[1] | trail Pruefung Wert < Plausi\n");
}

// The host names a field by its path as the library resolves it: a field of
// a group, a field of an element of an array of groups, an array without
// indices (its first element). A group has no check.
TEST(FieldCheckTest, ReachesFieldsAtAnyDepthByTheLibrarysPaths) {
  std::string more = R"(
FELDPRUEFUNG R.Adresse.Ort ALS ort
  WENN NICHT GUELTIG(ort) DANN
    MELDE FEHLER "ORT" GEWICHT 1 FELD ort TEXT "Ort fehlt"
  ENDE
ENDE
FELDPRUEFUNG R.Kinder.Vorname ALS vorname ABSCHNITT "Pruefung Vorname"
  WENN WERTLAENGE(vorname) < 2 DANN
    MELDE HINWEIS "VN" GEWICHT 1 FELD vorname TEXT "kurz: " & vorname
  ENDE
ENDE
FELDPRUEFUNG R.Werte ALS wert
  MELDE HINWEIS "W" GEWICHT 1 FELD wert TEXT "" & wert
ENDE
)";
  auto rules = readOk(rule("FUER JEDES kind IN R.Kinder\n  PRUEFE kind.Vorname\nENDE", more));
  ASSERT_NE(rules, nullptr);
  std::unique_ptr<Plausi> plausi = rules->createPlausi();
  EXPECT_EQ(run(plausi.get(), {{"R.Kinder#", "2"}, {"R.Kinder[0].Vorname", "Anna"}, {"R.Kinder[1].Vorname", "B"}}),
            "VN 2 1: kurz: B | - | R.Kinder[1].Vorname | read R.Kinder[1].Vorname | trail Pruefung Vorname < Regel T < Plausi\n");
  auto check = [&](const char *path) {
    SimpleDataRecord record;
    testing::fill(&record, {{"R.Kinder#", "3"}, {"R.Kinder[2].Vorname", "C"}, {"R.Werte[0]", "7"}});
    PlausiContext context(&record);
    try {
      plausi->performFieldCheck(path, &context);
    } catch (const PlausiException &e) {
      return testing::describe(context) + "Ausnahme " + std::to_string(e.getType()) + ": " + e.getMessage();
    }
    return testing::describe(context);
  };
  EXPECT_EQ(check("Adresse.Ort"), "ORT 1 1: Ort fehlt | - | R.Adresse.Ort | read R.Adresse.Ort | trail ort < Plausi\n");
  EXPECT_EQ(check("Kinder[2].Vorname"),
            "VN 2 1: kurz: C | - | R.Kinder[2].Vorname | read R.Kinder[2].Vorname | trail Pruefung Vorname < Plausi\n");
  EXPECT_EQ(check("Werte"), "W 2 1: 7 | - | R.Werte[0] | read R.Werte[0] | trail wert < Plausi\n");
  EXPECT_EQ(check("Adresse"), "Ausnahme 4: R.Adresse");
  EXPECT_EQ(check("Name"), "Ausnahme 4: R.Name");
}

TEST(TryTest, CatchesTheLibrarysFaultAndLeavesTheSectionsOpenedInside) {
  std::string body = R"(
VERSUCHE
  ABSCHNITT "Innen"
    SEI b = ZAHL_NACH_MASKE(R.Betrag; "####.##0")
    )" + say("gelesen", "\"\" & b") + R"(
  ENDE
BEI FEHLER grund
  MELDE FEHLER "M" GEWICHT 1 FELD R.Betrag TEXT "kein Betrag" DETAILS grund
ENDE)";
  std::string text = rule(body);
  EXPECT_EQ(runText(text, {{"R.Betrag", "1.234,50"}}),
            "gelesen 2 1: 1234,5 | - | - | read R.Betrag | trail Innen < Regel T < Plausi\n");
  EXPECT_EQ(runText(text, {{"R.Betrag", "12,3456"}}),
            "M 1 1: kein Betrag | Die maximale Anzahl der Nachkommastellen wurde \xFC"
            "berschritten. | R.Betrag | read | trail Regel T < Plausi\n");
}

TEST(CodeListTest, FindsEntriesByCodeAndTextWithTheirChildren) {
  std::string more = R"(
KODELISTE
  "L" = "ledig"
  "E" = "ehemals verheiratet" MIT
    "G" = "geschieden"
  ENDE
ENDE
)";
  std::string body = R"(
WENN R.Name IN KODE("E") DANN )" + say("E") + R"(
WENN NICHT GUELTIG(KODE(R.Name)) DANN )" + say("unbekannt") + R"(
WENN KODE_ZU_TEXT("ledig") = KODE("L") DANN )" + say("L") + R"()";
  std::string text = rule(body, more);
  EXPECT_EQ(runText(text, {{"R.Name", "G"}}), "E 2 1: x | - | - | read R.Name | trail Regel T < Plausi\n"
                                               "L 2 1: x | - | - | read R.Name | trail Regel T < Plausi\n");
  EXPECT_EQ(runText(text, {{"R.Name", "X"}}), "unbekannt 2 1: x | - | - | read R.Name | trail Regel T < Plausi\n"
                                               "L 2 1: x | - | - | read R.Name | trail Regel T < Plausi\n");
}

TEST(MaterialTest, QueriesWithEveryOperatorTestsExistenceAndContainment) {
  std::string more = R"(
MATERIAL Orte DATENBESTAND "ORTE"
  FELD PLZ TEXT
  FELD Name TEXT
  FELD Einwohner GANZZAHL
ENDE
)";
  std::string body = R"(
SEI namen = ""
FUER JEDES n IN LIES Name AUS Orte WO Einwohner >= 100 UND Einwohner < 1000 UND PLZ <> "2"
  SETZE namen = namen & n & " "
ENDE
FUER JEDES n IN LIES Name, Einwohner AUS Orte WO Einwohner > 500 UND Einwohner <= 5000 UND PLZ = "3"
  SETZE namen = namen & n & " "
ENDE
WENN EXISTIERT Orte WO PLZ = R.Name DANN )" + say("da") + R"(
WENN "Kleinstadt" IN (LIES Name AUS Orte) UND NICHT EXISTIERT Orte WO Name = "Nirgends" DANN )" + say("drin") + R"(
MELDE HINWEIS "N" GEWICHT 1 TEXT namen)";
  auto rules = readOk(rule(body, more));
  ASSERT_NE(rules, nullptr);
  std::unique_ptr<Plausi> plausi = rules->createPlausi();
  host::TableMaterialAccess access;
  std::vector<std::unique_ptr<SimpleDataRecord>> rows;
  auto row = [&](const char *plz, const char *name, std::int32_t einwohner) {
    rows.push_back(std::make_unique<SimpleDataRecord>());
    rows.back()->setValue("Orte.PLZ", plz);
    rows.back()->setValue("Orte.Name", name);
    rows.back()->setValue("Orte.Einwohner", einwohner);
  };
  row("1", "Dorf", 50);
  row("2", "Weiler", 200);
  row("3", "Kleinstadt", 800);
  row("3", "Stadt", 4000);
  access.add("Orte", std::move(rows));
  EXPECT_EQ(run(plausi.get(), {{"R.Name", "3"}}, "Pruefung", &access),
            "da 2 1: x | - | - | read R.Name | trail Regel T < Plausi\n"
            "drin 2 1: x | - | - | read R.Name | trail Regel T < Plausi\n"
            "N 2 1: Kleinstadt Kleinstadt 800 Stadt 4000  | - | - | read R.Name | trail Regel T < Plausi\n");
  // Without the host's material the query fails as the library says.
  EXPECT_EQ(run(plausi.get(), {}, "Pruefung").substr(0, 11), "Ausnahme 6:");
}

Value *scaled(RuntimeContext *runtime, ...) {
  va_list args;
  va_start(args, runtime);
  int count = va_arg(args, int);
  Value *a = va_arg(args, Value *);
  Value *b = va_arg(args, Value *);
  va_end(args);
  return count == 2 ? runtime->createNumberValue(a->asReal() * b->asReal()) : nullptr;
}

TEST(HostTest, ReadsInitParamsAndCallsExternalFunctions) {
  std::string more = "EXTERN Mal(2)\n";
  std::string body = R"(
SEI grenze = PARAMETER("Grenze")
WENN NICHT GESETZT(PARAMETER("Fehlt")) DANN )" + say("ohne") + R"(
MELDE HINWEIS "H" GEWICHT 1 TEXT "" & Mal(grenze; 3))";
  auto rules = readOk(rule(body, more));
  ASSERT_NE(rules, nullptr);
  std::unique_ptr<Plausi> plausi = rules->createPlausi();
  SimpleDataRecord record;
  PlausiContext context(&record);
  context.setFlow("Pruefung");
  NumberValue grenze(7.0);
  context.setInitParam("Grenze", &grenze);
  EXPECT_THROW(plausi->perform(&context), PlausiException);  // Mal is not registered yet
  PlausiContext registered(&record);
  registered.setFlow("Pruefung");
  registered.setInitParam("Grenze", &grenze);
  registered.setExternalFunction("Mal", scaled);
  plausi->perform(&registered);
  EXPECT_EQ(testing::describe(registered), "ohne 2 1: x | - | - | read | trail Regel T < Plausi\n"
                                           "H 2 1: 21 | - | - | read | trail Regel T < Plausi\n");
  // The names a host may set to any effect: those the rules write, or any
  // once a rule computes one.
  EXPECT_EQ((std::set<std::string>{"Fehlt", "Grenze"}), rules->module().parameters);
  EXPECT_FALSE(rules->module().computedParameter);
  auto computed = readOk(rule("SEI x = PARAMETER(\"Gre\" & \"nze\")"));
  ASSERT_NE(computed, nullptr);
  EXPECT_TRUE(computed->module().computedParameter);
}

TEST(InterpreterTest, PlausisOfOneRuleSetRunOnThreadsOfTheirOwn) {
  auto rules = readOk(rule("WENN R.Zahl > 3 DANN " + say("gross")));
  ASSERT_NE(rules, nullptr);
  std::vector<std::thread> threads;
  std::vector<std::string> outputs(4);
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&rules, &outputs, t] {
      std::unique_ptr<Plausi> plausi = rules->createPlausi();
      for (int i = 0; i < 200; ++i) outputs[static_cast<std::size_t>(t)] = run(plausi.get(), {{"R.Zahl", "5"}});
    });
  }
  for (std::thread &thread : threads) thread.join();
  for (const std::string &output : outputs) EXPECT_EQ(output, outputs[0]);
  EXPECT_EQ(outputs[0], "gross 2 1: x | - | - | read R.Zahl | trail Regel T < Plausi\n");
}

}  // namespace
}  // namespace lang
}  // namespace quorel
