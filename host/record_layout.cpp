#include "quorel/host/record_layout.h"

#include <charconv>
#include <map>
#include <set>
#include <utility>

#include "quorel/host/column_check.h"

namespace quorel {
namespace host {

RecordLayout::RecordLayout(const std::vector<std::string> &columns) {
  columns_.reserve(columns.size());
  for (const std::string &name : columns) columns_.push_back({name, arrayOf(name)});
}

std::vector<std::string> RecordLayout::checkColumns(Plausi *plausi) const {
  ColumnCheck check(plausi);
  std::set<std::string> seen;
  for (const Column &column : columns_) seen.insert(column.name);
  std::set<std::string> checked;
  std::vector<std::string> messages;
  for (const Column &column : columns_) {
    if (!checked.insert(column.name).second) continue;
    std::vector<std::string> sizes;
    std::string message = check.check(column.name, &sizes);
    for (std::size_t i = 0; i < sizes.size() && message.empty(); ++i) {
      if (seen.count(sizes[i]) == 0) {
        message = "column " + column.name + " is never read: no column " + sizes[i] + " gives the size of " +
                  arrayOf(sizes[i]);
      }
    }
    if (!message.empty()) messages.push_back(std::move(message));
  }
  return messages;
}

std::vector<std::string> RecordLayout::repeatedColumns() const {
  std::map<std::string, std::vector<std::size_t>> places;
  for (std::size_t i = 0; i < columns_.size(); ++i) places[columns_[i].name].push_back(i + 1);
  std::vector<std::string> messages;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    const std::vector<std::size_t> &at = places[columns_[i].name];
    if (at.size() < 2 || at[0] != i + 1) continue;
    std::string list;
    for (std::size_t place : at) list += (list.empty() ? "" : ", ") + std::to_string(place);
    messages.push_back("column " + columns_[i].name + " appears " + std::to_string(at.size()) +
                       " times in the header (columns " + list + "); a record keeps one cell per column");
  }
  return messages;
}

std::string RecordLayout::arrayOf(const std::string &column) {
  if (column.empty() || column.back() != '#') return std::string();
  return column.substr(0, column.size() - 1);
}

bool RecordLayout::setSize(const std::string &array, std::int64_t size, const std::string &text,
                           SimpleDataRecord *record, std::string *error) {
  if (size < 0 || size > kMaxArraySize) {
    *error = "the size " + array + "# is not a whole number from 0 to " + std::to_string(kMaxArraySize) + ": " + text;
    return false;
  }
  record->setSize(array.c_str(), static_cast<std::int32_t>(size));
  return true;
}

bool RecordLayout::fill(const Row &row, SimpleDataRecord *record, std::string *error) const {
  if (!row.error.empty()) {
    *error = row.error;
    return false;
  }
  return fill(row.cells, record, error);
}

bool RecordLayout::fill(const std::vector<std::string> &cells, SimpleDataRecord *record,
                        std::string *error) const {
  for (std::size_t i = 0; i < columns_.size() && i < cells.size(); ++i) {
    const Column &column = columns_[i];
    const std::string &cell = cells[i];
    if (cell.empty()) continue;
    if (cell.find('\0') != std::string::npos) {
      *error = "column " + column.name + ": the cell holds a NUL byte";
      return false;
    }
    if (column.array.empty()) {
      record->setValue(column.name.c_str(), cell.c_str());
      continue;
    }
    std::int64_t size = -1;
    auto [end, fault] = std::from_chars(cell.data(), cell.data() + cell.size(), size);
    if (fault != std::errc() || end != cell.data() + cell.size()) size = -1;
    if (!setSize(column.array, size, cell, record, error)) return false;
  }
  return true;
}

}  // namespace host
}  // namespace quorel
