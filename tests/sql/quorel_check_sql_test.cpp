// quorel-check with records, materials and problems in databases: the same
// problems as with CSV files, and clear failures.

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "quorel/host/csv_row_source.h"
#include "quorel/host/encoding.h"
#include "quorel/host/sql/sql_row_source.h"
#include "sql_test_support.h"

namespace quorel {
namespace host {
namespace {

using testing::TestDatabase;

const std::string kData = QUOREL_EXAMPLE_DATA;

struct Result {
  int status;
  std::string out;       // both streams, without the warnings
  std::string warnings;  // about columns that name no field, such as a table's key
};

Result check(const std::string &arguments) {
  std::string command = std::string(QUOREL_CHECK) + " " + arguments + " 2>&1";
  FILE *pipe = popen(command.c_str(), "r");
  std::string out;
  char buffer[4096];
  for (std::size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;) out.append(buffer, n);
  int status = pclose(pipe);
  std::regex warning("quorel-check: warning: [^\n]*\n");
  std::string warnings;
  for (std::sregex_iterator it(out.begin(), out.end(), warning), end; it != end; ++it) warnings += it->str();
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, std::regex_replace(out, warning, ""), warnings};
}

std::string quoted(const std::string &text) { return "'" + text + "'"; }

std::string file(const std::string &name) {
  std::ifstream in(name, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

// The output without the lines of a file: records are numbered alike in
// every source, and a table has no lines.
std::string withoutLines(const std::string &out) {
  return std::regex_replace(std::regex_replace(out, std::regex("\"line\":[0-9]+"), "\"line\":null"),
                            std::regex("\n(line|record) [0-9]+:"), "\n_:");
}

// Copies a CSV file into a table of the same columns: texts (UTF-8), the
// columns that integers names as INTEGER, empty cells as NULL.
void copyTable(TestDatabase *db, const std::string &csv, const std::string &table,
               const std::vector<std::string> &integers) {
  std::string message;
  auto rows = CsvRowSource::open(csv, &message);
  ASSERT_NE(nullptr, rows) << message;
  db->drop(table);
  std::string create = "CREATE TABLE " + quoteIdentifier(table) + " (id INTEGER PRIMARY KEY";
  std::string insert = "INSERT INTO " + quoteIdentifier(table) + " VALUES (" + db->connection()->placeholder(1);
  for (std::size_t i = 0; i < rows->columns().size(); ++i) {
    const std::string &column = rows->columns()[i];
    bool integer = std::find(integers.begin(), integers.end(), column) != integers.end();
    create += ", " + quoteIdentifier(column) + (integer ? " INTEGER" : " TEXT");
    insert += ", " + db->connection()->placeholder(static_cast<int>(i) + 2);
  }
  db->execute(create + ")");
  auto statement = db->connection()->prepare(insert + ")", &message);
  ASSERT_NE(nullptr, statement) << message;
  Row row;
  std::int64_t id = 0;
  while (rows->next(&row)) {
    std::vector<SqlParam> params{SqlParam::ofInteger(++id)};
    for (const std::string &cell : row.cells) {
      params.push_back(cell.empty() ? SqlParam() : SqlParam::ofText(toUtf8(cell.c_str())));
    }
    ASSERT_TRUE(statement->run(params, &message)) << message;
    statement->next(&message);
    ASSERT_EQ("", message);
  }
}

class QuorelCheckSqlTest : public ::testing::TestWithParam<std::string> {
 protected:
  void SetUp() override {
    db_ = std::make_unique<TestDatabase>(GetParam());
    QUOREL_NEED_DATABASE(*db_);
    // The register as a database would hold it: plain column names, found
    // by the fields' names.
    db_->drop("gemeinden");
    db_->execute("CREATE TABLE gemeinden (plz TEXT, ort TEXT, PRIMARY KEY (plz, ort));\n"
                 "INSERT INTO gemeinden VALUES ('10115', 'Berlin');\n"
                 "INSERT INTO gemeinden VALUES ('20095', 'Hamburg');\n"
                 "INSERT INTO gemeinden VALUES ('80331', 'M\xC3\xBCnchen');\n"
                 "INSERT INTO gemeinden VALUES ('28195', 'Bremen')");
    copyTable(db_.get(), kData + "/antraege.csv", "antraege", {"Antrag.Kinder#", "Antrag.Einkommen#"});
    module_ = std::string(QUOREL_ANTRAG_MODULE) + " Antrag ";
  }
  void TearDown() override {
    for (const std::string &name : files_) std::remove(name.c_str());
  }

  // A CSV file of count Umfrage records, each with one error (too young),
  // removed after the test.
  std::string youngSurveys(int count) {
    // Tests run as processes of their own, several at once.
    std::string name =
        "/tmp/quorel-sql-test-surveys-" + std::to_string(getpid()) + "-" + std::to_string(count) + ".csv";
    std::ofstream out(name, std::ios::binary);
    out << "Umfrage.Name;Umfrage.Alter\n";
    for (int i = 0; i < count; ++i) out << "Name " << i << ";10\n";
    files_.push_back(name);
    return name;
  }

  std::unique_ptr<TestDatabase> db_;
  std::string module_;
  std::vector<std::string> files_;
};

TEST_P(QuorelCheckSqlTest, SameProblemsAsFromCsvFiles) {
  std::string material = " --material " + quoted("Gemeinden=" + db_->url("table=gemeinden")) + " ";
  Result fromCsv = check("--material Gemeinden=" + kData + "/gemeinden.csv " + module_ + kData + "/antraege.csv");
  Result withTable = check(material + module_ + kData + "/antraege.csv");
  EXPECT_EQ(1, withTable.status) << withTable.out;
  EXPECT_EQ(file(kData + "/antraege.expected.txt"), withTable.out);
  EXPECT_EQ(fromCsv.out, withTable.out);

  std::string records = quoted(db_->url("table=antraege"));
  Result json = check(material + "--format json " + module_ + records);
  EXPECT_EQ(1, json.status) << json.out;
  EXPECT_EQ(withoutLines(file(kData + "/antraege.expected.jsonl")), withoutLines(json.out));
  Result query = check(material + module_ +
                    quoted(db_->url("query=SELECT%20*%20FROM%20antraege%20WHERE%20id%20%3E%3D%202%20ORDER%20BY%20id")));
  EXPECT_EQ(1, query.status) << query.out;
  EXPECT_EQ(0u, query.out.find("record 1: error PER-02")) << query.out;
  EXPECT_EQ(std::string::npos, query.out.find("record 3")) << query.out;

  // Problems into a table, read back in order: one row per problem. In one
  // SQLite file with the records, reading must not hold writing back.
  db_->drop("probleme");
  if (GetParam() == "sqlite") db_->execute("PRAGMA journal_mode=WAL");
  Result stored = check(material + "--output " + quoted(db_->url("table=probleme")) + " --jobs 2 " + module_ + records);
  EXPECT_EQ(1, stored.status) << stored.out;
  std::string expected = file(kData + "/antraege.expected.txt");
  EXPECT_EQ(expected.substr(expected.find("\nproblem ")), stored.out);
  SqlSource table;
  std::string message;
  ASSERT_TRUE(SqlSource::parse(db_->url("query=SELECT%20record%2C%20id%2C%20sections%20FROM%20probleme"), &table,
                               &message));
  auto rows = SqlRowSource::open(table, &message);
  ASSERT_NE(nullptr, rows) << message;
  Row row;
  std::string ids;
  while (rows->next(&row)) ids += row.cells[0] + ":" + row.cells[1] + " ";
  EXPECT_EQ("2:PER-02 2:PER-04 2:ADR-02 2:ADR-03 2:KND-02 2:BTR-02 2:EIN-01 3:ANT-01 3:PER-01 3:PER-03 3:PER-05 "
            "3:ADR-03 ",
            ids);
}

TEST_P(QuorelCheckSqlTest, BadSourcesEndWithStatus2) {
  std::string csv = kData + "/antraege.csv";
  for (const std::string &material :
       {db_->url("table=fehlt"), std::string("sqlite:"), std::string("sqlite:/nonexistent/x.db?table=t"),
        db_->url("table=gemeinden&wrong%=1"), db_->url("table=gemeinden&order=fehlt")}) {
    Result run = check("--material " + quoted("Gemeinden=" + material) + " " + module_ + csv);
    EXPECT_EQ(2, run.status) << material << "\n" << run.out;
    EXPECT_EQ(0u, run.out.find("quorel-check: ")) << run.out;
  }
  Result missing = check(module_ + quoted(db_->url("table=fehlt")));
  EXPECT_EQ(2, missing.status);
  EXPECT_NE(std::string::npos, missing.out.find("fehlt")) << missing.out;
  Result badQuery = check(module_ + quoted(db_->url("query=SELEKT")));
  EXPECT_EQ(2, badQuery.status);
  // A material whose table has a column for none of its fields: said once,
  // before any record is read.
  Result columns = check("--material " + quoted("Gemeinden=" + db_->url("table=antraege")) + " " + module_ + csv);
  EXPECT_EQ(2, columns.status);
  EXPECT_EQ(0u, columns.out.find("quorel-check: ")) << columns.out;
  EXPECT_NE(std::string::npos, columns.out.find(", table antraege: material Gemeinden: the table has a column for "
                                                "none of the fields (Gemeinden.Ort, Gemeinden.PLZ)"))
      << columns.out;
  EXPECT_EQ(1, std::count(columns.out.begin(), columns.out.end(), '\n')) << columns.out;
  // One field without a column: a warning at start-up, and each record that
  // queries the field fails.
  db_->drop("nur_plz");
  db_->execute("CREATE TABLE nur_plz (plz TEXT)");
  Result partial = check("--material " + quoted("Gemeinden=" + db_->url("table=nur_plz")) + " " + module_ + csv);
  EXPECT_EQ(2, partial.status);
  EXPECT_NE(std::string::npos, partial.warnings.find(", table nur_plz: material Gemeinden: the table has no column "
                                                     "for the field Gemeinden.Ort, so every query"))
      << partial.warnings;
  EXPECT_NE(std::string::npos, partial.out.find("exception 6: material Gemeinden (")) << partial.out;
  EXPECT_NE(std::string::npos, partial.out.find("no column for the field Gemeinden.Ort")) << partial.out;
  db_->drop("nur_plz");
  // Problems cannot go into a table of another layout.
  Result layout = check("--output " + quoted(db_->url("table=gemeinden")) + " " + module_ + csv);
  EXPECT_EQ(2, layout.status);
  EXPECT_NE(std::string::npos, layout.out.find("cannot write problems to")) << layout.out;
}

// The cells of a query's rows, a row a line, cells separated by "|".
std::string rowsOf(const std::string &url) {
  SqlSource source;
  std::string message;
  EXPECT_TRUE(SqlSource::parse(url, &source, &message)) << message;
  auto rows = SqlRowSource::open(source, &message);
  EXPECT_NE(nullptr, rows) << message;
  if (rows == nullptr) return message;
  std::string out;
  Row row;
  while (rows->next(&row)) {
    for (std::size_t i = 0; i < row.cells.size(); ++i) out += (i > 0 ? "|" : "") + row.cells[i];
    out += "\n";
  }
  return out;
}

TEST_P(QuorelCheckSqlTest, RunsAreToldApartAndAppendedOrReplaced) {
  db_->drop("probleme");
  std::string output = " --output " + quoted(db_->url("table=probleme")) + " ";
  std::string run = std::string(QUOREL_UMFRAGE_MODULE) + " Umfrage " + kData + "/umfragen.csv";
  for (const char *mode : {"", "--output-mode append", "--output-mode replace", "--output-mode replace"}) {
    Result stored = check(output + mode + " " + run);
    EXPECT_EQ(1, stored.status) << stored.out;
  }
  std::string select = "query=SELECT%20count(*)%2C%20count(DISTINCT%20run)%2C%20min(run_time)%20FROM%20probleme";
  // Seven problems of the last run: the replacing runs took the others.
  std::string last = rowsOf(db_->url(select));
  EXPECT_TRUE(std::regex_match(last, std::regex("7\\|1\\|20[0-9-]{8}T[0-9:]{8}Z\n"))) << last;
  // Every column of the one schema, a CSV file's lines beside its records.
  EXPECT_EQ("2|3|UMF-02|1|5|[]|[\"Umfrage.Alter\"]|\n",
            rowsOf(db_->url("query=SELECT%20record%2C%20line%2C%20id%2C%20type%2C%20weight%2C%20field_indices%2C%20"
                            "accessed%2C%20failure%20FROM%20probleme%20WHERE%20id%20%3D%20%27UMF-02%27")));
  EXPECT_EQ(1, check(output + run).status);
  EXPECT_EQ(0u, rowsOf(db_->url(select)).find("14|2|"));
}

TEST_P(QuorelCheckSqlTest, AFailedRunSaysWhichRecordsAreInTheTable) {
  db_->drop("probleme");
  // A table that takes no problem of a record beyond 4500: the second batch
  // of 4096 records fails.
  db_->execute("CREATE TABLE probleme (run TEXT, run_time TEXT, record BIGINT CHECK (record <= 4500), line BIGINT, "
               "id TEXT, type INTEGER, weight INTEGER, text TEXT, details TEXT, field TEXT, field_indices TEXT, "
               "accessed TEXT, sections TEXT, failure TEXT)");
  Result failed = check("--output " + quoted(db_->url("table=probleme")) + " " + QUOREL_UMFRAGE_MODULE + " Umfrage " +
                        youngSurveys(5000));
  EXPECT_EQ(2, failed.status);
  EXPECT_EQ(0u, failed.out.find("quorel-check: cannot write problems to ")) << failed.out;
  std::regex said("\n  run [0-9a-f-]+: the problems of records 1 to 4096 "
                  "\\(to line 4097\\) are in [^\n]*\\?table=probleme, those of later records are not\n");
  EXPECT_TRUE(std::regex_search(failed.out, said)) << failed.out;
  EXPECT_EQ("4096\n", rowsOf(db_->url("query=SELECT%20count(*)%20FROM%20probleme")));
}

TEST_P(QuorelCheckSqlTest, SourcesAreReadOnlyAndQueriesMayEndInASemicolon) {
  std::string material = " --material " + quoted("Gemeinden=" + db_->url("table=gemeinden")) + " ";
  Result plain = check(material + module_ + quoted(db_->url("query=SELECT%20*%20FROM%20antraege%20ORDER%20BY%20id")));
  Result semicolon =
      check(material + module_ + quoted(db_->url("query=SELECT%20*%20FROM%20antraege%20ORDER%20BY%20id%3B%20")));
  EXPECT_EQ(1, semicolon.status) << semicolon.out;
  EXPECT_EQ(plain.out, semicolon.out);
  Result deleting = check(material + module_ +
                          quoted(db_->url("query=WITH%20gone%20AS%20(DELETE%20FROM%20antraege%20RETURNING%20*)%20"
                                          "SELECT%20*%20FROM%20gone")));
  EXPECT_EQ(2, deleting.status) << deleting.out;
  EXPECT_EQ("3\n", rowsOf(db_->url("query=SELECT%20count(*)%20FROM%20antraege")));
}

// A cell that cannot be a field's value leaves its record not checked, with
// the column and the cause; the other records are checked.
TEST_P(QuorelCheckSqlTest, CellsThatCannotBeFieldsNameTheirRecordAndCause) {
  bool sqlite = GetParam() == "sqlite";
  db_->drop("zellen");
  db_->execute("CREATE TABLE zellen (id INTEGER, \"Umfrage.Name\" TEXT, \"Umfrage.Alter\" INTEGER);\n"
               "INSERT INTO zellen VALUES (1, 'Berger', 34);\n"
               "INSERT INTO zellen VALUES (2, 'Bit\xE2\x82\xBF', 51)");
  std::string expected = "record 2: not checked: table zellen, column Umfrage.Name: the character at byte 3 is not "
                          "in Windows-1252: Bit?\n";
  std::size_t records = 2;
  if (sqlite) {
    // A server keeps its texts valid; a SQLite file holds what was put in.
    db_->execute("INSERT INTO zellen VALUES (3, CAST(X'4DFC6C6C6572' AS TEXT), 40);\n"
                 "INSERT INTO zellen VALUES (4, X'4D75656C6C6572', 40)");
    expected += "record 3: not checked: table zellen, column Umfrage.Name: the character at byte 1 is no UTF-8: "
                "M?ller\n"
                "record 4: not checked: table zellen, column Umfrage.Name: binary data cannot be a field\n";
    records = 4;
  }
  Result run = check(std::string(QUOREL_UMFRAGE_MODULE) + " Umfrage " + quoted(db_->url("table=zellen&order=id")));
  EXPECT_EQ(2, run.status);
  EXPECT_EQ(expected + std::to_string(records) + " records: 1 checked, " + std::to_string(records - 1) +
                " not checked; 0 problems, 0 errors\n",
            run.out);
}

// A text stored in a column of numbers has lost its leading zeros in the
// database: said once at start-up, and the records are still checked. A
// size column of numbers, or a text column, is what the rules expect.
TEST_P(QuorelCheckSqlTest, NumbersWhereTheRulesReadTextsAreNamed) {
  db_->drop("zahlen");
  db_->execute("CREATE TABLE zahlen (id INTEGER PRIMARY KEY, \"Umfrage.Name\" INTEGER, \"Umfrage.Alter\" NUMERIC);\n"
               "INSERT INTO zahlen VALUES (1, '007', 34)");
  Result run = check(std::string(QUOREL_UMFRAGE_MODULE) + " Umfrage " + quoted(db_->url("table=zahlen")));
  EXPECT_EQ(0, run.status) << run.out;
  EXPECT_EQ("1 record: 1 checked, 0 not checked; 0 problems, 0 errors\n", run.out);
  const std::string type = GetParam() == "sqlite" ? "INTEGER" : "integer";
  EXPECT_EQ("quorel-check: warning: column id names no field: the module's fields are named Umfrage.<field>\n"
            "quorel-check: warning: column Umfrage.Name holds numbers (" + type + ") where the rules read a text, "
            "so leading zeros and the form of the text are lost: store the values in a column of text, as they "
            "were written\n",
            run.warnings);
  Result strict = check("--strict " + std::string(QUOREL_UMFRAGE_MODULE) + " Umfrage " +
                        quoted(db_->url("query=SELECT%20%22Umfrage.Name%22,%20%22Umfrage.Alter%22%20FROM%20zahlen")));
  EXPECT_EQ(0, strict.status) << strict.out;
  EXPECT_NE(std::string::npos, strict.warnings.find("column Umfrage.Name holds numbers")) << strict.warnings;
  EXPECT_EQ(std::string::npos, strict.warnings.find("Umfrage.Alter")) << strict.warnings;
  db_->execute("ALTER TABLE zahlen RENAME TO zahlen_alt;\n"
               "CREATE TABLE zahlen (\"Umfrage.Name\" TEXT, \"Umfrage.Alter\" INTEGER);\n"
               "INSERT INTO zahlen VALUES ('007', 34)");
  db_->drop("zahlen_alt");
  EXPECT_EQ("", check(std::string(QUOREL_UMFRAGE_MODULE) + " Umfrage " + quoted(db_->url("table=zahlen"))).warnings);
}

// A DATE cell comes as a CSV file for the module would carry it: in the
// mask of its field, in the records and in a material alike.
TEST_P(QuorelCheckSqlTest, DatesComeInTheMaskOfTheirField) {
  std::string rules = "/tmp/quorel-sql-test-daten-" + std::to_string(getpid()) + ".qr";
  files_.push_back(rules);
  std::ofstream(rules, std::ios::binary)
      << "MODUL Daten\n"
         "SATZ D\n  FELD Name TEXT\n  FELD Tag DATUM MASKE \"JJJJ-MM-TT\"\nENDE\n"
         "MATERIAL Feiertage DATENBESTAND \"FEIERTAGE\"\n  FELD Name TEXT\n  FELD Tag DATUM MASKE \"JJJJMMTT\"\nENDE\n"
         "ABLAUF Pruefung: A\n"
         "REGEL A ABSCHNITT \"Regel A\"\n"
         "  WENN NICHT PASST(D.Tag; DATUM; \"JJJJ-MM-TT\") DANN\n"
         "    MELDE FEHLER \"T-1\" GEWICHT 1 TEXT \"Der Tag passt nicht.\"\n"
         "  ENDE\n"
         "  FUER JEDES tag IN LIES Tag AUS Feiertage WO Name = D.Name\n"
         "    WENN NICHT PASST(tag; DATUM; \"JJJJMMTT\") DANN\n"
         "      MELDE FEHLER \"M-1\" GEWICHT 1 TEXT \"Der Feiertag passt nicht.\"\n"
         "    ENDE\n"
         "  ENDE\n"
         "ENDE\n";
  db_->drop("tage");
  db_->drop("feiertage");
  db_->execute("CREATE TABLE tage (\"D.Name\" TEXT, \"D.Tag\" DATE);\n"
               "INSERT INTO tage VALUES ('Neujahr', '2024-01-31');\n"
               "INSERT INTO tage VALUES ('Ostern', NULL);\n"
               "CREATE TABLE feiertage (name TEXT, tag DATE);\n"
               "INSERT INTO feiertage VALUES ('Neujahr', '2024-01-01');\n"
               "INSERT INTO feiertage VALUES ('Ostern', '2024-03-31')");
  Result run = check("--material " + quoted("Feiertage=" + db_->url("table=feiertage")) + " " + rules + " " +
                     quoted(db_->url("query=SELECT%20*%20FROM%20tage&order=D.Name")));
  EXPECT_EQ(0, run.status) << run.out << run.warnings;
  EXPECT_EQ("2 records: 2 checked, 0 not checked; 0 problems, 0 errors\n", run.out);
  // A date with a time: a midnight is its date; another time stays as
  // written, and the rules judge it.
  db_->drop("zeiten");
  db_->execute("CREATE TABLE zeiten (\"D.Name\" TEXT, \"D.Tag\" TIMESTAMP);\n"
               "INSERT INTO zeiten VALUES ('Neujahr', '2024-01-31 00:00:00');\n"
               "INSERT INTO zeiten VALUES ('Ostern', '2024-01-31 10:15:00')");
  Result times = check("--material " + quoted("Feiertage=" + db_->url("table=feiertage")) + " " + rules + " " +
                       quoted(db_->url("query=SELECT%20*%20FROM%20zeiten&order=D.Name")));
  EXPECT_EQ(1, times.status) << times.out << times.warnings;
  EXPECT_EQ(0u, times.out.find("record 2: error T-1 (weight 1): Der Tag passt nicht.\n")) << times.out;
  EXPECT_NE(std::string::npos, times.out.find("2 records: 2 checked, 0 not checked; 1 problem, 1 error\n"))
      << times.out;
  db_->drop("tage");
  db_->drop("zeiten");
  db_->drop("feiertage");
}

TEST_P(QuorelCheckSqlTest, RecordsAndProblemsInOneSqliteFileNeedWalMode) {
  if (GetParam() != "sqlite") GTEST_SKIP() << "a PostgreSQL server reads while it writes";
  db_->drop("viele");
  db_->execute("CREATE TABLE viele AS WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 5000) "
               "SELECT i AS id, 'Name' AS \"Umfrage.Name\", 10 AS \"Umfrage.Alter\" FROM n");
  std::string run = " --output " + quoted(db_->url("table=probleme")) + " " + QUOREL_UMFRAGE_MODULE + " Umfrage " +
                    quoted(db_->url("table=viele&order=id"));
  Result refused = check(run);
  EXPECT_EQ(2, refused.status);
  EXPECT_NE(std::string::npos, refused.out.find("where the problems are to be written")) << refused.out;
  EXPECT_NE(std::string::npos, refused.out.find("PRAGMA journal_mode=WAL")) << refused.out;
  db_->execute("PRAGMA journal_mode=WAL");
  Result wal = check(run);
  EXPECT_EQ(1, wal.status) << wal.out;
  EXPECT_NE(std::string::npos, wal.out.find("5000 records: 5000 checked, 0 not checked")) << wal.out;
  EXPECT_EQ("5000\n", rowsOf(db_->url("query=SELECT%20count(*)%20FROM%20probleme")));
}

INSTANTIATE_TEST_SUITE_P(Backends, QuorelCheckSqlTest, ::testing::ValuesIn(testing::backends()),
                         [](const ::testing::TestParamInfo<std::string> &info) {
                           return info.param == "sqlite" ? std::string("Sqlite") : std::string("Postgresql");
                         });

}  // namespace
}  // namespace host
}  // namespace quorel
