// What the host kit tells about a module before any record is checked:
// columns that name no field, flows the module does not know, and why a
// module does not load.

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <quorel/quorel.h>

#include "quorel/host/checker.h"
#include "quorel/host/column_check.h"
#include "quorel/host/load_error.h"
#include "quorel/host/problem_format.h"
#include "quorel/host/record_layout.h"
#include "quorel/host/summary.h"

namespace quorel {
namespace host {
namespace {

class Kind : public ModuleTopic {
 public:
  Kind(TypeDescriptor *type, FieldDescriptor *parent) : ModuleTopic(type, parent) {
    field("Vorname", "Vorname", FieldTypeText);
    fieldArray("Noten", "Noten", FieldTypeInteger, nullptr, {2});
  }
  Topic *createElement() override { return new Kind(getTypeDescriptor(), getParent()); }
};

class Adresse : public ModuleTopic {
 public:
  Adresse(TypeDescriptor *type, FieldDescriptor *parent) : ModuleTopic(type, parent) {
    field("Strasse", "Strasse", FieldTypeText);
  }
  Topic *createElement() override { return new Adresse(getTypeDescriptor(), getParent()); }
};

// R: scalars, a fixed and a two-dimensional array, a topic array of a size
// the record tells, a nested topic, and "Aa", whose name shares its hash
// with "BB".
class Wurzel : public ModuleTopic {
 public:
  Wurzel(TypeDescriptor *type, FieldDescriptor *parent) : ModuleTopic(type, parent) {
    field("Name", "Name", FieldTypeText);
    field("Aa", "Aa", FieldTypeText);
    fieldArray("Liste", "Liste", FieldTypeInteger, nullptr, {3});
    fieldArray("Matrix", "Matrix", FieldTypeInteger, nullptr, {2, 0});
    topicArray<Kind>("Kinder", "Kinder", {0});
    topic<Adresse>("Adresse", "Adresse");
  }
  Topic *createElement() override { return new Wurzel(getTypeDescriptor(), getParent()); }
};

class Regeln : public Plausi {
 public:
  explicit Regeln(bool withRoot) {
    if (withRoot) setRootTopic(ModuleTopic::createRoot<Wurzel>("R", "R"));
  }

 protected:
  void performImpl(RuntimeContext *, const char *) override {}
  Value *performFunctionImpl(RuntimeContext *rt, const char *) override { return rt->createInvalidValue(); }
};

TEST(ColumnCheckTest, FieldsSizesAndWhyAColumnIsNeverRead) {
  Regeln rules(true);
  ColumnCheck check(&rules);
  for (const char *column : {"R.Name", "R.Liste[2]", "R.Matrix[1][57]", "R.Matrix[1]#", "R.Kinder#",
                             "R.Kinder[9].Vorname", "R.Kinder[9].Noten[1]", "R.Adresse.Strasse", "R.Aa"}) {
    EXPECT_EQ("", check.check(column)) << column;
  }
  const std::vector<std::pair<const char *, const char *>> faults = {
      {"R.Nmae", "column R.Nmae names no field: R has no field Nmae"},
      {"R.BB", "column R.BB names no field: R has no field BB"},  // the hash of Aa
      {"X.Name", "column X.Name names no field: the module's fields are named R.<field>"},
      {"R", "column R names no field: the module's fields are named R.<field>"},
      {"R.Liste[3]", "column R.Liste[3]: index 3 is beyond the size 3 that the module declares for R.Liste"},
      {"R.Matrix[2][0]", "column R.Matrix[2][0]: index 2 is beyond the size 2 that the module declares for R.Matrix"},
      {"R.Kinder[0].Noten[2]",
       "column R.Kinder[0].Noten[2]: index 2 is beyond the size 2 that the module declares for R.Kinder[0].Noten"},
      {"R.Liste", "column R.Liste names no field: R.Liste takes 1 index"},
      {"R.Matrix[1]", "column R.Matrix[1] names no field: R.Matrix takes 2 indices"},
      {"R.Kinder.Vorname", "column R.Kinder.Vorname names no field: R.Kinder takes 1 index"},
      {"R.Name[0]", "column R.Name[0] names no field: R.Name is no array"},
      {"R.Name.Teil", "column R.Name.Teil names no field: R.Name has no fields"},
      {"R.Adresse", "column R.Adresse names no field: R.Adresse is a topic; its fields are columns of their own"},
      {"R.Liste[01]", "column R.Liste[01] names no field: an index is not a whole number like [0]"},
      {"R.Liste[-1]", "column R.Liste[-1] names no field: an index is not a whole number like [0]"},
      {"R.Liste[2", "column R.Liste[2 names no field: an index is not a whole number like [0]"},
      {"R.Liste[99999999999]", "column R.Liste[99999999999] names no field: an index is not a whole number like [0]"},
      {"R.Liste#", "column R.Liste#: the module fixes this size of R.Liste at 3, so the column is never read"},
      {"R.Name#", "column R.Name# names no array size: R.Name is no array"},
      {"R.Matrix[0][1]#", "column R.Matrix[0][1]# names no array size: R.Matrix has 2 dimensions"},
      {"R.Nmae#", "column R.Nmae# names no array size: R has no field Nmae"},
  };
  for (const auto &fault : faults) EXPECT_EQ(fault.second, check.check(fault.first)) << fault.first;
}

TEST(ColumnCheckTest, LayoutReportsEachColumnOnceInOrder) {
  Regeln rules(true);
  RecordLayout layout({"R.Name", "R.Nmae", "R.Liste[3]", "R.Nmae", "R.Kinder#"});
  EXPECT_EQ((std::vector<std::string>{"column R.Nmae names no field: R has no field Nmae",
                                      "column R.Liste[3]: index 3 is beyond the size 3 that the module declares for "
                                      "R.Liste"}),
            layout.checkColumns(&rules));
  // Without a record type there is nothing to check against.
  Regeln bare(false);
  EXPECT_TRUE(layout.checkColumns(&bare).empty());
}

TEST(ColumnCheckTest, ElementsOfArraysSizedByTheRecordNeedTheirSizeColumn) {
  Regeln rules(true);
  // The matrix has two rows, each of a length the record tells.
  RecordLayout sized({"R.Kinder#", "R.Kinder[1].Vorname", "R.Kinder[1].Noten[1]", "R.Matrix[1]#", "R.Matrix[1][4]"});
  EXPECT_TRUE(sized.checkColumns(&rules).empty());
  RecordLayout unsized({"R.Kinder[1].Vorname", "R.Matrix[0]#", "R.Matrix[1][4]", "R.Liste[2]"});
  EXPECT_EQ((std::vector<std::string>{
                "column R.Kinder[1].Vorname is never read: no column R.Kinder# gives the size of R.Kinder",
                "column R.Matrix[1][4] is never read: no column R.Matrix[1]# gives the size of R.Matrix[1]"}),
            unsized.checkColumns(&rules));
  EXPECT_EQ((std::vector<std::string>{"column R.Name appears 3 times in the header (columns 1, 3, 4); a record keeps "
                                      "one cell per column"}),
            RecordLayout({"R.Name", "R.Liste[0]", "R.Name", "R.Name"}).repeatedColumns());
}

TEST(CheckerTest, TheDefaultFlowIsTheFirstDeclaredAndUnknownFlowsAreNamed) {
  CheckSettings settings;
  settings.library = QUOREL_UMFRAGE_MODULE;
  settings.module = "Umfrage";
  Checker unset(settings);
  EXPECT_EQ("", unset.checkFlow("-f"));
  ASSERT_NE(nullptr, unset.flow());
  EXPECT_EQ("Pruefung", *unset.flow());
  settings.flow = "Antworten";
  EXPECT_EQ("", Checker(settings).checkFlow("-f"));
  settings.flow = "Antwort";
  EXPECT_EQ("module Umfrage has no flow Antwort (its flows: Pruefung, Antworten)",
            Checker(settings).checkFlow("-f"));
  settings.flow = "";
  EXPECT_EQ("module Umfrage has no flow with an empty name (its flows: Pruefung, Antworten)",
            Checker(settings).checkFlow("-f"));
}

// The library keys init params by a hash of the name, so a second value
// under one key would replace the first: the front ends refuse such
// settings, and a checker made from them all the same keeps no leak.
TEST(CheckerTest, InitParamsThatTheLibraryTakesForOneAreNamed) {
  CheckSettings settings;
  settings.library = QUOREL_UMFRAGE_MODULE;
  settings.module = "Umfrage";
  settings.inits = {{"Aa", std::make_shared<NumberValue>(1.0)}, {"Stichtag", std::make_shared<NumberValue>(2.0)}};
  EXPECT_EQ("", repeatedInit(settings));
  settings.inits.emplace_back("BB", std::make_shared<NumberValue>(3.0));  // "Aa" and "BB" hash alike
  EXPECT_EQ("init parameters Aa and BB are one to the rules, which know a parameter by a hash of its name: give one "
            "of them",
            repeatedInit(settings));
  settings.inits.insert(settings.inits.begin() + 1, {"Aa", std::make_shared<NumberValue>(4.0)});
  EXPECT_EQ("init parameter Aa is given more than once", repeatedInit(settings));
  Checker checker(settings);
  EXPECT_EQ("", checker.checkFlow("-f"));
}

// A problem as the values of its fields, for comparing.
std::string shown(const Problem &p) {
  std::string text = p.id.value_or("-") + "|" + std::to_string(p.type) + "|" + std::to_string(p.weight) + "|" +
                     p.text.value_or("-") + "|" + p.details.value_or("-") + "|" + p.field + "|";
  for (std::int32_t index : p.fieldIndices) text += std::to_string(index) + ",";
  for (const std::string &field : p.accessed) text += field + ",";
  for (const std::string &section : p.sections) text += section + "<";
  return text;
}

TEST(CheckerTest, ProblemsReadInPlaceAndCopiedGiveTheSameOutput) {
  CheckSettings settings;
  settings.library = QUOREL_UMFRAGE_MODULE;
  settings.module = "Umfrage";
  settings.flow = "Pruefung";
  Checker checker(settings);
  SimpleDataRecord many;  // no name, too young, a bad date and marks out of range
  many.setValue("Umfrage.Alter", 12);
  many.setValue("Umfrage.Datum", "31.02.2024");
  many.setValue("Umfrage.Antworten[0].Note", 7);
  many.setValue("Umfrage.Antworten[2].Note", 0);
  SimpleDataRecord few;
  few.setValue("Umfrage.Name", "Berger");
  few.setValue("Umfrage.Alter", 12);
  std::unique_ptr<ProblemFormat> formats[] = {ProblemFormat::create("text"), ProblemFormat::create("json")};
  Outcome outcome;
  std::vector<Problem> kept;  // copies into the memory of the former record's
  Summary inPlace, copied;
  for (SimpleDataRecord *record : {&many, &few, &many}) {
    checker.check(record, &outcome);
    std::vector<Problem> fresh;
    collectProblems(outcome.problems, &fresh);
    collectProblems(outcome.problems, &kept);
    ASSERT_EQ(fresh.size(), kept.size());
    for (std::size_t i = 0; i < fresh.size(); ++i) EXPECT_EQ(shown(fresh[i]), shown(kept[i]));
    for (const auto &format : formats) {
      std::string read, written;
      format->appendRecord({4, 5}, outcome.problems, &read);
      format->appendRecord({4, 5}, fresh, &written);
      EXPECT_EQ(written, read);
    }
    inPlace.add(outcome.problems, outcome.errors, true);
    copied.add(fresh, outcome.errors, true);
  }
  EXPECT_GT(kept.size(), 3u);
  EXPECT_EQ("Umfrage.Antworten[2].Note", kept.back().field);
  EXPECT_EQ((std::vector<std::int32_t>{2}), kept.back().fieldIndices);
  std::string read, written;
  formats[0]->appendSummary(inPlace, &read);
  formats[0]->appendSummary(copied, &written);
  EXPECT_EQ(written, read);
}

// The text of the LoadError that loading module from library gives.
LoadError loadError(const std::string &library, const std::string &module) {
  CheckSettings settings;
  settings.library = library;
  settings.module = module;
  try {
    Checker checker(settings);
  } catch (const LoadError &e) {
    return e;
  }
  ADD_FAILURE() << library << " loaded";
  return LoadError(PlausiException(), library, module, "");
}

TEST(CheckerTest, LoadErrorsKeepTheLibrarysExceptionAndSayWhy) {
  LoadError bare = loadError("libquorel_umfrage_rules.so", "Umfrage");
  EXPECT_EQ(EXCEPTION_LOAD_LIBRARY, bare.getType());
  EXPECT_STREQ("libquorel_umfrage_rules.so", bare.getMessage());
  EXPECT_NE(std::string::npos, bare.detail().find("libquorel_umfrage_rules.so: cannot open shared object file"));
  EXPECT_NE(std::string::npos, bare.detail().find("a library path without '/' is searched only in the system's"));
  EXPECT_NE(std::string::npos, bare.detail().find("write ./libquorel_umfrage_rules.so"));
  // A path with '/' needs no hint about the search.
  LoadError missing = loadError("/nonexistent/librules.so", "Umfrage");
  EXPECT_EQ(std::string::npos, missing.detail().find("without '/'"));
  // The system's loader takes an empty path for the program itself.
  EXPECT_EQ("the library's path is empty", loadError("", "Umfrage").detail());

  LoadError entry = loadError(QUOREL_UMFRAGE_MODULE, "Fehlt");
  EXPECT_EQ(EXCEPTION_LOAD_ENTRY, entry.getType());
  EXPECT_STREQ("Fehlt", entry.getMessage());
  EXPECT_NE(std::string::npos, entry.detail().find("has no entry point loadPlausiFehlt"));
  EXPECT_NE(std::string::npos, entry.detail().find("undefined symbol: loadPlausiFehlt"));
  EXPECT_NE(std::string::npos, entry.detail().find("with default visibility"));
  EXPECT_NE(std::string::npos, entry.detail().find("QUOREL_MODULE(Fehlt, Class)"));
  // Caught as the library's exception, it is that exception.
  CheckSettings settings;
  settings.library = "/nonexistent/librules.so";
  settings.module = "Umfrage";
  try {
    Checker checker(settings);
    ADD_FAILURE();
  } catch (const PlausiException &e) {
    EXPECT_EQ(EXCEPTION_LOAD_LIBRARY, e.getType());
    EXPECT_STREQ("/nonexistent/librules.so", e.getMessage());
  }
}

}  // namespace
}  // namespace host
}  // namespace quorel
