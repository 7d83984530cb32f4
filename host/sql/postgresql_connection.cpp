// SqlConnection over PostgreSQL (libpq). Statements are prepared on the
// server; rows arrive one at a time (single-row mode), so a long result
// never sits in memory whole. Parameters go as text, typed by the server from
// their place in the statement. The session speaks UTF-8 with ISO dates.

#include <libpq-fe.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "quorel/host/sql/sql_connection.h"

namespace quorel {
namespace host {

namespace {

// Type numbers of the server's catalogue (pg_type.oid).
constexpr Oid kBool = 16, kBytea = 17, kInt8 = 20, kInt2 = 21, kInt4 = 23, kOid = 26, kFloat4 = 700,
              kFloat8 = 701, kNumeric = 1700, kDate = 1082, kTimestamp = 1114;

SqlCellKind kindOf(Oid type) {
  switch (type) {
    case kBool: return SqlCellKind::kBool;
    case kBytea: return SqlCellKind::kBinary;
    case kInt2:
    case kInt4:
    case kInt8:
    case kOid: return SqlCellKind::kInteger;
    case kFloat4:
    case kFloat8: return SqlCellKind::kReal;
    case kNumeric: return SqlCellKind::kDecimal;
    case kDate: return SqlCellKind::kDate;
    case kTimestamp: return SqlCellKind::kTimestamp;
    default: return SqlCellKind::kText;
  }
}

// The name of a type of numbers, as a user declares it, or "" for another.
const char *numberTypeOf(Oid type) {
  switch (type) {
    case kInt2: return "smallint";
    case kInt4: return "integer";
    case kInt8: return "bigint";
    case kOid: return "oid";
    case kFloat4: return "real";
    case kFloat8: return "double precision";
    case kNumeric: return "numeric";
    default: return "";
  }
}

std::string errorOf(PGconn *connection) {
  std::string message = PQerrorMessage(connection);
  while (!message.empty() && (message.back() == '\n' || message.back() == ' ')) message.pop_back();
  return message;
}

class PostgresqlConnection;

class PostgresqlStatement : public SqlStatement {
 public:
  PostgresqlStatement(PostgresqlConnection *owner, std::string name, PGresult *description);
  ~PostgresqlStatement() override;

  bool run(const std::vector<SqlParam> &params, std::string *message) override;
  bool next(std::string *message) override;
  void finish() override;

  int columnCount() const override { return static_cast<int>(names_.size()); }
  const std::string &columnName(int column) const override { return names_[column]; }
  const std::string &numberType(int column) const override { return numberTypes_[column]; }
  SqlCellKind kind(int column) override {
    return PQgetisnull(row_, 0, column) ? SqlCellKind::kNull : kinds_[column];
  }
  std::string_view text(int column) override {
    return std::string_view(PQgetvalue(row_, 0, column), static_cast<std::size_t>(PQgetlength(row_, 0, column)));
  }

 private:
  PostgresqlConnection *owner_;
  std::string name_;
  std::vector<std::string> names_, numberTypes_;
  std::vector<SqlCellKind> kinds_;
  PGresult *row_ = nullptr;
};

class PostgresqlConnection : public SqlConnection {
 public:
  explicit PostgresqlConnection(PGconn *connection) : connection_(connection) {}
  ~PostgresqlConnection() override { PQfinish(connection_); }

  PGconn *handle() const { return connection_; }

  // Reads what a run left unread, so that the connection takes a command.
  void drain(PostgresqlStatement *next) {
    if (running_ != nullptr) {
      while (PGresult *rest = PQgetResult(connection_)) PQclear(rest);
    }
    running_ = next;
  }
  bool running(const PostgresqlStatement *statement) const { return running_ == statement; }

  std::unique_ptr<SqlStatement> prepare(const std::string &sql, std::string *message) override {
    drain(nullptr);
    std::string name = "quorel_" + std::to_string(++statements_);
    PGresult *prepared = PQprepare(connection_, name.c_str(), sql.c_str(), 0, nullptr);
    bool ok = PQresultStatus(prepared) == PGRES_COMMAND_OK;
    if (!ok) *message = errorOf(connection_);
    PQclear(prepared);
    if (!ok) return nullptr;
    PGresult *description = PQdescribePrepared(connection_, name.c_str());
    if (PQresultStatus(description) != PGRES_COMMAND_OK) {
      *message = errorOf(connection_);
      PQclear(description);
      return nullptr;
    }
    return std::make_unique<PostgresqlStatement>(this, name, description);
  }

  bool execute(const std::string &sql, std::string *message) override {
    drain(nullptr);
    PGresult *result = PQexec(connection_, sql.c_str());
    ExecStatusType status = PQresultStatus(result);
    bool ok = status == PGRES_COMMAND_OK || status == PGRES_TUPLES_OK;
    if (!ok) *message = errorOf(connection_);
    PQclear(result);
    return ok;
  }

  bool describe(const std::string &table, SqlTable *out, std::string *message) override {
    auto columns = prepare(
        "SELECT a.attname, coalesce(array_position(i.indkey::int2[], a.attnum), 0) "
        "FROM pg_attribute a LEFT JOIN pg_index i ON i.indrelid = a.attrelid AND i.indisprimary "
        "WHERE a.attrelid = to_regclass(quote_ident($1)) AND a.attnum > 0 AND NOT a.attisdropped "
        "ORDER BY a.attnum",
        message);
    if (columns == nullptr || !columns->run({SqlParam::ofText(table)}, message)) return false;
    return readTableColumns(columns.get(), table, out, message);
  }

  std::string placeholder(int number) const override { return "$" + std::to_string(number); }
  const char *byteCollation() const override { return "\"C\""; }
  bool broken() const override { return PQstatus(connection_) == CONNECTION_BAD; }

 private:
  PGconn *connection_;
  PostgresqlStatement *running_ = nullptr;
  int statements_ = 0;
};

PostgresqlStatement::PostgresqlStatement(PostgresqlConnection *owner, std::string name, PGresult *description)
    : owner_(owner), name_(std::move(name)) {
  for (int i = 0; i < PQnfields(description); ++i) {
    names_.push_back(PQfname(description, i));
    kinds_.push_back(kindOf(PQftype(description, i)));
    numberTypes_.push_back(numberTypeOf(PQftype(description, i)));
  }
  PQclear(description);
}

PostgresqlStatement::~PostgresqlStatement() {
  finish();
  if (owner_->broken()) return;
  std::string ignored;
  owner_->execute("DEALLOCATE " + quoteIdentifier(name_), &ignored);
}

bool PostgresqlStatement::run(const std::vector<SqlParam> &params, std::string *message) {
  finish();
  owner_->drain(this);
  std::vector<std::string> texts(params.size());
  std::vector<const char *> values(params.size());
  for (std::size_t i = 0; i < params.size(); ++i) {
    const SqlParam &param = params[i];
    switch (param.kind) {
      case SqlParam::kNull: values[i] = nullptr; continue;
      case SqlParam::kInteger: texts[i] = std::to_string(param.integer); break;
      case SqlParam::kReal: {
        char buffer[32];
        std::snprintf(buffer, sizeof buffer, "%.17g", param.real);
        texts[i] = buffer;
        break;
      }
      case SqlParam::kText: texts[i] = param.text; break;
    }
    values[i] = texts[i].c_str();
  }
  PGconn *connection = owner_->handle();
  if (!PQsendQueryPrepared(connection, name_.c_str(), static_cast<int>(params.size()), values.data(), nullptr,
                           nullptr, 0) ||
      !PQsetSingleRowMode(connection)) {
    *message = errorOf(connection);
    owner_->drain(nullptr);
    return false;
  }
  return true;
}

bool PostgresqlStatement::next(std::string *message) {
  PQclear(row_);
  row_ = nullptr;
  if (!owner_->running(this)) return false;
  PGresult *result = PQgetResult(owner_->handle());
  ExecStatusType status = PQresultStatus(result);
  if (status == PGRES_SINGLE_TUPLE) {
    row_ = result;
    return true;
  }
  if (status != PGRES_TUPLES_OK && status != PGRES_COMMAND_OK) *message = errorOf(owner_->handle());
  PQclear(result);
  owner_->drain(nullptr);
  return false;
}

void PostgresqlStatement::finish() {
  PQclear(row_);
  row_ = nullptr;
  if (owner_->running(this)) owner_->drain(nullptr);
}

}  // namespace

std::unique_ptr<SqlConnection> openPostgresql(const SqlSource &source, bool writable, std::string *message) {
  // The string may hold keywords of its own; these come after and win only
  // where it names none.
  const char *keywords[] = {"connect_timeout", "dbname", "client_encoding", nullptr};
  const char *values[] = {"10", source.database.c_str(), "UTF8", nullptr};
  PGconn *connection = PQconnectdbParams(keywords, values, 1);
  if (connection == nullptr || PQstatus(connection) != CONNECTION_OK) {
    *message = "cannot connect to " + source.where() + ": " +
               (connection != nullptr ? errorOf(connection) : std::string("out of memory"));
    PQfinish(connection);
    return nullptr;
  }
  // Notices (a table to drop that is not there) are no concern of the host's.
  PQsetNoticeProcessor(connection, [](void *, const char *) {}, nullptr);
  auto result = std::make_unique<PostgresqlConnection>(connection);
  // Records and materials are only read: a query that would change data
  // (WITH gone AS (DELETE ...) SELECT ...) fails, as it does on SQLite.
  if (!result->execute("SET DateStyle TO ISO", message) ||
      (!writable && !result->execute("SET SESSION CHARACTERISTICS AS TRANSACTION READ ONLY", message))) {
    *message = "cannot set up the session on " + source.where() + ": " + *message;
    return nullptr;
  }
  return result;
}

}  // namespace host
}  // namespace quorel
