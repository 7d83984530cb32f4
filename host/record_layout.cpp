#include "quorel/host/record_layout.h"

#include <charconv>
#include <map>
#include <set>
#include <utility>

#include "quorel/host/byte_words.h"
#include "quorel/host/column_check.h"

namespace quorel {
namespace host {

RecordLayout::RecordLayout(const std::vector<std::string> &columns) {
  columns_.reserve(columns.size());
  std::set<std::int32_t> keys;
  for (const std::string &name : columns) {
    std::string array = arrayOf(name);
    std::int32_t key = array.empty() ? SimpleDataRecord::keyOf(name.c_str()) : SimpleDataRecord::keyOfSize(array.c_str());
    columns_.push_back({name, std::move(array), key, keys.insert(key).second});
  }
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

std::size_t RecordLayout::distinctColumns() const {
  std::set<std::string> names;
  for (const Column &column : columns_) names.insert(column.name);
  return names.size();
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

bool RecordLayout::sizeWithin(const std::string &array, std::int64_t size, const std::string &text,
                               std::string *error) {
  if (size >= 0 && size <= kMaxArraySize) return true;
  *error = "the size " + array + "# is not a whole number from 0 to " + std::to_string(kMaxArraySize) + ": " + text;
  return false;
}

bool RecordLayout::fill(const Row &row, SimpleDataRecord *record, std::string *error) const {
  if (!row.error.empty()) {
    *error = row.error;
    return false;
  }
  return fill(row.cells, row.nulFree, record, error);
}

bool RecordLayout::fill(const std::vector<std::string> &cells, SimpleDataRecord *record,
                        std::string *error) const {
  return fill(cells, false, record, error);
}

bool RecordLayout::fill(const std::vector<std::string> &cells, bool nulFree, SimpleDataRecord *record,
                        std::string *error) const {
  static const std::string kMissing;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    const Column &column = columns_[i];
    // A row short of cells empties the fields of the columns it lacks.
    const std::string &cell = i < cells.size() ? cells[i] : kMissing;
    if (cell.empty()) {
      if (column.firstOfKey) record->setValueAt(column.key, static_cast<const char *>(nullptr));
      continue;
    }
    if (!nulFree && words::holds(cell, '\0')) {
      *error = "column " + column.name + ": the cell holds a NUL byte";
      return false;
    }
    if (column.array.empty()) {
      record->setValueAt(column.key, std::string_view(cell));
      continue;
    }
    std::int64_t size = -1;
    auto [end, fault] = std::from_chars(cell.data(), cell.data() + cell.size(), size);
    if (fault != std::errc() || end != cell.data() + cell.size()) size = -1;
    if (!sizeWithin(column.array, size, cell, error)) return false;
    record->setValueAt(column.key, size);
  }
  return true;
}

}  // namespace host
}  // namespace quorel
