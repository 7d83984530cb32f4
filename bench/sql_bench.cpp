// Materials in a database against materials in memory.
//
// Material*: a material Orte of 100 000 rows (PLZ, Name, Einwohner; two rows
// per PLZ), indexed on the filter columns, queried through SQLite
// (SqlMaterialAccess) and through the host kit's in-memory table
// (TableMaterialAccess, loaded from the same table): an existence test and a
// read on an equal PLZ, and an existence test on a range of Einwohner. The
// database's records are released after each query, as a host does after
// each run.
//
// Antrag: the Antrag module on 100 000 generated records
// (apps/generate_records.py), held in memory, with its material Gemeinden in
// SQLite or read from its CSV file. The counter "problems" must agree.
//
// The data is made once, on first use, in a temporary folder.

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <quorel/quorel.h>

#include "quorel/host/checker.h"
#include "quorel/host/csv_row_source.h"
#include "quorel/host/encoding.h"
#include "quorel/host/record_layout.h"
#include "quorel/host/sql/sql_connection.h"
#include "quorel/host/sql/sql_material_access.h"
#include "quorel/host/sql/sql_row_source.h"
#include "quorel/host/table_material_access.h"
#include "side_by_side.h"

namespace {

using namespace quorel;
using namespace quorel::host;

constexpr int kRows = 100000;

// A temporary folder and the files made in it, removed at exit.
class Scratch {
 public:
  Scratch() {
    char folder[] = "/tmp/quorel-sql-bench-XXXXXX";
    if (mkdtemp(folder) == nullptr) std::abort();
    folder_ = folder;
  }
  ~Scratch() {
    for (const std::string &file : files_) std::remove(file.c_str());
    rmdir(folder_.c_str());
  }
  std::string file(const std::string &name) {
    files_.push_back(folder_ + "/" + name);
    return files_.back();
  }

 private:
  std::string folder_;
  std::vector<std::string> files_;
};

Scratch &scratch() {
  static Scratch scratch;
  return scratch;
}

[[noreturn]] void die(const std::string &message) {
  std::fprintf(stderr, "sql_bench: %s\n", message.c_str());
  std::exit(1);
}

// A new SQLite file, filled by fill on a writable connection in one
// transaction.
std::string makeDatabase(const std::string &name, const std::function<void(SqlConnection *)> &fill) {
  std::string url = "sqlite:" + scratch().file(name);
  SqlSource source;
  std::string message;
  if (!SqlSource::parse(url, &source, &message)) die(message);
  auto connection = SqlConnection::open(source, true, &message);
  if (connection == nullptr || !connection->execute("BEGIN", &message)) die(message);
  fill(connection.get());
  if (!connection->execute("COMMIT", &message)) die(message);
  return url;
}

void execute(SqlConnection *connection, const std::string &sql) {
  std::string message;
  if (!connection->execute(sql, &message)) die(sql + ": " + message);
}

void insertRows(SqlConnection *connection, const std::string &sql, const std::vector<std::vector<SqlParam>> &rows) {
  std::string message;
  auto insert = connection->prepare(sql, &message);
  if (insert == nullptr) die(message);
  for (const auto &row : rows) {
    if (!insert->run(row, &message) || insert->next(&message) || !message.empty()) die(message);
  }
}

SqlSource sourceOf(const std::string &url) {
  SqlSource source;
  std::string message;
  if (!SqlSource::parse(url, &source, &message)) die(message);
  return source;
}

// The material's fields, as a rule module declares them.
class Orte : public Topic {
 public:
  Orte() : Topic(new TypeDescriptor(nullptr, nullptr, "Orte", nullptr, FieldTypeTopic, nullptr, 0), nullptr) {
    setMaterialName("Orte");
    plz = add("PLZ", FieldTypeText);
    name = add("Name", FieldTypeText);
    einwohner = add("Einwohner", FieldTypeInteger);
  }
  ~Orte() override { delete getTypeDescriptor(); }
  Topic *createElement() override { return nullptr; }

  Field *plz, *name, *einwohner;

 private:
  Field *add(const char *fieldName, FieldType type) {
    auto *field = new Field(new TypeDescriptor(getTypeDescriptor(), nullptr, fieldName, nullptr, type, nullptr, 0), this);
    setField(fieldName, field);
    return field;
  }
};

std::string plzOf(int row) {
  char text[8];
  std::snprintf(text, sizeof text, "%05d", (row / 2) % 100000);
  return text;
}

std::int64_t einwohnerOf(int row) { return (static_cast<std::int64_t>(row) * 7919) % 1000000; }

// The material Orte in SQLite and in memory.
struct Places {
  Places() {
    std::string url = makeDatabase("orte.db", [](SqlConnection *c) {
      execute(c, "CREATE TABLE orte (\"Orte.PLZ\" TEXT, \"Orte.Name\" TEXT, \"Orte.Einwohner\" INTEGER)");
      std::vector<std::vector<SqlParam>> rows;
      for (int i = 0; i < kRows; ++i) {
        rows.push_back({SqlParam::ofText(plzOf(i)), SqlParam::ofText("Ort " + std::to_string(i)),
                        SqlParam::ofInteger(einwohnerOf(i))});
      }
      insertRows(c, "INSERT INTO orte VALUES (?1, ?2, ?3)", rows);
      execute(c, "CREATE INDEX orte_plz ON orte (\"Orte.PLZ\")");
      execute(c, "CREATE INDEX orte_einwohner ON orte (\"Orte.Einwohner\")");
    }) + "?table=orte";
    std::string message;
    if (!sql.addMaterial("Orte", sourceOf(url), &message)) die(message);
    auto rows = SqlRowSource::open(sourceOf(url), &message);
    if (rows == nullptr || !table.load("Orte", rows.get(), &message)) die(message);
  }

  Orte topic;
  SqlMaterialAccess sql;
  TableMaterialAccess table;
};

Places &places() {
  static Places places;
  return places;
}

enum Backend { kSqlite, kTable };

// Runs query(row) per iteration on the backend's access, row walking the
// material in a scattered order.
template <typename Query>
void queryLoop(benchmark::State &state, Backend backend, Query query) {
  Places &p = places();
  MaterialAccess *access = backend == kSqlite ? static_cast<MaterialAccess *>(&p.sql) : &p.table;
  query(access, 0);  // the table builds its index on the first query
  p.sql.releaseRecords();
  int row = 0;
  for (auto _ : state) {
    row = (row + 7919) % kRows;
    query(access, row);
    if (backend == kSqlite) p.sql.releaseRecords();
  }
  state.SetItemsProcessed(state.iterations());
}

// Is there a place of this name under the PLZ? Yes for half of the queries.
void BM_MaterialContains(benchmark::State &state, Backend backend) {
  Orte &topic = places().topic;
  queryLoop(state, backend, [&topic](MaterialAccess *access, int row) {
    StringValue plz(plzOf(row).c_str());
    StringValue name(("Ort " + std::to_string(row % 4 < 2 ? row : row + 2)).c_str());
    RecordFilter filter;
    filter.addCondition(new FilterCondition(topic.plz, OPERATOR_EQUAL, &plz));
    FieldSet fields;
    fields.addField(topic.name);
    ValueSet values;
    values.addValue(&name);
    benchmark::DoNotOptimize(access->containsValues(&topic, &filter, &fields, &values));
  });
}
BENCHMARK_CAPTURE(BM_MaterialContains, Sqlite, kSqlite);
BENCHMARK_CAPTURE(BM_MaterialContains, Table, kTable);

// The two places under a PLZ, with their names and Einwohner.
void BM_MaterialRead(benchmark::State &state, Backend backend) {
  Orte &topic = places().topic;
  queryLoop(state, backend, [&topic](MaterialAccess *access, int row) {
    StringValue plz(plzOf(row).c_str());
    RecordFilter filter;
    filter.addCondition(new FilterCondition(topic.plz, OPERATOR_EQUAL, &plz));
    FieldSet fields;
    fields.addField(topic.name);
    fields.addField(topic.einwohner);
    DataRecordSet result;
    access->readRecords(&result, &topic, &filter, &fields);
    if (result.getNumOfDataRecords() != 2) die("a PLZ gave " + std::to_string(result.getNumOfDataRecords()) + " rows");
  });
}
BENCHMARK_CAPTURE(BM_MaterialRead, Sqlite, kSqlite);
BENCHMARK_CAPTURE(BM_MaterialRead, Table, kTable);

// Is there a place of this name with Einwohner in a range of 100 (about 10
// rows)? The database walks its index; the table, which indexes equality
// only, scans every row.
void BM_MaterialRangeContains(benchmark::State &state, Backend backend) {
  Orte &topic = places().topic;
  queryLoop(state, backend, [&topic](MaterialAccess *access, int row) {
    NumberValue low(static_cast<double>(einwohnerOf(row)));
    NumberValue high(static_cast<double>(einwohnerOf(row) + 100));
    StringValue name(("Ort " + std::to_string(row)).c_str());
    RecordFilter filter;
    filter.addCondition(new FilterCondition(topic.einwohner, OPERATOR_GREATER_EQUAL, &low));
    filter.addCondition(new FilterCondition(topic.einwohner, OPERATOR_LESS, &high));
    FieldSet fields;
    fields.addField(topic.name);
    ValueSet values;
    values.addValue(&name);
    if (!access->containsValues(&topic, &filter, &fields, &values)) die("a place was not found");
  });
}
BENCHMARK_CAPTURE(BM_MaterialRangeContains, Sqlite, kSqlite);
BENCHMARK_CAPTURE(BM_MaterialRangeContains, Table, kTable);

// The generated records in memory, and Gemeinden in SQLite and in memory.
struct Antraege {
  Antraege() {
    std::string file = scratch().file("antraege.csv");
    std::string command = std::string("'" QUOREL_PYTHON "' '" QUOREL_GENERATOR "' ") + std::to_string(kRows) + " > " +
                          file;
    if (std::system(command.c_str()) != 0) die("cannot generate the records: " + command);
    std::string message;
    auto source = CsvRowSource::open(file, &message);
    if (source == nullptr) die(message);
    layout = std::make_unique<RecordLayout>(source->columns());
    for (Row row; source->next(&row);) records.push_back(row);

    std::string csv = QUOREL_EXAMPLE_DATA "/gemeinden.csv";
    auto places = CsvRowSource::open(csv, &message);
    if (places == nullptr || !table.load("Gemeinden", places.get(), &message)) die(message);
    places = CsvRowSource::open(csv, &message);
    std::string url = makeDatabase("gemeinden.db", [&places](SqlConnection *c) {
      execute(c, "CREATE TABLE gemeinden (plz TEXT, ort TEXT)");
      std::vector<std::vector<SqlParam>> rows;
      for (Row row; places->next(&row);) {
        rows.push_back({SqlParam::ofText(toUtf8(row.cells[0].c_str())), SqlParam::ofText(toUtf8(row.cells[1].c_str()))});
      }
      insertRows(c, "INSERT INTO gemeinden VALUES (?1, ?2)", rows);
      execute(c, "CREATE INDEX gemeinden_plz ON gemeinden (plz)");
    });
    if (!sql.addMaterial("Gemeinden", sourceOf(url + "?table=gemeinden"), &message)) die(message);
  }

  std::unique_ptr<RecordLayout> layout;
  std::vector<Row> records;
  TableMaterialAccess table;
  SqlMaterialAccess sql;
};

void BM_Antrag(benchmark::State &state, Backend backend) {
  static Antraege antraege;
  CheckSettings settings;
  settings.library = QUOREL_ANTRAG_MODULE;
  settings.module = "Antrag";
  settings.flow = "Pruefung";
  settings.materials = backend == kSqlite ? static_cast<MaterialAccess *>(&antraege.sql) : &antraege.table;
  if (backend == kSqlite) settings.afterRun = [] { antraege.sql.releaseRecords(); };
  Checker checker(settings);
  Outcome outcome;
  std::int64_t problems = 0;
  for (auto _ : state) {
    problems = 0;
    for (const Row &row : antraege.records) {
      SimpleDataRecord record;
      std::string error;
      if (!antraege.layout->fill(row.cells, &record, &error)) die(error);
      checker.check(&record, &outcome);
      if (outcome.failed) die(outcome.message);
      problems += static_cast<std::int64_t>(outcome.problems.size());
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(antraege.records.size()));
  state.counters["problems"] = static_cast<double>(problems);
}
BENCHMARK_CAPTURE(BM_Antrag, MaterialSqlite, kSqlite)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Antrag, MaterialCsv, kTable)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char **argv) {
  return quorel::bench::runSideBySide(
      argc, argv,
      {{"material query (equal) through SQLite against the table in memory", "BM_MaterialContains/Sqlite",
        "BM_MaterialContains/Table"},
       {"material read (equal) through SQLite against the table in memory", "BM_MaterialRead/Sqlite",
        "BM_MaterialRead/Table"},
       {"material query (range) through SQLite against the table in memory", "BM_MaterialRangeContains/Sqlite",
        "BM_MaterialRangeContains/Table"},
       {"Antrag, 100 000 records, material in SQLite against CSV", "BM_Antrag/MaterialSqlite",
        "BM_Antrag/MaterialCsv"}});
}
