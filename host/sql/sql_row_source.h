// SqlRowSource: the rows of a database table, view or query as a RowSource.
// Columns are named by hierarchy text, as in a CSV file's header
// (Antrag.Kinder[0].Vorname, Antrag.Kinder#); cells take the form a CSV file
// would carry (sql_cells.h). A table's rows come in the order that the
// source names, else by its primary key (SQLite: by rowid); a query's rows in
// the order that the source names, else in its own order. Positions count the rows from 1 (after the offset).
//
// A cell that cannot be a field gives its row an error naming the table and
// column. A failure of the database (a lost connection) gives one more row
// that carries the failure, and then the rows end. Owns its connection.

#ifndef QUOREL_HOST_SQL_SQL_ROW_SOURCE_H_
#define QUOREL_HOST_SQL_SQL_ROW_SOURCE_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <quorel/quorel.h>

#include "quorel/host/row_source.h"
#include "quorel/host/sql/sql_source.h"

namespace quorel {
namespace host {

class SqlConnection;
class SqlStatement;

struct SqlReadOptions {
  // A slice of the rows: skip offset rows, then read at most limit (all
  // when negative). A slice is read only in a stable order: that of the
  // source (order=), or a table's primary key (SQLite: its rowid); a table
  // without one, or a query without order=, is refused.
  std::int64_t offset = 0;
  std::int64_t limit = -1;
  // Cells stay UTF-8 (for a front end that speaks it) instead of turning
  // Windows-1252; a character outside Windows-1252 is then no error here.
  bool utf8 = false;
};

class SqlRowSource : public RowSource {
 public:
  ~SqlRowSource() override;

  // Opens the database and starts the query: null with a message (UTF-8)
  // for a bad database, table, column or query.
  static std::unique_ptr<SqlRowSource> open(const SqlSource &source, std::string *message,
                                            const SqlReadOptions &options = SqlReadOptions());
  // The number of rows of the source in *count; false with a message.
  static bool count(const SqlSource &source, std::int64_t *count, std::string *message);

  const std::vector<std::string> &columns() const override { return columns_; }
  // For each column, its declared type when it holds numbers alone, else
  // empty (SqlStatement::numberType).
  const std::vector<std::string> &numberTypes() const { return numberTypes_; }
  // From now on a DATE cell comes in the date mask of its column's field in
  // the module (see ColumnCheck::dateMask), as a CSV file for the module
  // would carry it, rather than as TT.MM.JJJJ. Uses the Plausi now alone.
  void giveDatesAsFieldsHoldThem(Plausi *plausi);
  bool next(Row *row) override;
  const std::string &name() const override { return name_; }
  bool failed() const override { return failed_; }

 private:
  SqlRowSource() = default;

  std::unique_ptr<SqlConnection> connection_;
  std::unique_ptr<SqlStatement> statement_;
  std::vector<std::string> columns_, numberTypes_;
  std::vector<std::string> dateMasks_;  // per column; empty: TT.MM.JJJJ
  std::string name_, table_;
  bool utf8_ = false;
  bool ended_ = false;
  bool failed_ = false;
  std::int64_t read_ = 0;
};

// One warning for each column of the rows that holds numbers alone where the
// module's rules read a text (ColumnCheck::readsText): a postcode stored as
// INTEGER has lost its leading zeros before any record is read, and every
// lookup of it misses. In the columns' encoding.
std::vector<std::string> numberColumnsForTexts(const SqlRowSource &rows, Plausi *plausi);

}  // namespace host
}  // namespace quorel

#endif  // QUOREL_HOST_SQL_SQL_ROW_SOURCE_H_
