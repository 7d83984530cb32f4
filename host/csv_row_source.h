// CsvRowSource: the rows of a CSV file under its header row, which names the
// columns. Blank lines are skipped; a line "" is a row of one empty cell.
// The file is Windows-1252 or UTF-8 as the host says; a file that begins
// with a UTF-8 byte-order mark is UTF-8 whatever it says. UTF-8 cells are
// turned into the library's Windows-1252: a cell that is no UTF-8, or holds
// a character Windows-1252 lacks, gives its row an error naming the column.
// A failure to read the file ends the rows with one more that carries it
// (see RowSource::failed). Owns the file it opened.

#ifndef QUOREL_HOST_CSV_ROW_SOURCE_H_
#define QUOREL_HOST_CSV_ROW_SOURCE_H_

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "quorel/host/csv_parts.h"
#include "quorel/host/csv_reader.h"
#include "quorel/host/encoding.h"
#include "quorel/host/encoding_doubt.h"
#include "quorel/host/replay_buffer.h"
#include "quorel/host/row_source.h"

namespace quorel {
namespace host {

// How far open looks beyond a start of ASCII alone for a byte beyond ASCII.
constexpr std::size_t kEncodingLookAhead = std::size_t{256} << 20;

class CsvRowSource : public RowSource {
 public:
  // Opens the file and reads its header; null with a message (UTF-8) when
  // the file cannot be opened or read (with the system's reason and the
  // full path looked at) or has no header row.
  //
  // A regular file whose start is ASCII alone cannot tell its encoding by
  // its start, so the kEncodingLookAhead bytes after it are looked at
  // before any row is handed out: when they hold one beyond ASCII, the
  // first row that holds one is found on a reader of its own and decides
  // encodingDoubt, as lateEncodingDoubt would once the rows got there. A
  // front end thus names the mistake before any record; the cost is a
  // scan of those bytes, and a read of the rows up to that one when they
  // hold such a byte. The bound keeps a large file of ASCII alone from
  // being read twice; the rows beyond it are watched as they are read.
  static std::unique_ptr<CsvRowSource> open(const std::string &file, std::string *message,
                                            FileEncoding encoding = FileEncoding::kWindows1252);
  // The same for the rows of one part of the file (see splitCsvFile), which
  // keep their numbers and lines in the whole file; also null with a
  // message when the file's size is no longer the one it was cut at. Only
  // the file's start is looked at before the rows: the one who cut the file
  // opens it whole to look at the rest once, rather than each part's reader.
  static std::unique_ptr<CsvRowSource> open(const std::string &file, const CsvPart &part, std::string *message,
                                            FileEncoding encoding = FileEncoding::kWindows1252);

  const std::vector<std::string> &columns() const override { return columns_; }
  bool next(Row *row) override;
  const std::string &name() const override { return file_; }
  bool failed() const override { return reader_.failed(); }
  // The encoding the file is read in.
  FileEncoding encoding() const { return encoding_; }
  // What the start of the file says against that encoding (see
  // doubtEncoding), or the first row beyond an ASCII start of a regular
  // file (see open); no doubt for a file with a byte-order mark. A file
  // that is no regular file (a pipe), which cannot be read twice, has its
  // first kEncodingSample bytes read ahead for it, so that its first row
  // waits for them or for its end.
  const EncodingDoubt &encodingDoubt() const { return doubt_; }
  // What the rows read so far say against Windows-1252 where encodingDoubt
  // could not: in a pipe or a part of a file whose first kEncodingSample
  // bytes are ASCII alone, or a file whose bytes looked at ahead were
  // too, the first row that holds a byte beyond ASCII
  // decides. Its records and those after it were read as it says.
  const EncodingDoubt &lateEncodingDoubt() const { return lateDoubt_; }

 private:
  explicit CsvRowSource(const std::string &file);
  // Opens the file and looks at its start alone.
  static std::unique_ptr<CsvRowSource> openAtStart(const std::string &file, std::string *message,
                                                   FileEncoding encoding);
  // Finds the first row beyond an ASCII start ahead of the rows (see open).
  void lookAhead();
  // Turns the cells from UTF-8; false with a message naming the column of
  // the first that fails.
  bool decode(std::vector<std::string> *cells, std::string *error) const;
  // Watches the row for the first byte beyond ASCII (see lateEncodingDoubt).
  void watchEncoding(const Row &row);

  std::string file_;
  std::ifstream in_;
  std::unique_ptr<ReplayBuffer> replay_;  // what in_ reads through, for a pipe
  CsvReader reader_;
  FileEncoding encoding_ = FileEncoding::kWindows1252;
  EncodingDoubt doubt_;
  bool watching_ = false;
  bool regular_ = false;  // a regular file, which can be read twice
  EncodingDoubt lateDoubt_;
  std::vector<std::string> columns_;
  std::int64_t records_ = 0;
  std::int64_t last_ = -1;  // the number of the last record to read; -1: to the end
  bool ended_ = false;
};

// What the start of a CSV file says against the encoding it is read in,
// followed by how to choose the one that fits: howToChoose in the front
// end's words, in which ENCODING stands for the encoding's name
// ("--encoding ENCODING"). Empty when nothing does, or for a source that is
// no CSV file.
std::string encodingAdvice(const RowSource &source, const std::string &howToChoose);
// The same for the rows read so far (see CsvRowSource::lateEncodingDoubt),
// which also says that the rows from that row on were read as it says.
std::string lateEncodingAdvice(const RowSource &source, const std::string &howToChoose);

}  // namespace host
}  // namespace quorel

#endif  // QUOREL_HOST_CSV_ROW_SOURCE_H_
