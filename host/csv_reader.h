// CsvReader: rows of a CSV file. Cells are separated by ';' or ',' (the one
// that occurs first in the header row wins). A '"' at the start of a cell
// opens a quoted cell, which may hold separators and line breaks and in
// which a doubled quote stands for one; anywhere else a quote is a plain
// character (24" is a cell of three). Lines end in "\n", "\r\n" or a lone
// "\r". A UTF-8 byte-order mark at the very start is taken off and noted.
// Bytes pass through unchanged otherwise.
//
// A quoted cell that is not closed within kMaxQuotedLines lines or
// kMaxQuotedBytes bytes, or before the end of the input, gives its row an
// error on the line where it began, and reading goes on with the line after
// that one: one stray quote costs one row, not the rest of the file.
//
// A failure to read the input (an I/O error) ends the rows: failed() is
// then true and failure() gives the system's reason. So does a line longer
// than kMaxLineBytes, which no table's row is: the input is no CSV file
// (or has no line ends), and holding the line would take memory without
// bound.

#ifndef QUOREL_HOST_CSV_READER_H_
#define QUOREL_HOST_CSV_READER_H_

#include <cstdint>
#include <deque>
#include <istream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorel {
namespace host {

// The quote rules of a row, a byte at a time: a quote at the start of a cell
// opens a quoted cell, in which a doubled quote stands for one and a single
// one closes it; anywhere else a quote is a plain byte. CsvReader follows
// them as it splits a line with a quote into cells, and splitCsvFile as it
// looks for where rows begin.
class CsvQuotes {
 public:
  enum Step {
    kByte,       // c belongs to the cell
    kQuote,      // c and the quote after it stand for one quote of the cell
    kSeparator,  // c ends the cell
    kMark,       // c opens or closes a quoted cell
  };

  // What c is; quoteFollows: whether the byte after it (in the row as read
  // so far) is a quote.
  Step step(char c, bool quoteFollows, char separator) {
    if (quoted_) {
      if (c != '"') return kByte;
      if (quoteFollows) return kQuote;
      quoted_ = false;
      return kMark;
    }
    if (c == separator) {
      atStart_ = true;
      return kSeparator;
    }
    bool opens = c == '"' && atStart_;
    quoted_ = opens;
    atStart_ = false;
    return opens ? kMark : kByte;
  }

  // Whether a quoted cell is open: the row goes on over the line end.
  bool quoted() const { return quoted_; }

 private:
  bool quoted_ = false;
  bool atStart_ = true;
};

class CsvReader {
 public:
  static constexpr int kMaxQuotedLines = 1000;
  static constexpr std::size_t kMaxQuotedBytes = 1 << 20;
  static constexpr std::size_t kMaxLineBytes = std::size_t{64} << 20;

  explicit CsvReader(std::istream &in) : in_(in) {}

  // Takes a UTF-8 byte-order mark off the front of the header line, saying
  // whether there was one, and gives the separator that the header picks.
  static char readHeader(std::string_view *line, bool *byteOrderMark);
  // Reads the next row into cells, reusing the strings they hold; false at
  // the end of the input or when it cannot be read. A row with an unclosed
  // quote sets error() and is given as read on its first line.
  bool next(std::vector<std::string> *cells);
  // Goes on reading at the byte offset of the input, which begins a line
  // after linesBefore others; the separator stays the one the header chose.
  // The input must be seekable; false when it cannot be read there.
  bool seek(std::int64_t offset, std::int64_t linesBefore);
  // The next line without its end, valid until the next call, and the
  // offset in the input at which it begins; false at the end or on a
  // failure. For a reader of lines alone, which never calls next (whose
  // quoted cells may read lines again).
  bool nextLine(std::string_view *text, std::int64_t *start);
  // The line on which the last row began, from 1.
  std::int64_t line() const { return rowLine_; }
  // The last line read in full.
  std::int64_t linesRead() const { return linesRead_; }
  const std::string &error() const { return error_; }
  // Whether the last row was a line with nothing on it (but a byte-order
  // mark): a line "" holds one empty cell and is no blank line.
  bool blank() const { return blank_; }
  // Whether the last row is known to hold no NUL byte (false for a row
  // with a quoted cell, which is not looked at for them).
  bool nulFree() const { return nulFree_; }
  bool byteOrderMark() const { return byteOrderMark_; }
  bool failed() const { return failed_; }
  const std::string &failure() const { return failure_; }

 private:
  // The next line without its end into *text, and its number into
  // *number; false at the end or on a failure. The text lies in the buffer
  // or in spill_, valid until the next call.
  bool readLine(std::string_view *text, std::int64_t *number);
  // Where the line from begin ends within the buffer: its first '\n' or
  // '\r', or end.
  const char *lineEnd(const char *begin, const char *end);
  // Reads the next chunk of the input; false at its end or on a failure.
  bool refill();
  // Splits a line that holds a quote into cells, reading on while a quoted
  // cell runs to the lines after it.
  bool splitQuoted(std::string_view line, std::vector<std::string> *cells);

  std::istream &in_;
  std::string buffer_;
  std::int64_t base_ = 0;       // the offset of buffer_[0] in the input
  std::int64_t lineStart_ = 0;  // the offset at which the last line read began
  std::size_t position_ = 0;
  // The first '\n' at or after position_, once looked for in this chunk:
  // a file of lone "\r" ends is not searched to its chunk's end per line.
  std::size_t newline_ = 0;
  bool newlineKnown_ = false;
  // A line that did not lie in one chunk, or was read again.
  std::string spill_;
  // The lines of a row with a quoted cell, joined.
  std::string joined_;
  bool ended_ = false;
  bool failed_ = false;
  std::string failure_;
  // Lines read ahead for a quoted cell that did not close, to be read again.
  std::deque<std::pair<std::int64_t, std::string>> again_;
  std::int64_t linesRead_ = 0;
  char separator_ = '\0';
  bool byteOrderMark_ = false;
  std::int64_t rowLine_ = 0;
  bool blank_ = false;
  bool nulFree_ = false;
  std::string error_;
};

}  // namespace host
}  // namespace quorel

#endif  // QUOREL_HOST_CSV_READER_H_
