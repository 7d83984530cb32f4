#include "quorel/host/csv_material_access.h"

#include <charconv>
#include <fstream>

#include "quorel/host/csv_reader.h"
#include "quorel/host/problem_printer.h"

namespace quorel {
namespace host {

bool fillRecord(const std::vector<std::string> &header, const std::vector<std::string> &row,
                quorel::SimpleDataRecord *record, std::string *error) {
  for (std::size_t i = 0; i < header.size() && i < row.size(); ++i) {
    const std::string &name = header[i];
    const std::string &cell = row[i];
    if (cell.empty()) continue;
    if (name.empty() || name.back() != '#') {
      record->setValue(name.c_str(), cell.c_str());
      continue;
    }
    std::string array = name.substr(0, name.size() - 1);
    std::int32_t size = -1;
    auto [end, fault] = std::from_chars(cell.data(), cell.data() + cell.size(), size);
    if (fault != std::errc() || end != cell.data() + cell.size() || size < 0 || size > kMaxArraySize) {
      *error = "Arraygr\xF6\xDF" "e von " + array + " ist keine ganze Zahl von 0 bis " +
               std::to_string(kMaxArraySize) + ": " + cell;
      return false;
    }
    record->setSize(array.c_str(), size);
  }
  return true;
}

namespace {

bool holds(quorel::Value *actual, quorel::OperatorType op, quorel::Value *expected) {
  if (actual == nullptr) return op == quorel::OPERATOR_NOT_EQUAL;
  switch (op) {
    case quorel::OPERATOR_EQUAL: return actual->eq(expected);
    case quorel::OPERATOR_NOT_EQUAL: return actual->ne(expected);
    case quorel::OPERATOR_GREATER: return actual->gt(expected);
    case quorel::OPERATOR_GREATER_EQUAL: return actual->ge(expected);
    case quorel::OPERATOR_LESS: return actual->lt(expected);
    case quorel::OPERATOR_LESS_EQUAL: return actual->le(expected);
    default: return false;
  }
}

}  // namespace

bool fulfils(quorel::SimpleDataRecord *row, quorel::RecordFilter *filter) {
  for (std::int32_t i = 0; i < filter->getNumOfConditions(); ++i) {
    quorel::FilterCondition *condition = filter->getCondition(i);
    std::string name = condition->getField()->getHierarchyText();
    if (!holds(row->getValue(name.c_str()), condition->getOperatorType(), condition->getComparativeValue())) {
      return false;
    }
  }
  return true;
}

bool CsvMaterialAccess::load(const std::string &material, const std::string &file, std::string *message) {
  std::ifstream in(file, std::ios::binary);
  if (!in) {
    *message = "cannot read material file " + file;
    return false;
  }
  CsvReader reader(in);
  std::vector<std::string> header, row;
  if (!reader.next(&header)) {
    *message = "material file " + file + " has no header row";
    return false;
  }
  Rows &rows = materials_[material];
  while (reader.next(&row)) {
    if (!reader.error().empty() || row.size() != header.size()) {
      *message = file + ":" + std::to_string(reader.line()) + ": malformed row";
      return false;
    }
    auto record = std::make_unique<quorel::SimpleDataRecord>();
    std::string error;
    if (!fillRecord(header, row, record.get(), &error)) {
      *message = file + ":" + std::to_string(reader.line()) + ": " + toUtf8(error.c_str());
      return false;
    }
    rows.push_back(std::move(record));
  }
  return true;
}

const CsvMaterialAccess::Rows *CsvMaterialAccess::rowsOf(quorel::MaterialDescriptor *material) const {
  const char *name = material->getMaterialName();
  auto it = materials_.find(name != nullptr ? name : "");
  return it == materials_.end() ? nullptr : &it->second;
}

bool CsvMaterialAccess::isMaterialAvailable(quorel::MaterialDescriptor *material) {
  return rowsOf(material) != nullptr;
}

bool CsvMaterialAccess::containsValues(quorel::MaterialDescriptor *material, quorel::RecordFilter *filter,
                                       quorel::FieldSet *fields, quorel::ValueSet *values) {
  std::lock_guard<std::mutex> lock(mutex_);
  const Rows *rows = rowsOf(material);
  if (rows == nullptr) return false;
  for (const auto &row : *rows) {
    if (!fulfils(row.get(), filter)) continue;
    bool all = true;
    for (std::int32_t i = 0; i < fields->getNumOfFields() && all; ++i) {
      std::string name = fields->getField(i)->getHierarchyText();
      all = holds(row->getValue(name.c_str()), quorel::OPERATOR_EQUAL, values->getValue(i));
    }
    if (all) return true;
  }
  return false;
}

void CsvMaterialAccess::readRecords(quorel::DataRecordSet *result, quorel::MaterialDescriptor *material,
                                    quorel::RecordFilter *filter, quorel::FieldSet *) {
  std::lock_guard<std::mutex> lock(mutex_);
  const Rows *rows = rowsOf(material);
  if (rows == nullptr) return;
  for (const auto &row : *rows) {
    if (fulfils(row.get(), filter)) result->addDataRecord(row.get());
  }
}

}  // namespace host
}  // namespace quorel
