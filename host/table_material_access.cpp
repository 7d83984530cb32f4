#include "quorel/host/table_material_access.h"

#include <mutex>

#include "quorel/host/encoding.h"
#include "quorel/host/record_layout.h"

namespace quorel {
namespace host {

// One condition of a query: the row's value of the field (by hierarchy text)
// compared with a value.
struct TableMaterialAccess::Term {
  std::string field;
  OperatorType op;
  Value *value;
};

namespace {

using Rows = std::vector<std::unique_ptr<SimpleDataRecord>>;

// Rows by the texts of some fields, each key the texts joined by NUL (which
// no text holds). usable is false when a row holds a value that is no text in
// one of the fields: a comparison with it may not be a comparison of texts.
struct Index {
  bool usable = true;
  std::unordered_map<std::string, std::vector<std::uint32_t>> rows;
};

bool holds(Value *actual, OperatorType op, Value *expected) {
  if (actual == nullptr) return op == OPERATOR_NOT_EQUAL;
  switch (op) {
    case OPERATOR_EQUAL: return actual->eq(expected);
    case OPERATOR_NOT_EQUAL: return actual->ne(expected);
    case OPERATOR_GREATER: return actual->gt(expected);
    case OPERATOR_GREATER_EQUAL: return actual->ge(expected);
    case OPERATOR_LESS: return actual->lt(expected);
    case OPERATOR_LESS_EQUAL: return actual->le(expected);
    default: return false;
  }
}

// Whether a text comparison decides equality with this value: a row's text
// decides against a value of the same level by comparing texts.
bool textual(Value *value) { return value->getOperatorLevel() == STRING_LEVEL; }

}  // namespace

struct TableMaterialAccess::Table {
  Rows rows;
  // By the fields' hierarchy texts joined by NUL.
  std::unordered_map<std::string, std::unique_ptr<Index>> indexes;

  std::unique_ptr<Index> build(const std::vector<const std::string *> &fields) const {
    auto index = std::make_unique<Index>();
    std::string key;
    for (std::size_t r = 0; r < rows.size(); ++r) {
      key.clear();
      bool complete = true;
      for (const std::string *field : fields) {
        Value *value = rows[r]->getValue(field->c_str());
        if (value == nullptr) {
          complete = false;  // fulfils no equality
          break;
        }
        if (!textual(value)) {
          index->usable = false;
          return index;
        }
        key += value->asString();
        key += '\0';
      }
      if (complete) index->rows[key].push_back(static_cast<std::uint32_t>(r));
    }
    return index;
  }
};

TableMaterialAccess::TableMaterialAccess() = default;
TableMaterialAccess::~TableMaterialAccess() = default;

bool TableMaterialAccess::load(const std::string &material, RowSource *source, std::string *message) {
  RecordLayout layout(source->columns());
  std::vector<std::string> repeated = layout.repeatedColumns();
  if (!repeated.empty()) {
    *message = source->name() + ": " + toUtf8(repeated[0].c_str());
    return false;
  }
  Rows rows;
  Row row;
  while (source->next(&row)) {
    auto record = std::make_unique<SimpleDataRecord>();
    std::string error;
    if (layout.fill(row, record.get(), &error)) {
      rows.push_back(std::move(record));
      continue;
    }
    const Place &at = row.place;
    *message = source->name() + (at.line > 0 ? ":" + std::to_string(at.line) : " record " + std::to_string(at.record)) +
               ": " + toUtf8(error.c_str());
    return false;
  }
  add(material, std::move(rows));
  return true;
}

void TableMaterialAccess::add(const std::string &material, Rows rows) {
  std::unique_ptr<Table> &table = tables_[material];
  if (table == nullptr) table = std::make_unique<Table>();
  table->indexes.clear();
  for (auto &row : rows) table->rows.push_back(std::move(row));
}

TableMaterialAccess::Table *TableMaterialAccess::tableOf(MaterialDescriptor *material) const {
  const char *name = material->getMaterialName();
  auto it = tables_.find(std::string_view(name != nullptr ? name : ""));
  return it == tables_.end() ? nullptr : it->second.get();
}

void TableMaterialAccess::termsOf(RecordFilter *filter, std::vector<Term> *terms) {
  terms->resize(static_cast<std::size_t>(filter->getNumOfConditions()));
  for (std::size_t i = 0; i < terms->size(); ++i) {
    FilterCondition *condition = filter->getCondition(static_cast<std::int32_t>(i));
    Term &term = (*terms)[i];
    term.field.clear();
    condition->getField()->appendHierarchyText(&term.field);
    term.op = condition->getOperatorType();
    term.value = condition->getComparativeValue();
  }
}

template <typename Visit>
void TableMaterialAccess::select(Table *table, const std::vector<Term> &terms, Visit visit) {
  // Whether the row fulfils the terms from the first on: those before it
  // an index has decided.
  auto fulfils = [&terms](SimpleDataRecord *row, std::size_t first) {
    for (std::size_t i = first; i < terms.size(); ++i) {
      const Term &term = terms[i];
      if (!holds(row->getValue(term.field.c_str()), term.op, term.value)) return false;
    }
    return true;
  };
  std::string name, key;
  thread_local std::vector<const std::string *> fields;
  fields.clear();
  // Only a leading run of text equalities is indexed: a row that one of them
  // excludes would then not have met the later conditions in a scan either,
  // whose comparisons might throw.
  for (const Term &term : terms) {
    if (term.op != OPERATOR_EQUAL || !textual(term.value)) break;
    fields.push_back(&term.field);
    name += term.field;
    name += '\0';
    key += term.value->asString();
    key += '\0';
  }
  auto scan = [&] {
    for (const auto &row : table->rows) {
      if (fulfils(row.get(), 0) && !visit(row.get())) return;
    }
  };
  std::shared_lock<std::shared_mutex> lock(mutex_);
  if (!indexing_ || fields.empty()) return scan();
  auto found = table->indexes.find(name);
  if (found == table->indexes.end()) {
    lock.unlock();
    {
      std::unique_lock<std::shared_mutex> building(mutex_);
      std::unique_ptr<Index> &index = table->indexes[name];
      if (index == nullptr) index = table->build(fields);
    }
    lock.lock();
    found = table->indexes.find(name);
  }
  const Index &index = *found->second;
  if (!index.usable) return scan();
  auto hit = index.rows.find(key);
  if (hit == index.rows.end()) return;
  for (std::uint32_t r : hit->second) {
    SimpleDataRecord *row = table->rows[r].get();
    if (fulfils(row, fields.size()) && !visit(row)) return;
  }
}

bool TableMaterialAccess::isMaterialAvailable(MaterialDescriptor *material) { return tableOf(material) != nullptr; }

bool TableMaterialAccess::containsValues(MaterialDescriptor *material, RecordFilter *filter, FieldSet *fields,
                                         ValueSet *values) {
  Table *table = tableOf(material);
  if (table == nullptr) return false;
  thread_local std::vector<Term> terms;
  termsOf(filter, &terms);
  for (std::int32_t i = 0; i < fields->getNumOfFields(); ++i) {
    terms.push_back({fields->getField(i)->getHierarchyText(), OPERATOR_EQUAL, values->getValue(i)});
  }
  bool found = false;
  select(table, terms, [&found](SimpleDataRecord *) { return !(found = true); });
  return found;
}

void TableMaterialAccess::readRecords(DataRecordSet *result, MaterialDescriptor *material, RecordFilter *filter,
                                      FieldSet *) {
  Table *table = tableOf(material);
  if (table == nullptr) return;
  thread_local std::vector<Term> terms;
  termsOf(filter, &terms);
  select(table, terms, [result](SimpleDataRecord *row) {
    result->addDataRecord(row);
    return true;
  });
}

}  // namespace host
}  // namespace quorel
