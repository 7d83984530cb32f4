// SqlConnection over SQLite. Types are the values' own (SQLite's storage
// classes); a text in a column declared DATE counts as a date, one in a
// column declared DATETIME or TIMESTAMP as a date with a time.

#include <sqlite3.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "quorel/host/file_error.h"
#include "quorel/host/sql/sql_connection.h"

namespace quorel {
namespace host {

namespace {

std::string upperCase(const char *declared) {
  std::string upper;
  for (const char *c = declared; *c != '\0'; ++c) upper += static_cast<char>(*c >= 'a' && *c <= 'z' ? *c - 32 : *c);
  return upper;
}

// What a text in a column declared so holds: a date (DATE), a date with a
// time (DATETIME, TIMESTAMP), or a text.
SqlCellKind declaredKind(const char *declared) {
  if (declared == nullptr) return SqlCellKind::kText;
  std::string upper = upperCase(declared);
  bool time = upper.find("TIME") != std::string::npos;
  if (upper.find("DATE") != std::string::npos) return time ? SqlCellKind::kTimestamp : SqlCellKind::kDate;
  return upper.find("TIMESTAMP") != std::string::npos ? SqlCellKind::kTimestamp : SqlCellKind::kText;
}

// Whether a column declared so turns a text of digits into a number as it
// stores it: SQLite's integer and real affinities, and the numeric one of
// the types that name numbers (not DATE or BOOLEAN, which share it).
bool declaredNumber(const char *declared) {
  if (declared == nullptr) return false;
  std::string upper = upperCase(declared);
  auto has = [&upper](const char *part) { return upper.find(part) != std::string::npos; };
  if (has("INT")) return true;
  if (has("CHAR") || has("CLOB") || has("TEXT") || has("BLOB")) return false;
  return has("REAL") || has("FLOA") || has("DOUB") || has("NUM") || has("DEC");
}

class SqliteStatement : public SqlStatement {
 public:
  SqliteStatement(sqlite3 *db, sqlite3_stmt *statement) : db_(db), statement_(statement) {
    for (int i = 0; i < sqlite3_column_count(statement); ++i) {
      const char *name = sqlite3_column_name(statement, i);
      names_.push_back(name != nullptr ? name : "");
      const char *declared = sqlite3_column_decltype(statement, i);
      textKinds_.push_back(declaredKind(declared));
      numberTypes_.push_back(declaredNumber(declared) ? declared : "");
    }
  }
  ~SqliteStatement() override { sqlite3_finalize(statement_); }

  bool run(const std::vector<SqlParam> &params, std::string *message) override {
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
    for (std::size_t i = 0; i < params.size(); ++i) {
      const SqlParam &param = params[i];
      int at = static_cast<int>(i) + 1, status = SQLITE_OK;
      switch (param.kind) {
        case SqlParam::kNull: status = sqlite3_bind_null(statement_, at); break;
        case SqlParam::kInteger: status = sqlite3_bind_int64(statement_, at, param.integer); break;
        case SqlParam::kReal: status = sqlite3_bind_double(statement_, at, param.real); break;
        case SqlParam::kText:
          status = sqlite3_bind_text(statement_, at, param.text.data(), static_cast<int>(param.text.size()),
                                     SQLITE_TRANSIENT);
          break;
      }
      if (status != SQLITE_OK) {
        *message = sqlite3_errmsg(db_);
        return false;
      }
    }
    return true;
  }

  bool next(std::string *message) override {
    int status = sqlite3_step(statement_);
    if (status == SQLITE_ROW) return true;
    if (status != SQLITE_DONE) *message = sqlite3_errmsg(db_);
    sqlite3_reset(statement_);
    return false;
  }

  void finish() override { sqlite3_reset(statement_); }

  int columnCount() const override { return static_cast<int>(names_.size()); }
  const std::string &columnName(int column) const override { return names_[column]; }
  const std::string &numberType(int column) const override { return numberTypes_[column]; }

  SqlCellKind kind(int column) override {
    switch (sqlite3_column_type(statement_, column)) {
      case SQLITE_NULL: return SqlCellKind::kNull;
      case SQLITE_INTEGER: return SqlCellKind::kInteger;
      case SQLITE_FLOAT: return SqlCellKind::kReal;
      case SQLITE_BLOB: return SqlCellKind::kBinary;
      default: return textKinds_[column];
    }
  }

  std::string_view text(int column) override {
    const unsigned char *text = sqlite3_column_text(statement_, column);
    int size = sqlite3_column_bytes(statement_, column);
    return text != nullptr ? std::string_view(reinterpret_cast<const char *>(text), static_cast<std::size_t>(size))
                           : std::string_view();
  }

 private:
  sqlite3 *db_;
  sqlite3_stmt *statement_;
  std::vector<std::string> names_, numberTypes_;
  std::vector<SqlCellKind> textKinds_;  // of a text in each column
};

class SqliteConnection : public SqlConnection {
 public:
  explicit SqliteConnection(sqlite3 *db) : db_(db) {}
  ~SqliteConnection() override { sqlite3_close_v2(db_); }

  std::unique_ptr<SqlStatement> prepare(const std::string &sql, std::string *message) override {
    sqlite3_stmt *statement = nullptr;
    if (sqlite3_prepare_v3(db_, sql.c_str(), static_cast<int>(sql.size()), SQLITE_PREPARE_PERSISTENT, &statement,
                           nullptr) != SQLITE_OK) {
      *message = sqlite3_errmsg(db_);
      sqlite3_finalize(statement);
      return nullptr;
    }
    if (statement == nullptr) {
      *message = "empty statement";
      return nullptr;
    }
    return std::make_unique<SqliteStatement>(db_, statement);
  }

  bool execute(const std::string &sql, std::string *message) override {
    char *error = nullptr;
    if (sqlite3_exec(db_, sql.c_str(), nullptr, nullptr, &error) == SQLITE_OK) return true;
    *message = error != nullptr ? error : sqlite3_errmsg(db_);
    sqlite3_free(error);
    return false;
  }

  bool describe(const std::string &table, SqlTable *out, std::string *message) override {
    auto info = prepare("SELECT name, pk FROM pragma_table_info(?1) ORDER BY cid", message);
    if (info == nullptr || !info->run({SqlParam::ofText(table)}, message)) return false;
    if (!readTableColumns(info.get(), table, out, message)) return false;
    // A table without a declared key keeps its rows in rowid order; a table
    // WITHOUT ROWID has none, and a view's rowid is NULL, whatever its rows.
    if (out->key.empty()) {
      std::string ignored;
      std::string failure;
      auto kind = prepare("SELECT 1 FROM sqlite_master WHERE type = 'table' AND name = ?1", message);
      if (kind == nullptr || !kind->run({SqlParam::ofText(table)}, message)) return false;
      const bool isTable = kind->next(&failure);
      kind->finish();
      if (!failure.empty()) {
        *message = failure;
        return false;
      }
      if (isTable && prepare("SELECT rowid FROM " + quoteIdentifier(table), &ignored) != nullptr) out->key.push_back("rowid");
    }
    return true;
  }

  std::string placeholder(int number) const override { return "?" + std::to_string(number); }
  const char *byteCollation() const override { return "BINARY"; }
  bool broken() const override { return false; }

 private:
  sqlite3 *db_;
};

}  // namespace

std::unique_ptr<SqlConnection> openSqlite(const SqlSource &source, bool writable, std::string *message) {
  sqlite3 *db = nullptr;
  int flags = (writable ? SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE : SQLITE_OPEN_READONLY) | SQLITE_OPEN_NOMUTEX;
  if (sqlite3_open_v2(source.database.c_str(), &db, flags, nullptr) != SQLITE_OK) {
    // SQLite says only "unable to open database file": the system says why.
    struct stat file {};
    std::string reason = stat(source.database.c_str(), &file) != 0 ? std::strerror(errno)
                         : db != nullptr                          ? sqlite3_errmsg(db)
                                                                  : "out of memory";
    *message = "cannot open " + source.where() + " (" + absolutePath(source.database) + "): " + reason;
    sqlite3_close_v2(db);
    return nullptr;
  }
  // Another process (or this one's output) may hold the file a moment.
  sqlite3_busy_timeout(db, 10000);
  auto connection = std::make_unique<SqliteConnection>(db);
  // Opening is lazy: a file that is no database fails at the first read.
  if (!connection->execute("SELECT count(*) FROM sqlite_schema", message)) {
    *message = "cannot open " + source.where() + ": " + *message;
    return nullptr;
  }
  return connection;
}

}  // namespace host
}  // namespace quorel
