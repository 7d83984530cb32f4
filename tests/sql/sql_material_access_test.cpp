#include <thread>

#include <gtest/gtest.h>

#include <quorel/quorel.h>

#include "quorel/host/material_check.h"
#include "quorel/host/row_source.h"
#include "quorel/host/sql/sql_material_access.h"
#include "quorel/host/table_material_access.h"
#include "sql_test_support.h"
#include "host/vector_rows.h"
#include "test_support.h"

namespace quorel {
namespace host {
namespace {

using testing::TestDatabase;

// The material "Orte": one field of each type the database compares.
class PlaceTopic : public TestMaterialTopic {
 public:
  PlaceTopic() : TestMaterialTopic("Orte") {
    plz = field("PLZ", FieldTypeText);
    name = field("Name", FieldTypeText);
    einwohner = field("Einwohner", FieldTypeInteger);
    flaeche = field("Flaeche", FieldTypeReal);
    gegruendet = field("Gegruendet", FieldTypeDate, "TT.MM.JJJJ");
  }

  Field *plz, *name, *einwohner, *flaeche, *gegruendet;
};


// The same places in a database table (ordered by its key, id) and as CSV
// cells, the form the database's cells are read back in.
const char kPlacesTable[] =
    "CREATE TABLE orte (id INTEGER PRIMARY KEY, plz TEXT, name TEXT, einwohner INTEGER, "
    "flaeche DOUBLE PRECISION, gegruendet DATE);\n"
    "INSERT INTO orte VALUES (3, '10115', 'Berlin', 3600000, 891.5, '1937-10-28');\n"
    "INSERT INTO orte VALUES (5, '80331', 'M\xC3\xBCnchen', 1500000, 310.75, '1958-06-14');\n"
    "INSERT INTO orte VALUES (8, '10115', 'Mitte', 380000, 39.47, NULL);\n"
    "INSERT INTO orte VALUES (9, NULL, 'Nirgends', NULL, NULL, '2000-01-01');\n"
    "INSERT INTO orte VALUES (12, '0815', '''; DROP TABLE orte; --', 0, -1.25, '1999-12-31');\n"
    "INSERT INTO orte VALUES (20, 'abc', 'Zwickau', 87000, 102.5, '1918-05-01')";
const std::vector<std::string> kPlaceColumns{"Orte.PLZ", "Orte.Name", "Orte.Einwohner", "Orte.Flaeche",
                                             "Orte.Gegruendet"};
const std::vector<std::vector<std::string>> kPlaceCells{
    {"10115", "Berlin", "3600000", "891,5", "28.10.1937"},
    {"80331", "M\xFCnchen", "1500000", "310,75", "14.06.1958"},
    {"10115", "Mitte", "380000", "39,47", ""},
    {"", "Nirgends", "", "", "01.01.2000"},
    {"0815", "'; DROP TABLE orte; --", "0", "-1,25", "31.12.1999"},
    {"abc", "Zwickau", "87000", "102,5", "01.05.1918"}};

// What a query gives: the names of the rows read (with every field's text),
// "yes"/"no" for containment, or the exception's type.
std::string answer(MaterialAccess *access, PlaceTopic *topic, std::vector<FilterCondition *> conditions,
                   Value *contained, std::vector<Field *> wanted = {}) {
  if (wanted.empty()) wanted = {topic->name, topic->plz, topic->einwohner, topic->flaeche, topic->gegruendet};
  RecordFilter filter;
  for (FilterCondition *condition : conditions) filter.addCondition(condition);
  FieldSet fields;
  try {
    if (contained != nullptr) {
      fields.addField(topic->name);
      ValueSet values;
      values.addValue(contained);
      return access->containsValues(topic, &filter, &fields, &values) ? "yes" : "no";
    }
    for (Field *field : wanted) fields.addField(field);
    DataRecordSet result;
    access->readRecords(&result, topic, &filter, &fields);
    std::string rows;
    for (std::int32_t i = 0; i < result.getNumOfDataRecords(); ++i) {
      auto *record = static_cast<SimpleDataRecord *>(result.getDataRecord(i));
      for (const std::string &column : kPlaceColumns) {
        Value *value = record->getValue(column.c_str());
        rows += std::string(value != nullptr ? value->asString() : "-") + "|";
      }
      rows += ";";
    }
    return rows;
  } catch (const PlausiException &e) {
    return "exception " + std::to_string(e.getType()) + ": " + (e.getMessage() ? e.getMessage() : "");
  }
}

class SqlMaterialAccessTest : public ::testing::TestWithParam<std::string> {
 protected:
  void SetUp() override {
    db_ = std::make_unique<TestDatabase>(GetParam());
    QUOREL_NEED_DATABASE(*db_);
    db_->drop("orte");
    db_->execute(kPlacesTable);
  }
  std::unique_ptr<TestDatabase> db_;
};

TEST_P(SqlMaterialAccessTest, AnswersAsTheTableInMemoryDoes) {
  SqlMaterialAccess sql;
  std::string message;
  SqlSource source;
  ASSERT_TRUE(SqlSource::parse(db_->url("table=orte"), &source, &message)) << message;
  ASSERT_TRUE(sql.addMaterial("Orte", source, &message)) << message;
  VectorRows rows(kPlaceColumns, kPlaceCells);
  TableMaterialAccess table;
  ASSERT_TRUE(table.load("Orte", &rows, &message));
  PlaceTopic topic;
  ASSERT_TRUE(sql.isMaterialAvailable(&topic));

  // Values of each field's own kind: the database compares in the field's
  // type, the table by the library's comparison, which agree there.
  std::tm date{};
  date.tm_year = 1999 - 1900;
  date.tm_mon = 11;
  date.tm_mday = 31;
  std::vector<std::pair<Field *, std::vector<std::shared_ptr<Value>>>> cases{
      {topic.plz,
       {std::make_shared<StringValue>("10115"), std::make_shared<StringValue>("0815"),
        std::make_shared<StringValue>("M")}},
      {topic.name,
       {std::make_shared<StringValue>("M\xFCnchen"), std::make_shared<StringValue>("Mz"),
        std::make_shared<StringValue>("'; DROP TABLE orte; --")}},
      {topic.einwohner, {std::make_shared<NumberValue>(380000.0), std::make_shared<NumberValue>(0.0)}},
      {topic.flaeche, {std::make_shared<NumberValue>(310.75), std::make_shared<NumberValue>(-1.25)}},
      {topic.gegruendet,
       {std::make_shared<DateValue>(&date, "TT.MM.JJJJ"), std::make_shared<DateValue>("28.10.1937", "TT.MM.JJJJ")}}};
  StringValue berlin("Berlin"), mitte("Mitte");
  int compared = 0;
  for (auto &testCase : cases) {
    Field *field = testCase.first;
    for (auto &value : testCase.second) {
      for (int op = OPERATOR_EQUAL; op <= OPERATOR_LESS_EQUAL + 1; ++op) {
        for (Value *contained : {static_cast<Value *>(nullptr), static_cast<Value *>(&berlin),
                                 static_cast<Value *>(&mitte)}) {
          auto conditions = [&] {
            return std::vector<FilterCondition *>{
                new FilterCondition(field, static_cast<OperatorType>(op), value.get())};
          };
          std::string expected = answer(&table, &topic, conditions(), contained);
          EXPECT_EQ(expected, answer(&sql, &topic, conditions(), contained))
              << field->getHierarchyText() << " operator " << op << " " << value->asString();
          sql.releaseRecords();
          ++compared;
        }
      }
    }
  }
  EXPECT_EQ(12 * 7 * 3, compared);
  // Two conditions, rows in key order, every cell in the form a CSV carries.
  StringValue plz("10115");
  NumberValue small(1000000.0);
  EXPECT_EQ("10115|Mitte|380000|39,47|-|;",
            answer(&sql, &topic,
                   {new FilterCondition(topic.plz, OPERATOR_EQUAL, &plz),
                    new FilterCondition(topic.einwohner, OPERATOR_LESS, &small)},
                   nullptr));
  EXPECT_EQ("10115|Berlin|3600000|891,5|28.10.1937|;10115|Mitte|380000|39,47|-|;",
            answer(&sql, &topic, {new FilterCondition(topic.plz, OPERATOR_EQUAL, &plz)}, nullptr));
  sql.releaseRecords();
}

TEST_P(SqlMaterialAccessTest, NamesAreQuotedAndValuesBound) {
  db_->drop("x\"; DROP TABLE orte; --");
  db_->execute("CREATE TABLE \"x\"\"; DROP TABLE orte; --\" (\"Orte.PLZ\" TEXT, \"N'a\"\"me\" TEXT);\n"
               "INSERT INTO \"x\"\"; DROP TABLE orte; --\" VALUES ('1', 'a')");
  SqlMaterialAccess sql;
  std::string message;
  SqlSource source;
  ASSERT_TRUE(SqlSource::parse(db_->url("table=x%22%3B%20DROP%20TABLE%20orte%3B%20--&column.Orte.Name=N'a%22me"),
                               &source, &message));
  ASSERT_TRUE(sql.addMaterial("Orte", source, &message)) << message;
  PlaceTopic topic;
  StringValue one("1"), evil("'; DROP TABLE orte; --");
  EXPECT_EQ("1|a|-|-|-|;", answer(&sql, &topic, {new FilterCondition(topic.plz, OPERATOR_EQUAL, &one)}, nullptr,
                                  {topic.name, topic.plz}));
  EXPECT_EQ("", answer(&sql, &topic, {new FilterCondition(topic.plz, OPERATOR_EQUAL, &evil)}, nullptr,
                       {topic.name, topic.plz}));
  EXPECT_EQ("no", answer(&sql, &topic, {}, &evil));
  sql.releaseRecords();
  // orte is still there.
  SqlMaterialAccess again;
  ASSERT_TRUE(SqlSource::parse(db_->url("table=orte"), &source, &message));
  EXPECT_TRUE(again.addMaterial("Orte", source, &message)) << message;
  db_->drop("x\"; DROP TABLE orte; --");
}

TEST_P(SqlMaterialAccessTest, FailuresNameTableAndColumn) {
  SqlMaterialAccess sql;
  std::string message;
  SqlSource source;
  ASSERT_TRUE(SqlSource::parse(db_->url("table=fehlt"), &source, &message));
  EXPECT_FALSE(sql.addMaterial("Orte", source, &message));
  EXPECT_NE(std::string::npos, message.find("fehlt")) << message;
  // Messages are UTF-8; the material's name is the library's Windows-1252.
  EXPECT_FALSE(sql.addMaterial("\xD6rter", source, &message));
  EXPECT_EQ(0u, message.find("material \xC3\x96rter (")) << message;
  ASSERT_TRUE(SqlSource::parse(db_->url("table=orte&order=gibtsnicht"), &source, &message));
  EXPECT_FALSE(sql.addMaterial("Orte", source, &message));
  EXPECT_NE(std::string::npos, message.find("gibtsnicht")) << message;

  db_->drop("kaputt");
  db_->execute("CREATE TABLE kaputt (plz TEXT, name TEXT);\n"
               "INSERT INTO kaputt VALUES ('1', 'Haken \xE2\x9C\x93')");
  ASSERT_TRUE(SqlSource::parse(db_->url("table=kaputt"), &source, &message));
  ASSERT_TRUE(sql.addMaterial("Orte", source, &message)) << message;
  PlaceTopic topic;
  StringValue one("1");
  // A text outside Windows-1252, a field without a column, a value that is
  // no date for a date field.
  EXPECT_EQ("exception 6: material Orte: table kaputt, column name: the character at byte 6 is not in "
            "Windows-1252: Haken ?",
            answer(&sql, &topic, {new FilterCondition(topic.plz, OPERATOR_EQUAL, &one)}, nullptr,
                   {topic.name, topic.plz}));
  std::string missing = answer(&sql, &topic, {new FilterCondition(topic.einwohner, OPERATOR_EQUAL, &one)}, nullptr);
  EXPECT_EQ(0u, missing.find("exception 6: material Orte (")) << missing;
  EXPECT_NE(std::string::npos, missing.find("table kaputt): no column for the field Orte.Einwohner")) << missing;
  ASSERT_TRUE(SqlSource::parse(db_->url("table=orte"), &source, &message));
  ASSERT_TRUE(sql.addMaterial("Orte", source, &message)) << message;
  std::string date = answer(&sql, &topic, {new FilterCondition(topic.gegruendet, OPERATOR_EQUAL, &one)}, nullptr);
  EXPECT_EQ(0u, date.find("exception 8: material Orte (")) << date;
  EXPECT_NE(std::string::npos, date.find("column gegruendet: ")) << date;
  sql.releaseRecords();

  // A database that cannot be opened.
  ASSERT_TRUE(SqlSource::parse("sqlite:/nonexistent/dir/x.db?table=t", &source, &message));
  EXPECT_FALSE(sql.addMaterial("Orte", source, &message));
  EXPECT_NE(std::string::npos, message.find("cannot open sqlite:/nonexistent/dir/x.db")) << message;
}

// A module that queries Orte with fields of its own and of a nested topic;
// the Plausi owns the topics with their types, as a generated module does.
class PlaceModule : public NoRules {
 public:
  PlaceModule() {
    auto *orte = new ModuleTopic(nullptr, "Orte");
    orte->setMaterialName("Orte");
    orte->field("PLZ");
    orte->field("Einwohner");
    orte->nested("Lage")->field("Kreis");
    setMaterial("Orte", orte);
  }

 private:
  class ModuleTopic : public Topic {
   public:
    ModuleTopic(Topic *parent, const char *name)
        : Topic(new TypeDescriptor(parent != nullptr ? parent->getTypeDescriptor() : nullptr, nullptr, name, nullptr,
                                   FieldTypeTopic, nullptr, 0),
                parent) {}
    Topic *createElement() override { return nullptr; }
    void field(const char *name) {
      setField(name,
               new Field(new TypeDescriptor(getTypeDescriptor(), nullptr, name, nullptr, FieldTypeText, nullptr, 0),
                         this));
    }
    ModuleTopic *nested(const char *name) {
      auto *topic = new ModuleTopic(this, name);
      setField(name, topic);
      return topic;
    }
  };
};

TEST_P(SqlMaterialAccessTest, FieldsWithoutAColumnAreNamedBeforeAnyQuery) {
  db_->drop("kaputt");
  db_->execute("CREATE TABLE kaputt (plz TEXT, name TEXT)");
  PlaceModule module;
  SqlMaterialAccess sql;
  auto findings = [&](const std::string &parameters, bool strict) {
    std::string message;
    SqlSource source;
    EXPECT_TRUE(SqlSource::parse(db_->url(parameters), &source, &message)) << message;
    EXPECT_TRUE(sql.addMaterial("Orte", source, &message)) << message;
    auto columnFor = [&sql](FieldDescriptor *field) { return sql.columnFor("Orte", field); };
    return checkMaterialFields(&module, "Orte", columnFor, strict);
  };
  auto missing = [](const char *field) {
    return std::string("material Orte: the table has no column for the field ") + field +
           ", so every query that reads or filters it fails; name its column in the material's address: column." +
           field + "=<column>";
  };
  // PLZ is found ignoring case; the others are warnings, or errors when
  // strict, each named with the way to map it.
  MaterialFindings loose = findings("table=kaputt", false);
  EXPECT_EQ(std::vector<std::string>{}, loose.errors);
  EXPECT_EQ((std::vector<std::string>{missing("Orte.Einwohner"), missing("Orte.Lage.Kreis")}), loose.warnings);
  MaterialFindings strict = findings("table=kaputt", true);
  EXPECT_EQ(loose.warnings, strict.errors);
  EXPECT_EQ(std::vector<std::string>{}, strict.warnings);
  // A column the address names counts, as it does for a query.
  MaterialFindings mapped = findings("table=kaputt&column.Orte.Lage.Kreis=name&column.Orte.Einwohner=NAME", true);
  EXPECT_TRUE(mapped.errors.empty() && mapped.warnings.empty()) << ::testing::PrintToString(mapped.errors);

  // Numbers where the rules read texts: a warning, whether strict or not.
  db_->drop("zahlen");
  db_->execute("CREATE TABLE zahlen (plz INTEGER, einwohner TEXT, \"kreis\xC3\xA4\" NUMERIC(5))");
  const std::string integer = GetParam() == "sqlite" ? "INTEGER" : "integer";
  const std::string numeric = GetParam() == "sqlite" ? "NUMERIC(5)" : "numeric";
  auto numbers = [](const std::string &column, const std::string &type) {
    return "material Orte: column " + column + " holds numbers (" + type + ") where the rules read a text, so "
           "leading zeros and the form of the text are lost: store the values in a column of text, as they were "
           "written";
  };
  MaterialFindings typed = findings("table=zahlen&column.Orte.Lage.Kreis=kreis%C3%A4", true);
  EXPECT_EQ(std::vector<std::string>{}, typed.errors);
  EXPECT_EQ((std::vector<std::string>{numbers("kreis\xE4", numeric), numbers("plz", integer)}), typed.warnings);

  // Not one field found: one error, whether strict or not.
  db_->drop("fremd");
  db_->execute("CREATE TABLE fremd (a TEXT, b TEXT)");
  MaterialFindings none = findings("table=fremd", false);
  EXPECT_EQ(std::vector<std::string>{"material Orte: the table has a column for none of the fields (Orte.Einwohner, "
                                     "Orte.Lage.Kreis, Orte.PLZ), so every query on it would fail; name their "
                                     "columns in the material's address, as column.Orte.Einwohner=<column>"},
            none.errors);
  EXPECT_TRUE(none.warnings.empty());

  // A material the module does not query, and one never added.
  EXPECT_TRUE(
      checkMaterialFields(&module, "Regionen", [](FieldDescriptor *) { return TableColumn(); }, true).errors.empty());
  PlaceTopic topic;
  EXPECT_FALSE(sql.columnFor("Regionen", topic.plz).found);
  db_->drop("kaputt");
  db_->drop("fremd");
  db_->drop("zahlen");
}

TEST_P(SqlMaterialAccessTest, ThreadsQueryOnSessionsOfTheirOwn) {
  SqlMaterialAccess sql;
  std::string message;
  SqlSource source;
  ASSERT_TRUE(SqlSource::parse(db_->url("table=orte"), &source, &message));
  ASSERT_TRUE(sql.addMaterial("Orte", source, &message)) << message;
  PlaceTopic topic;
  std::vector<std::string> answers(4);
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < answers.size(); ++t) {
    threads.emplace_back([&, t] {
      StringValue plz(t % 2 == 0 ? "10115" : "80331");
      for (int run = 0; run < 50; ++run) {
        answers[t] = answer(&sql, &topic, {new FilterCondition(topic.plz, OPERATOR_EQUAL, &plz)}, nullptr);
        sql.releaseRecords();
      }
    });
  }
  for (std::thread &thread : threads) thread.join();
  EXPECT_EQ("10115|Berlin|3600000|891,5|28.10.1937|;10115|Mitte|380000|39,47|-|;", answers[0]);
  EXPECT_EQ("80331|M\xFCnchen|1500000|310,75|14.06.1958|;", answers[1]);
  EXPECT_EQ(answers[0], answers[2]);
}

TEST_P(SqlMaterialAccessTest, ALostConnectionFailsTheQueryAndIsOpenedAnew) {
  if (GetParam() == "sqlite") GTEST_SKIP() << "a file is not lost";
  SqlMaterialAccess sql;
  std::string message;
  SqlSource source;
  ASSERT_TRUE(SqlSource::parse(db_->url("table=orte"), &source, &message));
  ASSERT_TRUE(sql.addMaterial("Orte", source, &message)) << message;
  PlaceTopic topic;
  StringValue plz("80331");
  auto query = [&] {
    std::string rows = answer(&sql, &topic, {new FilterCondition(topic.plz, OPERATOR_EQUAL, &plz)}, nullptr,
                              {topic.name});
    sql.releaseRecords();
    return rows;
  };
  EXPECT_EQ("-|M\xFCnchen|-|-|-|;", query());
  db_->execute("SELECT pg_terminate_backend(pid) FROM pg_stat_activity "
               "WHERE pid <> pg_backend_pid() AND datname = current_database()");
  std::string lost = query();
  EXPECT_EQ(0u, lost.find("exception 6: material Orte (postgresql://")) << lost;
  EXPECT_EQ("-|M\xFCnchen|-|-|-|;", query());
}

INSTANTIATE_TEST_SUITE_P(Backends, SqlMaterialAccessTest, ::testing::ValuesIn(testing::backends()),
                         [](const ::testing::TestParamInfo<std::string> &info) {
                           return info.param == "sqlite" ? std::string("Sqlite") : std::string("Postgresql");
                         });

}  // namespace
}  // namespace host
}  // namespace quorel
