// CsvPart: a run of whole rows of a CSV file that a host may check apart
// from the rest (on another thread, process or machine) while its rows keep
// the numbers and lines they have in the whole file. splitCsvFile cuts a
// file into such parts, at line ends, by one pass over its bytes; a
// CsvRowSource opened on a part reads its rows alone (see
// CsvRowSource::open).
//
// A quoted cell may hold line ends, so the cut follows the quotes as
// CsvReader reads them, from the start of the file: a part begins where a
// row begins.

#ifndef QUOREL_HOST_CSV_PARTS_H_
#define QUOREL_HOST_CSV_PARTS_H_

#include <cstdint>
#include <string>
#include <vector>

namespace quorel {
namespace host {

struct CsvPart {
  std::int64_t byte = 0;   // where its first line begins in the file; 0: the whole file
  std::int64_t lines = 0;  // the lines before that one, the header's included
  std::int64_t rows = 0;   // the rows before it (blank lines are none)
  std::int64_t count = -1;  // its rows; -1: to the end of the file
  // The file's size when it was cut, by which a reader of the part tells
  // that the file has changed since; -1 for the whole file, which needs no
  // such check.
  std::int64_t fileSize = -1;

  bool whole() const { return byte == 0 && count < 0; }
};

// Cuts the file into parts that begin at the first row to start at or
// after each multiple of blockBytes; false with a message (UTF-8, naming
// the file and the system's reason) when it cannot be read. A file no
// larger than blockBytes, and one that is no regular file (a pipe cannot be
// read twice), give one whole part. Rows, lines and quotes are those of
// CsvReader, whose limits on a quoted cell included.
bool splitCsvFile(const std::string &file, std::int64_t blockBytes, std::vector<CsvPart> *parts,
                  std::string *message);

}  // namespace host
}  // namespace quorel

#endif  // QUOREL_HOST_CSV_PARTS_H_
