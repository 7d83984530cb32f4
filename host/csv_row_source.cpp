#include "quorel/host/csv_row_source.h"

namespace quorel {
namespace host {

CsvRowSource::CsvRowSource(const std::string &file) : file_(file), in_(file, std::ios::binary), reader_(in_) {}

std::unique_ptr<CsvRowSource> CsvRowSource::open(const std::string &file, std::string *message) {
  std::unique_ptr<CsvRowSource> source(new CsvRowSource(file));
  if (!source->in_) {
    *message = "cannot read " + file;
    return nullptr;
  }
  if (!source->reader_.next(&source->columns_)) {
    *message = file + " has no header row";
    return nullptr;
  }
  return source;
}

bool CsvRowSource::next(Row *row) {
  do {
    if (!reader_.next(&row->cells)) return false;
  } while (row->cells.size() == 1 && row->cells[0].empty());  // a blank line
  row->place = {++records_, reader_.line()};
  row->error = reader_.error();
  if (row->error.empty() && row->cells.size() != columns_.size()) {
    row->error = "the row has " + std::to_string(row->cells.size()) + " cells, the header " +
                 std::to_string(columns_.size());
  }
  return true;
}

}  // namespace host
}  // namespace quorel
