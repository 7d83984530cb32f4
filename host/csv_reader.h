// CsvReader: rows of a CSV file. Cells are separated by ';' or ',' (the one
// that occurs first in the header row wins), may be quoted with '"' (a
// doubled quote inside stands for one), and may hold separators and line
// breaks when quoted. Bytes pass through unchanged (Windows-1252 in, the
// same out).

#ifndef QUOREL_HOST_CSV_READER_H_
#define QUOREL_HOST_CSV_READER_H_

#include <istream>
#include <string>
#include <vector>

namespace quorel {
namespace host {

class CsvReader {
 public:
  explicit CsvReader(std::istream &in) : in_(in) {}

  // Reads the next row into cells; false at the end of the input. A row
  // with an unclosed quote sets error() and is given as read so far.
  bool next(std::vector<std::string> *cells);
  // The line on which the last row began, from 1.
  int line() const { return rowLine_; }
  const std::string &error() const { return error_; }

 private:
  std::istream &in_;
  char separator_ = '\0';
  int nextLine_ = 1;
  int rowLine_ = 0;
  std::string error_;
};

}  // namespace host
}  // namespace quorel

#endif  // QUOREL_HOST_CSV_READER_H_
