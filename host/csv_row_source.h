// CsvRowSource: the rows of a CSV file under its header row, which names the
// columns. Blank lines are skipped. Owns the file it opened.

#ifndef QUOREL_HOST_CSV_ROW_SOURCE_H_
#define QUOREL_HOST_CSV_ROW_SOURCE_H_

#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "quorel/host/csv_reader.h"
#include "quorel/host/row_source.h"

namespace quorel {
namespace host {

class CsvRowSource : public RowSource {
 public:
  // Opens the file and reads its header; null with a message (UTF-8) when
  // the file cannot be read or has no header row.
  static std::unique_ptr<CsvRowSource> open(const std::string &file, std::string *message);

  const std::vector<std::string> &columns() const override { return columns_; }
  bool next(Row *row) override;
  const std::string &name() const override { return file_; }

 private:
  explicit CsvRowSource(const std::string &file);

  std::string file_;
  std::ifstream in_;
  CsvReader reader_;
  std::vector<std::string> columns_;
  std::int64_t records_ = 0;
};

}  // namespace host
}  // namespace quorel

#endif  // QUOREL_HOST_CSV_ROW_SOURCE_H_
