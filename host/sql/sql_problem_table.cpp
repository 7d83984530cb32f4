#include "quorel/host/sql/sql_problem_table.h"

#include <nlohmann/json.hpp>

#include "quorel/host/encoding.h"

namespace quorel {
namespace host {

namespace {

const char *const kColumns[] = {"record", "id", "type", "weight", "text", "details",
                                "field", "accessed", "sections", "failure"};
constexpr int kColumnCount = sizeof kColumns / sizeof kColumns[0];

SqlParam text(const std::optional<std::string> &value) {
  return value ? SqlParam::ofText(toUtf8(value->c_str())) : SqlParam();
}

SqlParam texts(const std::vector<std::string> &values) {
  nlohmann::json array = nlohmann::json::array();
  for (const std::string &value : values) array.push_back(toUtf8(value.c_str()));
  return SqlParam::ofText(array.dump());
}

}  // namespace

SqlProblemTable::~SqlProblemTable() {
  insert_.reset();  // before its connection
}

std::unique_ptr<SqlProblemTable> SqlProblemTable::open(const SqlSource &source, std::string *message) {
  if (source.table.empty()) {
    *message = "no table for the problems in " + source.where() + " (add ?table=NAME)";
    return nullptr;
  }
  std::unique_ptr<SqlProblemTable> table(new SqlProblemTable());
  table->where_ = source.where() + "?table=" + source.table;
  table->connection_ = SqlConnection::open(source, true, message);
  if (table->connection_ == nullptr) return nullptr;
  SqlConnection &c = *table->connection_;
  std::string name = quoteIdentifier(source.table), error;
  std::string create = "CREATE TABLE IF NOT EXISTS " + name +
                       " (record BIGINT, id TEXT, type INTEGER, weight INTEGER, text TEXT, details TEXT, "
                       "field TEXT, accessed TEXT, sections TEXT, failure TEXT)";
  std::string insert = "INSERT INTO " + name + " (", values;
  for (int i = 0; i < kColumnCount; ++i) {
    insert += std::string(i > 0 ? ", " : "") + kColumns[i];
    values += (i > 0 ? ", " : "") + c.placeholder(i + 1);
  }
  insert += ") VALUES (" + values + ")";
  if (!c.execute(create, &error) || (table->insert_ = c.prepare(insert, &error)) == nullptr) {
    *message = "cannot write problems to " + table->where_ + ": " + error;
    return nullptr;
  }
  return table;
}

void SqlProblemTable::appendRecord(std::int64_t position, const std::vector<Problem> &problems, Rows *rows) {
  for (const Problem &p : problems) {
    rows->push_back({SqlParam::ofInteger(position), text(p.id), SqlParam::ofInteger(p.type),
                     SqlParam::ofInteger(p.weight), text(p.text), text(p.details),
                     p.field.empty() ? SqlParam() : SqlParam::ofText(toUtf8(p.field.c_str())), texts(p.accessed),
                     texts(p.sections), SqlParam()});
  }
}

void SqlProblemTable::appendFailure(std::int64_t position, const std::string &message, Rows *rows) {
  std::vector<SqlParam> row(kColumnCount);
  row[0] = SqlParam::ofInteger(position);
  row[kColumnCount - 1] = SqlParam::ofText(toUtf8(message.c_str()));
  rows->push_back(std::move(row));
}

bool SqlProblemTable::write(const std::vector<const Rows *> &pieces, std::string *message) {
  std::string error;
  bool ok = connection_->execute("BEGIN", &error);
  for (const Rows *piece : pieces) {
    for (std::size_t i = 0; ok && i < piece->size(); ++i) {
      ok = insert_->run((*piece)[i], &error) && !insert_->next(&error) && error.empty();
    }
  }
  if (ok && connection_->execute("COMMIT", &error)) return true;
  std::string ignored;
  connection_->execute("ROLLBACK", &ignored);
  *message = "cannot write problems to " + where_ + ": " + error;
  return false;
}

}  // namespace host
}  // namespace quorel
