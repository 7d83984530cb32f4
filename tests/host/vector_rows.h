// VectorRows: a row source over rows held in memory, for tests of what reads
// row sources. Records count from 1, each on the line after the former, the first below
// a header. rowsRead: what a source gives, in a form tests compare.

#ifndef QUOREL_TESTS_HOST_VECTOR_ROWS_H_
#define QUOREL_TESTS_HOST_VECTOR_ROWS_H_

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "quorel/host/row_source.h"

namespace quorel {
namespace host {

class VectorRows : public RowSource {
 public:
  VectorRows(std::vector<std::string> columns, std::vector<std::vector<std::string>> rows)
      : columns_(std::move(columns)), rows_(std::move(rows)) {}
  const std::vector<std::string> &columns() const override { return columns_; }
  bool next(Row *row) override {
    if (next_ == rows_.size()) return false;
    ++next_;
    row->place = {static_cast<std::int64_t>(next_), static_cast<std::int64_t>(next_) + 1};
    row->cells = rows_[next_ - 1];
    row->error.clear();
    return true;
  }
  const std::string &name() const override { return name_; }

 private:
  std::vector<std::string> columns_;
  std::vector<std::vector<std::string>> rows_;
  std::size_t next_ = 0;
  std::string name_ = "orte";
};

// Each row that source gives from here on as "record@line[cell][cell]error".
inline std::vector<std::string> rowsRead(RowSource *source) {
  std::vector<std::string> seen;
  Row row;
  while (source->next(&row)) {
    std::string cells;
    for (const std::string &cell : row.cells) cells += "[" + cell + "]";
    seen.push_back(std::to_string(row.place.record) + "@" + std::to_string(row.place.line) + cells + row.error);
  }
  return seen;
}

}  // namespace host
}  // namespace quorel

#endif  // QUOREL_TESTS_HOST_VECTOR_ROWS_H_
