// RowSource: a table of rows whose columns are named by hierarchy text, the
// form in which records and materials reach a host: a CSV file, or a
// database table or query.
// Cells are Windows-1252 texts; an empty cell is an empty field.
//
// A source is read once, front to back, by one thread.

#ifndef QUOREL_HOST_ROW_SOURCE_H_
#define QUOREL_HOST_ROW_SOURCE_H_

#include <cstdint>
#include <string>
#include <vector>

namespace quorel {
namespace host {

// Where a record stands in its source. Every front end numbers records
// the same way, and a file's lines beside them.
struct Place {
  std::int64_t record = 0;  // its number among the source's records, from 1
  std::int64_t line = 0;    // the line of a file on which it began; 0 without lines (a database)
};

// One row as read.
struct Row {
  Place place;
  std::vector<std::string> cells;
  // Why the row could not be read in full (Windows-1252), or empty.
  std::string error;
  // Whether the source has made sure that no cell holds a NUL byte, as it
  // went over the bytes anyway; false leaves the check to the reader of
  // the row.
  bool nulFree = false;
};

class RowSource {
 public:
  virtual ~RowSource() = default;

  // The column names; fixed once the source is open.
  virtual const std::vector<std::string> &columns() const = 0;
  // Reads the next row into *row; false at the end. A row with fewer or
  // more cells than columns carries an error.
  virtual bool next(Row *row) = 0;
  // The source's name in messages (a file name).
  virtual const std::string &name() const = 0;
  // Whether the rows ended on a failure of the source (a lost connection):
  // the last row that next() gave carries it instead of cells.
  virtual bool failed() const { return false; }
};

}  // namespace host
}  // namespace quorel

#endif  // QUOREL_HOST_ROW_SOURCE_H_
