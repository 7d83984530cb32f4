#include "quorel/host/sql/sql_connection.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace quorel {
namespace host {

std::unique_ptr<SqlConnection> openSqlite(const SqlSource &source, bool writable, std::string *message);
std::unique_ptr<SqlConnection> openPostgresql(const SqlSource &source, bool writable, std::string *message);

SqlParam SqlParam::ofInteger(std::int64_t value) {
  SqlParam param;
  param.kind = kInteger;
  param.integer = value;
  return param;
}

SqlParam SqlParam::ofReal(double value) {
  SqlParam param;
  param.kind = kReal;
  param.real = value;
  return param;
}

SqlParam SqlParam::ofText(std::string value) {
  SqlParam param;
  param.kind = kText;
  param.text = std::move(value);
  return param;
}

std::unique_ptr<SqlConnection> SqlConnection::open(const SqlSource &source, bool writable, std::string *message) {
  if (source.kind == SqlSource::kSqlite) return openSqlite(source, writable, message);
#ifdef QUOREL_HOST_SQL_POSTGRESQL
  return openPostgresql(source, writable, message);
#else
  *message = "cannot open " + source.where() + ": built without PostgreSQL (libpq-dev)";
  return nullptr;
#endif
}

std::string quoteIdentifier(const std::string &name) {
  std::string quoted = "\"";
  for (char c : name) {
    if (c == '"') quoted += '"';
    quoted += c;
  }
  return quoted + '"';
}

bool readTableColumns(SqlStatement *columns, const std::string &table, SqlTable *out, std::string *message) {
  *out = SqlTable();
  std::vector<std::pair<int, std::string>> key;
  while (columns->next(message)) {
    std::string name(columns->text(0));
    int position = std::atoi(std::string(columns->text(1)).c_str());
    if (position > 0) key.emplace_back(position, name);
    out->columns.push_back(std::move(name));
  }
  if (!message->empty()) return false;
  if (out->columns.empty()) {
    *message = "no table or view " + quoteIdentifier(table);
    return false;
  }
  std::sort(key.begin(), key.end());
  for (auto &column : key) out->key.push_back(std::move(column.second));
  return true;
}

}  // namespace host
}  // namespace quorel
