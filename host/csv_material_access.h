// CsvMaterialAccess: materials read from CSV files whose header names the
// fields of the material topic by hierarchy text (Gemeinden.PLZ). Filter
// conditions are evaluated row by row through the library's comparisons;
// the operator numbers are those of quorel::OperatorType: 0 equal, 1 not
// equal, 2 greater, 3 greater or equal, 4 less, 5 less or equal. An empty
// cell satisfies only "not equal". The rows live as long as this object.
// Queries from several threads are served one at a time.

#ifndef QUOREL_HOST_CSV_MATERIAL_ACCESS_H_
#define QUOREL_HOST_CSV_MATERIAL_ACCESS_H_

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <quorel/quorel.h>

namespace quorel {
namespace host {

// The largest array size a row may give: a size is a promise of elements
// that the rules walk, so a wild one must not keep a run busy for hours.
constexpr std::int32_t kMaxArraySize = 100000;

// Fills a record from one CSV row under its header: a header ending in "#"
// is an array size, an empty cell an empty field. A size that is not a whole
// number from 0 to kMaxArraySize makes it false, with a message (Windows-1252)
// in *error; the record is then incomplete.
bool fillRecord(const std::vector<std::string> &header, const std::vector<std::string> &row,
                quorel::SimpleDataRecord *record, std::string *error);

class CsvMaterialAccess : public quorel::MaterialAccess {
 public:
  // Reads the file for the material of that name; false with a message when
  // it cannot be read.
  bool load(const std::string &material, const std::string &file, std::string *message);

  bool isMaterialAvailable(quorel::MaterialDescriptor *material) override;
  bool containsValues(quorel::MaterialDescriptor *material, quorel::RecordFilter *filter,
                      quorel::FieldSet *fields, quorel::ValueSet *values) override;
  void readRecords(quorel::DataRecordSet *result, quorel::MaterialDescriptor *material,
                   quorel::RecordFilter *filter, quorel::FieldSet *fields) override;

 private:
  using Rows = std::vector<std::unique_ptr<quorel::SimpleDataRecord>>;
  const Rows *rowsOf(quorel::MaterialDescriptor *material) const;

  std::map<std::string, Rows> materials_;
  // Queries may come from several threads at once.
  std::mutex mutex_;
};

// Whether the row fulfils every condition of the filter.
bool fulfils(quorel::SimpleDataRecord *row, quorel::RecordFilter *filter);

}  // namespace host
}  // namespace quorel

#endif  // QUOREL_HOST_CSV_MATERIAL_ACCESS_H_
