#include "quorel/host/sql/sql_problem_table.h"

#include <sys/stat.h>

#include <cstdio>
#include <ctime>
#include <random>

#include <nlohmann/json.hpp>

#include "quorel/host/encoding.h"

namespace quorel {
namespace host {

namespace {

// The SQL types of kProblemColumns, in order.
const char *const kTypes[kProblemColumnCount] = {"BIGINT", "BIGINT", "TEXT", "INTEGER", "INTEGER", "TEXT",
                                                 "TEXT",   "TEXT",   "TEXT", "TEXT",    "TEXT",    "TEXT"};
constexpr int kRunColumns = 2;  // run, run_time
constexpr int kColumnCount = kRunColumns + kProblemColumnCount;

SqlParam text(const std::optional<std::string> &value) {
  return value ? SqlParam::ofText(toUtf8(value->c_str())) : SqlParam();
}

template <typename T>
SqlParam list(const std::vector<T> &values) {
  nlohmann::json array = nlohmann::json::array();
  for (const T &value : values) {
    if constexpr (std::is_same_v<T, std::string>) {
      array.push_back(toUtf8(value.c_str()));
    } else {
      array.push_back(value);
    }
  }
  return SqlParam::ofText(array.dump());
}

// An id that no other run shares in practice: the start time and 64 random
// bits.
std::string newRunId(std::time_t now) {
  std::random_device device;
  std::uint64_t bits = (static_cast<std::uint64_t>(device()) << 32) ^ device();
  char id[48];
  std::snprintf(id, sizeof id, "%llx-%016llx", static_cast<unsigned long long>(now),
                static_cast<unsigned long long>(bits));
  return id;
}

std::string isoTime(std::time_t now) {
  std::tm utc{};
  gmtime_r(&now, &utc);
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc);
  return text;
}

}  // namespace

SqlProblemTable::~SqlProblemTable() {
  insert_.reset();  // before its connection
}

std::unique_ptr<SqlProblemTable> SqlProblemTable::open(const SqlSource &source, bool replace, std::string *message) {
  if (source.table.empty()) {
    *message = "no table for the problems in " + source.where() + " (add ?table=NAME)";
    return nullptr;
  }
  std::unique_ptr<SqlProblemTable> table(new SqlProblemTable());
  table->source_ = source;
  table->where_ = source.where() + "?table=" + source.table;
  table->table_ = quoteIdentifier(source.table);
  table->replace_ = replace;
  std::time_t now = std::time(nullptr);
  table->run_ = newRunId(now);
  table->runTime_ = isoTime(now);
  table->connection_ = SqlConnection::open(source, true, message);
  if (table->connection_ == nullptr) return nullptr;
  SqlConnection &c = *table->connection_;
  std::string create = "CREATE TABLE IF NOT EXISTS " + table->table_ + " (run TEXT, run_time TEXT";
  std::string insert = "INSERT INTO " + table->table_ + " (run, run_time";
  std::string values = c.placeholder(1) + ", " + c.placeholder(2);
  for (int i = 0; i < kProblemColumnCount; ++i) {
    create += std::string(", ") + kProblemColumns[i] + " " + kTypes[i];
    insert += std::string(", ") + kProblemColumns[i];
    values += ", " + c.placeholder(kRunColumns + i + 1);
  }
  insert += ") VALUES (" + values + ")";
  std::string error;
  if (!c.execute(create + ")", &error) || (table->insert_ = c.prepare(insert, &error)) == nullptr) {
    *message = "cannot write problems to " + table->where_ + ": " + error;
    return nullptr;
  }
  return table;
}

void SqlProblemTable::appendRecord(const Place &place, const std::vector<Problem> &problems, Rows *rows) const {
  for (const Problem &p : problems) {
    rows->push_back({SqlParam::ofText(run_), SqlParam::ofText(runTime_), SqlParam::ofInteger(place.record),
                     place.line > 0 ? SqlParam::ofInteger(place.line) : SqlParam(), text(p.id),
                     SqlParam::ofInteger(p.type), SqlParam::ofInteger(p.weight), text(p.text), text(p.details),
                     p.field.empty() ? SqlParam() : SqlParam::ofText(toUtf8(p.field.c_str())), list(p.fieldIndices),
                     list(p.accessed), list(p.sections), SqlParam()});
  }
}

void SqlProblemTable::appendFailure(const Place &place, const std::string &message, Rows *rows) const {
  std::vector<SqlParam> row(kColumnCount);
  row[0] = SqlParam::ofText(run_);
  row[1] = SqlParam::ofText(runTime_);
  row[2] = SqlParam::ofInteger(place.record);
  if (place.line > 0) row[3] = SqlParam::ofInteger(place.line);
  row[kColumnCount - 1] = SqlParam::ofText(toUtf8(message.c_str()));
  rows->push_back(std::move(row));
}

bool SqlProblemTable::readableAlongside(const SqlSource &source, std::string *message) {
  struct stat read {}, written {};
  if (source.kind != SqlSource::kSqlite || source_.kind != SqlSource::kSqlite ||
      stat(source.database.c_str(), &read) != 0 || stat(source_.database.c_str(), &written) != 0 ||
      read.st_dev != written.st_dev || read.st_ino != written.st_ino) {
    return true;
  }
  std::string error;
  std::unique_ptr<SqlStatement> mode = connection_->prepare("PRAGMA journal_mode", &error);
  if (mode != nullptr && mode->run({}, &error) && mode->next(&error) && mode->text(0) == "wal") {
    mode->finish();
    return true;
  }
  *message = "the records are read from " + source_.where() + ", where the problems are to be written: write them "
             "to another file, or put the database into WAL mode (PRAGMA journal_mode=WAL), in which reading does "
             "not hold writing back";
  return false;
}

bool SqlProblemTable::write(const std::vector<const Rows *> &pieces, std::string *message) {
  std::string error;
  bool ok = connection_->execute("BEGIN", &error);
  if (ok && replace_) ok = connection_->execute("DELETE FROM " + table_, &error);
  for (const Rows *piece : pieces) {
    for (std::size_t i = 0; ok && i < piece->size(); ++i) {
      ok = insert_->run((*piece)[i], &error) && !insert_->next(&error) && error.empty();
    }
  }
  if (ok && connection_->execute("COMMIT", &error)) {
    replace_ = false;  // the former runs are gone
    return true;
  }
  std::string ignored;
  connection_->execute("ROLLBACK", &ignored);
  *message = "cannot write problems to " + where_ + ": " + error;
  return false;
}

}  // namespace host
}  // namespace quorel
