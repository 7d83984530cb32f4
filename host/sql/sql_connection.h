// SqlConnection: one connection to a database (SQLite or PostgreSQL) with
// the little the host kit asks of it: statements with parameters, rows whose
// cells come as text, a table's columns and key. Texts cross in UTF-8, the
// databases' encoding; converting them is the caller's business.
//
// A connection and its statements serve one thread at a time. A statement
// belongs to its connection and must die before it.

#ifndef QUOREL_HOST_SQL_SQL_CONNECTION_H_
#define QUOREL_HOST_SQL_SQL_CONNECTION_H_

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "quorel/host/sql/sql_source.h"

namespace quorel {
namespace host {

// A parameter value. Dates travel as ISO texts (YYYY-MM-DD).
struct SqlParam {
  enum Kind { kNull, kInteger, kReal, kText };
  Kind kind = kNull;
  std::int64_t integer = 0;
  double real = 0.0;
  std::string text;

  static SqlParam ofInteger(std::int64_t value);
  static SqlParam ofReal(double value);
  static SqlParam ofText(std::string value);
};

// What a cell of a result holds, as far as the database tells: kReal a
// binary floating-point number, kDecimal one whose text holds every digit
// (PostgreSQL's numeric), which no double may round; kTimestamp a date with
// a time of day and no time zone.
enum class SqlCellKind { kNull, kInteger, kReal, kDecimal, kText, kDate, kTimestamp, kBool, kBinary };

class SqlStatement {
 public:
  virtual ~SqlStatement() = default;

  // Runs the statement with one value per parameter; the rows of a query
  // follow through next(). False with a message.
  virtual bool run(const std::vector<SqlParam> &params, std::string *message) = 0;
  // Moves to the next row: false at the end, or with a message on failure.
  virtual bool next(std::string *message) = 0;
  // Ends the run early, giving back what it holds (locks, pending rows).
  virtual void finish() = 0;

  // The result's columns, known once prepared.
  virtual int columnCount() const = 0;
  virtual const std::string &columnName(int column) const = 0;
  // The column's declared type when it holds numbers alone (INTEGER,
  // NUMERIC, double precision), else empty: a text of digits stored in such
  // a column has lost its leading zeros in the database already. A column
  // that a query computes may declare nothing.
  virtual const std::string &numberType(int column) const = 0;
  // A cell of the current row: its kind and its text as the database writes
  // it (1 and 2.5 and 2024-01-31 and t; empty for NULL).
  virtual SqlCellKind kind(int column) = 0;
  virtual std::string_view text(int column) = 0;
};

// The columns of a table or view in their order, and those of its primary key
// in key order (none for a view or a table without one).
struct SqlTable {
  std::vector<std::string> columns;
  std::vector<std::string> key;
};

class SqlConnection {
 public:
  virtual ~SqlConnection() = default;

  // Opens the database of the source: read-only unless writable (a
  // read-only file, a read-only PostgreSQL session, which a query cannot
  // turn). Null with a message (UTF-8) naming the database.
  static std::unique_ptr<SqlConnection> open(const SqlSource &source, bool writable, std::string *message);

  // A statement whose parameters are written as placeholder() gives them.
  virtual std::unique_ptr<SqlStatement> prepare(const std::string &sql, std::string *message) = 0;
  // Runs statements without rows (BEGIN, COMMIT, CREATE TABLE).
  virtual bool execute(const std::string &sql, std::string *message) = 0;
  // False with a message when there is no such table or view.
  virtual bool describe(const std::string &table, SqlTable *out, std::string *message) = 0;
  // The text of parameter number (from 1) in a statement: ?1 or $1.
  virtual std::string placeholder(int number) const = 0;
  // The collation that orders texts by their bytes, for order comparisons.
  virtual const char *byteCollation() const = 0;
  // Whether the connection is lost; a new one may succeed.
  virtual bool broken() const = 0;
};

// The name quoted as an SQL identifier: "a""b" for a"b.
std::string quoteIdentifier(const std::string &name);

// Fills out from a catalogue query of table that has run: one row per column
// in table order, with the column's name and its place in the primary key
// (0 for none). False with a message when the query failed or found nothing.
bool readTableColumns(SqlStatement *columns, const std::string &table, SqlTable *out, std::string *message);

}  // namespace host
}  // namespace quorel

#endif  // QUOREL_HOST_SQL_SQL_CONNECTION_H_
