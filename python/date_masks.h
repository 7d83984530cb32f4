// DateMasks: the date mask of the field that each column names
// (host::ColumnCheck::dateMask), looked up once per column name, so that a
// Python date becomes the text that its field's mask reads, as a CSV file
// for the module would carry it: a field masked JJJJ-MM-TT reads 31.01.2024
// as no date. The GIL guards it.

#ifndef QUOREL_PYTHON_DATE_MASKS_H_
#define QUOREL_PYTHON_DATE_MASKS_H_

#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include <quorel/quorel.h>

#include "cells.h"
#include "quorel/host/checker.h"
#include "quorel/host/column_check.h"
#include "quorel/host/material_check.h"

namespace quorel {
namespace python {

class DateMasks {
 public:
  // checker() gives a checker of the module, which is held while a lookup
  // uses its Plausi; material names the material whose fields the columns
  // name, or is empty for the records'.
  DateMasks(std::function<std::shared_ptr<host::Checker>()> checker, std::string material = std::string())
      : checker_(std::move(checker)), material_(std::move(material)) {}

  DateMasks(const DateMasks &) = delete;
  DateMasks &operator=(const DateMasks &) = delete;

  // The mask of the column's date field, or empty for a column of no date
  // field.
  const std::string &of(const std::string &column) {
    auto found = masks_.find(column);
    if (found != masks_.end()) return found->second;
    std::shared_ptr<host::Checker> checker = checker_();
    host::ColumnCheck fields(checker->plausi(), host::tableTopic(checker->plausi(), material_));
    return masks_.emplace(column, fields.dateMask(column)).first->second;
  }

  // Sets the dateMask of each column.
  void mark(std::vector<Column> *columns) {
    for (Column &column : *columns) column.dateMask = of(column.name);
  }

 private:
  std::function<std::shared_ptr<host::Checker>()> checker_;
  std::string material_;
  std::unordered_map<std::string, std::string> masks_;
};

}  // namespace python
}  // namespace quorel

#endif  // QUOREL_PYTHON_DATE_MASKS_H_
