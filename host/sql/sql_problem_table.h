// SqlProblemTable: problems written into a table of a database, which is made
// when it is missing, with one row per problem and one per record that could
// not be checked. Its columns are those of kProblemColumns (problem.h), after
// two that tell the runs apart:
//
//   run       TEXT     the run's id, made when the table is opened
//   run_time  TEXT     when the run began, ISO 8601 in UTC
//   record, line       BIGINT, the record's Place
//   id, type, weight, text, details, field
//            the problem's, as in the JSON Lines output; NULL on a failure
//   field_indices, accessed, sections   JSON arrays
//   failure  TEXT     why the record could not be checked; NULL otherwise
//
// Rows are gathered per batch (by any thread, each into its own Rows) and
// written in one transaction: a batch is in the table whole or not at all.
// Replacing, the first transaction also deletes the rows already in the
// table. Texts are written UTF-8. Owns its connection; one thread at a time.

#ifndef QUOREL_HOST_SQL_SQL_PROBLEM_TABLE_H_
#define QUOREL_HOST_SQL_SQL_PROBLEM_TABLE_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "quorel/host/problem.h"
#include "quorel/host/row_source.h"
#include "quorel/host/sql/sql_connection.h"

namespace quorel {
namespace host {

class SqlProblemTable {
 public:
  using Rows = std::vector<std::vector<SqlParam>>;

  ~SqlProblemTable();

  // Opens the database for writing and makes the source's table when it is
  // missing; null with a message (UTF-8) when that fails or the table lacks
  // a column of the layout above. replace: the rows of earlier runs go.
  static std::unique_ptr<SqlProblemTable> open(const SqlSource &source, bool replace, std::string *message);

  // The rows of a record's problems; the failure's message is Windows-1252.
  void appendRecord(const Place &place, const std::vector<Problem> &problems, Rows *rows) const;
  void appendFailure(const Place &place, const std::string &message, Rows *rows) const;

  // Writes the rows of the pieces, in order, in one transaction; false with
  // a message when it failed and was rolled back.
  bool write(const std::vector<const Rows *> &pieces, std::string *message);

  // Whether the records of source can be read while problems are written
  // here. Not when both are one SQLite file outside WAL mode: the open read
  // would hold every write back. False with a message saying what to do.
  bool readableAlongside(const SqlSource &source, std::string *message);

  // The run's id, as its rows carry it, and where they go, for messages.
  const std::string &run() const { return run_; }
  const std::string &where() const { return where_; }

 private:
  SqlProblemTable() = default;

  std::unique_ptr<SqlConnection> connection_;
  std::unique_ptr<SqlStatement> insert_;
  SqlSource source_;
  std::string where_;
  std::string table_;
  std::string run_, runTime_;
  bool replace_ = false;
};

}  // namespace host
}  // namespace quorel

#endif  // QUOREL_HOST_SQL_SQL_PROBLEM_TABLE_H_
