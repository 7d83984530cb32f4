// TableMaterialAccess: materials held in memory as tables of records, one
// SimpleDataRecord per row, loaded from any RowSource (a CSV file) or handed
// in as records. The fields of the material topic are found by hierarchy
// text (Gemeinden.PLZ).
//
// Filter conditions use the operator numbers of quorel::OperatorType: 0
// equal, 1 not equal, 2 greater, 3 greater or equal, 4 less, 5 less or
// equal, each decided by the library's comparison of the row's value with the
// condition's value. A row whose field is empty fulfils only "not equal".
//
// Queries are answered through indexes: for each combination of fields that
// equality conditions name, the first query builds a hash index from the
// fields' texts to the rows, in table order. An index answers only where
// comparing texts gives what the library's comparison gives (a text
// condition on a column of texts); every other query, and every condition
// beside the indexed ones, is decided row by row, so the answers are those of
// a scan of the whole table.
//
// Loading is not safe alongside queries; queries may come from several
// threads at once. The rows live as long as this object.

#ifndef QUOREL_HOST_TABLE_MATERIAL_ACCESS_H_
#define QUOREL_HOST_TABLE_MATERIAL_ACCESS_H_

#include <cstdint>
#include <map>
#include <memory>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <quorel/quorel.h>

#include "quorel/host/row_source.h"

namespace quorel {
namespace host {

class TableMaterialAccess : public MaterialAccess {
 public:
  TableMaterialAccess();
  ~TableMaterialAccess();

  TableMaterialAccess(const TableMaterialAccess &) = delete;
  TableMaterialAccess &operator=(const TableMaterialAccess &) = delete;

  // Reads every row of the source into the material of that name (after the
  // rows it may have already); false with a message (UTF-8) for a column
  // name given twice and on the first row that cannot be read, the source's
  // failure included.
  bool load(const std::string &material, RowSource *source, std::string *message);
  // Adds rows to the material of that name, which takes them over.
  void add(const std::string &material, std::vector<std::unique_ptr<SimpleDataRecord>> rows);

  // Answers without indexes, row by row, when false (for comparisons).
  void setIndexing(bool on) { indexing_ = on; }

  bool isMaterialAvailable(MaterialDescriptor *material) override;
  bool containsValues(MaterialDescriptor *material, RecordFilter *filter, FieldSet *fields,
                      ValueSet *values) override;
  void readRecords(DataRecordSet *result, MaterialDescriptor *material, RecordFilter *filter,
                   FieldSet *fields) override;

 private:
  struct Table;
  struct Term;
  Table *tableOf(MaterialDescriptor *material) const;
  // The filter's conditions into *terms, whose strings are reused: a query
  // keeps its terms in storage of its thread.
  static void termsOf(RecordFilter *filter, std::vector<Term> *terms);
  // Calls visit with every row that fulfils all terms, in table order, until
  // visit gives false.
  template <typename Visit>
  void select(Table *table, const std::vector<Term> &terms, Visit visit);

  std::map<std::string, std::unique_ptr<Table>, std::less<>> tables_;  // found by the name's bytes, not a copy
  bool indexing_ = true;
  // Guards the indexes: queries share it, building an index holds it alone.
  std::shared_mutex mutex_;
};

}  // namespace host
}  // namespace quorel

#endif  // QUOREL_HOST_TABLE_MATERIAL_ACCESS_H_
